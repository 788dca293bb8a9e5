#!/usr/bin/env python3
"""Builds the example of the engine's package as a deployer would, outside of our tree, and sees its event arrive.

Usage: sdk.py COLLECTOR [BUILD_FOLDER]; without a folder the package is taken as the system has it. The compiler and
its flags may stand in CXX and CXXFLAGS.
"""
import json
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path


def build_example(folder, build):
    prefix = folder / "usr" if build else Path("/usr")
    if build:
        subprocess.run(["cmake", "--install", build, "--component", "sdk", "--prefix", prefix],
                       check=True, stdout=subprocess.DEVNULL)
    source = prefix / "share/doc/libskyflare-analytics-dev/examples"
    generator = ["-G", "Ninja"] if shutil.which("ninja") else [] # not every machine has make
    subprocess.run(["cmake", *generator, "-S", source, "-B", folder / "example", f"-DCMAKE_PREFIX_PATH={prefix}"],
                   check=True)
    subprocess.run(["cmake", "--build", folder / "example"], check=True)


def lessons(folder, port):
    """The events of the example that have arrived. A run of it on a busy machine may end before its event is sent:
    the next one sends it along."""
    output = folder / "collected/events.jsonl"
    for _ in range(5):
        subprocess.run([folder / "example/log-event", f"http://127.0.0.1:{port}", folder / "data"], check=True)
        lines = output.read_text().splitlines() if output.exists() else []
        found = [json.loads(line) for line in lines if '"lesson_finished"' in line and line.endswith("}")]
        if found:
            return found
    return []


def main():
    program, build = (sys.argv[1:] + [None])[:2]
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        build_example(folder, build)
        collector = subprocess.Popen([program, "--port", "0", "--state-dir", folder / "collected"],
                                     stdout=subprocess.PIPE, text=True)
        try:
            found = lessons(folder, re.search(r" port (\d+) ", collector.stdout.readline())[1])
        finally:
            collector.terminate()
            collector.communicate(timeout=60)
    print(found)
    return 0 if found and found[0]["params"]["score"] == 7 else 1


if __name__ == "__main__":
    sys.exit(main())
