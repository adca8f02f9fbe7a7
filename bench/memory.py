"""The highest memory of an export of ten minutes beside that of 30 seconds, each in an editor of its
own: of a small preview, and of 1080p in the canvas's size."""

import subprocess
import tempfile

from export_settings import FFMPEG, TAGS
from measured_editor import MeasuredEditor

SOURCES = {"small": ("270x480", ["--preview"]), "full": ("1080x1920", [])}


def make_clip(path, size):
    """A minute."""
    subprocess.run([*FFMPEG, "-f", "lavfi", "-i", f"testsrc2=size={size}:rate=30", "-f", "lavfi",
                    "-i", "anoisesrc=color=pink:amplitude=0.15:sample_rate=48000", "-t", "60",
                    "-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p", *TAGS,
                    "-c:a", "aac", path], check=True)


def peak(clip, seconds, words):
    with MeasuredEditor() as editor, tempfile.TemporaryDirectory() as folder:
        editor.run("workspace", "--path", f"{folder}/workspace")
        editor.run("project-new", "Memory")
        for _ in range(max(1, seconds // 60)):
            editor.run("clip-add", "v1", "--path", clip, "--duration", str(min(60, seconds)))
        editor.run("export", "--path", f"{folder}/out.mp4", *words)
        return editor.peak_megabytes()


def main():
    for name, (size, words) in SOURCES.items():
        with tempfile.TemporaryDirectory(prefix="framewright-bench-") as folder:
            make_clip(f"{folder}/clip.mp4", size)
            short, long = (peak(f"{folder}/clip.mp4", seconds, words) for seconds in (30, 600))
        print(f"{name:6} peak of 30 s {short:5.0f} MB, of 10 minutes {long:5.0f} MB "
              f"({long - short:+.0f})", flush=True)


main()
