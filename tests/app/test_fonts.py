"""Missing fonts: others replace them, and `status` reports which."""

import json
import os
import pathlib
import shutil
import tempfile
import unittest
import uuid

from editor_process import EXECUTABLE, EditorProcess, wait_until

TEXT = "00000000-0000-0000-0000-000000000002"  # The asset of text clips, which have no file.
WHITE = {"red": 1, "green": 1, "blue": 1, "alpha": 1}


def text_clip(number: int, font: str) -> dict:
    style = {
        "id": str(uuid.uuid4()).upper(),
        "name": "Look",
        "fontName": font,
        "fontSize": 60,
        "textColor": WHITE,
    }
    return {
        "id": str(uuid.uuid4()).upper(),
        "assetID": TEXT,
        "timelineStart": number,
        "sourceStart": 0,
        "sourceEnd": 1,
        "text": {"text": "Words", "style": style},
    }


class Fonts(unittest.TestCase):
    def test_status_reports_replaced_fonts_of_a_project(self):
        editor = EditorProcess()
        self.addCleanup(editor.close)
        document = editor.start_project()
        self.assertNotIn("fonts", editor.do("status"))

        editor.do("track-add", "text")
        editor.do("project-save")
        content = json.loads(document.read_text())
        (track,) = [each for each in content["project"]["tracks"] if each["kind"] == "text"]
        names = ["NoSuchSerif-Bold", "BebasNeue-Regular", "NoSuchSerif-Bold"]
        track["clips"] = [text_clip(number, name) for number, name in enumerate(names)]
        document.write_text(json.dumps(content))

        wait_until(lambda: "fonts" in editor.do("status"), "the outside edit is taken in")
        self.assertEqual(
            editor.do("status")["fonts"],
            [
                {
                    "font": "NoSuchSerif-Bold",
                    "standIn": "Libre Baskerville Bold",
                    "where": "t1:1, t1:3",
                }
            ],
        )

    def test_status_reports_missing_and_damaged_carried_fonts(self):
        installation = pathlib.Path(tempfile.mkdtemp(prefix="framewright-"))
        self.addCleanup(shutil.rmtree, installation)
        program = pathlib.Path(EXECUTABLE)
        (installation / "bin").mkdir()
        for file in (program, program.with_name("libframewright-editor.so")):
            try:
                os.link(file, installation / "bin" / file.name)
            except OSError:  # Another disk.
                shutil.copy2(file, installation / "bin" / file.name)
        fonts = installation / "share/framewright/fonts"
        shutil.copytree(program.parent.parent / "share/framewright/fonts", fonts)
        (fonts / "BebasNeue-Regular.ttf").unlink()
        (fonts / "Caveat-Bold.ttf").write_bytes(b"no font")

        editor = EditorProcess(installation / "bin" / program.name)
        self.addCleanup(editor.close)
        self.assertEqual(
            editor.do("status")["fonts"],
            [
                {
                    "font": "BebasNeue-Regular",
                    "standIn": "Fjalla One",
                    "problem": "Framewright's file of it is missing.",
                },
                {
                    "font": "CaveatRoman-Bold",
                    "standIn": "Marck Script",
                    "problem": "Framewright's file of it is damaged.",
                },
            ],
        )


if __name__ == "__main__":
    unittest.main()
