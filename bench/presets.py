"""Presets of the encoders on footage of one's own: processor time, size and likeness to the source, with
everything else as in an export. Each clip's first seconds count."""

import os
import re
import subprocess
import sys
import tempfile

from export_settings import FFMPEG, encoder, is_hdr, probed
from measuring import children_cpu

SECONDS = "6"
PRESETS = {"libx264": ["ultrafast", "superfast", "veryfast", "faster", "fast", "medium"],
           "libx265": ["ultrafast", "superfast", "veryfast", "fast"]}


def with_preset(ours, preset):
    changed = list(encoder)
    changed[changed.index("-preset") + 1] = preset
    return changed


def likeness(movie, source):
    """SSIM of the whole picture, in dB."""
    shown = subprocess.run([FFMPEG[0], "-hide_banner", "-nostdin", "-i", movie, "-i", source, "-t", SECONDS,
                            "-lavfi", "[0:v][1:v]ssim", "-f", "null", "-"],
                           capture_output=True, text=True, check=True)
    return float(re.search(r"All:[\d.]+ \(([\d.inf]+)\)", shown.stderr).group(1))


with tempfile.TemporaryDirectory(prefix="framewright-bench-") as folder:
    for clip in sys.argv[1:]:
        codec = "libx265" if is_hdr(clip) else "libx264"
        ours = encoder(int(probed(clip, "stream=width")), int(probed(clip, "stream=height")), is_hdr=is_hdr(clip))
        raw, made = os.path.join(folder, "raw.y4m"), os.path.join(folder, "made.mp4")
        depth = "yuv420p10le" if codec == "libx265" else "yuv420p"
        subprocess.run([*FFMPEG, "-i", clip, "-t", SECONDS, "-an", "-sn", "-dn", "-pix_fmt", depth,
                        "-strict", "-1", raw], check=True)
        print(f"{os.path.basename(clip)}, {codec}")
        for preset in PRESETS[codec]:
            before = children_cpu()
            subprocess.run([*FFMPEG, "-i", raw, *with_preset(ours, preset), made], check=True)
            cpu = children_cpu() - before
            print(f"  {preset:10} cpu {cpu:6.1f} s   size {os.path.getsize(made) / 1e6:6.2f} MB   "
                  f"SSIM {likeness(made, raw):5.2f} dB", flush=True)
