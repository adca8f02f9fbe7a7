"""Processor time, wall time and peak memory of commands, and how figures are printed."""

import resource
import statistics
import subprocess
import time


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


def measured_export(editor, *options):
    """The same of an export in a MeasuredEditor. The peak is that of the editor's whole life."""
    cpu, begin = editor.cpu_seconds(), time.perf_counter()
    editor.run("export", *options)
    return editor.cpu_seconds() - cpu, time.perf_counter() - begin, editor.peak_megabytes()


def medians(rows):
    return [statistics.median(column) for column in zip(*rows)]


def told(name, rows):
    cpu, wall, peak = medians(rows)
    spread = f"{min(row[0] for row in rows):.1f}-{max(row[0] for row in rows):.1f}"
    print(f"  {name:26} cpu {cpu:6.1f} s ({spread:>11})   wall {wall:6.1f} s   peak {peak:5.0f} MB", flush=True)
