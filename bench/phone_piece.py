"""A piece of real clips: three seconds of each in turn, from ever later in it, until it is half a minute
long; each fitted into a portrait canvas."""

from export_settings import FFMPEG, is_hdr, probed

NAME = "the given clips"
SHOTS = 10
SECONDS = 3.0


class PhonePiece:
    def __init__(self, clips):
        hdr = [is_hdr(clip) for clip in clips]
        if any(hdr) != all(hdr):
            raise SystemExit("Give clips that are all in HDR or all in standard range: ffmpeg's graph does "
                             "not convert between them.")
        self.NAME = f"{SHOTS} shots of the clips given" + (", HDR" if hdr[0] else "")
        self.is_hdr = hdr[0]
        self.shots = []
        for number in range(SHOTS):
            clip = clips[number % len(clips)]
            length = float(probed(clip, "format=duration"))
            begin = number // len(clips) * SECONDS
            if begin + SECONDS > length:
                begin = max(0.0, length - SECONDS)
            # A frame less than all: the last one may be shorter than the file says.
            self.shots.append((clip, round(begin, 3), round(min(SECONDS, length - 0.1), 3)))

    def make_media(self, folder):
        pass

    def build(self, editor, folder):
        editor.run("workspace", "--path", f"{folder}/phone-workspace")
        editor.run("project-new", "Phone clips")
        for clip, begin, length in self.shots:
            editor.run("clip-add", "v1", "--path", clip, "--in", str(begin), "--duration", str(length))

    def inputs(self):
        words = []
        for clip, begin, length in self.shots:
            words += ["-ss", str(begin), "-t", str(length), "-i", clip]
        return words

    def decode_commands(self, folder):
        return [[*FFMPEG, "-ss", str(begin), "-t", str(length), "-i", clip, "-map", "0:v", "-f", "null", "-"]
                for clip, begin, length in self.shots]

    def graphs(self, folder, fps=30):
        depth = "yuv420p10le" if self.is_hdr else "yuv420p"
        count = len(self.shots)
        shape = (f"scale=1080:1920:force_original_aspect_ratio=decrease:force_divisible_by=2:flags=bicubic,"
                 f"pad=1080:1920:-1:-1,setsar=1,fps={fps},format={depth}")
        picture = ";".join(f"[{n}:v:0]{shape}[v{n}]" for n in range(count)) + ";" + \
            "".join(f"[v{n}]" for n in range(count)) + f"concat=n={count}:v=1:a=0[video]"
        seconds = sum(length for _, _, length in self.shots)
        silence = f"anullsrc=r=48000:cl=stereo,atrim=0:{seconds}[sound]"
        return {"ffmpeg graph": (self.inputs(), picture, silence)}
