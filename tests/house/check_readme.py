#!/usr/bin/env python3
"""Checks that the program that README shows is the example that the package test builds and runs.

usage: check_readme.py ROOT
"""
import pathlib
import sys

root = pathlib.Path(sys.argv[1])
example = (root / "examples/list_recording.cpp").read_text()
if f"```cpp\n{example}```" not in (root / "README.md").read_text():
    sys.exit("README.md does not show examples/list_recording.cpp as it is")
