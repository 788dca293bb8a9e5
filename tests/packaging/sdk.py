#!/usr/bin/env python3
"""Builds the example of the engine's package as a deployer would, outside of our tree, and sees its event arrive.

Usage: sdk.py --build FOLDER --collector PROGRAM [--compiler CXX] [--sanitize LIST]
With --installed in place of --build the package is taken as the system has it.
"""
import argparse
import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def arguments():
    parser = argparse.ArgumentParser()
    where = parser.add_mutually_exclusive_group(required=True)
    where.add_argument("--build")
    where.add_argument("--installed", action="store_true")
    parser.add_argument("--collector", required=True)
    parser.add_argument("--compiler", default="c++")
    parser.add_argument("--sanitize", default="")
    return parser.parse_args()


def build_example(prefix, folder, asked):
    flags = f"-fsanitize={asked.sanitize}" if asked.sanitize else ""
    source = prefix / "share/doc/libskyflare-analytics-dev/examples"
    generator = ["-G", "Ninja"] if shutil.which("ninja") else [] # not every machine has make
    subprocess.run(["cmake", *generator, "-S", source, "-B", folder / "example", f"-DCMAKE_PREFIX_PATH={prefix}",
                    f"-DCMAKE_CXX_COMPILER={asked.compiler}", f"-DCMAKE_CXX_FLAGS={flags}"], check=True)
    subprocess.run(["cmake", "--build", folder / "example"], check=True)
    return folder / "example/log-event"


def lessons(example, address, folder, output):
    """The events of the example that have arrived. A run of it on a busy machine may end before its event is sent:
    the next one sends it along."""
    for _ in range(5):
        subprocess.run([example, address, folder], check=True)
        lines = output.read_text().splitlines() if output.exists() else []
        found = [json.loads(line) for line in lines if '"lesson_finished"' in line]
        if found:
            return found
    return []


def main():
    asked = arguments()
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        prefix = Path("/usr")
        if asked.build:
            prefix = folder / "usr"
            subprocess.run(["cmake", "--install", asked.build, "--component", "sdk", "--prefix", prefix],
                           check=True, stdout=subprocess.DEVNULL)
        example = build_example(prefix, folder, asked)
        collector = subprocess.Popen([asked.collector, "--port", "0", "--state-dir", folder / "collected"],
                                     stdout=subprocess.PIPE, text=True)
        try:
            port = re.search(r" port (\d+) ", collector.stdout.readline())[1]
            arrived = lessons(example, f"http://127.0.0.1:{port}", folder / "data",
                              folder / "collected/events.jsonl")
        finally:
            collector.terminate()
            collector.communicate(timeout=60)
    print(arrived)
    return 0 if arrived and "score" in json.dumps(arrived[0]) else 1


if __name__ == "__main__":
    sys.exit(main())
