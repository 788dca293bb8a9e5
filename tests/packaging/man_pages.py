#!/usr/bin/env python3
"""Checks that groff formats the man pages without a word. Usage: man_pages.py GROFF FOLDER"""
import subprocess
import sys
from pathlib import Path


def main():
    groff, folder = sys.argv[1:]
    pages = sorted(Path(folder).glob("*.1"))
    for page in pages:
        done = subprocess.run([groff, "-man", "-ww", "-z", "-Tutf8", str(page)], capture_output=True, text=True,
                              check=True)
        print(done.stderr, end="")
        if done.stderr or "@" in page.read_text().replace("1280x720@60", ""):
            return f"{page} is not clean"
    return 0 if len(pages) == 3 else f"{len(pages)} pages"


if __name__ == "__main__":
    sys.exit(main())
