"""What texts and captions cost: the standard piece exported with its three titles and ten bars and
with their tracks hidden, in turn. scripts/bench says how often."""

import json
import pathlib
import sys
import tempfile
import uuid

import standard_piece
from measured_editor import MeasuredEditor
from measuring import measured_export, medians, told

FPS = 30
TITLES = [("A day in the city", 15, 75), ("Three small tips", 375, 75), ("Follow for more", 810, 75)]
BARS = [("Here are three small things", 30), ("that I learned on the road", 120), ("First, leave early", 210),
        ("because the light is better", 300), ("Second, carry less", 390), ("than you think you need", 480),
        ("Third, talk to people", 570), ("ask them where they eat", 660), ("and go there", 750), ("See you soon", 840)]
BAR_FRAMES = 45


def add_texts(editor, folder):
    for words, start, length in TITLES:
        editor.run("text-add", "--text", words, "--at", str(start / FPS), "--duration", str(length / FPS),
                   "--favorite", "Meme", "--size", "84", "--y", str(800 / 1920))
    workspace = pathlib.Path(folder) / "workspace"
    style = json.loads((workspace / "settings/caption-styles.json").read_text())["styles"][1]
    editor.run("project-close")
    [file] = workspace.glob("projects/*/project.json")
    document = json.loads(file.read_text())
    project = document.get("project", document)
    bars = [{"id": new_id(), "start": start / FPS, "end": (start + BAR_FRAMES) / FPS, "text": words, "words": []}
            for words, start in BARS]
    project["tracks"].insert(0, {
        "id": new_id(), "kind": "subtitles", "name": "Captions", "isMagnetic": False, "isMuted": False, "clips": [],
        "subtitles": {"styleID": style["id"], "style": style, "words": [], "bars": bars,
                      "placement": {"position": "bottom", "verticalOffset": 0.18}}})
    file.write_text(json.dumps(document))
    editor.run("project-open", file.parent.name)


def new_id():
    return str(uuid.uuid4()).upper()


def main(runs):
    with tempfile.TemporaryDirectory(prefix="framewright-bench-") as folder, MeasuredEditor() as editor:
        standard_piece.make_media(folder)
        standard_piece.build(editor, folder)
        add_texts(editor, folder)
        rows = {"without": [], "with texts": []}
        for _ in range(runs):
            for name, hidden in (("without", "true"), ("with texts", "false")):
                for track in ("s1", "t1"):
                    editor.run("track-set", track, "--hidden", hidden)
                rows[name].append(measured_export(editor, "--path", f"{folder}/out.mp4", "--height", "1920"))
        for name, each in rows.items():
            told(name, each)
        with_texts, without = medians(rows["with texts"])[0], medians(rows["without"])[0]
        print(f"  with / without: cpu {with_texts / without:.3f}")


main(int(sys.argv[1]))
