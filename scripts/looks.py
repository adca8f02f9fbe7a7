"""Every look there is, on footage, drawn by the real program through its command line.

    scripts/looks.py FRAMEWRIGHT FOLDER     writes FOLDER/looks.png, and FOLDER/looks.jpg, smaller
"""

import json
import pathlib
import subprocess
import sys
import uuid

SECONDS = 2  # that each look is seen
FOOTAGE = [
    "mandelbrot=size=540x960:rate=30:start_scale=1.5:end_scale=0.02:inner=period,eq=saturation=0.8",
    "gradients=size=540x960:rate=30:c0=0xf1faee:c1=0xffd166:c2=0xe63946:c3=0x457b9d:n=4:speed=0.02",
    "life=size=90x160:rate=30:mold=12:ratio=0.12:death_color=#203040:life_color=#f4a261:"
    "mold_color=#2a9d8f,scale=540:960:flags=neighbor",
    "gradients=size=540x960:rate=30:c0=0x1d3557:c1=0x0b132b:c2=0x3a506b:n=3:speed=0.02",
]


def main(program, folder):
    def run(*words):
        done = subprocess.run([program, "cli", *map(str, words)], capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"{' '.join(map(str, words))}: {done.stderr.strip()}")
        return json.loads(done.stdout) if done.stdout.startswith("{") else done.stdout

    folder = pathlib.Path(folder).resolve()
    workspace = folder / "looks-workspace"
    run("workspace", "--path", workspace)
    run("project-new", "Looks")
    looks = run("favorites")
    count = len(looks["text"]) + len(looks["caption"])
    for number, source in enumerate(FOOTAGE):
        subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", source, "-t", "3",
                        "-pix_fmt", "yuv420p", "-c:v", "libx264", "-preset", "ultrafast",
                        folder / f"looks-{number}.mp4"], check=True)
    for number in range(count):
        run("clip-add", "v1", "--path", folder / f"looks-{number % len(FOOTAGE)}.mp4", "--duration", SECONDS)
    for number, look in enumerate(looks["text"]):
        run("text-add", "--text", f"{look['name']}\nA day in the city ✨", "--at", number * SECONDS,
            "--duration", SECONDS, "--favorite", look["name"], "--y", 0.5)
    add_captions(workspace, len(looks["text"]) * SECONDS, run)
    times = [word for number in range(count) for word in ("--times", (number + 0.5) * SECONDS)]
    run("contact-sheet", *times, "--columns", 6, "--width", 360, "--out", folder / "looks.png")
    subprocess.run(["ffmpeg", "-nostdin", "-v", "error", "-y", "-i", folder / "looks.png", "-vf",
                    "scale=1600:-2:flags=lanczos", "-q:v", "8", folder / "looks.jpg"], check=True)
    print(f"Looks:      {folder}/looks.png")


def add_captions(workspace, start, run):
    """Into the project's file. Each look has a track of its own."""
    styles = json.loads((workspace / "settings/caption-styles.json").read_text())["styles"]
    run("project-close")
    [file] = workspace.glob("**/project.json")
    document = json.loads(file.read_text())
    project = document.get("project", document)
    for style in styles:
        bar = {"id": new_id(), "start": start, "end": start + SECONDS, "words": [],
               "text": f"{style['name']}: three small things that I learned on the road"}
        project["tracks"].insert(0, {
            "id": new_id(), "kind": "subtitles", "name": style["name"], "isMagnetic": False,
            "isMuted": False, "clips": [],
            "subtitles": {"styleID": style["id"], "style": style, "words": [], "bars": [bar],
                          "placement": {"position": "bottom", "verticalOffset": 0.3}}})
        start += SECONDS
    file.write_text(json.dumps(document))
    run("project-open", "Looks")


def new_id():
    return str(uuid.uuid4()).upper()


main(*sys.argv[1:])
