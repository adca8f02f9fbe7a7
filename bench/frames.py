"""Single pictures and contact sheets, as an agent gets them: whole commands, from the start of the
client to the written PNG, against ffmpeg asked for the same moments of the same file. The runs of the
two alternate."""

import os
import statistics
import subprocess
import sys
import tempfile
import time

from export_settings import FFMPEG
from measured_editor import FRAMEWRIGHT, MeasuredEditor

RUNS = int(sys.argv[1])
SECONDS = 20
SIZES = {"1080p": (1920, 1080, 12), "4K": (3840, 2160, 35)}  # width, height, Mbit/s
WIDTH = 360
SHEET_FRAMES = 12
SHEET_WIDTH = 240


def make_media(folder, name):
    width, height, rate = SIZES[name]
    file = os.path.join(folder, f"{name}.mp4")
    subprocess.run([*FFMPEG, "-f", "lavfi", "-i",
                    f"testsrc2=size={width // 2}x{height // 2}:rate=30,scale={width}:{height}:flags=bicubic,"
                    "noise=alls=8:allf=t:all_seed=3,format=yuv420p", "-t", str(SECONDS), "-c:v", "libx264",
                    "-preset", "veryfast", "-g", "60", "-bf", "2", "-b:v", f"{rate}M", file], check=True)
    return file


def seconds(action, *arguments):
    begin = time.perf_counter()
    action(*arguments)
    return time.perf_counter() - begin


def with_ffmpeg(file, moment, width, folder):
    subprocess.run([*FFMPEG, "-ss", f"{moment:.3f}", "-i", file, "-frames:v", "1", "-vf",
                    f"scale={width}:-2", os.path.join(folder, "reference.png")], check=True)


def told(name, ours, theirs, wanted):
    ratios = sorted(a / b for a, b in zip(ours, theirs))
    print(f"{name:34} {1000 * statistics.median(ours):7.0f} ms   ffmpeg {1000 * statistics.median(theirs):7.0f} ms"
          f"   ratio {statistics.median(ratios):.2f} ({ratios[0]:.2f} – {ratios[-1]:.2f}), to reach {wanted}",
          flush=True)


def measure(name, folder):
    file = make_media(folder, name)
    with MeasuredEditor() as editor:
        editor.run("workspace", "--path", os.path.join(editor.home, "workspace"))
        editor.run("project-new", "Bench")
        editor.run("clip-add", "v1", "--path", file)

        def frame(moment):
            editor.run("frame", f"{moment:.3f}", "--width", str(WIDTH), "--out", f"{folder}/ours.png")

        def sheet():
            editor.run("contact-sheet", "--width", str(SHEET_WIDTH), "--out", f"{folder}/sheet.png")

        def restart():
            editor.run("app-quit")
            editor.run("status")

        moments = [(3.1 + 1.37 * run) % (SECONDS - 2) for run in range(RUNS)]
        cold, warm, back, sheets, references, reference_sheets = [], [], [], [], [], []
        for moment in moments:
            restart()
            cold.append(seconds(frame, moment))
            warm.append(seconds(frame, moment + 0.5))
            back.append(seconds(frame, moment - 1))
            references.append(seconds(with_ffmpeg, file, moment, WIDTH, folder))
        for _ in range(RUNS):
            restart()
            sheets.append(seconds(sheet))
            reference_sheets.append(sum(
                seconds(with_ffmpeg, file, SECONDS * n / SHEET_FRAMES, SHEET_WIDTH, folder)
                for n in range(SHEET_FRAMES)))
    told(f"{name}, one frame, cold", cold, references, 1.0)
    told(f"{name}, half a second later, warm", warm, references, 0.3)
    told(f"{name}, 1.5 s before that, warm", back, references, 0.3)
    told(f"{name}, a sheet of {SHEET_FRAMES}, cold", sheets, reference_sheets, 0.5)


print(f"Medians of {RUNS}; whole commands of {os.path.basename(FRAMEWRIGHT)}, {WIDTH} pixels wide:")
with tempfile.TemporaryDirectory(prefix="framewright-bench-") as scratch:
    for size in SIZES:
        measure(size, scratch)
