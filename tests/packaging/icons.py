#!/usr/bin/env python3
"""Checks that icons are sound SVG files, and that there is something to see at every size.

Usage: icons.py XMLLINT RSVG_CONVERT FILE…
"""
import subprocess
import sys


def main():
    xmllint, convert, *files = sys.argv[1:]
    subprocess.run([xmllint, "--noout", *files], check=True)
    for file in files:
        for size in (16, 32, 48, 128, 512):
            picture = subprocess.run([convert, "-w", str(size), "-h", str(size), file],
                                     check=True, capture_output=True).stdout
            if len(picture) < 150 + 4 * size: # what is empty packs to next to nothing
                return f"{file} at {size}: {len(picture)} bytes"
    return 0


if __name__ == "__main__":
    sys.exit(main())
