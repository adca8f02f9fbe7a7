"""An editor in a temporary home, driven as users drive it: through its executable."""

import atexit
import contextlib
import functools
import json
import os
import pathlib
import select
import shutil
import signal
import socket
import struct
import subprocess
import tempfile
import time
import typing

EXECUTABLE = os.environ.get("FRAMEWRIGHT") or exit("Set FRAMEWRIGHT to the executable.")

PATIENCE = 60  # Seconds anything may take: an instrumented editor on a busy machine is slow.
INHERITED = ("PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS")
REPORTS = ("Sanitizer", "runtime error:", "Assertion", "terminate called")

Word = str | bytes


class Answer(typing.NamedTuple):
    """The result of a command. Bytes that are not UTF-8 become surrogates."""

    status: int
    out: str
    err: str


class CommandFailed(AssertionError):
    """A command that had to succeed failed."""


class Connection:
    """One client of the editor's socket, line by line."""

    def __init__(self, path: pathlib.Path):
        self.socket = socket.socket(socket.AF_UNIX)
        try:
            self.socket.connect(str(path))  # Waits if the queue is full; with a timeout it fails.
        except OSError:
            self.socket.close()
            raise
        self.socket.settimeout(PATIENCE)
        self._lines = self.socket.makefile("rb")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def send(self, data: bytes):
        self.socket.sendall(data)

    def read(self) -> dict | None:
        """The next answer; None when the editor has closed the connection."""
        line = self._lines.readline()
        return json.loads(line) if line else None

    def ask(self, tool: str, *values, **options) -> dict:
        request = {"id": 1, "cwd": "/", "tool": tool, "args": {"_": values, **options}}
        self.send(json.dumps(request).encode() + b"\n")
        return self.read()

    def peer(self) -> int:
        credentials = self.socket.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12)
        return struct.unpack("iii", credentials)[0]

    def close(self):
        self._lines.close()
        self.socket.close()


class EditorProcess:
    """A home and any editor that runs in it. `close` ends the editor and removes the home."""

    def __init__(self, executable: os.PathLike | str = EXECUTABLE):
        self.executable = executable
        # Directly under /tmp: the path of a socket must be short.
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="framewright-", dir="/tmp"))
        temporary = self.home / "tmp"
        temporary.mkdir()
        self.environment = {name: os.environ[name] for name in INHERITED if name in os.environ}
        self.environment |= {"HOME": str(self.home), "TMPDIR": str(temporary), "LANG": "C.UTF-8"}
        self.workspace = self.home / "Reels"
        self.support = self.home / ".local/share/Framewright"
        self.settings = self.home / ".config/Framewright/Framewright.ini"

    # Commands

    def start_cli(self, *words: Word, cwd: os.PathLike | bytes | None = None) -> subprocess.Popen:
        return subprocess.Popen(
            [self.executable, "cli", *words],
            cwd=cwd or self.home,
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )

    @staticmethod
    def answer(client: subprocess.Popen, timeout: float = PATIENCE) -> Answer:
        try:
            out, err = client.communicate(timeout=timeout)
        except subprocess.TimeoutExpired:
            client.kill()
            client.communicate()
            raise
        texts = (each.decode(errors="surrogateescape") for each in (out, err))
        return Answer(client.returncode, *texts)

    def cli(self, *words: Word, cwd=None, timeout: float = PATIENCE) -> Answer:
        return self.answer(self.start_cli(*words, cwd=cwd), timeout)

    def do(self, *words: Word, cwd=None):
        """Runs a command that must succeed. Gives its JSON, or its text when it is not JSON."""
        answer = self.cli(*words, cwd=cwd)
        if answer.status != 0 or answer.err:
            raise CommandFailed(f"{words}: {answer}")
        try:
            return json.loads(answer.out)
        except ValueError:
            return answer.out

    def start_project(self, name: str = "First") -> pathlib.Path:
        """Starts a project, in a workspace that is made if needed. Gives its project.json."""
        if not self.workspace.exists():
            self.do("workspace", "--path", str(self.workspace))
        return pathlib.Path(self.do("project-new", name, cwd=self.workspace)["path"])

    def tracks(self) -> list:
        return self.do("timeline")["tracks"]

    def placeholders(self) -> set[str]:
        return placeholders_of(self.tracks())

    # The socket

    def connect(self) -> Connection:
        return Connection(self.support / "cli.sock")

    # The process

    def pid(self) -> int:
        """The process that serves this home."""
        with self.connect() as connection:
            return connection.peer()

    def is_running(self) -> bool:
        try:
            return self.pid() > 0
        except OSError:
            return False

    def start_editor(self) -> subprocess.Popen:
        """Starts an editor without a command, as a desktop does."""
        return subprocess.Popen(
            [self.executable],
            env=self.environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
        )

    def end_by(self, number: signal.Signals):
        """Sends the editor a signal and waits for its end."""
        with watched(self.pid()) as process:
            signal.pidfd_send_signal(process, number)
            if not has_ended(process, PATIENCE):
                raise AssertionError(f"The editor does not end on {number.name}.")

    def kill(self):
        self.end_by(signal.SIGKILL)

    def quit(self):
        """Ends the editor and waits: until it has ended, it may accept the next command."""
        with watched(self.pid()) as process:
            self.do("app-quit")
            if not has_ended(process, PATIENCE):
                raise AssertionError("The editor does not end on app-quit.")

    def processes(self) -> list[int]:
        """All processes that run in this home, also an editor without a socket."""
        mark = b"\0HOME=%s\0" % os.fsencode(self.home)
        found = []
        for entry in pathlib.Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                if mark in b"\0" + (entry / "environ").read_bytes():
                    found.append(int(entry.name))
        return found

    def close(self):
        """Ends all processes here and removes the home. Fails if an editor logged a fault."""
        for number in (signal.SIGTERM, signal.SIGKILL):
            for pid in self.processes():
                with contextlib.suppress(ProcessLookupError), watched(pid) as process:
                    signal.pidfd_send_signal(process, number)
                    has_ended(process)
        log = self.support / "editor.log"
        said = log.read_text(errors="replace") if log.exists() else ""
        shutil.rmtree(self.home, ignore_errors=True)
        if any(report in said for report in REPORTS):
            raise AssertionError(f"The editor's log:\n{said}")


@contextlib.contextmanager
def watched(pid: int):
    """A handle for signalling and awaiting a process."""
    process = os.pidfd_open(pid)
    try:
        yield process
    finally:
        os.close(process)


def has_ended(process: int, patience: float = 20) -> bool:
    return bool(select.select([process], [], [], patience)[0])


def wait_until(condition: typing.Callable[[], bool], what: str):
    """Polls for a state that is not announced."""
    deadline = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(f"Still not so after {PATIENCE} s: {what}.")
        time.sleep(0.02)


def placeholders_of(tracks: list) -> set[str]:
    """The names of all placeholders, in tracks of `timeline` or of a project.json."""
    keys = ("placeholder", "placeholderName")
    clips = [clip for track in tracks for clip in track["clips"]]
    return {clip[key] for clip in clips for key in keys if key in clip}


def json_and_notes(text: str) -> tuple[typing.Any, str]:
    """The JSON of a reply, and the lines for people after it. Those before it are skipped."""
    text = text[text.index("{") :]
    data, end = json.JSONDecoder().raw_decode(text)
    return data, text[end:].strip()


# Media, made once per run


@functools.cache
def media_folder() -> pathlib.Path:
    folder = pathlib.Path(tempfile.mkdtemp(prefix="framewright-media-"))
    atexit.register(shutil.rmtree, folder, ignore_errors=True)
    return folder


def ffmpeg(*words: str) -> None:
    subprocess.run(
        ["ffmpeg", "-v", "error", "-nostdin", "-y", *words], check=True, timeout=PATIENCE
    )


def decoded(file: pathlib.Path, *words: str) -> bytes:
    """What ffmpeg writes to its standard output: pixels or samples of a file."""
    command = ["ffmpeg", "-v", "error", "-nostdin", "-i", str(file), *words, "-"]
    return subprocess.run(command, check=True, capture_output=True, timeout=PATIENCE).stdout


@functools.cache
def video() -> pathlib.Path:
    """Four seconds of 320x240 with a tone."""
    file = media_folder() / "video.mp4"
    frames = ("-f", "lavfi", "-i", "testsrc=size=320x240:rate=25:duration=4")
    tone = ("-f", "lavfi", "-i", "sine=frequency=440:duration=4")
    codecs = ("-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", "-c:a", "aac")
    ffmpeg(*frames, *tone, *codecs, str(file))
    return file
