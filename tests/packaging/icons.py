#!/usr/bin/env python3
"""Checks that the icons are sound SVG files, and that there is something to see at every size.

Usage: icons.py XMLLINT RSVG_CONVERT FOLDER
"""
import subprocess
import sys
from pathlib import Path


def main():
    xmllint, convert, folder = sys.argv[1:]
    names = ("skyflare.svg", "skyflare-symbolic.svg")
    for file in [Path(folder) / name for name in names]:
        subprocess.run([xmllint, "--noout", str(file)], check=True)
        for size in (16, 32, 48, 128, 512):
            picture = subprocess.run([convert, "-w", str(size), "-h", str(size), str(file)],
                                     check=True, capture_output=True).stdout
            # The width and height of a PNG's header. What is empty packs to next to nothing.
            measures = [int.from_bytes(picture[at:at + 4], "big") for at in (16, 20)]
            if measures != [size, size] or len(picture) < 150 + 4 * size:
                print(f"{file.name} at {size}: {measures}, {len(picture)} bytes")
                return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
