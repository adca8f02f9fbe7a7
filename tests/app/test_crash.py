"""Rounds of random edits that end with `kill -9`: only the most recent ones may be lost."""

import configparser
import json
import os
import random
import time
import unittest

from editor_process import CommandFailed, EditorProcess, video

ROUNDS = int(os.environ.get("FRAMEWRIGHT_ROUNDS", 12))
SEED = int(os.environ.get("FRAMEWRIGHT_SEED", random.randrange(1_000_000)))
# An edit acknowledged longer ago than this before the kill is on disk.
SECONDS_AT_RISK = float(os.environ.get("FRAMEWRIGHT_SECONDS_AT_RISK", 1.5))
ROUND_SECONDS = (0.3, 3)  # Some end before the first save, some after the second.


class RandomEdits:
    """Runs random commands; remembers which timelines were acknowledged, and when."""

    def __init__(self, editor: EditorProcess, dice: random.Random):
        self.editor = editor
        self.dice = dice
        self.count = 0
        self.refused = 0
        self.left: dict[str, list] = {}
        self.acknowledged: list[tuple[float, list]] = []

    def start_project(self):
        """Starts another project, which saves the one that is left."""
        if self.acknowledged:
            self.left[f"Project {len(self.left) + 1}"] = self.acknowledged[-1][1]
        self.editor.start_project(f"Project {len(self.left) + 1}")
        self.acknowledged.clear()
        self.remember()

    def remember(self):
        now = time.monotonic()
        with self.editor.connect() as connection:
            timeline = json.loads(connection.ask("timeline")["text"])
        self.acknowledged.append((now, timeline["tracks"]))

    def edit(self):
        words = self.dice.choice(self.KINDS)(self)
        answer = self.editor.cli(*words)
        if answer.status == 0:
            self.count += 1
            self.remember()
        elif answer.status == 1 and answer.err:
            self.refused += 1  # Such as a cut too near another.
        else:
            raise CommandFailed(f"{words}: {answer}")

    def unique(self) -> str:
        return f"#{self.count}.{self.dice.randrange(10**6)}"

    def track(self, kinds: str = "va") -> str:
        tracks = self.acknowledged[-1][1]
        return self.dice.choice([each["ref"] for each in tracks if each["ref"][0] in kinds])

    def clip(self) -> str:
        clips = [clip["ref"] for track in self.acknowledged[-1][1] for clip in track["clips"]]
        return self.dice.choice(clips or ["v1:1"])

    def seconds(self) -> str:
        return f"{self.dice.uniform(0, 12):.2f}"

    KINDS = (
        lambda self: ("placeholder-add", self.unique(), "--track", self.track()),
        lambda self: ("placeholder-add", self.unique(), "--at", self.seconds()),
        lambda self: ("clip-add", self.track(), "--path", str(video()), "--in", "1"),
        lambda self: ("clip-split", self.clip(), "--at", self.seconds()),
        lambda self: ("clip-set", self.clip(), "--volume", f"{self.dice.uniform(0, 1.5):.3f}"),
        lambda self: ("clip-move", self.clip(), "--to", self.seconds()),
        lambda self: ("clip-remove", self.clip()),
        lambda self: ("track-add", self.dice.choice(("video", "audio")), "--name", self.unique()),
        lambda self: ("track-set", self.track(), "--name", self.unique()),
        lambda self: ("undo",),
        lambda self: ("redo",),
    )


class Crash(unittest.TestCase):
    def test_nothing_older_than_a_moment_is_lost(self):
        dice = random.Random(SEED)
        print(f"\nFRAMEWRIGHT_SEED={SEED}", flush=True)
        self.editor = EditorProcess()
        self.addCleanup(self.editor.close)
        edits = RandomEdits(self.editor, dice)
        edits.start_project()
        young, old = [], []
        for number in range(1, ROUNDS + 1):
            if dice.random() < 0.25:
                edits.start_project()
            self.edit_for(dice.uniform(*ROUND_SECONDS), edits)
            in_flight = f"in flight {number}"
            killed = self.kill(dice, in_flight)
            self.check_files()
            self.check_status()
            kept = without(in_flight, self.editor.tracks())
            with self.subTest(round=number, seed=SEED):
                for age in self.ages_of_lost(kept, edits.acknowledged, killed):
                    (old if age > SECONDS_AT_RISK else young).append(age)
            # What was kept is on disk; a retry may have just made the interrupted command.
            edits.acknowledged = [(killed, kept)]
            edits.remember()
        for name, tracks in edits.left.items():
            self.editor.do("project-open", name)
            self.assertEqual(self.editor.tracks(), tracks, "not saved when it was left")
        print(
            f"{ROUNDS} rounds, {edits.count} edits, {edits.refused} refused, "
            f"lost: {len(old)} older than {SECONDS_AT_RISK} s, {len(young)} younger ones",
            flush=True,
        )
        self.assertFalse(old, "ages of lost edits, in seconds")

    @staticmethod
    def edit_for(seconds, edits):
        """Edits in bursts: pauses let a save happen, bursts postpone it."""
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            for _ in range(edits.dice.randrange(1, 12)):
                edits.edit()
            time.sleep(max(0, min(edits.dice.choice((0, 0.1, 1.1)), end - time.monotonic())))

    def kill(self, dice, in_flight):
        """Kills the editor, at times during a command. Gives the time of the kill."""
        if dice.random() < 0.5:
            self.editor.kill()
            return time.monotonic()
        client = self.editor.start_cli("placeholder-add", in_flight)
        time.sleep(dice.uniform(0, 0.01))
        killed = time.monotonic()
        self.editor.kill()
        answer = self.editor.answer(client)
        self.assertIn(answer.status, (0, 2), answer)
        return killed

    def check_files(self):
        """Every file is complete, whatever was being written."""
        documents = list(self.editor.workspace.glob("projects/*/project.json"))
        self.assertTrue(documents)
        for file in [self.editor.workspace / "workspace.json", *documents]:
            self.assertIsInstance(json.loads(file.read_bytes()), dict, file)
        settings = configparser.ConfigParser(interpolation=None)
        settings.read_string(self.editor.settings.read_text())
        self.assertEqual(settings["General"]["workspace.path"], str(self.editor.workspace))

    def check_status(self):
        status = self.editor.do("status")
        self.assertNotIn("problem", status)
        self.assertNotIn("recovery", status)

    def ages_of_lost(self, kept, acknowledged, killed):
        """Checks that an acknowledged timeline was kept. Gives the age of each edit after it."""
        found = [number for number, (_, tracks) in enumerate(acknowledged) if tracks == kept]
        self.assertTrue(found, "the kept timeline was never acknowledged")
        return [killed - when for when, _ in acknowledged[found[-1] + 1 :]]


def without(in_flight, tracks):
    """The tracks without the clip of the command that the kill interrupted."""
    for track in tracks:
        kept = [clip for clip in track["clips"] if clip.get("placeholder") != in_flight]
        if len(kept) < len(track["clips"]):
            track["clips"] = kept
            track["end"] = kept[-1]["end"] if kept else 0
    return tracks


if __name__ == "__main__":
    unittest.main()
