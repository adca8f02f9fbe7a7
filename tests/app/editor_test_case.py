"""An editor that all tests of a class share, and how they check that a refusal changes nothing."""

import contextlib
import unittest

from editor_process import EditorProcess, video


class EditorTestCase(unittest.TestCase):
    """One editor for all tests, with a project "First" that holds a clip and a placeholder."""

    @classmethod
    def setUpClass(cls):
        cls.editor = EditorProcess()
        cls.addClassCleanup(cls.editor.close)
        cls.document = cls.editor.start_project()
        cls.editor.do("clip-add", "v1", "--path", str(video()))
        cls.editor.do("placeholder-add", "kept")
        cls.editor.do("project-save")

    @contextlib.contextmanager
    def nothing_changes(self):
        """The same process still runs, with the same project in memory and on disk."""
        before = self.state()
        yield
        self.assertEqual(self.state(), before)

    def state(self):
        editor = self.editor
        status = editor.do("status")
        self.assertNotIn("problem", status)
        return editor.pid(), editor.do("timeline"), status, self.document.read_bytes()

    def assert_refused(self, answer, sentence):
        self.assertEqual(answer.status, 1, answer)
        self.assertEqual(answer.out, "")
        self.assertRegex(answer.err, r"\A[^\n]+\.\n\Z", "not one sentence")
        self.assertIn(sentence, answer.err)
