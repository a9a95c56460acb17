#!/usr/bin/env python3
"""Checks the directions in which the folders include each other.

usage: check_includes.py ROOT

Prints one line per broken rule and exits with 1 when there is any. docs/architecture.md explains
the rules.
"""
import pathlib
import re
import sys

# Which folders a folder may include besides itself. What lies below a folder, such as the rooms of
# platform/os, is part of it.
FRAMEWORK = ["platform/framework"]
OS = FRAMEWORK + ["platform/os"]
DOORS = OS + ["platform/noxcodec", "platform/noxdisplay"]
DEVICES = DOORS + ["platform/zebdev"]
CAPTURE = DEVICES + ["record", "image", "recovery", "capture"]
LIBRARY = CAPTURE + ["storage", "playback"]
EVERYTHING = LIBRARY + ["tools", "tests", "zebx.h"]
MAY_INCLUDE = {
    "platform/framework": [],
    "platform/os": FRAMEWORK,
    "platform/noxcodec": OS,
    "platform/noxdisplay": OS,
    "platform/zebdev": DOORS,
    "record": DEVICES,
    "image": DEVICES,
    "recovery": DEVICES + ["record", "image"],
    "capture": CAPTURE,
    "storage": CAPTURE,
    "playback": CAPTURE,
    "zebx.h": LIBRARY,
    "tools": EVERYTHING,
    "tests": EVERYTHING,
    "bench": EVERYTHING,
    "fuzz": EVERYTHING,
    "examples": [],
}
# Fixed tables that need nothing else of their folder.
LEAVES = {"capture/picture_formats.h": ["record", "image", "recovery"]}
# The virtual device encodes what it shows, so its software uses the software codec.
SOFTWARE_MAY_INCLUDE = {"platform/zebdev/software": "platform/noxcodec/software"}

HOSTS = ["tools", "tests", "bench", "fuzz", "examples"]
MAX_LINES = 450
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^">]+)[">]')


def folder_of(path):
    """The row of MAY_INCLUDE that a path belongs to; None when there is none."""
    return next((f for f in MAY_INCLUDE if path == f or path.startswith(f + "/")), None)


def software_of(path):
    """platform/noxcodec/software for what lies below it; None elsewhere."""
    match = re.match(r"platform/[^/]+/software(?=/)", path)
    return match and match.group()


def fault_of(root, includer, folder, bracket, target):
    """What is wrong with a line that includes `target`; None when nothing is."""
    if bracket == "<":
        # The standard library's headers have no suffix.
        may = "." not in target or folder in HOSTS + ["platform/os"]
        return None if may else f"<{target}> is a system header: only platform/os and hosts use those"
    if not (root / target).is_file():
        return f'"{target}" is no path from the project\'s root'
    software = software_of(target)
    if software and folder not in HOSTS:
        may = software in (software_of(includer), SOFTWARE_MAY_INCLUDE.get(software_of(includer)))
        return None if may else f'"{target}" is behind the door of a replaceable library'
    there = folder_of(target)
    may = there == folder or there in MAY_INCLUDE[folder] or folder in LEAVES.get(target, [])
    return None if may else f'"{target}": {folder} does not include {there}'


def check_file(root, path):
    includer = path.relative_to(root).as_posix()
    folder = folder_of(includer)
    if folder is None:
        yield f"{includer}: a source outside the folders of the architecture"
        return
    lines = path.read_text(encoding="utf-8").splitlines()
    if len(lines) > MAX_LINES:
        yield f"{includer}: {len(lines)} lines, more than {MAX_LINES}; it wants a collaborator"
    for number, line in enumerate(lines, 1):
        match = INCLUDE.match(line)
        fault = match and fault_of(root, includer, folder, *match.groups())
        if fault:
            yield f"{includer}:{number}: {fault}"


def sources(root):
    for path in sorted(root.rglob("*")):
        inside = path.relative_to(root).parts
        # Builds, hidden folders, and the package's hosts, which include what is installed.
        if inside[0] == "build" or inside[0].startswith(".") or "package" in inside:
            continue
        if path.suffix in (".h", ".cpp"):
            yield path


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    root = pathlib.Path(sys.argv[1]).resolve()
    faults = [f"{folder}: a rule without a folder" for folder in MAY_INCLUDE
              if not (root / folder).exists()]
    checked = list(sources(root))
    faults += [fault for path in checked for fault in check_file(root, path)]
    print("\n".join(faults) or f"{len(checked)} sources keep the rules")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
