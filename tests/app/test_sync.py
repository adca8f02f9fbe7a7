"""Frames and audio stay in sync through cuts and an export, whatever the footage's rate."""

import os
import unittest

from editor_process import EditorProcess
from flash_and_beep import RATES, cut_and_export, due_moments, make_footage, measured

ALL = "FRAMEWRIGHT_ALL_RATES" in os.environ  # Also prints a table.
AUDIO_LIMIT = 0.005  # Seconds.


class Sync(unittest.TestCase):
    def test_flashes_and_beeps_are_where_they_are_due(self):
        editor = EditorProcess()
        self.addCleanup(editor.close)
        editor.start_project()
        for rate in RATES if ALL else ("30000/1001", "variable"):
            footage = make_footage(rate)
            due = due_moments(footage)
            self.assertGreater(len(due), 15)
            export, made = cut_and_export(editor, footage)
            moments = measured(export, made, due)
            flashes = [moment.flash - moment.due for moment in moments]
            beeps = [moment.beep - moment.due for moment in moments]
            if ALL:
                print(f"{rate:>10} -> {made['fps']} fps, {len(due)} flashes: frames "
                      f"{min(flashes) * 1000:+5.1f} to {max(flashes) * 1000:+5.1f} ms, audio "
                      f"{min(beeps) * 1000:+5.1f} to {max(beeps) * 1000:+5.1f} ms", flush=True)
            for moment, flash, beep in zip(moments, flashes, beeps):
                with self.subTest(rate, due=moment.due):
                    self.assertLessEqual(abs(flash), 1 / made["fps"] + 0.001)
                    self.assertLessEqual(abs(beep), AUDIO_LIMIT)


if __name__ == "__main__":
    unittest.main()
