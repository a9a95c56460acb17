#!/usr/bin/env python3
"""Checks that README is true: that it shows the examples as they are, and that its tour of the tool
does what it says.

usage: check_readme.py ROOT ZEBTOOL [--write]

With --write README gets what the tour's commands say now.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

EXAMPLES = ["examples/list_recording.cpp", "examples/record_frames.cpp"]
TOUR = re.compile(r"^## A tour of the tool\n.*?(?=^## )", re.MULTILINE | re.DOTALL)
STEP = re.compile(r"^    \$ (.*)\n((?:    (?!\$).*\n)*)", re.MULTILINE)
# What differs from machine to machine and from run to run.
CHANGING = re.compile(r"(?<=stamp )\d+|(?<=speed)( +)[\d,]+")
MARK = "== step"


def check_examples(root, readme):
    for example in EXAMPLES:
        if f"```cpp\n{(root / example).read_text()}```" not in readme:
            sys.exit(f"README.md does not show {example} as it is")


def run_tour(zebtool, commands):
    """What each command says, in a shell where ./dev demo has been run."""
    with tempfile.TemporaryDirectory() as clone:
        folder = pathlib.Path(clone) / "build/release/tools/zebtool"
        folder.mkdir(parents=True)
        (folder / "zebtool").symlink_to(zebtool)
        quiet = {"cwd": clone, "check": True, "stdout": subprocess.DEVNULL}
        environment = {**os.environ, "TZ": "UTC"}
        subprocess.run([zebtool, "demo", "build/demo"], env=environment, **quiet)
        script = "".join(f"echo '{MARK}'\n{command}\n" for command in commands)
        done = subprocess.run(
            ["bash"], input=script, cwd=clone, env=environment, text=True, check=False,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        )
        return done.stdout.split(MARK + "\n")[1:]


def main():
    root = pathlib.Path(sys.argv[1])
    readme = (root / "README.md").read_text()
    check_examples(root, readme)
    tour = TOUR.search(readme)[0]
    steps = STEP.findall(tour)
    said = run_tour(pathlib.Path(sys.argv[2]).resolve(), [command for command, _ in steps])
    said = [re.sub("^", "    ", text, flags=re.MULTILINE).rstrip(" ") for text in said]
    if "--write" in sys.argv:
        now = iter(said)
        tour_now = STEP.sub(lambda step: f"    $ {step[1]}\n{next(now)}", tour)
        (root / "README.md").write_text(readme.replace(tour, tour_now))
        return
    for (command, shown), really in zip(steps, said, strict=True):
        if CHANGING.sub("N", shown) != CHANGING.sub("N", really):
            sys.exit(f"README.md says of\n    $ {command}\n{shown}but the command says\n{really}")


if __name__ == "__main__":
    main()
