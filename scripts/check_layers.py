#!/usr/bin/env python3
"""Checks the layering of src/: includes point downwards or sideways, never up.

Also: headers of the operating system or the processor are included in src/platform only, and no
file grows past 600 lines unless it is a table. Prints one line for each violation; exit status 1
when there is any.
"""

import pathlib
import re
import sys

# Low to high. A file belongs to the first pattern that matches its path below src/.
LAYERS = [
    ("platform", r"platform/"),
    ("text", r"shell/(text|log|settings)\."),
    ("board", r"board/"),
    ("eval", r"eval/"),
    ("search", r"(search|smp|time)/"),
    ("book", r"book/"),
    ("uci", r"uci/"),
    ("shell", r"shell/"),
    ("main", r"main\.cpp$"),
]

MAX_LINES = 600
# Files that are tables and little else.
TABLE_FILES = {"eval/weights.cpp", "board/magics.cpp", "book/book_keys.cpp"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def layer_of(path):
    """The layer's index, or None for a file that belongs to no layer."""
    for index, (_, pattern) in enumerate(LAYERS):
        if re.match(pattern, path):
            return index
    return None


def check_include(root, path, bracket, target):
    """A complaint about one include of one file, or None."""
    if bracket == "<":
        # The standard headers of C++ have neither a suffix nor a folder.
        if ("." in target or "/" in target) and not path.startswith("platform/"):
            return f"includes the system header <{target}> outside src/platform"
        return None
    if not (root / target).is_file():
        return f'includes "{target}", which is no file below src/'
    here, there = layer_of(path), layer_of(target)
    if here is not None and there is not None and there > here:
        return f'({LAYERS[here][0]}) includes "{target}" of a higher layer ({LAYERS[there][0]})'
    return None


def check_file(root, path):
    text = (root / path).read_text(encoding="utf-8").splitlines()
    if layer_of(path) is None:
        yield f"src/{path}: belongs to no layer"
    if len(text) > MAX_LINES and path not in TABLE_FILES:
        yield f"src/{path}: {len(text)} lines, more than {MAX_LINES}"
    for number, line in enumerate(text, 1):
        match = INCLUDE.match(line)
        complaint = check_include(root, path, *match.groups()) if match else None
        if complaint:
            yield f"src/{path}:{number}: {complaint}"


def check_tree(root):
    """All complaints about the sources below root, a folder laid out like src/."""
    root = pathlib.Path(root)
    files = sorted(p for p in root.rglob("*") if p.suffix in (".h", ".cpp"))
    if not files:
        return [f"{root}: no sources"]
    return [c for file in files for c in check_file(root, file.relative_to(root).as_posix())]


def main():
    project = pathlib.Path(__file__).resolve().parent.parent
    complaints = check_tree(sys.argv[1] if len(sys.argv) > 1 else project / "src")
    for complaint in complaints:
        print(complaint)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
