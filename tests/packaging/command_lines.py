#!/usr/bin/env python3
"""Checks that man page and bash completion of a program name the options of its --help, and no others.

Usage: command_lines.py PACKAGING LAUNCH_ARGUMENTS_CPP PROGRAM…
"""
import re
import subprocess
import sys
from pathlib import Path

OPTION = re.compile(r"(?<![\w-])(--?[A-Za-z][\w-]+)")


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def offered(file, words):
    """What bash offers for the last of `words`."""
    script = ('source "$1"; COMP_WORDS=("${@:2}"); COMP_CWORD=$(($# - 2)); '
              '"$(complete -p "$2" | sed "s/.*-F \\([^ ]*\\).*/\\1/")"; printf "%s\\n" "${COMPREPLY[@]}"')
    return set(run("bash", "-c", script, "bash", str(file), *words).split())


def faults(packaging, launch_arguments, program):
    name = Path(program).name
    text = run(program, "--help")
    expected = {match[1] for match in re.finditer(r"^  (--[\w-]+)", text, re.MULTILINE)}
    if name != "skyflare-collector":
        expected |= launch_arguments
    page = (packaging / f"man/{name}.1.in").read_text().replace("\\-", "-")
    headings = "\n".join(re.findall(r"^\.TP\n(.*)$", page, re.MULTILINE))
    for place, found in (("man page", set(OPTION.findall(headings))),
                         ("completion", offered(packaging / "completion" / name, [name, "-"]))):
        for option in sorted(expected ^ found):
            yield f"{name}: {option} is {'not in' if option in expected else 'wrongly in'} the {place}"
    refused = subprocess.run([program, "--no-such-option"], capture_output=True, text=True, check=False)
    if refused.returncode != 2 or refused.stdout or "--no-such-option" not in refused.stderr:
        yield f"{name}: an unknown option gives {refused.returncode}, {refused.stdout!r}, {refused.stderr!r}"


def main():
    packaging, source, *programs = sys.argv[1:]
    launch_arguments = set(re.findall(r'^    {"(-\w+)"', Path(source).read_text(), re.MULTILINE))
    found = [] if launch_arguments else ["there are no launch arguments"]
    for program in programs:
        found += faults(Path(packaging), launch_arguments, program)
    watch = Path(packaging) / "completion/skyflare-watch"
    if offered(watch, ["skyflare-watch", "--sensitivity", "=", "very-"]) != {"very-low", "very-high"}:
        found.append("skyflare-watch: values behind = are not completed")
    print("\n".join(found))
    return bool(found)


if __name__ == "__main__":
    sys.exit(main())
