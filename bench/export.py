"""Exports beside reference commands, in one run: one clip that goes through untouched and the standard
piece; or, when clips are given, a piece cut from them.

Each piece is built through the command line. Beside it: decoding the used ranges and nothing else, encoding
the finished frames and nothing else, ffmpeg's filter graphs, and MLT where `melt` is installed. All code with
the same settings. Then the same pictures drawn and thrown away: what compositing costs beside decoding."""

import os
import shutil
import subprocess
import sys
import tempfile

import standard_piece
import untouched_clip
from export_settings import FFMPEG, SOUND, coded_with, encoder
from measured_editor import FRAMEWRIGHT, MeasuredEditor
from measuring import measured, measured_export, medians, told
from phone_piece import PhonePiece

WIDTH, HEIGHT, FPS = 1080, 1920, 30
COMPOSITE = os.path.join(os.path.dirname(FRAMEWRIGHT), "bench_composite")


def references(piece, folder, is_hdr):
    """Names and commands of what is measured beside the export."""
    coder = encoder(WIDTH, HEIGHT, FPS, is_hdr)
    graphs = piece.graphs(folder)
    depth = "yuv420p10le" if is_hdr else "yuv420p"
    inputs, picture, _ = next(iter(graphs.values()))
    raw = f"{folder}/finished.yuv"
    subprocess.run([*FFMPEG, *inputs, "-filter_complex", picture, "-map", "[video]", "-r", str(FPS),
                    "-pix_fmt", depth, "-f", "rawvideo", raw], check=True)
    commands = {
        "plain decode": piece.decode_commands(folder),
        "plain encode": [[*FFMPEG, "-f", "rawvideo", "-pix_fmt", depth, "-s", f"{WIDTH}x{HEIGHT}", "-r", str(FPS),
                          "-i", raw, *coder, f"{folder}/encode.mp4"]],
    }
    for name, (inputs, picture, sound) in graphs.items():
        commands[name] = [[*FFMPEG, *inputs, "-filter_complex", f"{picture};{sound}", "-map", "[video]", "-map",
                           "[sound]", "-r", str(FPS), *coder, *SOUND, f"{folder}/{name}.mp4"]]
    if hasattr(piece, "mlt_document") and shutil.which("melt"):
        with open(f"{folder}/piece.mlt", "w") as document:
            document.write(piece.mlt_document(folder))
        commands["MLT"] = [["melt", f"{folder}/piece.mlt", "-silent", "-consumer", f"avformat:{folder}/mlt.mp4",
                            "real_time=-2", "vcodec=libx264", "preset=veryfast", "crf=20", "bf=2", "g=15",
                            "pix_fmt=yuv420p", "acodec=aac", "ab=160k", "ar=48000", "channels=2",
                            "movflags=+faststart"]]
    return commands


def composites(piece, folder):
    """The same without encoding."""
    commands = {"framewright": [[COMPOSITE, f"{folder}/piece.fwp", str(HEIGHT)]]}
    for name, (inputs, picture, _) in piece.graphs(folder).items():
        commands[name] = [[*FFMPEG, *inputs, "-filter_complex", picture, "-map", "[video]", "-r", str(FPS),
                           "-f", "null", "-"]]
    return commands


def check_settings(ours, reference):
    """Fails unless both were encoded with the same settings: only then are the figures comparable."""
    marks = ("threads=", "frame-threads", "sar=", "chromaloc")  # What does not change the coding.

    def essential(movie):
        return [word for word in coded_with(movie).split() if not word.startswith(marks)]
    if essential(ours) != essential(reference) or not essential(ours):
        raise SystemExit("The export and the reference were not coded with the same settings:\n"
                         f"{coded_with(ours)}\n{coded_with(reference)}")


def measure(piece, runs, is_hdr=False):
    with tempfile.TemporaryDirectory(prefix="framewright-bench-") as folder, MeasuredEditor() as editor:
        piece.make_media(folder)
        piece.build(editor, folder)
        editor.run("project-save", "--path", f"{folder}/piece.fwp")
        commands, drawn = references(piece, folder, is_hdr), composites(piece, folder)
        rows = {name: [] for name in ["framewright", *commands]}
        drawn_rows = {name: [] for name in drawn}
        for _ in range(runs):
            # At the canvas's own size: by default 4K footage makes a 4K movie.
            rows["framewright"].append(
                measured_export(editor, "--path", f"{folder}/ours.mp4", "--height", str(HEIGHT)))
            for name, each in commands.items():
                rows[name].append(measured(each))
            for name, each in drawn.items():
                drawn_rows[name].append(measured(each))
        check_settings(f"{folder}/ours.mp4", f"{folder}/encode.mp4")

        print(f"{piece.NAME}, medians of {runs} (load {os.getloadavg()[0]:.1f}):")
        for name, each in rows.items():
            told(name, each)
        cpu, wall, peak = medians(rows["framewright"])
        parts = medians(rows["plain decode"])[0] + medians(rows["plain encode"])[0]
        print(f"  framewright / (plain decode + plain encode): cpu {cpu / parts:.2f}; "
              f"{cpu / wall / os.cpu_count():.0%} of the processors")
        for name in list(commands)[2:]:
            other = medians(rows[name])
            print(f"  framewright / {name}: cpu {cpu / other[0]:.2f}, wall {wall / other[1]:.2f}, "
                  f"peak {peak / other[2]:.2f}")
        print("decoding and compositing alone:")
        decode = medians(rows["plain decode"])[0]
        for name, each in drawn_rows.items():
            told(name, each)
            print(f"  {name} / plain decode: cpu {medians(each)[0] / decode:.2f}")


def main():
    runs = int(sys.argv[1])
    if clips := [os.path.abspath(clip) for clip in sys.argv[2:]]:
        piece = PhonePiece(clips)
        measure(piece, runs, piece.is_hdr)
    else:
        measure(untouched_clip, runs)
        measure(standard_piece, runs)


main()
