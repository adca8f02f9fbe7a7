"""The export of the standard piece: 30 s, ten clips of three sources in three shapes, a picture in a
picture at 80 %, music ducked under a voice. Beside it, in the same run: decoding the used ranges and
nothing else, encoding the finished frames and nothing else, and one ffmpeg graph that composites the
same piece. All take the same settings of the encoders."""

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
FPS = 30

# name: width, height, seconds, Mbit/s, B-frames
SOURCES = {
    "a": (1920, 1080, 40, 12, 2),
    "b": (1080, 1920, 40, 10, 0),
    "c": (3840, 2160, 20, 30, 0),
}
# source, first frame of the source; each lasts 90 frames
SHOTS = [("b", 30), ("a", 69), ("c", 15), ("b", 255), ("a", 441),
         ("c", 192), ("b", 516), ("a", 783), ("c", 384), ("b", 912)]
SHOT = 90
INSET = {"source": "a", "first": 900, "start": 180, "frames": 180}
COVER = 1920 / (1080 * 1080 / 1920)


def make_media(folder):
    for name, (width, height, seconds, rate, b_frames) in SOURCES.items():
        half = (width // 2, height // 2)
        subprocess.run(
            [*FFMPEG, "-f", "lavfi", "-i",
             f"mandelbrot=size={half[0] + 80}x{half[1] + 80}:rate={FPS}:maxiter=300:start_scale=1.2:"
             f"end_scale=0.0008:end_pts=1200:inner=period,eq=saturation=0.7:contrast=0.85,"
             f"crop={half[0]}:{half[1]}:'40+36*sin(n/23)':'40+30*sin(n/31)',"
             f"scale={width}:{height}:flags=bicubic,noise=alls=9:allf=t:all_seed=11,format=yuv420p",
             "-f", "lavfi", "-i", "anoisesrc=color=pink:amplitude=0.15:sample_rate=48000:seed=7",
             "-t", str(seconds), "-c:v", "libx264", "-preset", "veryfast", "-g", "30",
             "-bf", str(b_frames), "-b:v", f"{rate}M", *TAGS, "-c:a", "aac", "-ac", "2",
             f"{folder}/{name}.mp4"], check=True)
    tone = "0.2*sin(2*PI*(220+55*mod(floor(t/2),4))*t)+0.3*exp(-9*mod(t,0.5))*sin(2*PI*62*t)"
    subprocess.run([*FFMPEG, "-f", "lavfi", "-i", f"aevalsrc='{tone}|{tone}':s=48000:d=60",
                    f"{folder}/music.wav"], check=True)
    subprocess.run([*FFMPEG, "-f", "lavfi", "-i", "aevalsrc='0.4*sin(2*PI*(160+60*sin(9*t))*t)*"
                    "(0.5+0.5*sin(5*t))':s=48000:d=10", "-ac", "2", f"{folder}/voice.wav"], check=True)


def build(editor, folder):
    editor.run("workspace", "--path", f"{folder}/workspace")
    editor.run("project-new", "Standard piece")
    for number, (source, first) in enumerate(SHOTS, 1):
        editor.run("clip-add", "v1", "--path", f"{folder}/{source}.mp4", "--in", str(first / FPS),
                   "--duration", str(SHOT / FPS))
        if source == "a":
            editor.run("clip-set", f"v1:{number}", "--scale", str(COVER))
    editor.run("track-set", "v1", "--muted", "true")
    editor.run("track-add", "video", "--name", "Inset", "--top", "true")
    editor.run("track-set", "v1", "--opacity", "0.8", "--muted", "true")
    editor.run("clip-add", "v1", "--path", f"{folder}/{INSET['source']}.mp4",
               "--at", str(INSET["start"] / FPS), "--in", str(INSET["first"] / FPS),
               "--duration", str(INSET["frames"] / FPS))
    editor.run("clip-set", "v1:1", "--scale", str(768 / 1080), "--offsetX",
               str((272 + 384) / 1080 - 0.5), "--offsetY", str((160 + 216) / 1920 - 0.5))
    editor.run("clip-add", "a1", "--path", f"{folder}/music.wav", "--duration", "30")
    editor.run("clip-set", "a1:1", "--volume", "0.5")
    editor.run("track-add", "audio", "--name", "Voice")
    editor.run("clip-add", "a2", "--path", f"{folder}/voice.wav", "--at", "8")


def decode_commands(folder):
    ranges = [(source, first, SHOT) for source, first in SHOTS]
    ranges.append((INSET["source"], INSET["first"], INSET["frames"]))
    return [[*FFMPEG, "-ss", str(first / FPS), "-t", str(frames / FPS), "-i",
             f"{folder}/{source}.mp4", "-map", "0:v", "-f", "null", "-"]
            for source, first, frames in ranges]


def graph(folder):
    """Inputs of the same piece for ffmpeg, and its filters for picture and for sound; pictures are
    cropped before they are scaled."""
    shapes = {"a": "crop=608:1080,scale=1080:1920:flags=bicubic", "b": "null",
              "c": "scale=1080:608:flags=bicubic,pad=1080:1920:0:656"}
    inputs, chains = [], []
    for number, (source, first) in enumerate(SHOTS):
        inputs += ["-ss", str(first / FPS), "-t", str(SHOT / FPS), "-i", f"{folder}/{source}.mp4"]
        chains.append(f"[{number}:v]{shapes[source]},setsar=1[v{number}]")
    inputs += ["-ss", str(INSET["first"] / FPS), "-t", str(INSET["frames"] / FPS),
               "-i", f"{folder}/{INSET['source']}.mp4",
               "-i", f"{folder}/music.wav", "-i", f"{folder}/voice.wav"]
    count = len(SHOTS)
    picture = chains + [
        "".join(f"[v{number}]" for number in range(count)) + f"concat=n={count}:v=1:a=0[base]",
        f"[{count}:v]scale=768:432:flags=bicubic,format=yuva420p,colorchannelmixer=aa=0.8,"
        f"setpts=PTS+{INSET['start'] / FPS}/TB[inset]",
        "[base][inset]overlay=272:160:eof_action=pass:format=yuv420[video]",
    ]
    sound = [
        f"[{count + 1}:a]atrim=0:30,volume='if(between(t,8,18),0.125,0.5)':eval=frame[music]",
        f"[{count + 2}:a]adelay=8000:all=1[voice]",
        "[music][voice]amix=inputs=2:normalize=0:duration=first[sound]",
    ]
    return inputs, picture, sound


def children_cpu():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def measured(commands):
    """CPU and wall seconds of commands one after the other, and the highest peak in MB."""
    cpu, begin, peak = children_cpu(), time.perf_counter(), 0
    for command in commands:
        done = subprocess.run(["/usr/bin/time", "-f", "%M", *command], check=True,
                              stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        peak = max(peak, int(done.stderr.split()[-1]) / 1024)
    return children_cpu() - cpu, time.perf_counter() - begin, peak


def told(name, rows):
    cpu, wall, peak = (statistics.median(column) for column in zip(*rows))
    spread = f"{min(row[0] for row in rows):.1f}-{max(row[0] for row in rows):.1f}"
    print(f"{name:24} cpu {cpu:6.1f} s ({spread})   wall {wall:6.1f} s   peak {peak:5.0f} MB",
          flush=True)
    return cpu, wall


def main():
    with tempfile.TemporaryDirectory(prefix="framewright-bench-") as folder, MeasuredEditor() as editor:
        make_media(folder)
        build(editor, folder)
        inputs, picture, sound = graph(folder)
        raw = f"{folder}/finished.yuv"
        subprocess.run([*FFMPEG, *inputs, "-filter_complex", ";".join(picture), "-map", "[video]",
                        "-frames:v", "900", "-f", "rawvideo", raw], check=True)
        whole = [*FFMPEG, *inputs, "-filter_complex", ";".join(picture + sound), "-map", "[video]",
                 "-map", "[sound]", *ENCODER, *SOUND, f"{folder}/graph.mp4"]
        encode = [*FFMPEG, "-f", "rawvideo", "-pix_fmt", "yuv420p", "-s", "1080x1920", "-r", str(FPS),
                  "-i", raw, *TAGS, *ENCODER, f"{folder}/encode.mp4"]

        rows = {"ours": [], "decode": [], "encode": [], "graph": []}
        for run in range(RUNS):
            cpu, begin = editor.cpu_seconds(), time.perf_counter()
            # At the canvas's own size: by default 4K footage makes a 4K movie.
            editor.run("export", "--path", f"{folder}/ours.mp4", "--height", "1920")
            rows["ours"].append((editor.cpu_seconds() - cpu, time.perf_counter() - begin,
                                 editor.peak_megabytes()))
            os.rename(f"{folder}/ours.mp4", f"{folder}/ours-{run}.mp4")
            rows["decode"].append(measured(decode_commands(folder)))
            rows["encode"].append(measured([encode]))
            rows["graph"].append(measured([whole]))

        print(f"the standard piece without its texts, medians of {RUNS}:")
        ours = told("framewright", rows["ours"])
        decode = told("plain decode", rows["decode"])
        encoded = told("plain encode", rows["encode"])
        ffmpeg = told("ffmpeg graph", rows["graph"])
        print(f"framewright / (plain decode + plain encode): cpu {ours[0] / (decode[0] + encoded[0]):.2f}")
        print(f"framewright / ffmpeg graph: cpu {ours[0] / ffmpeg[0]:.2f}, wall {ours[1] / ffmpeg[1]:.2f}")
        if len(sys.argv) > 2:
            os.replace(f"{folder}/ours-0.mp4", sys.argv[2])


main()
