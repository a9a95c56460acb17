"""Records cameras over several days onto two small drives until both are full and days are recycled.

What the tool says it wrote, deleted and found has to be what lies in the drives' directories, which
are walked here without the library.

usage: storage_end_to_end.py ZEBTOOL
"""

import datetime
import json
import pathlib
import random
import subprocess
import sys
import tempfile

QUOTA_MB = 3
# A spare disk smaller than its thresholds would never be chosen: it is large until then.
SPARE_QUOTA_MB = 61
CAMERAS, DAYS_TO_RECYCLE = 3, 6
FIRST_DAY = datetime.date(2024, 2, 26)


def require(truth, what):
    if not truth:
        sys.exit(f"storage_end_to_end: {what}")


class Run:
    def __init__(self, zebtool, root):
        self.zebtool, self.root = zebtool, root
        self.quota_mb = {"d": QUOTA_MB, "e": SPARE_QUOTA_MB}
        self.deleted = []
        # Pictures that do not compress, one every six seconds.
        source = random.Random(1)
        frames = [b"FRAME\n" + source.randbytes(176 * 144 * 3 // 2) for _ in range(8)]
        video = b"YUV4MPEG2 W176 H144 F1:6 C420jpeg\n" + b"".join(frames)
        (root / "noise.y4m").write_bytes(video)
        for letter, what in ("d", "init"), ("e", "add"):
            (root / letter).mkdir()
            self.tool("store", what, letter + ":\\dvr", "--recycle", "--reserved", 1)

    def tool(self, *words, status=0):
        command = [self.zebtool, *map(str, words), "--db", str(self.root / "disks.db")]
        for letter, quota_mb in self.quota_mb.items():
            command += ["--drive", f"{letter}={self.root / letter}:{quota_mb}M"]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        said = f"{' '.join(command)} ended with {done.returncode}: {done.stdout}{done.stderr}"
        require(done.returncode == status, said)
        return json.loads(done.stdout) if "--json" in words else None

    def recordings(self):
        """{path as the library spells it: bytes}"""
        paths = {path: str(path.relative_to(self.root)) for path in self.root.rglob("*.zebz")}
        return {f"{name[0]}:{name[1:]}".replace("/", "\\"): path.stat().st_size
                for path, name in paths.items()}

    def record(self, day, camera):
        """One recording; its report has to be what happened to the directories."""
        before = self.recordings()
        days = sorted((path.name, path.parts[-3]) for path in self.root.glob("*/dvr/*"))
        report = self.tool("record", self.root / "noise.y4m", "--json", "--camera", camera,
                           "--begin", f"{day} 08:{camera:02}:00", "--quantiser", "1,1")
        for gone in report["deleted_days"]:
            oldest, drive = days.pop(0)
            require(oldest == "d" + gone.replace("-", ""), f"{gone} went, {oldest} is older")
            require(gone < str(day), f"{gone} is not before {day}")
            gone_files = f"{drive}:\\dvr\\{oldest}\\"
            before = {at: size for at, size in before.items() if not at.startswith(gone_files)}
            self.deleted.append((gone, drive))
        written = {file["path"]: file["bytes"] for file in report["files"] if file["frames"]}
        require(self.recordings() == before | written, f"{day} {camera}: {self.recordings()}")

    def run(self):
        day = FIRST_DAY
        while len(self.deleted) < DAYS_TO_RECYCLE:
            require(day.year == 2024, "the disks do not become full")
            for camera in range(CAMERAS):
                self.record(day, camera)
                working_disk = self.tool("store", "disks", "--json")["working_disk"]
                if "(e:" in working_disk and self.quota_mb["e"] > QUOTA_MB:
                    require(not self.deleted, "a day went although a disk had room")
                    self.quota_mb["e"] = QUOTA_MB
            day += datetime.timedelta(days=1)
        require({drive for _, drive in self.deleted} == {"d", "e"}, f"one disk: {self.deleted}")
        found = self.tool("search", "--from", f"{FIRST_DAY} 00:00:00", "--to", f"{day} 23:59:59",
                          "--json")
        found = sorted(file["path"] for file in found["files"])
        require(found == sorted(self.recordings()), f"{found} while {self.recordings()}")
        self.tool("search", "--date", self.deleted[0][0], status=1)


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        Run(sys.argv[1], pathlib.Path(folder)).run()
