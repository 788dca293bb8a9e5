#!/usr/bin/env python3
"""Checks that the Flatpak manifest asks for no more than it needs. Usage: flatpak_rights.py MANIFEST"""
import re
import sys
from pathlib import Path

import yaml

RIGHTS = set("""--socket=wayland --socket=fallback-x11 --share=ipc --device=dri
    --filesystem=xdg-pictures/Skyflare:create
    --talk-name=org.sigxcpu.Feedback --talk-name=org.unifiedpush.Distributor.*""".split())


def main():
    manifest = yaml.safe_load(Path(sys.argv[1]).read_text())
    if set(manifest["finish-args"]) != RIGHTS:
        return f"other rights: {sorted(set(manifest['finish-args']) ^ RIGHTS)}"
    for source in [source for module in manifest["modules"] for source in module["sources"]]:
        if source["type"] != "dir" and not (source["url"].startswith("https://")
                                            and re.fullmatch("[0-9a-f]{64}", source["sha256"])):
            return f"a source that is not pinned: {source}"
    return 0


if __name__ == "__main__":
    sys.exit(main())
