"""Invalid files, commands, requests and documents, and unusual file names."""

import contextlib
import copy
import json
import os
import pathlib
import shutil
import socket
import struct
import subprocess
import unittest
import zlib

from editor_process import EditorProcess, ffmpeg, video, wait_until
from editor_test_case import EditorTestCase


def text_named_mp4(file):
    file.write_text("This is not a video.\n" * 100)


def truncated_movie(file):
    whole = video().read_bytes()
    assert whole.find(b"moov") > whole.find(b"mdat"), "the index is not at the end"
    file.write_bytes(whole[: len(whole) // 2])


def movie_of_subtitles(file):
    words = file.with_suffix(".srt")
    words.write_text("1\n00:00:00,000 --> 00:00:01,000\nHello\n")
    ffmpeg("-i", str(words), "-c:s", "mov_text", str(file))


def hls_playlist(file):
    head = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:4\n"
    file.write_text(f"{head}#EXTINF:4.0,\n{video()}\n#EXT-X-ENDLIST\n")


def concat_list(file):
    file.write_text(f"ffconcat version 1.0\nfile '{video()}'\n")


def png_chunk(kind, data):
    return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))


def huge_png(file):
    header = struct.pack(">IIBBBBB", 100_000, 100_000, 8, 6, 0, 0, 0)
    chunks = ((b"IHDR", header), (b"IDAT", zlib.compress(bytes(1000))), (b"IEND", b""))
    file.write_bytes(b"\x89PNG\r\n\x1a\n" + b"".join(png_chunk(*chunk) for chunk in chunks))


class BadFiles(EditorTestCase):
    """Files that are not media."""

    NO_MEDIA = "is not a video, photo or audio file."
    FILES = (
        ("missing.mp4", lambda file: None, "does not exist."),
        ("folder.mp4", pathlib.Path.mkdir, "is a folder."),
        ("empty.mp4", pathlib.Path.touch, "is empty."),
        ("pipe.mp4", os.mkfifo, "pipe.mp4"),
        ("dangling.mp4", lambda file: file.symlink_to("nowhere"), "does not exist."),
        ("text.mp4", text_named_mp4, NO_MEDIA),
        ("truncated.mp4", truncated_movie, "is incomplete or damaged: its index is missing."),
        ("subtitles.mp4", movie_of_subtitles, NO_MEDIA),
        ("playlist.mp4", hls_playlist, NO_MEDIA),
        ("concat.mp4", concat_list, NO_MEDIA),
        ("huge.png", huge_png, "100000 × 100000 pixels"),
    )

    def test_files(self):
        folder = self.editor.home / "bad"
        folder.mkdir()
        for name, make, sentence in self.FILES:
            file = folder / name
            make(file)
            for command in (
                ("clip-add", "v1", "--path"),
                ("clip-add", "a1", "--path"),
                ("clip-replace", "v1:1", "--path"),
                ("media-import",),
                ("media-import", str(video())),
                ("probe",),
            ):
                with self.subTest(name, command=command), self.nothing_changes():
                    answer = self.editor.cli(*command, str(file), timeout=20)
                    self.assert_refused(answer, sentence)
                    self.assertIn(name, answer.err)


class BadCommands(EditorTestCase):
    """Commands with missing, unknown or invalid words."""

    COMMANDS = (
        (("clip-add", "v1", "--path", video, "--in", "9"), "in must be within the file (0–4 s)."),
        (("clip-add", "v1", "--path", video, "--out", "99"), "The source only runs 0–4 s."),
        (("clip-add", "v1", "--path", video, "--in", "2", "--out", "2"), "shorter than 0.1 s"),
        (("clip-add", "v1", "--path", video, "--in", "soon"), "in must be a number."),
        (("clip-add", "v1"), "Give an asset name or a path."),
        (("clip-add",), "clip-add needs --track. Run `cli help clip-add`."),
        (("clip-add", "v7", "--path", video), "v7 is out of range"),
        (("clip-add", "v1", "--path", ""), "path"),
        (("clip-split", "v1:9", "--at", "1"), "No clip v1:9"),
        (("clip-set", "v1:1", "--volume", "nan"), "volume must be a number."),
        (("clip-set", "v1:1", "--volume", "1e999"), "volume must be a number."),
        (("clip-set", "v1:1", "--volume", "9"), "volume is 0 to 1.5."),
        (("clip-set", "v1:1", "--volume", "1", "--volume", "0"), "volume must be a number."),
        (("placeholder-add", "x", "--at", "1e300"), "at"),
        (("frame", "1e300"), "at"),
        (("no-such-thing",), "Unknown command no-such-thing. Run `cli help` for the list."),
        (("",), "Unknown command"),
        (("timeline", "v1", "a1"), "Too many values for timeline. Run `cli help timeline`."),
        (("timeline", "--bogus", "3"), "timeline has no option --bogus."),
        (("export", "--path", "nowhere/x.mp4"), "There is no folder "),
        (("project-new", "a/b"), "“a/b” can't be a name"),
        (("project-new", "x" * 300), "can't be a name"),
        (("project-open", "Nothing"), "There is no project called Nothing in the workspace."),
        (("project-open", "nowhere/project.json"), "project.json"),
        (("redo",), "Nothing to redo."),
    )

    def test_commands(self):
        for words, sentence in self.COMMANDS:
            words = [str(video()) if word is video else word for word in words]
            with self.subTest(words), self.nothing_changes():
                self.assert_refused(self.editor.cli(*words), sentence)

    def test_an_image_that_cannot_be_written(self):
        (self.editor.home / "a file").touch()
        with self.nothing_changes():
            answer = self.editor.cli("frame", "1", "--out", "a file/x.png")
        self.assertEqual(answer.status, 1)
        self.assertRegex(answer.err, r"\ACould not write [^\n]+a file: [^\n]+\n\Z")


class BadRequests(EditorTestCase):
    """Clients that send malformed lines, or vanish."""

    LINES = (
        (b"Good day.", "Not a JSON request: Good day."),
        (b"", "Not a JSON request: "),
        (b"[1, 2]", "Not a JSON request: [1, 2]"),
        (b'{"tool": "undo"', "Not a JSON request: "),
        (b"\xff\xfe\x00", "Not a JSON request: "),
        (b"[" * 100_000, "Not a JSON request: "),
        (b'{"id": 1}', 'A request needs a "tool" (or "help").'),
        (b'{"tool": 5}', 'A request needs a "tool" (or "help").'),
        (b'{"tool": "timeline", "args": []}', 'The "args" of a request must be an object.'),
        (b'{"tool": "timeline", "args": {"track": {"a": []}}}', "track"),
        (b'{"tool": "timeline", "args": {"_": ["v1", "v1"]}}', "Too many values"),
        (b'{"tool": "placeholder_add", "args": {"name": "x", "at": 1e999}}', ""),
        (b'{"tool": "placeholder_add", "args": {"name": ["x"]}}', "name takes one value."),
    )

    def test_malformed_lines(self):
        with self.nothing_changes(), self.editor.connect() as client:
            for line, sentence in self.LINES:
                with self.subTest(line[:50]):
                    client.send(line + b"\n")
                    answer = client.read()
                    self.assertIs(answer["ok"], False)
                    self.assertIn(sentence, answer["text"])
                    self.assertIs(client.ask("timeline")["ok"], True)

    def test_a_line_of_100_megabytes(self):
        with self.nothing_changes(), self.editor.connect() as client:
            for _ in range(100):
                client.send(b"x" * 1_000_000)
            client.send(b"\n")
            answer = client.read()
            self.assertIs(answer["ok"], False)
            self.assertEqual(answer["text"], "A request line can't be longer than 64 MiB.")

    def test_clients_that_vanish(self):
        request = b'{"id": 1, "tool": "%s", "args": {%s}}\n'
        frame = request % (b"frame", b'"at": 1')
        export = request % (b"export", b'"path": "%s"' % os.fsencode(self.editor.home / "gone.mp4"))
        before = self.sockets()
        with self.nothing_changes():
            for sent in (b"", b'{"id": 1, "tool": "und', frame, 20 * frame, export):
                for end in (self.close, self.reset, self.half_close_and_reset):
                    client = self.editor.connect()
                    client.send(sent)
                    end(client)
            wait_until(lambda: self.sockets() <= before, "connections are closed")
        self.assertFalse((self.editor.home / "gone.mp4").exists(), "the export was cancelled")

    def sockets(self):
        """How many sockets the editor has open."""
        links = []
        for descriptor in pathlib.Path(f"/proc/{self.editor.pid()}/fd").iterdir():
            with contextlib.suppress(FileNotFoundError):
                links.append(os.readlink(descriptor))
        return sum(link.startswith("socket:") for link in links)

    @staticmethod
    def close(client):
        client.close()

    @staticmethod
    def reset(client):
        client.socket.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        client.close()

    @staticmethod
    def half_close_and_reset(client):
        client.socket.shutdown(socket.SHUT_WR)
        client.close()


class UnusualNames(unittest.TestCase):
    """File names that break careless quoting, parsing or decoding."""

    NAMES = (
        b"two words.mp4",
        b"it's a \"quote\".mp4",
        b"100% %20 %s.mp4",
        b"two\nlines.mp4",
        "🎬 Überraschung.mp4".encode(),
        b"-dash.mp4",
        b"--two-dashes=1.mp4",
        b"caf\xe9 \xff.mp4",
        b"#hash?query&a;b.mp4",
        b"back\\slash.mp4",
        b"~tilde.mp4",
        b"[1] {2} $HOME `x` *.mp4",
        b"file:x.mp4",
        b"true",
        b"007",
        b"v1:2",
    )

    def setUp(self):
        self.editor = EditorProcess()
        self.addCleanup(self.editor.close)

    def test_files(self):
        editor = self.editor
        editor.start_project()
        folder = os.fsencode(editor.home / "Footage")
        self.place_all(folder)
        self.check(folder)
        self.assertNotIn("problem", editor.do("status"))

    def test_all_in_a_folder_that_is_not_utf8(self):
        editor = self.editor
        editor.workspace = pathlib.Path(os.fsdecode(os.fsencode(editor.home) + b"/\xe9t\xe9 100%"))
        editor.workspace.mkdir()
        editor.do("workspace", "--path", os.fsencode(editor.workspace))
        editor.do("project-new", 'It\'s "Été" 🎬 #1', cwd=editor.workspace)
        folder = os.fsencode(editor.workspace)
        self.place_all(folder)
        self.check(folder)

    def place_all(self, folder):
        os.makedirs(folder, exist_ok=True)
        for number, name in enumerate(self.NAMES, 1):
            shutil.copy(video(), os.path.join(folder, name))
            clip = self.editor.do("clip-add", "v1", b"--path=" + name, "--out=1", cwd=folder)
            self.assertEqual(clip["clip"]["ref"], f"v1:{number}")

    def check(self, folder):
        """All files are listed and visible, and again after a restart."""
        shown = [name.decode(errors="replace") for name in self.NAMES]
        found = []
        for start in ("first", "second"):
            with self.subTest(start=start):
                clips = self.editor.tracks()[0]["clips"]
                self.assertEqual([clip["asset"] for clip in clips], shown)
                media = self.editor.do("media")
                self.assertEqual(sorted(each["name"] for each in media), sorted(shown))
                self.assertFalse([each for each in media if "missing" in each])
                found.append((clips, media, self.frames(folder)))
            if start == "first":
                self.editor.do("project-save")
                self.editor.kill()
        self.assertEqual(found[0], found[1])

    def frames(self, folder):
        """A frame of each clip, written to a file named after the clip's."""
        frames = []
        for number, name in enumerate(self.NAMES):
            out = b"--out=" + name + b".png"
            answer = self.editor.cli("frame", str(number + 0.5), out, cwd=folder)
            self.assertEqual(answer.status, 0, answer.err)
            self.assertNotIn('"missing"', answer.out)
            with open(os.path.join(folder, name + b".png"), "rb") as written:
                frames.append(written.read())
            self.assertTrue(self.shows_something(frames[-1]), name)
        return frames

    @staticmethod
    def shows_something(png):
        to_gray = ["ffmpeg", "-v", "error", "-i", "-", "-f", "rawvideo", "-pix_fmt", "gray", "-"]
        gray = subprocess.run(to_gray, input=png, capture_output=True, check=True, timeout=60)
        return max(gray.stdout) > 200 and min(gray.stdout) < 50


class BadDocuments(EditorTestCase):
    """project.json files with mistakes made by hand."""

    CLIP = ("project", "tracks", 0, "clips", 0)
    WRONG_VALUES = (
        (CLIP + ("sourceEnd",), "five", "project.tracks[0].clips[0].sourceEnd must be a number."),
        (CLIP + ("timelineStart",), None, "project.tracks[0].clips[0].timelineStart"),
        (CLIP + ("transform", "scale"), [], "project.tracks[0].clips[0].transform.scale"),
        (CLIP + ("transform",), 3, "project.tracks[0].clips[0].transform"),
        (CLIP + ("volume",), 1e300, "project.tracks[0].clips[0].volume"),
        (CLIP + ("id",), "one", "project.tracks[0].clips[0].id must be a UUID."),
        (CLIP, "clip", "project.tracks[0].clips[0] must be an object."),
        (("project", "tracks", 1, "clips"), {}, "project.tracks[1].clips must be an array."),
        (("project", "tracks", 0, "kind"), "smell", "project.tracks[0].kind"),
        (("project", "assets", 1, "url"), 3, "project.assets[1].url"),
        (("project", "assets"), {}, "project.assets must be an array"),
        (("project", "aspect"), 7, "project.aspect must be"),
        (("project",), None, "project must be an object."),
        (("assetRefs", 0, "path"), 4, "assetRefs[0].path must be a string."),
        (("version",), "five", "version must be a whole number."),
        (("version",), 999, "newer Framewright"),
    )
    # These would exhaust memory or never finish drawing.
    SENSELESS_TIMES = (
        (CLIP + ("sourceEnd",), 1e17, "project.tracks[0].clips[0].sourceEnd"),
        (CLIP + ("sourceStart",), -1e17, "project.tracks[0].clips[0].sourceStart"),
        (CLIP + ("sourceEnd",), -4, "project.tracks[0].clips[0].sourceEnd"),
        (CLIP + ("timelineStart",), 1e300, "project.tracks[0].clips[0].timelineStart"),
    )
    NO_DOCUMENTS = (
        (b"", "line 1"),
        (b"This is no project.", "line 1"),
        (b"[]", "must be an object."),
        (b"{}", "version is missing."),
        (b'{"version": 5,\n "project": ', "line 2"),
        (b"[" * 100_000, "not valid JSON"),
        (b'{"version": 5, "project": "\xff\xfe"}', "not valid JSON"),
        (b'{"version": NaN}', "line 1"),
    )

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.other = cls.document.parent.parent / "Other/project.json"
        cls.editor.do("project-duplicate", "--name", "Other")
        cls.good = json.loads(cls.other.read_text())

    def assert_not_opened(self, content, sentence):
        self.other.write_bytes(content)
        with self.nothing_changes():
            for project in ("Other", str(self.other)):
                answer = self.editor.cli("project-open", project)
                self.assert_refused(answer, sentence)
                self.assertIn("Other's project.json is not a valid project: ", answer.err)

    def test_wrong_values(self):
        for path, value, sentence in self.WRONG_VALUES:
            with self.subTest(path, value=value):
                self.assert_not_opened(self.with_value(path, value), sentence)

    def test_senseless_times(self):
        for path, value, sentence in self.SENSELESS_TIMES:
            with self.subTest(path, value=value):
                self.addCleanup(self.editor.cli, "project-open", "First", "--force")
                self.assert_not_opened(self.with_value(path, value), sentence)

    def test_no_documents(self):
        for content, sentence in self.NO_DOCUMENTS:
            with self.subTest(content[:50]):
                self.assert_not_opened(content, sentence)

    def with_value(self, path, value):
        document = copy.deepcopy(self.good)
        place = document
        for key in path[:-1]:
            place = place[key]
        place[path[-1]] = value
        return json.dumps(document).encode()


if __name__ == "__main__":
    unittest.main()
