"""Footage that vanishes, reappears or is replaced while the editor runs."""

import functools
import os
import pathlib
import shutil
import unittest

from editor_process import EditorProcess, decoded, ffmpeg, json_and_notes, media_folder


@functools.cache
def plain(color: str, size: str, seconds: int = 1) -> pathlib.Path:
    """A video of one colour with a tone."""
    file = media_folder() / f"{color}-{size}-{seconds}.mp4"
    source = f"color={color}:size={size}:rate=25:duration={seconds}"
    codecs = ("-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-c:a", "aac")
    ffmpeg("-f", "lavfi", "-i", source, "-f", "lavfi", "-i", f"sine=duration={seconds}",
           *codecs, str(file))
    return file


class Sources(unittest.TestCase):
    def setUp(self):
        self.editor = EditorProcess()
        self.addCleanup(self.editor.close)
        self.editor.start_project()
        self.footage = self.editor.home / "footage.mp4"
        self.shot = self.editor.home / "shot.mp4"
        self.places = {"export": self.shot, "frame": self.editor.home / "frame.png",
                       "contact-sheet": self.editor.home / "sheet.png"}

    def put(self, source: pathlib.Path):
        """Replaces the footage in one step, as other programs do."""
        new = self.footage.with_suffix(".new")
        shutil.copy(source, new)
        os.replace(new, self.footage)

    def shown(self, command: str, *words: str) -> tuple[list[str], str, str]:
        """The clips a command reports as missing, and the colours at the frame's middle and top."""
        file = self.places[command]
        place = "--path" if command == "export" else "--out"
        answer = self.editor.cli(command, *words, place, str(file))
        self.assertEqual((answer.status, answer.err), (0, ""))
        made, _ = json_and_notes(answer.out)
        missing = [clip["ref"] for clip in made.get("missing", [])]
        return missing, color(file, 0.5), color(file, 0.1)

    def export(self):
        return self.shown("export", "--preview")

    def frame(self):
        return self.shown("frame", "0.5")

    def sheet(self):
        return self.shown("contact-sheet", "--times", "0.5", "--columns", "1", "--width", "270")

    def test_current_files_are_shown(self):
        self.put(plain("red", "320x240"))
        self.editor.do("clip-add", "v1", "--path", str(self.footage), "--duration", "1")
        gone = (["v1:1"], "black", "black")
        wide, tall = ([], "red", "black"), ([], "blue", "blue")
        changes = {
            "as it was added": (lambda: None, wide),
            "removed": (self.footage.unlink, gone),
            "back": (lambda: self.put(plain("red", "320x240")), wide),
            "replaced by another": (lambda: self.put(plain("blue", "270x480")), tall),
            "half written": (lambda: self.footage.write_bytes(self.footage.read_bytes()[:99]),
                             gone),
            "written": (lambda: self.put(plain("red", "320x240")), wide),
        }
        steps = self.editor.do("status")["undo"]
        # Whichever command is first must notice the change, and the others must agree.
        orders = ([self.export, self.frame, self.sheet], [self.frame, self.sheet, self.export],
                  [self.sheet, self.export, self.frame])
        for number, (change, (make, seen)) in enumerate(changes.items()):
            make()
            for draw in orders[number % 3]:
                with self.subTest(change, command=draw.__name__):
                    self.assertEqual(draw(), seen)
            missing = [clip["ref"] for clip in self.editor.do("status").get("missing", [])]
            self.assertEqual(missing, seen[0], change)
        self.assertEqual(self.editor.do("status")["undo"], steps, "facts became an edit")

    def test_files_missing_at_the_start_are_found_again(self):
        self.put(plain("red", "320x240"))
        self.editor.do("clip-add", "v1", "--path", str(self.footage), "--duration", "1")
        self.editor.quit()
        away = self.footage.rename(self.footage.with_suffix(".away"))
        self.assertEqual(self.frame(), (["v1:1"], "black", "black"))
        away.rename(self.footage)
        self.assertEqual(self.export(), ([], "red", "black"))

    def test_files_removed_while_the_project_is_closed_are_missing(self):
        self.put(plain("red", "320x240"))
        self.editor.do("clip-add", "v1", "--path", str(self.footage), "--duration", "1")
        self.editor.do("project-close")
        self.footage.unlink()
        opened = self.editor.do("project-open", "First", cwd=self.editor.workspace)
        self.assertEqual([clip["ref"] for clip in opened["missing"]], ["v1:1"])
        self.assertEqual(self.frame(), (["v1:1"], "black", "black"))

    def test_moved_files_are_found_in_the_media_folders(self):
        folder = self.editor.home / "Footage"
        folder.mkdir()
        self.editor.do("media-folders", "--add", str(folder), cwd=self.editor.workspace)
        self.put(plain("red", "320x240"))
        self.editor.do("clip-add", "v1", "--path", str(self.footage), "--duration", "1")
        away = self.footage.rename(self.footage.with_suffix(".away"))
        self.assertEqual(self.frame(), (["v1:1"], "black", "black"))
        away.rename(folder / self.footage.name)
        self.assertEqual(self.export(), ([], "red", "black"))
        self.assertEqual(self.editor.do("media")[0]["path"], str(folder / self.footage.name))

    def test_a_longer_replacement_can_be_used_to_its_end(self):
        self.put(plain("red", "320x240"))
        self.editor.do("clip-add", "v1", "--path", str(self.footage))
        self.put(plain("blue", "270x480", 3))
        self.assertAlmostEqual(self.editor.do("media")[0]["duration"], 3, delta=0.1)
        self.editor.do("undo")
        self.editor.do("redo")
        self.editor.do("clip-trim", "v1:1", "--out", "2.9")
        self.assertEqual(self.frame(), ([], "blue", "blue"))

    def test_simultaneous_commands_all_notice_a_change(self):
        self.put(plain("red", "320x240"))
        self.editor.do("clip-add", "v1", "--path", str(self.footage), "--duration", "1")
        for source, seen in ((plain("blue", "270x480"), "blue"), (None, "black"),
                             (plain("red", "320x240"), "red")):
            if source:
                self.put(source)
            else:
                self.footage.unlink()
            files = [self.editor.home / f"{number}.png" for number in range(8)]
            clients = [self.editor.start_cli("frame", "0.5", "--out", str(file)) for file in files]
            for client, file in zip(clients, files):
                self.assertEqual(self.editor.answer(client).status, 0)
                self.assertEqual(color(file, 0.5), seen)


def color(file: pathlib.Path, height: float) -> str:
    """The colour at a height of the frame, 0 at the top, in the middle of its width."""
    pixels = decoded(file, "-frames:v", "1", "-vf", f"crop=2:2:iw/2:ih*{height}",
                     "-pix_fmt", "rgb24", "-f", "rawvideo")
    red, green, blue = pixels[:3]
    names = {(True, False, False): "red", (False, False, True): "blue",
             (False, False, False): "black"}
    return names.get((red > 128, green > 128, blue > 128), f"{red} {green} {blue}")


if __name__ == "__main__":
    unittest.main()
