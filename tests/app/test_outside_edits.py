"""Other programs write project.json while commands edit the project: nothing is lost."""

import json
import os
import pathlib
import random
import signal
import threading
import time
import unittest
import uuid

from editor_process import EditorProcess, placeholders_of, wait_until

OUTSIDE_EDITS = int(os.environ.get("FRAMEWRIGHT_OUTSIDE_EDITS", 20))
PLACEHOLDER = "00000000-0000-0000-0000-000000000001"  # The asset of all placeholders.
SEED = int(os.environ.get("FRAMEWRIGHT_SEED", random.randrange(1_000_000)))


def write_in_place(file: pathlib.Path, content: bytes):
    file.write_bytes(content)


def write_by_renaming(file: pathlib.Path, content: bytes):
    temporary = file.with_name("written-outside.tmp")
    temporary.write_bytes(content)
    temporary.rename(file)


def with_placeholder(document: dict, name: str):
    """Appends a placeholder to the audio track."""
    clips = document["project"]["tracks"][1]["clips"]
    last = clips[-1] if clips else None
    clips.append(
        {
            "id": str(uuid.uuid4()).upper(),
            "assetID": PLACEHOLDER,
            "timelineStart": last["timelineStart"] + last["sourceEnd"] if last else 0,
            "sourceStart": 0,
            "sourceEnd": 2,
            "placeholderName": name,
        }
    )


def with_brief(document: dict, name: str):
    """Adds a line to the brief."""
    project = document["project"]
    project["brief"] = "\n".join(filter(None, (project.get("brief"), name)))


def words_in(project: dict) -> set[str]:
    """Names of placeholders and lines of the brief: what identifies the edits."""
    return placeholders_of(project["tracks"]) | set((project.get("brief") or "").split("\n")) - {""}


class OutsideEditor(threading.Thread):
    """Reads the document, adds to it and writes it back: at random moments, and just before the
    editor replaces the file."""

    def __init__(self, document: pathlib.Path, editor: int, dice: random.Random):
        super().__init__()
        self.document = document
        self.editor = editor
        self.dice = dice
        self.written: dict[str, str] = {}  # How each edit was written.
        self.problem: Exception | None = None

    def run(self):
        try:
            for number in range(OUTSIDE_EDITS):
                if self.dice.random() < 0.5:
                    time.sleep(self.dice.uniform(0, 0.8))
                    self.edit(f"outside {number}", "at a random moment")
                else:
                    self.edit_during_a_save(f"outside {number}")
        except Exception as problem:
            self.problem = problem

    def edit_during_a_save(self, name):
        """Stops the editor after it wrote its new file, before it puts it in place."""
        end = time.monotonic() + 2
        while not self.is_saving() and time.monotonic() < end:
            pass
        os.kill(self.editor, signal.SIGSTOP)
        try:
            self.edit(name, "during a save" if self.is_saving() else "between saves")
        finally:
            os.kill(self.editor, signal.SIGCONT)

    def is_saving(self):
        return any(name.endswith(".framewright-new") for name in os.listdir(self.document.parent))

    def edit(self, name, moment):
        document = json.loads(self.document.read_bytes())
        self.dice.choice((with_placeholder, with_brief))(document, name)
        time.sleep(self.dice.choice((0, 0, 0.02)))  # By now it may be stale.
        write = self.dice.choice((write_in_place, write_by_renaming))
        write(self.document, json.dumps(document, indent=2).encode())
        self.written[name] = f"{name}, {write.__name__} {moment}"


class OutsideEdits(unittest.TestCase):
    def setUp(self):
        self.editor = EditorProcess()
        self.addCleanup(self.editor.close)
        self.document = self.editor.start_project()

    def on_disk(self):
        return words_in(json.loads(self.document.read_bytes())["project"])

    def in_memory(self):
        brief = self.editor.do("status")["project"].get("brief")
        return words_in({"tracks": self.editor.tracks(), "brief": brief})

    def settle(self):
        """Waits until memory and disk agree."""

        def is_settled():
            try:
                is_saved = self.editor.do("status")["project"]["saved"]
                return is_saved and self.in_memory() == self.on_disk()
            except ValueError:
                return False  # Read half-written.

        wait_until(is_settled, "memory and disk agree")

    def reachable(self):
        """All words in the project and in its undo steps."""
        words = self.in_memory()
        while self.editor.cli("undo").status == 0:
            words |= self.in_memory()
        return words

    def test_race(self):
        print(f"\nFRAMEWRIGHT_SEED={SEED}", flush=True)
        dice = random.Random(SEED)
        outside = OutsideEditor(self.document, self.editor.pid(), random.Random(SEED + 1))
        outside.start()
        commands = []
        while outside.is_alive():
            commands.append(f"command {len(commands)}")
            rename = ("clip-set", "v1:1", "--name", commands[-1])
            # A stale rewrite may have removed the clip.
            if dice.random() < 0.7 or self.editor.cli(*rename).status != 0:
                self.editor.do("placeholder-add", commands[-1], "--track", "v1")
            time.sleep(dice.choice((0, 0.05, 0.2)))
        outside.join()
        if outside.problem:
            raise outside.problem
        self.settle()
        reachable = self.reachable()
        lost = [word for word in [*outside.written, *commands] if word not in reachable]
        during = sum(how.endswith("during a save") for how in outside.written.values())
        print(
            f"{len(outside.written)} outside edits ({during} during a save), {len(commands)} "
            f"commands, lost: {len(lost)}",
            flush=True,
        )
        self.assertFalse([outside.written.get(word, word) for word in lost])

    def test_an_outside_edit_is_a_step(self):
        self.editor.do("placeholder-add", "ours")
        self.editor.do("project-save")
        for number, write in enumerate((write_in_place, write_by_renaming), 1):
            with self.subTest(write.__name__):
                self.edit_outside(f"theirs {number}", write)
                self.settle()
                self.assertEqual(self.editor.do("status")["undo"], "Edit on Disk")
        self.assertEqual(self.in_memory(), {"ours", "theirs 1", "theirs 2"})
        for left in ({"ours", "theirs 1"}, {"ours"}, set()):
            self.editor.do("undo")
            self.assertEqual(self.in_memory(), left)
        self.settle()
        for _ in range(3):
            self.editor.do("redo")
        self.settle()
        self.assertEqual(self.on_disk(), {"ours", "theirs 1", "theirs 2"})

    def test_a_document_that_is_broken_for_a_while(self):
        """Neither theirs nor ours is lost, and ours does not overwrite theirs."""
        self.editor.do("placeholder-add", "ours")
        self.editor.do("project-save")
        good = json.loads(self.document.read_bytes())
        with_placeholder(good, "theirs")
        content = json.dumps(good).encode()
        half = content[: len(content) // 2]
        self.document.write_bytes(half)
        wait_until(lambda: "problem" in self.editor.do("status"), "the problem is reported")
        self.assertEqual(self.in_memory(), {"ours"})

        self.editor.do("placeholder-add", "meanwhile")
        answer = self.editor.cli("project-save")
        self.assertEqual(answer.status, 1)
        self.assertIn("project.json", answer.err)
        self.assertEqual(self.document.read_bytes(), half)

        self.document.write_bytes(content)
        self.settle()
        self.assertEqual(self.in_memory(), {"ours", "theirs"})
        self.assertNotIn("problem", self.editor.do("status"))
        self.assertLessEqual({"ours", "theirs", "meanwhile"}, self.reachable())

    def test_a_document_that_is_broken_when_the_editor_is_killed(self):
        """Ours is in the recovery copy, and the broken document is left alone."""
        self.editor.do("placeholder-add", "ours")
        self.document.write_bytes(b'{"version": ')
        recovery = self.editor.support / "Recovery/recovery.fwp"
        wait_until(recovery.exists, "the recovery copy is written")
        self.editor.kill()
        status = self.editor.do("status")
        self.assertIn("project.json is not a valid project", status["problem"])
        self.assertEqual(status["recovery"]["project"], str(self.document))
        self.assertEqual(self.document.read_bytes(), b'{"version": ')
        self.editor.do("project-recover", "restore")
        self.assertEqual(self.in_memory(), {"ours"})

    def test_a_removed_document_is_written_again(self):
        self.editor.do("placeholder-add", "first")
        self.editor.do("project-save")
        self.document.unlink()
        self.editor.do("placeholder-add", "second")
        self.settle_when_there()
        self.assertEqual(self.on_disk(), {"first", "second"})

    def settle_when_there(self):
        wait_until(self.document.exists, "the document is written")
        self.settle()

    def edit_outside(self, name, write):
        document = json.loads(self.document.read_bytes())
        with_placeholder(document, name)
        write(self.document, json.dumps(document).encode())


if __name__ == "__main__":
    unittest.main()
