"""Exports that are cancelled, lack a file, or would overwrite footage."""

import json
import os
import pathlib
import shutil
import signal
import unittest

from editor_process import Connection, EditorProcess, decoded, video, wait_until


CANCEL = b'{"id": 8, "cancel": 7}\n'


class Exports(unittest.TestCase):
    def setUp(self):
        self.editor = EditorProcess()
        self.addCleanup(self.editor.close)
        self.editor.start_project()
        self.footage = self.editor.home / "footage.mp4"
        shutil.copy(video(), self.footage)
        self.out = self.editor.home / "out"
        self.out.mkdir()

    def start_export(self, client: Connection, **options):
        """Starts an export that reports progress, and waits for its first report."""
        request = {"id": 7, "cwd": "/", "tool": "export", "progress": True,
                   "args": {"path": str(self.out / "cut.mp4"), **options}}
        client.send(json.dumps(request).encode() + b"\n")
        return client.read()

    @staticmethod
    def final_answer(client: Connection) -> dict:
        return next(answer for answer in iter(client.read, None) if "progress" not in answer)

    def add_clips(self, editor: EditorProcess):
        for _ in range(5):
            editor.do("clip-add", "v1", "--path", str(self.footage))

    def test_cancelled_half_way_leaves_nothing(self):
        self.add_clips(self.editor)
        pid, processes = self.editor.pid(), self.editor.processes()
        for ending in ("cancel", "vanish"):
            with self.subTest(ending), self.editor.connect() as client:
                report = self.start_export(client, height=1080)
                while report["progress"] < 0.5:
                    report = client.read()
                self.assertTrue(list(self.out.iterdir()), "nothing is written meanwhile")
                if ending == "cancel":
                    client.send(CANCEL)
                    answer = self.final_answer(client)
                    self.assertIs(answer["ok"], False)
                    self.assertEqual(answer["text"], "The export was cancelled.")
                else:
                    client.close()
                wait_until(lambda: not list(self.out.iterdir()), "nothing is left")
                self.assertEqual(self.editor.processes(), processes)
        # Editing and exporting still work.
        self.editor.do("clip-remove", "v1:5")
        self.editor.do("export", "--path", str(self.out / "whole.mp4"), "--height", "480")
        self.assertEqual([file.name for file in self.out.iterdir()], ["whole.mp4"])
        self.assertEqual(self.editor.pid(), pid)

    def test_other_work_is_not_blocked(self):
        cores = os.sched_getaffinity(0)
        self.addCleanup(os.sched_setaffinity, 0, cores)
        os.sched_setaffinity(0, {min(cores)})  # The editor inherits it.
        editor = EditorProcess()
        self.addCleanup(editor.close)
        editor.start_project()
        self.add_clips(editor)
        with editor.connect() as client:
            self.start_export(client, height=1080)
            editor.do("probe", "--path", str(video()))
            client.send(CANCEL)
            self.assertEqual(self.final_answer(client)["text"], "The export was cancelled.",
                             "the probe waited for its end")

    def test_missing_footage_is_black_and_reported(self):
        other = self.editor.home / "other.mp4"
        shutil.copy(video(), other)
        self.editor.do("clip-add", "v1", "--path", str(self.footage), "--duration", "1")
        self.editor.do("clip-add", "v1", "--path", str(other), "--duration", "1")
        self.editor.do("project-save")
        self.editor.kill()
        other.unlink()
        out = self.out / "black.mp4"
        made = self.editor.do("export", "--path", str(out), "--height", "480")
        self.assertEqual([clip["ref"] for clip in made["missing"]], ["v1:2"])
        self.assertEqual(made["duration"], 2)
        self.assertGreater(self.brightness(out, 0.5), 60)
        self.assertLess(self.brightness(out, 1.5), 3)

    def test_footage_is_never_overwritten(self):
        self.editor.do("clip-add", "v1", "--path", str(self.footage))
        before = self.footage.read_bytes()
        link, hard = self.out / "link.mp4", self.out / "hard.mp4"
        link.symlink_to(self.footage)
        os.link(self.footage, hard)
        for target in (self.footage, link, hard):
            answer = self.editor.cli("export", "--path", str(target), "--height", "480")
            self.assertEqual(answer.status, 1)
            self.assertEqual(answer.err, "That path is one of the project's source files; export "
                                         "somewhere else.\n")
        self.assertEqual(self.footage.read_bytes(), before)

    def test_is_answered_before_the_editor_ends(self):
        self.add_clips(self.editor)
        for ending in ("app-quit", "SIGTERM"):
            with self.subTest(ending), self.editor.connect() as client:
                self.start_export(client, height=1080)
                if ending == "app-quit":
                    refused = self.editor.cli("app-quit")
                    self.assertEqual(refused.status, 1)
                    self.assertEqual(refused.err, "The export of cut.mp4 is still running. Wait "
                                                  "until it is done, or pass --force to cancel "
                                                  "it.\n")
                    self.assertEqual(self.editor.do("app-quit", "--force").strip(),
                                     "The export of cut.mp4 was cancelled. Framewright quits.")
                else:
                    self.editor.end_by(signal.SIGTERM)
                answers = list(iter(client.read, None))
                self.assertEqual(answers[-1].get("text"), "The export was cancelled.")
                self.assertFalse(list(self.out.iterdir()))
                wait_until(lambda: not self.editor.is_running(), "the editor ends")
            self.editor.do("status")

    def test_paths(self):
        self.editor.do("clip-add", "v1", "--path", str(self.footage), "--duration", "0.2")
        (self.out / "folder").mkdir()
        (self.out / "taken.mp4").mkdir()
        os.mkfifo(self.out / "pipe.mp4")
        taken = f"{self.out}/taken.mp4 is a folder; give the name of a file in it.\n"
        cases = {
            "plain": r"plain\.mp4", "UP.MP4": r"UP\.MP4", "two.parts": r"two\.parts\.mp4",
            "folder": r"folder/First-[\d-]+\.mp4", "folder/": r"folder/First-[\d-]+\.mp4",
            ".": r"First-[\d-]+\.mp4",
            "taken.mp4": taken, "taken": taken, "taken.mp4/": r"taken\.mp4/First-[\d-]+\.mp4",
            "new/": f"There is no folder {self.out}/new.\n",
            "new/file": f"There is no folder {self.out}/new.\n",
            "pipe.mp4": f"{self.out}/pipe.mp4 is not a file that could be replaced.\n",
        }
        for path, expected in cases.items():
            with self.subTest(path):
                before = files_in(self.out)
                answer = self.editor.cli("export", "--preview", "--path", path, cwd=self.out)
                new = [str(file.relative_to(self.out)) for file in files_in(self.out) - before]
                if answer.status == 0:
                    self.assertEqual(len(new), 1)
                    self.assertRegex(new[0], f"^{expected}$")
                    self.assertEqual(json.loads(answer.out)["path"], str(self.out / new[0]))
                else:
                    self.assertEqual((answer.err, new), (expected, []))

    def test_footage_outside_its_range_may_change(self):
        other = self.editor.home / "other.mp4"
        shutil.copy(video(), other)
        self.editor.do("clip-add", "v1", "--path", str(self.footage))
        self.editor.do("clip-add", "v1", "--path", str(other))
        with self.editor.connect() as client:
            self.start_export(client, end=4, height=720)
            other.write_bytes(b"another")
            answer = self.final_answer(client)
        self.assertIs(answer["ok"], True, answer)

    @staticmethod
    def brightness(file: pathlib.Path, time: float) -> float:
        """Of the middle of the frame, 0 to 255."""
        gray = decoded(file, "-ss", str(time), "-frames:v", "1", "-vf", "crop=iw:iw/2",
                       "-pix_fmt", "gray", "-f", "rawvideo")
        return sum(gray) / len(gray)


def files_in(folder: pathlib.Path) -> set[pathlib.Path]:
    return {file for file in folder.rglob("*") if file.is_file()}


if __name__ == "__main__":
    unittest.main()
