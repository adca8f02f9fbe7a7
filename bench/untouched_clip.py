"""A piece of one clip of 30 s in the canvas's own format: every picture goes through untouched."""

import subprocess

from export_settings import FFMPEG, TAGS

NAME = "30 s of one 1080x1920 clip, untouched"


def make_media(folder):
    # Detail that moves, with the noise of a sensor: what a phone brings.
    subprocess.run([*FFMPEG, "-f", "lavfi", "-i",
                    "mandelbrot=size=620x1040:rate=30:start_scale=1.2:end_scale=0.0008:end_pts=900,"
                    "eq=saturation=0.7,crop=540:960,scale=1080:1920:flags=bicubic,"
                    "noise=alls=8:allf=t:all_seed=11,format=yuv420p",
                    "-f", "lavfi", "-i", "anoisesrc=color=pink:amplitude=0.15:sample_rate=48000",
                    "-t", "30", "-c:v", "libx264", "-preset", "veryfast", "-b:v", "10M", "-g", "30",
                    *TAGS, "-c:a", "aac", "-b:a", "128k", "-ac", "2", f"{folder}/clip.mp4"], check=True)


def build(editor, folder):
    editor.run("workspace", "--path", f"{folder}/clip-workspace")
    editor.run("project-new", "One clip")
    editor.run("clip-add", "v1", "--path", f"{folder}/clip.mp4")


def decode_commands(folder):
    return [[*FFMPEG, "-i", f"{folder}/clip.mp4", "-map", "0:v", "-f", "null", "-"]]


def graphs(folder):
    return {"ffmpeg": (["-i", f"{folder}/clip.mp4"], "[0:v]null[video]", "[0:a]anull[sound]")}
