#!/usr/bin/env python3
"""Checks every #include "..." of the code folders against cmake/layers.txt.

Usage: layers.py [ROOT]. It first proves on a small made-up tree that it can fail.
"""
import re
import sys
from pathlib import Path
from tempfile import TemporaryDirectory

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]*)"')
NOT_CODE = {"tests", "build", "photos"}


def read_layers(path):
    """The table as a dictionary: folder or header prefix -> what its files may include."""
    layers = {}
    for line in path.read_text().splitlines():
        line = line.partition("#")[0].strip()
        if line:
            owner, _, allowed = line.partition(":")
            layers[owner.strip()] = allowed.split()
    return layers


def covers(entry, file):
    """Whether `entry` is the folder of `file`, the file itself, or its path without the ending."""
    return file == entry or file.startswith(entry + "/") or file.rpartition(".")[0] == entry


def faults(root):
    layers = read_layers(root / "cmake/layers.txt")
    sources = [path.relative_to(root) for kind in ("*.h", "*.cpp") for path in root.rglob(kind)]
    sources = [path for path in sources if path.parts[0] not in NOT_CODE and not path.parts[0].startswith(".")]
    if not sources:
        yield f"{root}: no source files"
    for source in sorted(sources):
        owner = max((entry for entry in layers if covers(entry, source.as_posix())), key=len, default=None)
        if owner is None:
            yield f"{source}:1: no line of cmake/layers.txt covers it"
            continue
        for number, line in enumerate((root / source).read_text().splitlines(), 1):
            found = INCLUDE.match(line)
            if found and not any(covers(entry, found[1]) for entry in [owner, *layers[owner]]):
                yield f'{source}:{number}: {owner} may not include "{found[1]}"'


def self_test():
    files = {
        "cmake/layers.txt": "low :\nhigh/App : low\nhigh : low high/App.h\n",
        "low/A.h": '#include "low/B.h"\n  #  include "high/App.h"\n',
        "lower/C.h": "",
        "high/App.h": '#include "low/A.h"\n#include "high/Window.h"\n',
        "high/Window.cpp": '#include "high/App.h"\n#include <vector>\n#include "A.h"\n',
        "tests/T.cpp": '#include "high/Window.h"\n',
    }
    expected = [
        'high/App.h:2: high/App may not include "high/Window.h"',
        'high/Window.cpp:3: high may not include "A.h"',
        'low/A.h:2: low may not include "high/App.h"',
        "lower/C.h:1: no line of cmake/layers.txt covers it",
    ]
    with TemporaryDirectory() as folder:
        for name, text in files.items():
            path = Path(folder) / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text)
        found = list(faults(Path(folder)))
    if found != expected:
        sys.exit("layers.py itself is broken; it found:\n" + "\n".join(found))


if __name__ == "__main__":
    self_test()
    wrong = list(faults(Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent.parent).resolve()))
    sys.exit("\n".join(wrong) if wrong else 0)
