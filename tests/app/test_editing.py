"""Editing commands through the real socket: their effect on the timeline, and its undo and redo."""

import json
import pathlib
import unittest

from editor_process import EditorProcess, ffmpeg, json_and_notes, media_folder, video


class Editing(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.editor = EditorProcess()
        cls.addClassCleanup(cls.editor.close)
        cls.editor.start_project("Editing")
        cls.clip = str(video())

    def setUp(self):
        self.editor.do("project-new", self.id().rpartition("_")[2], cwd=self.editor.workspace)
        self.do = self.editor.do

    def placeholders(self, track="v1"):
        clips = self.do("timeline", "--track", track)["clips"]
        return [clip.get("placeholder") for clip in clips]

    def changes(self, *words):
        """A command's reply. Checks that it makes one step, which undo and redo."""
        before = self.do("timeline")
        answer, _ = json_and_notes(self.editor.cli(*words).out)
        after = self.do("timeline")
        self.assertNotEqual(before["tracks"], after["tracks"], words)
        self.do("undo")
        self.assertEqual(self.do("timeline")["tracks"], before["tracks"], f"undo of {words}")
        self.do("redo")
        self.assertEqual(self.do("timeline")["tracks"], after["tracks"], f"redo of {words}")
        return answer

    def test_slip(self):
        self.do("clip-add", "v1", "--path", self.clip, "--in", "1", "--out", "3")
        for words, start in (("--by", "0.5"), 1.5), (("--by", "-1"), 0.5), (("--to", "2"), 2):
            clip = self.changes("clip-slip", "v1:1", *words)["clip"]
            self.assertEqual((clip["in"], clip["out"]), (start, start + 2), words)
            self.assertEqual((clip["start"], clip["end"]), (0, 2), "its place changed")
        refused = self.editor.cli("clip-slip", "v1:1", "--by", "-4")
        self.assertEqual(refused.status, 1)
        self.assertIn("The source only runs 0–", refused.err)

    def test_copying(self):
        self.do("placeholder-add", "one", "--duration", "2")
        self.do("placeholder-add", "two", "--duration", "1")
        self.assertEqual(self.editor.cli("clip-paste").err.strip(), "Nothing was copied yet.")
        self.assertEqual(self.do("clip-copy", "v1:1")["copied"]["placeholder"], "one")
        self.do("clip-remove", "v1:1")
        self.do("seek", "5")
        pasted = self.changes("clip-paste")["clip"]
        self.assertEqual((pasted["ref"], pasted["placeholder"]), ("v1:2", "one"))
        self.assertEqual(self.placeholders(), ["two", "one"])

    def test_detaching(self):
        self.do("clip-add", "v1", "--path", self.clip, "--in", "1", "--out", "3")
        self.do("clip-set", "v1:1", "--volume", "0.5")
        answer = self.changes("clip-detach-audio", "v1:1")
        sound_clip = answer["sound"]
        self.assertEqual(answer["clip"]["volume"], 0)
        self.assertEqual(sound_clip["ref"], "a1:1")
        self.assertEqual([sound_clip[key] for key in ("start", "end", "in", "out", "volume")],
                         [0, 2, 1, 3, 0.5])
        self.assertEqual(self.editor.cli("clip-detach-audio", "v1:1").err.strip(),
                         "The clip is silent already.")

    def test_tracks(self):
        for name in ("Lower", "Upper"):
            self.do("track-add", "text", "--name", name)
        order = lambda: [track["name"] for track in self.do("timeline")["tracks"]]
        self.assertEqual(order(), ["Upper", "Lower", "Video 1", "Audio 1"])
        self.changes("track-move", "Upper", "--by", "1")
        self.assertEqual(order()[:2], ["Lower", "Upper"])
        self.changes("track-move", "Upper", "--by", "-1")
        self.assertEqual(order()[:2], ["Upper", "Lower"])
        self.assertEqual(self.editor.cli("track-move", "Upper", "--by", "-1").err.strip(),
                         "Upper is the topmost track already.")

    def test_a_file_without_sound_is_refused_on_an_audio_track(self):
        silent = str(media_folder() / "silent.mp4")
        ffmpeg("-i", self.clip, "-an", "-c:v", "copy", silent)
        self.do("placeholder-add", "gap", "--track", "a1")
        for words in (("clip-add", "a1"), ("clip-replace", "a1:1")):
            refused = self.editor.cli(*words, "--path", silent)
            self.assertEqual((refused.status, refused.err.strip()),
                             (1, "silent.mp4 has no sound; it cannot go on an audio track."))

    def test_renaming(self):
        editor = self.editor
        document = pathlib.Path(self.do("project-new", "Before", cwd=editor.workspace)["path"])
        self.do("placeholder-add", "kept")
        renamed = self.do("project-rename", "After", cwd=editor.workspace)
        self.assertEqual(renamed["project"], "After")
        self.assertFalse(document.parent.exists())
        self.do("placeholder-add", "later")
        self.do("project-save")
        saved = json.loads(pathlib.Path(renamed["path"]).read_text())["project"]
        self.assertEqual(len(saved["tracks"][0]["clips"]), 2, "not saved in its new place")

    def test_deleting(self):
        editor = self.editor
        document = pathlib.Path(self.do("project-new", "Doomed", cwd=editor.workspace)["path"])
        deleted = self.do("project-delete", "Doomed", cwd=editor.workspace)
        self.assertEqual(deleted["deleted"], "Doomed")
        self.assertFalse(document.parent.exists())
        trashed = editor.home / ".local/share/Trash/files/Doomed/project.json"
        self.assertTrue(trashed.exists(), "not in the trash")
        self.assertIn("No project is open.", editor.cli("timeline").err)


if __name__ == "__main__":
    unittest.main()
