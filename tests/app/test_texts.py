"""On-screen texts and saved styles, as agents use them."""

import json
import unittest

from editor_process import EditorProcess, json_and_notes, wait_until
from editor_test_case import EditorTestCase

COLORS = "Colors are #RRGGBB or #RRGGBBAA, not "


class Texts(EditorTestCase):
    """Texts of the open project."""

    def tearDown(self):
        while [each for each in self.editor.tracks() if each["kind"] == "text"]:
            self.editor.do("track-remove", "t1")

    def text_add(self, *words):
        answer = self.editor.cli("text-add", *words)
        self.assertEqual(answer.status, 0, answer.err)
        reply, notes = json_and_notes(answer.out)
        return reply["clip"], notes

    def test_a_text_has_a_style_with_overrides(self):
        clip, note = self.text_add(
            "Hello", "--favorite=neon", "--at=1", "--size=240", "--color=#FF000080", "--y=0.2"
        )
        text = clip["text"]
        self.assertEqual((clip["ref"], clip["start"], clip["end"], note), ("t1:1", 1, 4, ""))
        self.assertEqual((text["look"], text["size"], text["color"]), ("Neon", 240, "#FF000080"))
        self.assertEqual((text["words"], text["x"], text["y"]), ("Hello", 0.5, 0.2))
        self.assertEqual(self.editor.tracks()[0]["kind"], "text", "the new track is not on top")

        changed = self.editor.do("text-set", "t1:1", "--favorite=Meme", "--text=Bye", "--x=0")
        text = changed["clip"]["text"]
        self.assertEqual((text["look"], text["words"], text["x"], text["y"]), ("Meme", "Bye", 0, 0.2))
        self.editor.do("undo")
        self.assertEqual(self.editor.tracks()[0]["clips"][0], clip)

    def test_room(self):
        self.text_add("One", "--at=0")
        clip, note = self.text_add("Two", "--at=1", "--duration=1")
        self.assertEqual(clip["start"], 3)
        self.assertIn(", the nearest spot to 1 s", note)
        with self.nothing_changes():
            answer = self.editor.cli("text-set", "t1:1", "--duration=3.5")
            self.assert_refused(
                answer, "That would run into the next text on Text 1; it can last up to 3 s."
            )

    def test_a_missing_font_is_reported(self):
        _, note = self.text_add("Hello", "--font=Avenir Next Bold")
        self.assertRegex(note, r"^AvenirNext-Bold is not installed; .+ stands in for it\.$")

    def test_letters_that_no_font_has_are_reported(self):
        note = "No installed font has the letter \u0378; a box stands for it."
        _, said = self.text_add("a\u0378b\u0378", "--at=0")
        self.assertEqual(said, note)
        self.text_add("\u0378", "--favorite=Strong")
        self.assertEqual(self.editor.do("status")["looks"], ["t1:1, t1:2: " + note])

    def test_words_are_stored_unchanged(self):
        for words in (
            "  two\nlines, a \"quote\", a back\\slash and \\n  ",
            "مرحبا 👋🏽 שלום 👨‍👩‍👧‍👦 नमस्ते 🇩🇪",
            "007",
            "true",
            "-dash",
            "tab\there",
            "x" * 9_999 + "é",
        ):
            with self.subTest(words[:20]):
                clip, _ = self.text_add(f"--text={words}", "--at=0")
                self.assertEqual(clip["text"]["words"], words)
                self.editor.do("project-save")
                self.assertIn(words, [
                    clip["text"]["text"]
                    for track in json.loads(self.document.read_text())["project"]["tracks"]
                    for clip in track["clips"]
                    if "text" in clip
                ])
                self.editor.do("undo")

    def test_invisible_texts_are_reported(self):
        ends = "The picture ends at 7 s"
        for words, note in (
            (("--at=1",), ""),
            (("--at=5", "--duration=4"), ends + "; the text is not seen after it."),
            (("--at=10",), ends + ", before the text begins; it is not seen."),
        ):
            with self.subTest(words):
                _, said = self.text_add("Late", *words)
                self.assertEqual(said, note)
        answer = self.editor.cli("export", "--preview")
        self.assertIn(ends + "; nothing is seen after it of t1:2, t1:3.", answer.out)
        self.editor.do("track-set", "t1", "--hidden", "true")
        _, said = self.text_add("Hidden", "--at=4", "--duration=1")
        self.assertEqual(
            said, "t1 (Text 1) is hidden, so the text is not seen until track-set shows it."
        )

    def edit_by_hand(self, change):
        """Puts a text on the timeline and changes its clip in the file."""
        self.text_add("Words", "--at=0")
        self.editor.do("project-save")
        content = json.loads(self.document.read_text())
        change(content["project"]["tracks"][0]["clips"][0])
        before = self.editor.do("status")["undo"]
        self.document.write_text(json.dumps(content))
        wait_until(lambda: self.editor.do("status")["undo"] != before, "the edit is taken in")

    def test_values_out_of_range_are_reported_and_block_nothing(self):
        def change(clip):
            clip["text"]["style"].update(fontSize=900, padding=-30, fontName="")
            clip["text"]["scale"] = -3

        self.edit_by_hand(change)
        changes = [
            f"{name} of Classic is {change}"
            for name, change in (
                ("fontName", "empty; system:semibold is used."),
                ("fontSize", "8 to 240; 900 was changed to 240."),
                ("padding", "0 to 200; -30 was changed to 0."),
            )
        ]
        status = self.editor.do("status")
        self.assertEqual(status["looks"], [f"t1:1: {each}" for each in changes])
        self.assertNotIn("fonts", status)
        clip = self.editor.tracks()[0]["clips"][0]
        self.assertEqual((clip["text"]["size"], clip["text"]["font"]), (240, "system:semibold"))
        answer = self.editor.cli("text-set", "t1:1", "--text=New", "--y=0.2")
        self.assertEqual((answer.status, answer.err), (0, ""))
        self.assertEqual(answer.out.splitlines()[-3:], changes)

        answer = self.editor.cli("style-save", "Big", "--from=t1:1", "--kind=caption")
        reply, notes = json_and_notes(answer.out)
        self.assertEqual(reply["look"]["size"], 240)
        self.assertIn("fontSize of Big is 8 to 240; 900 was changed to 240.", notes)
        self.assertEqual(self.editor.do("favorites")["caption"][-1], reply["look"])
        self.editor.do("style-delete", "Big", "--kind=caption")

    def test_a_text_clip_whose_text_was_removed_by_hand(self):
        self.edit_by_hand(lambda clip: clip.pop("text"))
        clip = self.editor.do("text-set", "t1:1", "--duration=2")["clip"]
        self.assertEqual((clip["duration"], "text" in clip), (2, False))
        text = self.editor.do("text-set", "t1:1", "--text=Hello")["clip"]["text"]
        usual = [style for style in self.editor.do("favorites")["text"] if style.get("default")][0]
        self.assertEqual(
            (text["words"], text["look"], text["font"]), ("Hello", usual["name"], usual["font"])
        )

    REFUSED = (
        (("text-add",), "text-add needs --text."),
        (("text-add", ""), "A text needs some words."),
        (("text-add", " \n\u3000"), "A text needs some words."),
        (("text-add", "x" * 10_001), "A text has at most 10000 characters."),
        (("text-add", "x", "--size", "7"), "size must be 8 to 240 points."),
        (("text-add", "x", "--size", "241"), "size must be 8 to 240 points."),
        (("text-add", "x", "--size", "big"), "size must be a number."),
        (("text-add", "x", "--color", "#12"), COLORS + "#12."),
        (("text-add", "x", "--color", "red"), COLORS + "red."),
        (("text-add", "x", "--color", "#GG0000"), COLORS + "#GG0000."),
        (("text-add", "x", "--duration", "0.05"), "duration must be 0.1 to 3600 seconds."),
        (("text-add", "x", "--duration", "3601"), "duration must be 0.1 to 3600 seconds."),
        (("text-add", "x", "--at", "-1"), "at must be 0 or later."),
        (("text-add", "x", "--x", "1.2"), "x must be 0 to 1."),
        (("text-add", "x", "--track", "v1"), "v1 (Video 1) is not a text track."),
        (("text-add", "x", "--favorite", "Neeon"), "Did you mean Neon? There are: Classic, "),
        (("text-set", "v1:1", "--text", "x"), "v1:1 is not a text clip."),
        (("text-set", "t1:1"), "Give something to change: "),
        (("text-set", "t1:1", "--text", ""), "A text needs some words."),
        (("clip-set", "t1:1", "--volume", "1"), "Use text-set for text clips."),
        (("style-save", " "), "A look needs a name"),
        (("style-save", "New", "--like", "Nope"), "No text favorite called Nope. "),
        (("style-save", "New", "--from", "v1:1"), "from must be a text clip."),
        (("style-save", "New", "--size", "7"), "size must be 8 to 240 points."),
        (("style-save", "New", "--padding", "-1"), "padding must be 0 to 200."),
        (("style-save", "New", "--outlineColor", "red"), COLORS + "red."),
        (("style-save", "Neon", "--rename", "meme"), "There is a look called Meme already."),
        (("style-save", "New", "--kind", "song"), "kind must be text or caption."),
        (("style-delete", "Nothing"), "No text favorite called Nothing. "),
        (("style-default", "Neon", "--kind", "caption"), "No caption style called Neon. "),
    )

    def test_refusals(self):
        self.text_add("Kept", "--at=0")
        self.editor.do("project-save")
        favorites = self.editor.do("favorites")
        for words, sentence in self.REFUSED:
            with self.subTest(words[:4]), self.nothing_changes():
                self.assert_refused(self.editor.cli(*words), sentence)
        self.editor.do("track-set", "t1", "--locked", "true")
        self.editor.do("project-save")
        for words in (("text-set", "t1:1", "--x=0"), ("text-add", "x", "--track=t1")):
            with self.subTest(words), self.nothing_changes():
                self.assert_refused(
                    self.editor.cli(*words),
                    "t1 (Text 1) is locked. Unlock it with track_set first.",
                )
        self.editor.do("track-set", "t1", "--locked", "false")
        self.assertEqual(self.editor.do("favorites"), favorites)

    def test_half_a_character(self):
        with self.nothing_changes(), self.editor.connect() as client:
            client.send(b'{"id": 1, "tool": "text_add", "args": {"text": "\\ud83c"}}\n')
            self.assertIs(client.read()["ok"], False)


class Styles(unittest.TestCase):
    """Saved styles, in the editor and in the workspace's files."""

    def setUp(self):
        self.editor = EditorProcess()
        self.addCleanup(self.editor.close)
        self.editor.start_project()
        self.file = self.editor.workspace / "settings/text-styles.json"

    def names(self, kind="text"):
        return [style["name"] for style in self.editor.do("favorites")[kind]]

    def on_disk(self):
        return json.loads(self.file.read_text())

    def test_a_style_is_made_changed_used_and_deleted(self):
        editor = self.editor
        built_in = self.names()
        self.assertGreaterEqual(len(built_in), 12)
        self.assertGreaterEqual(len(self.names("caption")), 8)
        editor.do("style-save", "Mine", "--like=Meme", "--boxColor=#10203080", "--size=100")
        style = editor.do("favorites", "--kind=text")["text"][-1]
        self.assertEqual(style["name"], "Mine")
        self.assertEqual(style["box"]["color"], "#10203080")
        self.assertEqual(style["effects"], "Box · Outline · Caps")
        editor.do("style-default", "mine")
        clip = editor.do("text-add", "Hello")["clip"]
        self.assertEqual((clip["text"]["look"], clip["text"]["size"]), ("Mine", 100))

        editor.do("style-save", "Mine", "--box=false", "--rename=Ours")
        style = editor.do("favorites")["text"][-1]
        self.assertEqual((style["name"], style["effects"]), ("Ours", "Outline · Caps"))
        self.assertIs(style["default"], True)
        editor.do("text-set", "t1:1", "--color=#00FF00")
        editor.do("style-save", "From a clip", "--from=t1:1", "--kind=caption")
        self.assertEqual(editor.do("favorites")["caption"][-1]["color"], "#00FF00FF")

        editor.do("style-delete", "Ours")
        editor.do("style-delete", "Neon")
        self.assertEqual(self.names(), [name for name in built_in if name != "Neon"])
        editor.quit()
        wait_until(lambda: not editor.processes(), "the editor ends")
        self.assertEqual(self.names(), [name for name in built_in if name != "Neon"])
        editor.do("style-reset", "--name=Neon")
        self.assertIn("Neon", self.names())

    def test_styles_with_the_same_name_are_picked_by_id(self):
        editor = self.editor
        editor.do("style-delete", "Deco")
        editor.do("style-save", "Deco", "--size=44")
        answer = editor.cli("style-reset", "--name=Deco")
        self.assertIn("\nYour Deco is called Deco 2 now.", answer.out)
        self.assertIn("Deco 2", self.names())

        editor.do("style-save", "Same", "--size=50")
        editor.do("project-save")
        wait_until(lambda: self.file.exists() and "Same" in self.file.read_text(), "it is saved")
        content = self.on_disk()
        one = "ABCDEF01-0000-4000-8000-000000000001"
        content["styles"].append({**content["styles"][-1], "id": one, "fontSize": 51})
        self.file.write_text(json.dumps(content))
        twice = "text-styles.json: More than one look is called Same; pick them by id."
        wait_until(lambda: twice in editor.do("status").get("looks", []), "it is reported")
        self.assertIn("More than one look", editor.cli("style-default", "Same").err)
        editor.do("style-save", one[:8], "--color=#FF0000")
        text = editor.do("text-add", "Hello", "--favorite", one.lower())["clip"]["text"]
        self.assertEqual((text["size"], text["color"]), (51, "#FF0000FF"))
        editor.do("style-save", one, "--rename=Other")
        self.assertNotIn("looks", editor.do("status"))

    def test_styles_are_plain_files_of_the_workspace(self):
        editor = self.editor
        editor.do("style-save", "Mine")
        wait_until(lambda: self.file.exists() and "Mine" in self.file.read_text(), "it is saved")
        content = self.on_disk()
        content["styles"][0]["fontSize"] = 9000
        content["styles"][0]["glow"] = 1
        content["styles"][1]["name"] = "By hand"
        self.file.write_text(json.dumps(content))
        wait_until(lambda: "By hand" in self.names(), "the outside edit is taken in")
        self.assertEqual(editor.do("favorites")["text"][0]["size"], 240)
        self.assertEqual(
            editor.do("status")["looks"],
            [
                "text-styles.json: styles[0].glow is not known here; the next save drops it.",
                "text-styles.json: fontSize of Classic is 8 to 240; 9000 was changed to 240.",
            ],
        )

        editor.do("style-save", "Mine", "--size=50")
        wait_until(lambda: "glow" not in self.file.read_text(), "the file is written again")
        wait_until(lambda: "looks" not in editor.do("status"), "the reports are gone")

        self.file.write_text("{ broken")
        wait_until(
            lambda: "is not valid" in str(editor.do("status").get("looks")),
            "the broken file is reported",
        )
        editor.do("style-save", "Meanwhile")
        editor.quit()
        wait_until(lambda: not editor.processes(), "the editor ends")
        self.assertEqual(self.file.read_text(), "{ broken")

    def test_a_new_workspace_starts_with_the_users_styles(self):
        editor = self.editor
        editor.do("style-save", "Mine")
        other = editor.home / "Other"
        editor.do("workspace", "--path", str(other))
        self.assertIn("Mine", self.names())
        editor.do("style-delete", "Mine")
        editor.do("workspace", "--path", str(editor.workspace))
        self.assertIn("Mine", self.names())
        self.assertNotIn("Mine", (other / "settings/text-styles.json").read_text())


if __name__ == "__main__":
    unittest.main()
