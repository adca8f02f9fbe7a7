"""Frames and contact sheets, as agents use them."""

import base64
import json
import struct
import unittest

from test_bad_input import EditorTestCase


class Pictures(EditorTestCase):
    """Pictures of a piece of 7 s at 25 frames a second."""

    def drawn(self, *words):
        """What is told of a picture below its path, and the lines after that."""
        answer = self.editor.cli(*words, "--out", str(self.editor.home / "picture.png"))
        self.assertEqual(answer.status, 0, answer.err)
        told = answer.out[answer.out.index("{") :]
        reply, end = json.JSONDecoder().raw_decode(told)
        return reply, told[end:]

    def test_times_are_those_of_the_pictures(self):
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

    def test_a_piece_without_a_picture_has_one_moment(self):
        self.editor.do("project-new", "Empty", cwd=self.editor.workspace)
        self.addCleanup(self.editor.do, "project-open", str(self.document.parent))
        self.editor.do("text-add", "Hello", "--at=1")
        reply, said = self.drawn("frame", "1.5")
        self.assertEqual(reply["at"], 0)
        self.assertIn("The piece has no picture yet; this is how it begins.", said)

    def test_a_sheet_is_of_the_canvas_it_was_asked_for(self):
        with self.editor.connect() as sheet, self.editor.connect() as other:
            request = {"id": 1, "tool": "contact_sheet", "args": {"every": 0.15}}
            sheet.send(json.dumps(request).encode() + b"\n")
            other.ask("status")  # Looks at the files too: by then the sheet is being drawn.
            self.assertTrue(other.ask("ratio", to="16:9")["ok"])
            reply = sheet.read()
        self.addCleanup(self.editor.do, "ratio", "--to=9:16")
        told, _ = json.JSONDecoder().raw_decode(reply["text"])
        size = struct.unpack(">II", base64.b64decode(reply["images"][0])[16:24])
        self.assertEqual((told["width"], told["height"]), size)

    def test_refusals(self):
        for words in (("--every=1",), ("--start=1",), ("--end=2",)):
            with self.subTest(words), self.nothing_changes():
                answer = self.editor.cli("contact-sheet", "--times", "2", *words)
                self.assert_refused(answer, "Give times or ")


if __name__ == "__main__":
    unittest.main()
