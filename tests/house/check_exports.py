#!/usr/bin/env python3
"""Checks that the shared library shows a host only what carries ZEBX_API.

usage: check_exports.py NM LIBRARY ROOT

Names of the standard library may be there too: its templates are shared between libraries.
"""
import pathlib
import re
import subprocess
import sys

EXPORTED = re.compile(r"ZEBX_API\s+([^;{]*)")


def exported_names(root):
    """Classes and functions that a header marks with ZEBX_API."""
    names = set()
    for folder in ("platform", "record", "image", "capture", "storage", "playback"):
        for header in (root / folder).rglob("*.h"):
            for declaration in EXPORTED.findall(header.read_text(encoding="utf-8")):
                # `Name final : public Base` of a class, `int Name(int argument)` of a function.
                head = re.split(r"[(:]", declaration.replace("::", "."))[0].replace(" final", "")
                names.add(head.split()[-1].lstrip("*&"))
    return names


def symbols(nm, library):
    output = subprocess.run([nm, "-DC", "--defined-only", library], check=True,
                            capture_output=True, text=True).stdout
    for line in output.splitlines():
        yield line.split(maxsplit=2)[2]


def is_allowed(symbol, names):
    if re.match(r"(typeinfo|typeinfo name|vtable|guard variable|VTT) for ", symbol):
        symbol = symbol.split(" for ", 1)[1]
    if re.search(r"\bstd::|\b__gnu_cxx::|^operator ", symbol):
        return True
    # Of the qualified name in front of the arguments, any part: a class, one of its members, or a
    # function in a namespace.
    qualified_name = re.split(r"[(\[]", symbol)[0].split()[-1]
    return any(part in names for part in qualified_name.split("::"))


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    nm, library, root = sys.argv[1:]
    names = exported_names(pathlib.Path(root))
    shown = list(symbols(nm, library))
    stray = [symbol for symbol in shown if not is_allowed(symbol, names)]
    print("\n".join(f"exported without ZEBX_API: {symbol}" for symbol in stray)
          or f"{len(shown)} exported symbols, all of them meant to be")
    return 1 if stray or not shown else 0


if __name__ == "__main__":
    sys.exit(main())
