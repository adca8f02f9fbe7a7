"""The export of one clip of 30 s in the canvas's own format, beside ffmpeg's transcoding of it with
the same encoder settings."""

import os
import resource
import statistics
import subprocess
import sys
import tempfile
import time

from export_settings import ENCODER, FFMPEG, SOUND, TAGS
from measured_editor import MeasuredEditor

RUNS = int(sys.argv[1])


def make_clip(path):
    # Detail that moves, with the noise of a sensor: what a phone brings.
    subprocess.run([*FFMPEG, "-f", "lavfi", "-i",
                    "mandelbrot=size=620x1040:rate=30:start_scale=1.2:end_scale=0.0008:end_pts=900,"
                    "eq=saturation=0.7,crop=540:960,scale=1080:1920:flags=bicubic,"
                    "noise=alls=8:allf=t:all_seed=11,format=yuv420p",
                    "-f", "lavfi", "-i", "anoisesrc=color=pink:amplitude=0.15:sample_rate=48000",
                    "-t", "30", "-c:v", "libx264", "-preset", "veryfast", "-b:v", "10M", "-g", "30",
                    *TAGS, "-c:a", "aac", "-b:a", "128k", "-ac", "2", path], check=True)


def children_cpu():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def told(name, rows):
    cpu, wall, peak = (statistics.median(column) for column in zip(*rows))
    spread = f"{min(row[0] for row in rows):.1f}-{max(row[0] for row in rows):.1f}"
    print(f"{name:12} cpu {cpu:6.1f} s ({spread})   wall {wall:6.1f} s   peak {peak:5.0f} MB")
    return cpu, wall


with tempfile.TemporaryDirectory(prefix="framewright-bench-") as folder, MeasuredEditor() as editor:
    clip = os.path.join(folder, "clip.mp4")
    make_clip(clip)
    editor.run("workspace", "--path", os.path.join(folder, "workspace"))
    editor.run("project-new", "Bench")
    editor.run("clip-add", "v1", "--path", clip)

    ours, reference = [], []
    for run in range(RUNS):
        cpu, begin = editor.cpu_seconds(), time.perf_counter()
        editor.run("export", "--path", os.path.join(folder, f"ours-{run}.mp4"))
        ours.append((editor.cpu_seconds() - cpu, time.perf_counter() - begin, editor.peak_megabytes()))

        cpu, begin = children_cpu(), time.perf_counter()
        measured = subprocess.run(["/usr/bin/time", "-f", "%M", *FFMPEG, "-i", clip, *ENCODER, *SOUND,
                                   os.path.join(folder, f"reference-{run}.mp4")],
                                  check=True, capture_output=True, text=True)
        peak = int(measured.stderr.split()[-1]) / 1024
        reference.append((children_cpu() - cpu, time.perf_counter() - begin, peak))

    print(f"30 s of one 1080x1920 clip, medians of {RUNS}:")
    a, b = told("framewright", ours), told("ffmpeg", reference)
    print(f"ratio        cpu {a[0] / b[0]:6.2f}              wall {a[1] / b[1]:6.2f}")
    sizes = [os.path.getsize(os.path.join(folder, f"{name}-0.mp4")) / 1e6
             for name in ("ours", "reference")]
    print(f"size         {sizes[0]:.1f} MB against {sizes[1]:.1f} MB")
