#!/usr/bin/env python3
"""Checks the layering of src/: includes point downwards and, with one exception, in no circle.

Also: every layer listed here exists, headers of the operating system or the processor are included
in src/platform only, and no file grows past 600 lines unless it is a table. Prints one line for
each violation; exit status 1 when there is any.
"""

import pathlib
import re
import sys

# Low to high; a folder, or a unit (a header and its source) by its path without the suffix. A unit
# that is not listed itself belongs to its folder, whose units may include each other in any order
# that makes no circle.
LAYERS = [
    "platform/",
    "shell/text",
    "shell/output",
    "shell/log",
    "shell/settings",
    "board/",
    "eval/",
    "time/",
    # The search, from its numbers to the threads that run it.
    "search/params",
    "search/listener",
    "search/killers",
    "search/node_params",
    "smp/split_point",
    "search/worker",
    "search/tt",
    "search/root_moves",
    "search/search_state",
    "search/line_walk",
    "search/move_order",
    "search/threat",
    "search/quiet_threats",
    "search/quiet_checks",
    "search/node",
    "search/draw",
    "search/quiescence",
    "smp/work_sharing",
    "smp/split",
    "search/search",
    "search/report",
    "search/root",
    "smp/thread_pool",
    "book/",
    "uci/",
    "shell/",
    "main",
]

# The one circle: the main search splits its nodes, and it also searches what has been split.
CIRCLE = ("smp/split.cpp", "search/search.h")

MAX_LINES = 600
# Files that are tables and little else.
TABLE_FILES = {"eval/weights.cpp", "board/magics.cpp", "book/book_keys.cpp"}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def unit_of(path):
    """The path without its suffix: a header and its source are one unit."""
    return path.rsplit(".", 1)[0]


def layer_of(path):
    """The layer's index, or None for a file that belongs to no layer."""
    unit = unit_of(path)
    folder = unit.rpartition("/")[0] + "/"
    for layer in (unit, folder):
        if layer in LAYERS:
            return LAYERS.index(layer)
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
    if here is None or there is None or (path, target) == CIRCLE:
        return None
    if there > here:
        return f'({LAYERS[here]}) includes "{target}" of a higher layer ({LAYERS[there]})'
    return None


def includes_of(root, path):
    """(line number, bracket, target) of every include of the file."""
    text = (root / path).read_text(encoding="utf-8")
    for number, line in enumerate(text.splitlines(), 1):
        if match := INCLUDE.match(line):
            yield number, *match.groups()


def check_file(root, path):
    lines = len((root / path).read_text(encoding="utf-8").splitlines())
    if layer_of(path) is None:
        yield f"src/{path}: belongs to no layer"
    if lines > MAX_LINES and path not in TABLE_FILES:
        yield f"src/{path}: {lines} lines, more than {MAX_LINES}"
    for number, bracket, target in includes_of(root, path):
        if complaint := check_include(root, path, bracket, target):
            yield f"src/{path}:{number}: {complaint}"


def check_circles(root, paths):
    """A complaint for each unit that includes itself by way of others of its folder's layer."""
    below = {}
    for path in paths:
        for _, bracket, target in includes_of(root, path):
            same = layer_of(path) is not None and layer_of(path) == layer_of(target)
            if bracket == '"' and same and unit_of(path) != unit_of(target):
                below.setdefault(unit_of(path), set()).add(unit_of(target))
    for unit in sorted(below):
        seen, pending = set(), list(below[unit])
        while pending:
            other = pending.pop()
            if other not in seen:
                seen.add(other)
                pending.extend(below.get(other, ()))
        if unit in seen:
            yield f"src/{unit}: is in a circle of includes"


def check_tree(root, layers=()):
    """All complaints about the sources below root, a folder laid out like src/, which is to have
    something in each of the layers."""
    root = pathlib.Path(root)
    files = sorted(p for p in root.rglob("*") if p.suffix in (".h", ".cpp"))
    paths = [file.relative_to(root).as_posix() for file in files]
    if not paths:
        return [f"{root}: no sources"]
    found = {LAYERS[layer] for layer in map(layer_of, paths) if layer is not None}
    missing = [layer for layer in layers if layer not in found]
    complaints = [f"src/{layer}: is listed, but not there" for layer in missing]
    for path in paths:
        complaints.extend(check_file(root, path))
    return complaints + list(check_circles(root, paths))


def main():
    project = pathlib.Path(__file__).resolve().parent.parent
    complaints = check_tree(sys.argv[1] if len(sys.argv) > 1 else project / "src", LAYERS)
    for complaint in complaints:
        print(complaint)
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
