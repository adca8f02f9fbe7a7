"""Frames and contact sheets, as agents use them."""

import base64
import json
import struct
import unittest

from editor_process import json_and_notes
from editor_test_case import EditorTestCase


class Frames(EditorTestCase):
    """Frames of a project of 7 s at 25 frames per second."""

    def drawn(self, *words):
        """The reply of a command that draws, without the path above it, and its notes."""
        answer = self.editor.cli(*words, "--out", str(self.editor.home / "frame.png"))
        self.assertEqual(answer.status, 0, answer.err)
        return json_and_notes(answer.out)

    def test_times_past_the_end_show_the_last_frame(self):
        ends = "The piece ends at 7 s; its last frame is shown for "
        for time, shown, note in (
            ("0", 0, ""),
            ("6.99", 6.99, ""),
            ("7", 6.96, ends + "7 s."),
            ("end", 6.96, ends + "7 s."),
            ("11", 6.96, ends + "11 s."),
        ):
            with self.subTest(time):
                reply, said = self.drawn("frame", time, "--width=90")
                self.assertEqual((reply["at"], reply["width"], reply["height"]), (shown, 90, 160))
                self.assertIn(note, said)
                self.assertEqual("ends at" in said, note != "")
        _, said = self.drawn("contact-sheet", "--times", "1", "--times", "7", "--times", "99")
        self.assertIn("3 frames, left to right then down, at 1, 6.96 and 6.96 s.", said)
        self.assertIn(ends + "7 and 99 s.", said)

    def test_a_project_without_footage_has_one_frame(self):
        self.editor.do("project-new", "Empty", cwd=self.editor.workspace)
        self.addCleanup(self.editor.do, "project-open", str(self.document.parent))
        self.editor.do("text-add", "Hello", "--at=1")
        reply, said = self.drawn("frame", "1.5")
        self.assertEqual(reply["at"], 0)
        self.assertIn("The piece has no picture yet; this is how it begins.", said)

    def test_a_sheet_has_the_canvas_of_when_it_was_requested(self):
        with self.editor.connect() as client, self.editor.connect() as other:
            request = {"id": 1, "tool": "contact_sheet", "args": {"every": 0.15}}
            client.send(json.dumps(request).encode() + b"\n")
            other.ask("status")  # Checks the files, too: by then the sheet is being drawn.
            self.assertTrue(other.ask("ratio", to="16:9")["ok"])
            reply = client.read()
        self.addCleanup(self.editor.do, "ratio", "--to=9:16")
        sheet, _ = json_and_notes(reply["text"])
        size = struct.unpack(">II", base64.b64decode(reply["images"][0])[16:24])
        self.assertEqual((sheet["width"], sheet["height"]), size)

    def test_refusals(self):
        for words in (("--every=1",), ("--start=1",), ("--end=2",)):
            with self.subTest(words), self.nothing_changes():
                answer = self.editor.cli("contact-sheet", "--times", "2", *words)
                self.assert_refused(answer, "Give times or ")


if __name__ == "__main__":
    unittest.main()
