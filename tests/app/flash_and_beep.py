"""Footage with simultaneous flashes and beeps, cut by the editor, and how far apart they end up."""

import array
import fractions
import math
import pathlib
import typing

from editor_process import EditorProcess, decoded, ffmpeg, media_folder

SECONDS = 16
SIDE = 64
FLASH = 0.05  # Seconds, at least.
RATES = ("24000/1001", "25", "30000/1001", "30", "60000/1001", "variable")

# Each of ten clips' start in the footage and length: never on a frame of any rate.
CUTS = tuple((1.0137 * n + 0.3071 * (n % 3), 1.1913 - 0.0417 * (n % 4)) for n in range(10))


class Footage(typing.NamedTuple):
    file: pathlib.Path
    flashes: list[float]  # When each begins; a beep begins with it.


class Moment(typing.NamedTuple):
    """When a flash is due on the timeline, and when the export has flash and beep."""

    due: float
    flash: float
    beep: float


def frame_times(rate: str) -> list[fractions.Fraction]:
    if rate != "variable":
        return [n / fractions.Fraction(rate) for n in range(math.ceil(SECONDS * eval(rate)))]
    # Like a webcam: some of 60 possible frames per second, without a pattern.
    kept, state = [], 7
    for n in range(SECONDS * 60):
        state = state * 1103515245 + 12345 & 0x7FFFFFFF
        if n == 0 or state >> 16 & 3 == 0 or n % 15 in (5, 8):
            kept.append(fractions.Fraction(n, 60))
    return kept


def make_footage(rate: str) -> Footage:
    """Footage with a flash on the first frame 0.3 s into each half second."""
    times = frame_times(rate)
    flashes = [next(t for t in times if t >= (n + 0.6) / 2) for n in range(SECONDS * 2 - 1)]
    name = rate.replace("/", "-")
    folder = media_folder()
    raw, wav = folder / f"{name}.gray", folder / f"{name}.f32"
    is_lit = [any(f <= t < f + fractions.Fraction(FLASH) for f in flashes) for t in times]
    raw.write_bytes(b"".join((b"\xff" if lit else b"\0") * SIDE * SIDE for lit in is_lit))
    sound = array.array("f", bytes(4 * SECONDS * 48000))
    for flash in flashes:
        for n in range(2400):
            sound[round(flash * 48000) + n] = 0.7 * math.sin(2 * math.pi * 3000 * (n + 4) / 48000)
    wav.write_bytes(sound.tobytes())

    stamps = ["-r", rate] if rate != "variable" else ["-r", "60"]
    timing = []
    if rate == "variable":  # Looks up the n-th frame's time by bisection.
        timing = ["-vf", f"setpts='({choice([round(t * 60) for t in times])})/60/TB'",
                  "-vsync", "vfr", "-video_track_timescale", "60000"]
    file = folder / f"{name}.mp4"
    ffmpeg("-f", "rawvideo", "-pix_fmt", "gray", "-s", f"{SIDE}x{SIDE}", *stamps, "-i", str(raw),
           "-f", "f32le", "-ar", "48000", "-i", str(wav), *timing, "-c:v", "libx264", "-preset",
           "ultrafast", "-bf", "2", "-g", "30", "-pix_fmt", "yuv420p", "-c:a", "aac", "-b:a",
           "192k", str(file))
    return Footage(file, [float(f) for f in flashes])


def choice(values: list[int], first: int = 0) -> str:
    """An expression for values[N], shallow enough for ffmpeg."""
    if len(values) == 1:
        return str(values[0])
    half = len(values) // 2
    return (f"if(lt(N,{first + half}),{choice(values[:half], first)},"
            f"{choice(values[half:], first + half)})")


def cut_and_export(editor: EditorProcess, footage: Footage) -> tuple[pathlib.Path, dict]:
    editor.do("project-new", "Sync")
    for begin, length in CUTS:
        editor.do("clip-add", "v1", "--path", str(footage.file), "--in", f"{begin:.4f}",
                  "--duration", f"{length:.4f}")
    out = editor.home / "sync.mp4"
    return out, editor.do("export", "--path", str(out), "--height", "480")


def due_moments(footage: Footage) -> list[float]:
    """When flashes begin on the timeline, except those that a cut makes too short."""
    due, start = [], 0.0
    for begin, length in CUTS:
        due += [start + flash - begin for flash in footage.flashes
                if begin + 0.05 <= flash <= begin + length - 2 * FLASH]
        start += length
    return due


def measured(export: pathlib.Path, made: dict, due: list[float]) -> list[Moment]:
    """The first lit frame and the first loud sample around each flash that is due. Further before
    it there may be the rest of another clip's flash."""
    lit = [level > 100 for level in decoded(export, "-map", "0:v", "-vf",
                                            "crop=iw:iw/2,scale=1:1:flags=area", "-pix_fmt",
                                            "gray", "-f", "rawvideo")]
    assert len(lit) == made["frames"]
    sound = array.array("f")
    sound.frombytes(decoded(export, "-map", "0:a", "-ac", "1", "-ar", "48000", "-f", "f32le"))
    found = []
    for time in due:
        frames = range(max(0, math.ceil((time - 0.05) * made["fps"])),
                       min(len(lit), round((time + 0.12) * made["fps"])))
        samples = range(max(0, round((time - 0.05) * 48000)), round((time + 0.12) * 48000))
        flash = next((n / made["fps"] for n in frames if lit[n]), math.inf)
        beep = next((n / 48000 for n in samples if abs(sound[n]) > 0.25), math.inf)
        found.append(Moment(time, flash, beep))
    return found
