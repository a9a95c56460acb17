"""Records cameras over several days onto two small drives until both are full and days are recycled.

The state of the disks is judged by walking their directories here, without the library: what the
tool says it wrote, deleted and found has to be what lies there.

usage: storage_end_to_end.py ZEBTOOL
"""

import datetime
import json
import pathlib
import random
import subprocess
import sys
import tempfile

# A disk that is not the working disk is chosen when it has more than this beyond its reserve.
ALARM_ABOVE_RESERVED_MB = 50
QUOTA_MB, RESERVED_MB = 3, 1
CAMERAS, DAYS_TO_RECYCLE = 3, 6
WIDTH, HEIGHT = 176, 144
FIRST_DAY = datetime.date(2024, 2, 26)


def require(truth, what):
    if not truth:
        sys.exit(f"storage_end_to_end: {what}")


def write_noise_video(path):
    """Pictures that do not compress, one every six seconds."""
    source = random.Random(1)
    with open(path, "wb") as video:
        video.write(f"YUV4MPEG2 W{WIDTH} H{HEIGHT} F1:6 Ip A1:1 C420jpeg\n".encode())
        for _ in range(8):
            video.write(b"FRAME\n" + source.randbytes(WIDTH * HEIGHT * 3 // 2))


def place(path):
    """(drive, day, name) of a library path."""
    parts = path.split("\\")
    return path[0], parts[2], parts[-1]


class Run:
    def __init__(self, zebtool, root):
        self.zebtool = zebtool
        self.root = root
        # A spare disk smaller than its thresholds would never be chosen: it is large until then.
        self.quota_mb = {"d": QUOTA_MB, "e": RESERVED_MB + ALARM_ABOVE_RESERVED_MB + 10}
        self.deleted = []
        write_noise_video(root / "noise.y4m")
        for letter in "de":
            (root / letter).mkdir()
            what = "init" if letter == "d" else "add"
            self.tool("store", what, letter + ":\\dvr", "--recycle", "--reserved", RESERVED_MB)

    def tool(self, *words, status=0):
        command = [self.zebtool, *map(str, words), "--db", str(self.root / "disks.db")]
        for letter, quota_mb in self.quota_mb.items():
            command += ["--drive", f"{letter}={self.root / letter}:{quota_mb}M"]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        said = f"{' '.join(command)} ended with {done.returncode}: {done.stdout}{done.stderr}"
        require(done.returncode == status, said)
        return done.stdout

    def recordings(self):
        """{(drive, day, name): bytes}"""
        return {
            (letter, file.relative_to(self.root / letter / "dvr").parts[0], file.name):
                file.stat().st_size
            for letter in "de"
            for file in (self.root / letter).rglob("*.zebz")
        }

    def days(self):
        """[(day, drive)], oldest first"""
        return sorted(
            (day.name, letter) for letter in "de" for day in (self.root / letter / "dvr").iterdir()
        )

    def record(self, day, camera):
        """One recording; its report has to be what happened to the directories."""
        before, days_before = self.recordings(), self.days()
        report = json.loads(
            self.tool("record", self.root / "noise.y4m", "--json", "--camera", camera,
                      "--begin", f"{day} 08:{camera:02}:00", "--quantiser", "1,1")
        )
        for gone in report["deleted_days"]:
            oldest, drive = days_before.pop(0)
            require(oldest == "d" + gone.replace("-", ""), f"{gone} went, {oldest} is older")
            require(gone < str(day), f"{gone} is not before {day}")
            before = {at: size for at, size in before.items() if at[:2] != (drive, oldest)}
            self.deleted.append((oldest, drive))
        written = {place(file["path"]): file["bytes"] for file in report["files"] if file["frames"]}
        require(self.recordings() == before | written, f"{day} {camera}: {self.recordings()}")

    def check_search(self, today):
        """A search finds what lies there, and of the deleted days nothing."""
        found = json.loads(
            self.tool("search", "--from", f"{FIRST_DAY} 00:00:00", "--to", f"{today} 23:59:59",
                      "--json")
        )
        require(sorted(place(file["path"]) for file in found["files"]) == sorted(self.recordings()),
                f"{found} while {self.recordings()}")
        gone = datetime.datetime.strptime(self.deleted[0][0], "d%Y%m%d").date()
        self.tool("search", "--date", gone, status=1)

    def run(self):
        day = FIRST_DAY
        while len(self.deleted) < DAYS_TO_RECYCLE:
            require(day.year == 2024, "the disks do not become full")
            for camera in range(CAMERAS):
                self.record(day, camera)
                disks = json.loads(self.tool("store", "disks", "--json"))
                if "(e:" in disks["working_disk"] and self.quota_mb["e"] > QUOTA_MB:
                    require(not self.deleted, "a day went although a disk had room")
                    self.quota_mb["e"] = QUOTA_MB
            day += datetime.timedelta(days=1)
        require({drive for _, drive in self.deleted} == {"d", "e"}, f"one disk: {self.deleted}")
        self.check_search(day)


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        Run(sys.argv[1], pathlib.Path(folder)).run()
