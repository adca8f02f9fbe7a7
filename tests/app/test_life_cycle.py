"""How the editor starts, ends, recovers from a kill, and serves several clients."""

import concurrent.futures
import json
import os
import signal
import unittest

from editor_process import (
    PATIENCE,
    EditorProcess,
    has_ended,
    placeholders_of,
    video,
    wait_until,
    watched,
)


class LifeCycleTestCase(unittest.TestCase):
    def setUp(self):
        self.editor = EditorProcess()
        self.addCleanup(self.editor.close)

    def saved_placeholders(self, document):
        return placeholders_of(json.loads(document.read_text())["project"]["tracks"])


class Starting(LifeCycleTestCase):
    def test_the_first_command_starts_the_editor(self):
        editor = self.editor
        self.assertFalse(editor.is_running())
        self.assertIsNone(editor.do("status")["project"])
        pid = editor.pid()
        self.assertNotEqual(os.getsid(pid), os.getsid(0), "would end with our session")
        self.assertEqual(os.readlink(f"/proc/{pid}/cwd"), "/", "keeps the client's folder in use")
        editor.do("status")
        self.assertEqual(editor.processes(), [pid])

    def test_simultaneous_first_commands_start_one_editor(self):
        clients = [self.editor.start_cli("status") for _ in range(8)]
        answers = [self.editor.answer(client) for client in clients]
        self.assertEqual({(answer.status, answer.err) for answer in answers}, {(0, "")})
        pid = self.editor.pid()
        wait_until(lambda: self.editor.processes() == [pid], "one editor is left")

    def test_one_of_several_editors_started_at_once_serves(self):
        editors = [self.editor.start_editor() for _ in range(3)]
        wait_until(lambda: sum(each.poll() is None for each in editors) == 1, "one is left")
        wait_until(self.editor.is_running, "it serves")
        for each in editors:
            if each.pid == self.editor.pid():
                serving = each
                continue
            _, said = each.communicate(timeout=PATIENCE)
            self.assertTrue(said.endswith(b"Framewright is already running.\n"), said)
            self.assertEqual(each.returncode, 1)
        self.editor.do("status")
        self.editor.do("app-quit")
        _, said = serving.communicate(timeout=PATIENCE)
        self.assertEqual(serving.returncode, 0, said)

    def test_a_stale_socket_is_replaced(self):
        self.editor.do("status")
        socket = self.editor.support / "cli.sock"
        self.editor.kill()
        self.assertTrue(socket.is_socket())
        self.editor.do("status")
        self.assertTrue(self.editor.is_running())

    def test_two_profiles_are_two_editors(self):
        self.editor.start_project()
        self.editor.environment["VELMORA_PROFILE"] = "second"
        self.editor.do("status")
        self.assertTrue((self.editor.support / "cli-second.sock").is_socket())
        self.assertEqual(len(self.editor.processes()), 2)


class Ending(LifeCycleTestCase):
    def test_quitting_answers_saves_and_ends(self):
        editor = self.editor
        document = editor.start_project()
        editor.do("placeholder-add", "kept")
        with watched(editor.pid()) as process:
            self.assertEqual(editor.do("app-quit"), "Framewright quits.\n")
            self.assertTrue(has_ended(process))
        self.assertEqual(self.saved_placeholders(document), {"kept"})
        self.assertFalse((editor.support / "cli.sock").exists())
        self.assertEqual(editor.placeholders(), {"kept"}, "in a new editor")

    def test_ending_by_signal_saves(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                document = self.editor.start_project(number.name)
                self.editor.do("placeholder-add", number.name)
                self.editor.end_by(number)
                self.assertEqual(self.saved_placeholders(document), {number.name})
                self.assertEqual(self.editor.placeholders(), {number.name})

    def test_after_a_kill_the_same_project_is_open(self):
        editor = self.editor
        document = editor.start_project("Hook v2")
        editor.do("clip-add", "v1", "--path", str(video()))
        editor.do("placeholder-add", "saved", "--track", "a1")
        wait_until(lambda: editor.do("status")["project"]["saved"], "it is saved automatically")
        before, timeline = editor.pid(), editor.do("timeline")
        editor.do("seek", "2")  # Not a change of the project.
        editor.kill()

        status = editor.do("status")
        self.assertNotEqual(editor.pid(), before)
        self.assertEqual(status["project"]["path"], str(document))
        self.assertNotIn("problem", status)
        self.assertNotIn("missing", status)
        self.assertNotIn("recovery", status)
        self.assertEqual(editor.do("timeline"), timeline)

    def test_a_client_reports_that_its_editor_was_killed(self):
        editor = self.editor
        editor.start_project()
        editor.do("clip-add", "v1", "--path", str(video()))
        client = editor.start_cli("export", "--path", str(editor.home / "x.mp4"))
        wait_until(lambda: list(editor.home.glob(".framewright-*.part")), "the export begins")
        editor.kill()
        answer = editor.answer(client)
        self.assertEqual(answer.status, 2)
        self.assertEqual(
            answer.err, "Framewright stopped answering. Open the app and try again.\n"
        )

    def test_after_a_kill_a_project_outside_any_workspace_can_be_recovered(self):
        """Such a project is saved on request; until then its changes are in a recovery copy."""
        editor = self.editor
        editor.start_project()
        copy = editor.home / "Loose.fwp"
        editor.do("project-save", "--path", str(copy))
        editor.do("project-open", str(copy))
        editor.do("placeholder-add", "kept")
        recovery = editor.support / "Recovery"
        wait_until(lambda: recovery.exists() and any(recovery.glob("*.fwp")), "a copy is written")
        content = copy.read_bytes()
        editor.kill()
        self.assertEqual(editor.do("status")["recovery"]["project"], str(copy))
        self.assertEqual(copy.read_bytes(), content, "the user's file was changed")
        editor.do("project-recover", "restore")
        self.assertEqual(editor.placeholders(), {"kept"})
        editor.do("project-save")
        self.assertEqual(self.saved_placeholders(copy), {"kept"})
        self.assertNotIn("recovery", editor.do("status"))


class Sharing(LifeCycleTestCase):
    def test_undo_and_redo_over_a_sequence(self):
        editor = self.editor
        editor.start_project()
        edits = (
            ("clip-add", "v1", "--path", str(video()), "--in", "1"),
            ("placeholder-add", "B-roll", "--duration", "2"),
            ("clip-split", "v1:1", "--at", "1"),
            ("clip-set", "v1:2", "--scale", "1.5", "--volume", "0.5"),
            ("clip-move", "v1:3", "--to", "0"),
            ("track-add", "video", "--name", "Over"),
            ("clip-duplicate", "v1:1"),
            ("track-set", "a1", "--muted", "true"),
            ("clip-trim", "v1:1", "--end", "0.5"),
            ("media-import", str(video().parent / "other.mp4")),
            ("clip-remove", "v1:2"),
            ("ratio", "--to", "1:1"),
        )
        os.link(video(), video().parent / "other.mp4")
        self.addCleanup(os.unlink, video().parent / "other.mp4")

        def state():
            return editor.do("timeline"), editor.do("media")

        states = [state()]
        for words in edits:
            editor.do(*words)
            states.append(state())
        self.assertEqual(editor.cli("redo").err, "Nothing to redo.\n")
        for step in reversed(states[:-1]):
            editor.do("undo")
            self.assertEqual(state(), step)
        self.assertEqual(editor.cli("undo").err, "Nothing to undo.\n")
        for step in states[1:]:
            editor.do("redo")
            self.assertEqual(state(), step)
        editor.do("undo")
        editor.do("placeholder-add", "another way")
        self.assertEqual(editor.cli("redo").err, "Nothing to redo.\n")

    def test_clients_in_parallel(self):
        """Each edit is made once, as one step, while other clients read and render."""
        editor = self.editor
        editor.start_project()
        editor.do("clip-add", "v1", "--path", str(video()))
        names = [f"{client}-{number}" for client in range(4) for number in range(10)]

        def add(client):
            for number in range(10):
                editor.do("placeholder-add", f"{client}-{number}", "--track", "a1")
                editor.do("timeline")

        def draw(_):
            for number in range(5):
                editor.do("frame", str(number / 2), "--out", str(editor.home / "frame.png"))

        def place(client):
            editor.do("track-add", "audio", "--name", f"of {client}")
            for _ in range(3):
                editor.do("clip-add", f"of {client}", "--path", str(video()), "--out", "1")

        def export(_):
            editor.do("export", "--preview", "--path", str(editor.home / "x.mp4"))

        with concurrent.futures.ThreadPoolExecutor() as pool:
            jobs = [(add, client) for client in range(4)]
            jobs += [(draw, 1), (place, 1), (place, 2), (export, 1)]
            for job in [pool.submit(*job) for job in jobs]:
                job.result()

        self.assertEqual(editor.placeholders(), set(names))
        tracks = {track["name"]: track["clips"] for track in editor.tracks()}
        self.assertEqual(len(tracks["Audio 1"]), len(names))
        self.assertEqual([len(tracks[f"of {client}"]) for client in (1, 2)], [3, 3])
        for clips in tracks.values():
            for clip, following in zip(clips, clips[1:]):
                self.assertLessEqual(clip["end"], following["start"] + 1e-6)
        steps = 0
        while editor.cli("undo").status == 0:
            steps += 1
        self.assertEqual(steps, 1 + len(names) + 2 * (1 + 3))
        self.assertEqual(len(editor.do("media")), 0)


if __name__ == "__main__":
    unittest.main()
