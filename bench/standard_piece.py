"""The standard piece: 30 s, ten clips of three sources in three shapes, a picture in a picture at 80 %,
music ducked under a voice; and the same for programs that it is measured beside."""

import subprocess

from export_settings import FFMPEG, TAGS

NAME = "the standard piece, without its texts"
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


def graphs(folder):
    """Inputs of the same piece for ffmpeg, and its filters for picture and for sound. Tuned, pictures are
    cropped before they are scaled and stay in 4:2:0; ordinary is how most people write it."""
    tuned = {"a": "crop=608:1080,scale=1080:1920:flags=bicubic", "b": "null",
             "c": "scale=1080:608:flags=bicubic,pad=1080:1920:0:656"}
    ordinary = dict.fromkeys("ac", "scale=1080:1920:force_original_aspect_ratio={}:flags=bicubic,{}")
    ordinary["a"] = ordinary["a"].format("increase", "crop=1080:1920")
    ordinary["b"] = "scale=1080:1920:flags=bicubic"
    ordinary["c"] = ordinary["c"].format("decrease", "pad=1080:1920:-1:-1")
    return {"ffmpeg, tuned graph": one_graph(folder, tuned, "yuva420p", "yuv420"),
            "ffmpeg, ordinary graph": one_graph(folder, ordinary, "rgba", "auto")}


def one_graph(folder, shapes, inset_format, overlay_format):
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
        f"[{count}:v]scale=768:432:flags=bicubic,format={inset_format},colorchannelmixer=aa=0.8,"
        f"setpts=PTS+{INSET['start'] / FPS}/TB[inset]",
        f"[base][inset]overlay=272:160:eof_action=pass:format={overlay_format}[video]",
    ]
    sound = [
        f"[{count + 1}:a]atrim=0:30,volume='if(between(t,8,18),0.125,0.5)':eval=frame[music]",
        f"[{count + 2}:a]adelay=8000:all=1[voice]",
        "[music][voice]amix=inputs=2:normalize=0:duration=first[sound]",
    ]
    return inputs, ";".join(picture), ";".join(sound)


def mlt_document(folder):
    """The same piece for MLT."""
    def rect(places):
        return (f'<filter mlt_service="affine"><property name="background">color:#00000000</property>'
                f'<property name="transition.fill">1</property><property name="transition.distort">0</property>'
                f'<property name="transition.rect">{places}</property></filter>')

    producers, shots = [], []
    for number, (source, first) in enumerate(SHOTS):
        width, height, seconds, _, _ = SOURCES[source]
        cover = width * 1920 / height
        place = rect(f"{(1080 - cover) / 2:.0f} 0 {cover:.0f} 1920 1") if source == "a" else ""
        producers.append(video_producer(folder, f"p{number}", source, seconds, place))
        shots.append(f'<entry producer="p{number}" in="{first}" out="{first + SHOT - 1}"/>')
    inset = rect("272 160 768 432 1") + \
        '<filter mlt_service="brightness"><property name="level">1</property><property name="alpha">0.8</property></filter>'
    producers.append(video_producer(folder, "inset", INSET["source"], SOURCES[INSET["source"]][2], inset))
    frames, last = len(SHOTS) * SHOT, INSET["first"] + INSET["frames"] - 1
    volume = "0=-6.02;239=-6.02;240=-18.06;540=-18.06;541=-6.02"
    return f"""<mlt LC_NUMERIC="C"><profile width="1080" height="1920" sample_aspect_num="1" sample_aspect_den="1"
 display_aspect_num="9" display_aspect_den="16" frame_rate_num="{FPS}" frame_rate_den="1" progressive="1" colorspace="709"/>
<producer id="black"><property name="mlt_service">color</property><property name="resource">black</property>
<property name="length">{frames}</property></producer>
{"".join(producers)}
<producer id="music"><property name="mlt_service">avformat</property><property name="resource">{folder}/music.wav</property>
<filter mlt_service="volume"><property name="level">{volume}</property></filter></producer>
<producer id="voice"><property name="mlt_service">avformat</property><property name="resource">{folder}/voice.wav</property></producer>
<playlist id="base"><entry producer="black" in="0" out="{frames - 1}"/></playlist>
<playlist id="shots">{"".join(shots)}</playlist>
<playlist id="above"><blank length="{INSET["start"]}"/><entry producer="inset" in="{INSET["first"]}" out="{last}"/></playlist>
<playlist id="bed"><entry producer="music" in="0" out="{frames - 1}"/></playlist>
<playlist id="spoken"><blank length="240"/><entry producer="voice" in="0" out="299"/></playlist>
<tractor id="piece" in="0" out="{frames - 1}"><track producer="base"/><track producer="shots"/><track producer="above"/>
<track producer="bed" hide="video"/><track producer="spoken" hide="video"/>
{transition("composite", 0, 1)}{transition("composite", 0, 2)}{transition("mix", 0, 3)}{transition("mix", 0, 4)}</tractor></mlt>"""


def video_producer(folder, name, source, seconds, filters):
    return (f'<producer id="{name}" in="0" out="{seconds * FPS - 1}"><property name="mlt_service">avformat</property>'
            f'<property name="resource">{folder}/{source}.mp4</property>'
            f'<property name="audio_index">-1</property>{filters}</producer>')


def transition(service, a, b):
    kind = '<property name="sum">1</property>' if service == "mix" else ""
    return (f'<transition><property name="mlt_service">{service}</property><property name="a_track">{a}</property>'
            f'<property name="b_track">{b}</property><property name="always_active">1</property>{kind}</transition>')
