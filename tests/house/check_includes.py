#!/usr/bin/env python3
"""Checks the directions in which the folders include each other.

usage: check_includes.py ROOT

Prints one line per broken rule and exits with 1 when there is any. docs/architecture.md explains
the rules.
"""
import pathlib
import re
import sys

# Which folders a folder may include besides itself.
FRAMEWORK = ["platform/framework"]
OS = FRAMEWORK + ["platform/os"]
LIBRARIES = OS + ["platform/noxcodec", "platform/zebdev", "platform/noxdisplay"]
CAPTURE = LIBRARIES + ["record", "image", "capture"]
EVERYTHING = CAPTURE + ["storage", "playback", "tools", "tests", "zebx.h"]
MAY_INCLUDE = {
    "platform/framework": [],
    "platform/os": FRAMEWORK,
    "platform/noxcodec": OS,
    "platform/zebdev": OS,
    "platform/noxdisplay": OS,
    "record": LIBRARIES,
    "image": LIBRARIES,
    "capture": CAPTURE,
    "storage": CAPTURE,
    "playback": CAPTURE,
    "zebx.h": CAPTURE + ["storage", "playback"],
    "tools": EVERYTHING,
    "tests": EVERYTHING,
    "bench": EVERYTHING,
    "fuzz": EVERYTHING,
    "examples": [],
}
# Fixed tables that need nothing else of their folder.
LEAVES = {"capture/picture_formats.h": ["record", "image"]}
# The virtual device encodes what it shows, so its software uses the software codec.
SOFTWARE_MAY_INCLUDE = {"platform/zebdev/software": ["platform/noxcodec"]}

HOSTS = ["tools", "tests", "bench", "fuzz", "examples"]
MAY_USE_SYSTEM_HEADERS = ["platform/os"] + HOSTS
STANDARD_HEADERS = set("""
algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine
csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque
exception execution filesystem format forward_list fstream functional future initializer_list
iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string
string_view syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map
unordered_set utility valarray variant vector version
""".split())

MAX_LINES = 450
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def folder_of(path):
    """The row of MAY_INCLUDE that a path belongs to; None when there is none."""
    for folder in MAY_INCLUDE:
        if path == folder or path.startswith(folder + "/"):
            return folder
    return None


def software_folder_of(path):
    """platform/noxcodec/software for what lies below it; None elsewhere."""
    match = re.match(r"platform/[^/]+/software(?=/)", path)
    return match.group() if match else None


def check_system_include(folder, target):
    if target in STANDARD_HEADERS or folder in MAY_USE_SYSTEM_HEADERS:
        return None
    return f"<{target}> is a system header: only platform/os and hosts use those"


def check_project_include(root, includer, folder, target):
    if not (root / target).is_file():
        return f'"{target}" is no path from the project\'s root'
    target_folder = folder_of(target)
    if target_folder is None:
        return f'"{target}" lies in a folder without rules'
    own_software = software_folder_of(includer)
    software = software_folder_of(target)
    friends = SOFTWARE_MAY_INCLUDE.get(own_software, [])
    if software and folder not in HOSTS and own_software != software \
            and target_folder not in friends:
        return f'"{target}" is behind the door of a replaceable library'
    if target_folder == folder or target_folder in MAY_INCLUDE[folder] + friends:
        return None
    if folder in LEAVES.get(target, []):
        return None
    return f'"{target}": {folder} does not include {target_folder}'


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
        if not match:
            continue
        kind, target = match.groups()
        if kind == "<":
            fault = check_system_include(folder, target)
        else:
            fault = check_project_include(root, includer, folder, target)
        if fault:
            yield f"{includer}:{number}: {fault}"


def sources(root):
    for path in sorted(root.rglob("*")):
        inside = path.relative_to(root).parts
        # Builds, hidden folders, and the package's host, which includes what is installed.
        if inside[0] == "build" or inside[0].startswith(".") or "package" in inside:
            continue
        if path.suffix in (".h", ".cpp"):
            yield path


def check_tree(root):
    return [fault for path in sources(root) for fault in check_file(root, path)]


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    root = pathlib.Path(sys.argv[1]).resolve()
    faults = check_tree(root)
    print("\n".join(faults) if faults else f"{len(list(sources(root)))} sources keep the rules")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
