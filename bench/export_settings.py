"""The encoder settings of an export, for the reference commands to take the same. They are those of
src/media/encoding.cpp and movie_writer.h; `coded_with` reads from a movie how it was really coded, and
scripts/bench export compares the two."""

import re
import subprocess

FFMPEG = ["ffmpeg", "-hide_banner", "-loglevel", "error", "-nostdin", "-y"]
TAGS = ["-color_primaries", "bt709", "-color_trc", "bt709", "-colorspace", "bt709"]
HLG_TAGS = ["-color_primaries", "bt2020", "-color_trc", "arib-std-b67", "-colorspace", "bt2020nc"]
SOUND = ["-c:a", "aac", "-b:a", "160k", "-ar", "48000", "-ac", "2"]
CAP_AT_FULL_HD = 20_000_000


def encoder(width, height, fps=30, is_hdr=False):
    """The picture's encoder, and the index in front."""
    cap = str(int(CAP_AT_FULL_HD * width * height / (1920 * 1080)))
    shape = ["-bf", "2", "-g", str(fps // 2), "-maxrate", cap, "-bufsize", cap, "-movflags", "+faststart"]
    if is_hdr:
        return ["-c:v", "libx265", "-preset", "superfast", "-crf", "22", "-profile:v", "main10",
                "-pix_fmt", "yuv420p10le", "-x265-params", "log-level=none:open-gop=0",
                "-tag:v", "hvc1", *HLG_TAGS, *shape]
    return ["-c:v", "libx264", "-preset", "veryfast", "-crf", "20", "-profile:v", "high",
            "-pix_fmt", "yuv420p", "-flags", "+cgop", *TAGS, *shape]


def coded_with(movie):
    """What the encoder wrote into a movie about its settings."""
    stream = subprocess.run([*FFMPEG, "-i", movie, "-map", "0:v", "-frames:v", "1", "-c", "copy", "-bsf:v",
                             "h264_mp4toannexb" if is_h264(movie) else "hevc_mp4toannexb", "-f", "data", "-"],
                            capture_output=True, check=True).stdout
    found = re.search(rb"x26[45][ -~]*options: ([ -~]+)", stream)
    return found.group(1).decode() if found else ""


def is_h264(movie):
    return probed(movie, "stream=codec_name") == "h264"


def is_hdr(clip):
    return probed(clip, "stream=color_transfer") in ("arib-std-b67", "smpte2084")


def probed(movie, entry):
    shown = subprocess.run(["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_entries", entry,
                            "-of", "default=nw=1:nk=1", movie], capture_output=True, text=True, check=True)
    return shown.stdout.split("\n")[0]
