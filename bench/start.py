"""The time to run a command, and to start an editor."""

import os
import statistics
import subprocess
import time

from measured_editor import FRAMEWRIGHT, MeasuredEditor

COMMANDS = 200
STARTS = 10


def milliseconds(*words, environment):
    begin = time.perf_counter()
    subprocess.run(words, env=environment, stdout=subprocess.DEVNULL, check=True)
    return 1000 * (time.perf_counter() - begin)


def told(name, times):
    times = sorted(times)
    print(f"{name:46} median {statistics.median(times):6.2f} ms   "
          f"10 % {times[len(times) // 10]:6.2f}   90 % {times[9 * len(times) // 10]:6.2f}")


with MeasuredEditor() as editor:
    editor.run("status")
    told(f"framewright cli status, {COMMANDS} times",
         [milliseconds(FRAMEWRIGHT, "cli", "status", environment=editor.environment)
          for _ in range(COMMANDS)])
    told("an empty program (true), beside it",
         [milliseconds("true", environment=editor.environment) for _ in range(COMMANDS)])

    editor.run("workspace", "--path", os.path.join(editor.home, "workspace"))
    editor.run("project-new", "Bench")
    starts = []
    for _ in range(STARTS):
        editor.run("app-quit")
        starts.append(milliseconds(FRAMEWRIGHT, "cli", "status", environment=editor.environment))
    told(f"editor start to its first answer, {STARTS} times", starts)

    before = editor.cpu_seconds()
    time.sleep(5)
    print(f"idle for 5 s: {editor.cpu_seconds() - before:.2f} s of processor time, "
          f"peak memory {editor.peak_megabytes():.0f} MB")
