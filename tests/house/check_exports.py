#!/usr/bin/env python3
"""Checks that what hosts get fits together: the headers of cmake/host_headers.txt and the library.

usage: check_exports.py NM LIBRARY ROOT

The library shows only what carries ZEBX_API, and names of the standard library, whose templates are
shared. Every function, member and static that a host's header declares without a body is in it.
"""
import collections
import pathlib
import re
import subprocess
import sys

import check_includes

OPERATOR = r"operator\s*[^\w\s(]+"
NAME = re.compile(rf"((?:\w+::)*(?:{OPERATOR}|~?\w+))\s*(?=\(|$)")
SCOPE = re.compile(r"^(?:namespace|(?:class|struct)(?: ZEBX_API)?) ([\w:]+)[^(=]*$")


def exported_names(root):
    """Classes and functions marked with ZEBX_API, in headers for hosts or others."""
    for source in check_includes.sources(root):
        for declaration in re.findall(r"ZEBX_API\s+([^;{]*)", source.read_text(encoding="utf-8")):
            # `Name final : public Base` of a class, `int Name(int argument)` of a function.
            head = re.split(r"[(:]", declaration.replace("::", "."))[0].replace(" final", "")
            yield head.split()[-1].lstrip("*&")


def symbols(nm, library):
    output = subprocess.run([nm, "-DC", "--defined-only", library], check=True,
                            capture_output=True, text=True).stdout
    return [line.split(maxsplit=2)[2].replace("[abi:cxx11]", "") for line in output.splitlines()]


def is_allowed(symbol, names):
    symbol = re.sub(r"^(typeinfo|typeinfo name|vtable|guard variable|VTT) for ", "", symbol)
    # Of the qualified name in front of the arguments, any part: a class, one of its members, or a
    # function in a namespace.
    parts = re.split(r"[(\[]", symbol)[0].split()[-1].split("::")
    return re.search(r"\bstd::|\b__gnu_cxx::|^operator ", symbol) or any(p in names for p in parts)


def declared(text):
    """The qualified names of what a header declares without a body, one for each overload."""
    text = re.sub(r"//.*|^#(?:.*\\\n)*.*$", "", text, flags=re.M)
    text = re.sub(r"DECLARE_DYNAMIC\((\w+)\)", r"static const R class\1; R GetRuntimeClass();", text)
    scopes, statement, body_depth, depth = [], "", 0, 0
    for letter in text:
        if body_depth > 0:
            body_depth += {"{": 1, "}": -1}.get(letter, 0)
            statement = "" if body_depth == 0 else statement
            continue
        depth += {"(": 1, ")": -1}.get(letter, 0)
        if depth > 0 or letter not in "{};":
            statement += letter
            continue
        statement = re.sub(r"\b(public|protected|private):|\s+", " ", statement).strip()
        scope = SCOPE.match(statement)
        if letter == "{" and (scope or statement == 'extern "C"'):
            scopes.append(scope[1].split("::") if scope else [])
        elif letter == "{":
            body_depth = 1
        elif letter == "}":
            scopes.pop()
        elif name := declared_name(statement):
            yield "::".join(sum(scopes, []) + [name])
        statement = ""


def declared_name(statement):
    if re.match(r"(using|friend|template|static_assert|static constexpr|inline) ?", statement) or \
            re.search(r"= (default|delete|0)$", statement):
        return None
    if static := re.fullmatch(r"static [^()=]* (\w+)", statement):
        return static[1]
    # Up to the arguments, without those of templates: `std::function<int(int)> m_use` is none.
    while re.search(r"(?<!operator)(?<!<)<[^<>]*>", statement):
        statement = re.sub(r"(?<!operator)(?<!<)<[^<>]*>", "", statement)
    function = re.match(rf"(?:[^(=]*?[\s*&])?({OPERATOR}|~?\w+)\(", statement)
    return function[1] if function else None


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    nm, library, root = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    headers = (root / "cmake/host_headers.txt").read_text(encoding="utf-8").split()
    texts = {header: (root / header).read_text(encoding="utf-8") for header in headers}

    shown = symbols(nm, library)
    names = set(exported_names(root))
    faults = [f"exported without ZEBX_API: {s}" for s in shown if not is_allowed(s, names)]

    there = collections.Counter(name[1] for name in map(NAME.match, set(shown)) if name)
    wanted = collections.Counter(name for text in texts.values() for name in declared(text))
    faults += [f"declared for hosts, {there[name]} of {count} in the library: {name}"
               for name, count in wanted.items() if there[name] < count]

    print("\n".join(faults) or f"{len(headers)} headers declare {wanted.total()} functions, all "
          f"among {len(shown)} symbols, all of them meant to be")
    return 1 if faults or not shown or not wanted else 0


if __name__ == "__main__":
    sys.exit(main())
