"""An editor with its own home folder, whose CPU time and memory can be measured."""

import os
import shutil
import socket
import struct
import subprocess
import tempfile

FRAMEWRIGHT = os.environ["FRAMEWRIGHT"]
TICKS = os.sysconf("SC_CLK_TCK")


class MeasuredEditor:
    def __enter__(self):
        self.home = tempfile.mkdtemp(prefix="framewright-bench-")
        self.environment = {"PATH": os.environ["PATH"], "HOME": self.home, "LANG": "C.UTF-8"}
        return self

    def __exit__(self, *_):
        subprocess.run([FRAMEWRIGHT, "cli", "app-quit", "--force"], env=self.environment,
                       capture_output=True)
        shutil.rmtree(self.home, ignore_errors=True)

    def run(self, *words):
        done = subprocess.run([FRAMEWRIGHT, "cli", *words], env=self.environment, cwd=self.home,
                              capture_output=True, text=True)
        if done.returncode != 0:
            raise RuntimeError(f"{' '.join(words)}: {done.stderr.strip()}")
        return done.stdout

    def pid(self):
        """Of the process at the other end of the socket."""
        path = os.path.join(self.home, ".local/share/Framewright/cli.sock")
        with socket.socket(socket.AF_UNIX) as connection:
            connection.connect(path)
            peer = connection.getsockopt(socket.SOL_SOCKET, socket.SO_PEERCRED, 12)
        return struct.unpack("3i", peer)[0]

    def cpu_seconds(self):
        with open(f"/proc/{self.pid()}/stat") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / TICKS

    def peak_megabytes(self):
        with open(f"/proc/{self.pid()}/status") as status:
            for line in status:
                if line.startswith("VmHWM"):
                    return int(line.split()[1]) / 1024
        raise RuntimeError("no VmHWM")
