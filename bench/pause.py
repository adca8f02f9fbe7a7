"""How long commands wait while an export runs: small ones, that read and that edit, are asked over
one connection in a loop. Beside it the same loop without an export, which is what the machine's
other work costs."""

import statistics
import subprocess
import tempfile
import threading
import time

from editor_process import EditorProcess
from export_settings import FFMPEG, TAGS

SECONDS = 20
ASKED = (
    ("status", {}),
    ("timeline", {}),
    ("clip_set", {"clip": "v1:1", "volume": 0.5}),
    ("clip_set", {"clip": "v1:1", "volume": 1}),
    ("seek", {"at": 1}),
    ("clip_split", {"clip": "v1:1", "at": 3}),
    ("undo", {}),
)


def make_clip(path):
    subprocess.run([*FFMPEG, "-f", "lavfi", "-i",
                    "mandelbrot=size=620x1040:rate=30:start_scale=1.2:end_scale=0.0008:end_pts=900,"
                    "crop=540:960,scale=1080:1920:flags=bicubic,noise=alls=8:allf=t,format=yuv420p",
                    "-f", "lavfi", "-i", "anoisesrc=color=pink:amplitude=0.15:sample_rate=48000",
                    "-t", "10", "-c:v", "libx264", "-preset", "veryfast", *TAGS, "-c:a", "aac",
                    path], check=True)


def waits(connection, is_over) -> dict[str, list[float]]:
    """Milliseconds from each request to its answer."""
    found = {tool: [] for tool, _ in ASKED}
    while not is_over():
        for tool, options in ASKED:
            begin = time.perf_counter()
            answer = connection.ask(tool, **options)
            found[tool].append((time.perf_counter() - begin) * 1000)
            if not answer["ok"]:
                raise RuntimeError(f"{tool}: {answer['text']}")
        time.sleep(0.005)
    return found


def told(name: str, found: dict[str, list[float]]):
    print(name)
    for tool, times in found.items():
        times.sort()
        late = sum(t > 20 for t in times)
        print(f"  {tool:12} {len(times):6} asked   median {statistics.median(times):6.2f} ms   "
              f"99 % {times[len(times) * 99 // 100]:6.2f} ms   longest {times[-1]:6.2f} ms   "
              f"over 20 ms: {late}")


def main():
    editor = EditorProcess()
    try:
        with tempfile.TemporaryDirectory(prefix="framewright-bench-") as folder:
            make_clip(f"{folder}/clip.mp4")
            editor.start_project()
            for _ in range(3):
                editor.do("clip-add", "v1", "--path", f"{folder}/clip.mp4")
            connection = editor.connect()
            end = time.monotonic() + SECONDS / 2
            told("idle", waits(connection, lambda: time.monotonic() > end))
            export = threading.Thread(target=editor.cli, kwargs={"timeout": 600}, args=(
                "export", "--path", f"{folder}/out.mp4"))
            export.start()
            told("while an export runs", waits(connection, lambda: not export.is_alive()))
            connection.close()
    finally:
        editor.close()


main()
