"""Every file of the shared media through the real command line: probed, placed, drawn at three times
and exported, or refused in one sentence. Pictures are compared with what ffmpeg makes of the same
moment at the same size, sound with what ffmpeg decodes. Prints a table.

    prove_media.py [--only PART] [--sheets FOLDER]

The sheets show our picture, ffmpeg's and their difference, eight times enlarged, side by side."""

import argparse
import array
import json
import math
import operator
import os
import pathlib
import subprocess
import sys

from editor_process import EditorProcess

MEDIA = pathlib.Path(__file__).parent.parent.parent / "shared/media"
FOLDERS = ("video", "audio", "photo", "broken")
LIMIT = 2.0  # Mean difference of 8-bit luma.
EXPORT_LIMIT = 3.0  # The encoder loses some more.
TOLERANCE = 0.0005

CANVASES = {"9:16": (540, 960), "16:9": (960, 540), "1:1": (720, 720)}
SCALER = "flags=bicubic+accurate_rnd+full_chroma_int+full_chroma_inp:param0=0:param1=0.5"


def output_of(*command, **options) -> bytes:
    done = subprocess.run(command, capture_output=True, timeout=120, **options)
    if done.returncode != 0:
        raise RuntimeError(f"{' '.join(map(str, command))}: {done.stderr.decode()}")
    return done.stdout


def ffprobe(file, *entries) -> dict:
    return json.loads(output_of("ffprobe", "-v", "error", "-of", "json", *entries, str(file)))


class Reference:
    """ffmpeg's rendering of a file."""

    def __init__(self, file: pathlib.Path, facts: dict):
        self.file = file
        self.facts = facts
        self.has_none = file.suffix == ".heic"  # ffmpeg cannot read it.
        if self.has_none:
            return
        found = ffprobe(file, "-show_streams", "-show_entries", "format=start_time,format_name")
        self.video = next((s for s in found["streams"] if s["codec_type"] == "video"), {})
        keeps_zero = any(n in found["format"]["format_name"] for n in ("mov", "matroska"))
        self.zero = 0.0 if keeps_zero else float(found["format"].get("start_time", 0))
        if facts["kind"] == "audio":  # What an encoder put in front is cut away, not played later.
            self.zero = float(found["format"].get("start_time", 0))
        self.decoder = []
        if self.video.get("tags", {}).get("alpha_mode") == "1":
            self.decoder = ["-c:v", "libvpx-" + self.video["codec_name"]]
        self.stamps = []
        if facts["kind"] == "video":
            frames = ffprobe(file, "-select_streams", "v:0", "-show_entries",
                             "frame=best_effort_timestamp")["frames"]
            self.stamps = sorted(int(f["best_effort_timestamp"]) for f in frames)

    def is_hdr(self) -> bool:
        return not self.has_none and self.video.get("color_transfer") in ("smpte2084", "arib-std-b67")

    def stamp_at(self, seconds: float) -> int:
        """That of the last picture at or before, or of the first one."""
        above, below = map(int, self.video["time_base"].split("/"))
        shown = [s for s in self.stamps if s * above / below <= self.zero + seconds + TOLERANCE]
        return shown[-1] if shown else self.stamps[0]

    def matrix(self) -> str:
        said = self.video.get("color_space", "unknown")
        names = {"bt709": "bt709", "bt470bg": "bt601", "smpte170m": "bt601", "bt2020nc": "bt2020"}
        width, height = self.video["width"], self.video["height"]
        is_hd = self.stamps and (min(width, height) >= 720 or max(width, height) >= 1280)
        return names.get(said, "bt709" if is_hd else "bt601")

    def to_rgb(self, width: int, height: int) -> str:
        format_ = self.video.get("pix_fmt", "")
        color = ""
        if format_.startswith("yuv"):
            is_full = self.video.get("color_range") == "pc" or format_.startswith("yuvj")
            color = f":in_color_matrix={self.matrix()}:in_range={'full' if is_full else 'limited'}"
        if self.is_hdr():  # To be looked at only: any curve is a matter of taste.
            return (f"zscale=w={width}:h={height},zscale=t=linear:npl=203,format=gbrpf32le,"
                    "zscale=p=bt709,tonemap=mobius:desat=0,zscale=t=bt709:m=gbr:r=full,format=rgba")
        return f"scale={width}:{height}:{SCALER}{color},format=rgba"

    def picture(self, seconds: float, canvas: tuple) -> bytes:
        width, height = canvas
        left, top, right, bottom = fitted((self.facts["width"], self.facts["height"]), canvas)
        picked = f"select='eq(pts,{self.stamp_at(seconds)})',setpts=0," if self.stamps else ""
        graph = (f"[0:v]{picked}"
                 f"{self.to_rgb(right - left, bottom - top)}[picture];"
                 f"color=black:s={width}x{height}:d=1,format=rgba[black];"
                 f"[black][picture]overlay={left}:{top}:format=gbrp:eof_action=repeat,format=rgb24")
        return output_of("ffmpeg", "-v", "error", "-nostdin", "-copyts", *self.decoder, "-i",
                         str(self.file), "-filter_complex", graph, "-frames:v", "1", "-f",
                         "rawvideo", "-")

    def sound(self) -> array.array:
        return samples_of(self.file, self.zero, self.facts["channels"])


def fitted(size: tuple, canvas: tuple) -> tuple:
    """The whole pixels a picture covers: left, top, right, bottom."""
    scale = min(canvas[0] / size[0], canvas[1] / size[1])
    edges = []
    for side, room in zip(size, canvas):
        begin = room / 2 - side * scale / 2
        edges.append((math.floor(begin + 0.5), math.floor(begin + side * scale + 0.5)))
    return edges[0][0], edges[1][0], edges[0][1], edges[1][1]


def rgb_of(file: pathlib.Path) -> bytes:
    return output_of("ffmpeg", "-v", "error", "-nostdin", "-i", str(file), "-f", "rawvideo",
                     "-pix_fmt", "rgb24", "-")


def luma_difference(one: bytes, other: bytes) -> float:
    if len(one) != len(other):
        raise RuntimeError(f"sizes differ: {len(one)} and {len(other)} bytes")
    luma = []
    for rgb in (one, other):
        planes = (rgb[n::3] for n in range(3))
        luma.append([54 * r + 183 * g + 19 * b for r, g, b in zip(*planes)])
    return sum(map(abs, map(operator.sub, *luma))) / 256 / len(luma[0])


def samples_of(file: pathlib.Path, zero: float = 0, channels: int = 2) -> array.array:
    """Mono at 8 kHz from the file's time 0 on."""
    mixed = "" if channels == 1 else "aformat=channel_layouts=stereo,pan=mono|c0=0.5*c0+0.5*c1,"
    sound = array.array("f")
    sound.frombytes(output_of(
        "ffmpeg", "-v", "error", "-nostdin", "-copyts", "-i", str(file), "-map", "0:a:0", "-af",
        f"asetpts=PTS-{zero}/TB,aresample=48000:async=1:min_hard_comp=0.01:first_pts=0,"
        f"{mixed}aresample=8000", "-f", "f32le",
        "-"))
    return sound


def level(sound) -> float:
    return math.sqrt(sum(map(operator.mul, sound, sound)) / max(1, len(sound)))


def compared_sound(ours: array.array, theirs: array.array) -> str:
    """How much later ours is, and how much louder."""
    length = min(len(ours), len(theirs))
    if level(theirs[:length]) < 1e-5:
        return "silent" if level(ours[:length]) < 1e-4 else "NOT SILENT"
    reach = 320  # 40 ms
    size = min(8000, length - 2 * reach)
    starts = range(reach, max(reach + 1, length - size - reach), max(1, size // 2))
    start = max(starts, key=lambda s: level(theirs[s : s + size]))
    piece = theirs[start : start + size]
    match = {lag: sum(map(operator.mul, piece, ours[start + lag : start + lag + size]))
             for lag in range(-reach, reach + 1)}
    lag = max(match, key=match.get)
    gain = 20 * math.log10(level(ours[:length]) / level(theirs[:length]))
    wrong = abs(lag) > 16 or abs(gain) > 0.5
    return f"{lag / 8:+.1f} ms {gain:+.1f} dB" + (" WRONG" if wrong else "")


def sheet(path: pathlib.Path, canvas: tuple, ours: bytes, theirs: bytes):
    size = f"{canvas[0]}x{canvas[1]}"
    raw = ("-f", "rawvideo", "-pix_fmt", "rgb24", "-s", size)
    reader, writer = os.pipe()
    graph = ("[0:v]format=gbrp,split[a][c];[1:v]format=gbrp,split[b][d];"
             "[c][d]blend=all_mode=difference,lutrgb=r=val*8:g=val*8:b=val*8[e];[a][b][e]hstack=3")
    other = path.with_suffix(".raw")
    other.write_bytes(theirs)
    os.close(reader), os.close(writer)
    output_of("ffmpeg", "-v", "error", "-y", *raw, "-i", "-", *raw, "-i", str(other),
              "-filter_complex", graph, "-frames:v", "1", str(path), input=ours)
    other.unlink()


class Proof:
    def __init__(self, editor: EditorProcess, sheets: pathlib.Path | None):
        self.editor = editor
        self.sheets = sheets
        self.is_good = True

    def limited(self, value: float, limit: float) -> str:
        if value <= limit:
            return f"{value:.2f}"
        self.is_good = False
        return f"{value:.2f} WRONG"

    def prove(self, file: pathlib.Path) -> str:
        editor = self.editor
        answer = editor.cli("probe", str(file))
        if answer.status != 0:
            return "refused: " + answer.err.strip()
        facts = json.loads(answer.out)
        canvas = "16:9" if facts.get("width", 0) > facts.get("height", 1) else "9:16"
        if facts.get("width") == facts.get("height"):
            canvas = "1:1" if "width" in facts else canvas
        editor.do("project-new", file.stem, "--canvas", canvas)
        track = "a1" if facts["kind"] == "audio" else "v1"
        added = editor.cli("clip-add", track, "--path", str(file))
        if added.status != 0:
            return "not placed: " + added.err.strip()
        if track == "a1":
            length = str(min(facts["duration"], 12))
            editor.do("clip-trim", "a1:1", "--end", length)
            editor.do("clip-add", "v1", "--path", str(MEDIA / "photo/flowers_1080p.jpg"),
                      "--duration", length)
        return self.results(file, facts, canvas)

    def results(self, file, facts, canvas) -> str:
        reference = Reference(file, facts)
        cells = [f"{facts['kind']:5} {facts.get('width', 0):4}x{facts.get('height', 0):<4} "
                 f"{facts['duration']:6.2f} s"]
        if facts["kind"] != "audio":
            cells.append("frames " + " ".join(self.frames(file, facts, reference, CANVASES[canvas])))
        cells.append(self.export(file, facts, reference, CANVASES[canvas]))
        return "  ".join(cells)

    def frames(self, file, facts, reference, canvas):
        length = facts["duration"] or 3
        for part in (0.1, 0.5, 0.9):
            time = round(part * length, 3)
            png = self.editor.home / "frame.png"
            answer = self.editor.cli("frame", str(time), "--out", str(png), "--width", str(canvas[0]))
            if answer.status != 0:
                yield f"[{answer.err.strip()}]"
                continue
            yield self.compared(f"{file.stem}-{part}", rgb_of(png), reference, time, canvas, LIMIT)

    def compared(self, name, ours, reference, time, canvas, limit) -> str:
        if reference.has_none:
            if self.sheets:
                sheet(self.sheets / f"{name}.png", canvas, ours, ours)
            return "(no reference)"
        theirs = reference.picture(time, canvas)
        if self.sheets:
            sheet(self.sheets / f"{name}.png", canvas, ours, theirs)
        difference = luma_difference(ours, theirs)
        return f"({difference:.1f})" if reference.is_hdr() else self.limited(difference, limit)

    def export(self, file, facts, reference, canvas) -> str:
        out = self.editor.home / "out.mp4"
        answer = self.editor.cli("export", "--path", str(out), "--height", str(canvas[1]),
                                 timeout=300)
        if answer.status != 0:
            return "not exported: " + answer.err.strip()
        made = json.loads(answer.out)
        said = subprocess.run(["ffmpeg", "-v", "error", "-i", str(out), "-f", "null", "-"],
                              capture_output=True)
        cell = f"export {made['frames']:4} frames"
        if said.stderr or said.returncode:
            self.is_good = False
            cell += " DOES NOT DECODE"
        if facts["kind"] != "audio" and not made.get("hdr") and not reference.is_hdr():
            middle = made["frames"] // 2
            time = middle / made["fps"]
            ours = output_of("ffmpeg", "-v", "error", "-i", str(out), "-vf",
                             f"select='eq(n,{middle})',scale=in_color_matrix=bt709:{SCALER}",
                             "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "rgb24", "-")
            cell += " " + self.compared(f"{file.stem}-export", ours, reference, time, canvas,
                                        EXPORT_LIMIT)
        if facts["sound"]:
            heard = compared_sound(samples_of(out), reference.sound())
            self.is_good = self.is_good and heard.upper() != heard
            cell += "  sound " + heard
        return cell


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--only", default="")
    parser.add_argument("--sheets", type=pathlib.Path)
    options = parser.parse_args()
    if options.sheets:
        options.sheets.mkdir(parents=True, exist_ok=True)
    if not MEDIA.is_dir():
        sys.exit(f"There is no media in {MEDIA}.")

    editor = EditorProcess()
    try:
        editor.start_project()
        proof = Proof(editor, options.sheets)
        for folder in FOLDERS:
            for file in sorted((MEDIA / folder).iterdir()):
                if options.only in file.name and file.suffix not in (".txt", ".vtt"):
                    print(f"{file.name:44} {proof.prove(file)}", flush=True)
    finally:
        editor.close()
    if not proof.is_good:
        sys.exit("Something is beyond its limit.")


if __name__ == "__main__":
    main()
