"""Records cameras over several days onto two small drives until both are full and days are recycled.

The state of the disks is judged by walking their directories here, without the library: what the
tool says it wrote, deleted and found has to be what lies there. Options let it run by hand on a
real video with drives of any size.
"""

import argparse
import datetime
import json
import os
import pathlib
import random
import subprocess
import sys
import tempfile

MB = 1 << 20
# A disk that is not the working disk is chosen when it has more than this beyond its reserve.
ALARM_ABOVE_RESERVED_MB = 50
WIDTH, HEIGHT = 176, 144
HOST = "recorder"
FIRST_DAY = datetime.date(2024, 2, 26)


def require(truth, what):
    if not truth:
        sys.exit(f"storage_end_to_end: {what}")


def write_noise_video(path, frames):
    """Pictures that do not compress, one every six seconds."""
    source = random.Random(1)
    with open(path, "wb") as video:
        video.write(f"YUV4MPEG2 W{WIDTH} H{HEIGHT} F1:6 Ip A1:1 C420jpeg\n".encode())
        for _ in range(frames):
            video.write(b"FRAME\n" + source.randbytes(WIDTH * HEIGHT * 3 // 2))


class Disks:
    """Two drives with quotas, and what lies on them."""

    def __init__(self, root):
        self.paths = {letter: root / letter for letter in "de"}
        self.quota_mb = {}
        for path in self.paths.values():
            path.mkdir()

    def drive_options(self):
        return [
            part
            for letter, path in self.paths.items()
            for part in ("--drive", f"{letter}={path}:{self.quota_mb[letter]}M")
        ]

    def recordings(self):
        """{(drive, day, name): bytes}"""
        return {
            (letter, file.relative_to(path / "dvr").parts[0], file.name): file.stat().st_size
            for letter, path in self.paths.items()
            for file in path.rglob("*.zebz")
        }

    def days(self):
        """[(day, drive)], oldest first"""
        return sorted(
            (day.name, letter)
            for letter, path in self.paths.items()
            for day in (path / "dvr").iterdir()
        )

    def used_bytes(self, letter):
        """As the host's disk counts, directories included."""
        return sum(
            os.lstat(os.path.join(folder, name)).st_blocks * 512
            for folder, folders, files in os.walk(self.paths[letter])
            for name in folders + files
        )

    def free_mb(self, letter):
        return max(self.quota_mb[letter] * MB - self.used_bytes(letter), 0) // MB


class Run:
    def __init__(self, arguments, root):
        self.arguments = arguments
        self.disks = Disks(root)
        self.database = root / "disks.db"
        self.deleted = []
        self.written_bytes = 0
        self.recorded_frames = 0

    def tool(self, *words, status=0):
        command = [self.arguments.zebtool, *map(str, words), "--db", str(self.database)]
        done = subprocess.run(
            command + self.disks.drive_options(), capture_output=True, text=True, check=False
        )
        require(
            done.returncode == status,
            f"{' '.join(command)} ended with {done.returncode}: {done.stdout}{done.stderr}",
        )
        return done.stdout

    def make_database(self):
        reserved = self.arguments.reserved
        self.disks.quota_mb = {"d": self.arguments.quota, "e": self.arguments.quota}
        options = ["--recycle", "--reserved", reserved]
        self.tool("store", "init", "d:\\dvr", *options)
        self.tool("store", "add", "e:\\dvr", *options)

    def working_drive(self):
        name = json.loads(self.tool("store", "disks", "--json"))["working_disk"]
        return name[name.index("(") + 1]

    def record(self, day, camera):
        """One recording; its report has to be what happened to the directories."""
        before = self.disks.recordings()
        days_before = self.disks.days()
        arguments = self.arguments
        report = json.loads(
            self.tool(
                "record", arguments.video, "--json", "--host", HOST, "--camera", camera,
                "--begin", f"{day} 08:{camera:02}:00", "--loops", arguments.loops,
                "--quantiser", "1,1",
            )
        )
        after = self.disks.recordings()
        gone = [day.replace("-", "") for day in report["deleted_days"]]
        for name in gone:
            oldest, drive = days_before.pop(0)
            require(oldest == "d" + name, f"{name} was deleted although {oldest} is older")
            require(oldest < "d" + str(day).replace("-", ""), f"{name} is not before {day}")
            before = {at: size for at, size in before.items() if at[:2] != (drive, oldest)}
            self.deleted.append((name, drive))
        written = {
            (path[0], path.split("\\")[2], path.split("\\")[-1]): file["bytes"]
            for file in report["files"]
            for path in [file["path"]]
            if file["frames"] > 0
        }
        require(after == before | written, f"{day} camera {camera}: {after} is not {before | written}")
        self.written_bytes += sum(written.values())
        self.recorded_frames += report["frames"]
        return bool(gone)

    def check_space(self):
        for disk in json.loads(self.tool("store", "space", "--json"))["disks"]:
            letter = disk["name"][disk["name"].index("(") + 1]
            free_mb = self.disks.free_mb(letter)
            require(abs(disk["free_mb"] - free_mb) <= 1, f"{disk} while {free_mb} MB are free")

    def check_disks(self):
        shown = {
            (day.replace("-", ""), disk["directory"][0])
            for disk in json.loads(self.tool("store", "disks", "--json"))["disks"]
            for day in disk["days"]
        }
        require(shown == {(day[1:], drive) for day, drive in self.disks.days()}, f"days {shown}")

    def check_recycling(self, now):
        said = self.tool("store", "recycle", "--now", f"{now} 12:00:00", "--dry-run").split()
        oldest, drive = self.disks.days()[0]
        day = f"{oldest[1:5]}-{oldest[5:7]}-{oldest[7:9]}"
        size = sum(s for at, s in self.disks.recordings().items() if at[:2] == (drive, oldest))
        require(said[2] == day and drive + ":" in said[4], f"'{said}' while {oldest} is the oldest")
        require(int(said[5].replace(",", "")) == size, f"'{said}' while the day has {size} bytes")
        done = self.tool("store", "recycle", "--now", f"{now} 12:00:00").split()
        require(done[:2] == ["deleted", day], f"'{done}' after '{said}'")
        require((oldest, drive) not in self.disks.days(), f"{oldest} is still there")

    def require_found(self, criteria, expected):
        """`expected` are (drive, day, name) of recordings."""
        done = self.tool(
            "search", "--host", HOST, *criteria, "--json", status=0 if expected else 1
        )
        found = sorted(
            (path[0], path.split("\\")[2], path.split("\\")[-1])
            for file in json.loads(done)["files"]
            for path in [file["path"]]
        )
        require(found == sorted(expected), f"search {criteria} found {found}, not {expected}")

    def check_search(self, today):
        """Searches find what lies there, and of the deleted days nothing."""
        here = list(self.disks.recordings())
        days = {day[1:] for _, day, _ in here} | {name for name, _ in self.deleted}
        for day in sorted(days):
            date = f"{day[:4]}-{day[4:6]}-{day[6:]}"
            self.require_found(["--date", date], [at for at in here if at[1] == "d" + day])
        for camera in range(self.arguments.cameras):
            self.require_found(
                ["--from", f"{FIRST_DAY} 00:00:00", "--to", f"{today} 23:59:59",
                 "--camera", f"0,{camera}"],
                [at for at in here if at[2].startswith(f"c00{camera:02}")],
            )

    def run(self):
        arguments = self.arguments
        self.make_database()
        # A spare disk smaller than its thresholds would never be chosen: it is large until then.
        least_mb = arguments.reserved + ALARM_ABOVE_RESERVED_MB + 10
        self.disks.quota_mb["e"] = max(arguments.quota, least_mb)
        has_moved = False
        day = FIRST_DAY
        recycled_days = 0
        while recycled_days < arguments.recycled_days:
            require(day.year == 2024, "the disks do not become full")
            for camera in range(arguments.cameras):
                recycled_days += self.record(day, camera)
                if not has_moved and self.working_drive() == "e":
                    require(not self.deleted, "a day went although a disk had room")
                    has_moved = True
                    self.disks.quota_mb["e"] = arguments.quota
            day += datetime.timedelta(days=1)
        require(has_moved, "the second disk was never used")
        require({drive for _, drive in self.deleted} == {"d", "e"}, f"one disk alone: {self.deleted}")
        self.check_space()
        self.check_disks()
        self.check_search(day)
        here = self.disks.recordings()
        print(
            f"{self.recorded_frames} frames, {self.written_bytes} bytes recorded until {day}; "
            f"deleted {' '.join(name + drive for name, drive in self.deleted)}; "
            f"left {len(here)} recordings, {sum(here.values())} bytes, "
            f"days {' '.join(name + drive for name, drive in self.disks.days())}"
        )
        self.check_recycling(day)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("zebtool")
    parser.add_argument("--video", help="Y4M; a small generated one without it")
    parser.add_argument("--loops", type=int, default=1)
    parser.add_argument("--quota", type=int, default=3, help="of each drive, MB")
    parser.add_argument("--reserved", type=int, default=1, help="of each disk, MB")
    parser.add_argument("--cameras", type=int, default=3)
    parser.add_argument("--recycled-days", type=int, default=6)
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory() as root:
        root = pathlib.Path(root)
        if arguments.video is None:
            arguments.video = root / "noise.y4m"
            write_noise_video(arguments.video, 8)
        Run(arguments, root).run()


if __name__ == "__main__":
    main()
