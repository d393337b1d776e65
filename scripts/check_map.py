#!/usr/bin/env python3
"""Checks that docs/map.md has a line for every unit in src/, and for nothing else.

A unit is a header with its source, or with a source for each operating system (name_posix.cpp and
name_windows.cpp in src/platform).
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def main():
    sources = (p for p in (ROOT / "src").rglob("*") if p.suffix in (".h", ".cpp"))
    paths = {p.relative_to(ROOT / "src").with_suffix("").as_posix() for p in sources}
    there = {re.sub(r"^(platform/.*)_(posix|windows)$", r"\1", path) for path in paths}
    text = (ROOT / "docs" / "map.md").read_text(encoding="utf-8")
    named = set(re.findall(r"^- `([a-z_0-9]+(?:/[a-z_0-9]+)?)` - ", text, re.M))
    for name in sorted(there - named):
        print(f"docs/map.md: no line for {name}")
    for name in sorted(named - there):
        print(f"docs/map.md: {name} is not below src/")
    return 1 if there != named else 0


if __name__ == "__main__":
    sys.exit(main())
