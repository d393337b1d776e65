#!/usr/bin/env python3
"""Breaks one line of the engine at a time, and tells which breaks no test notices.

  tools/mutate.py [--count N] [--seed N] [--layers LIST] [--jobs N] [--minutes M] [--only LIST]
                  [--list]

Each break is compiled in a copy of the working tree below build/mutate, never in the tree itself.
The tests of its layer run first, then the others but the slow ones, until one fails; tests that
take far longer than they should have noticed it too. A break that does not compile, or that
compiles to the same code, is replaced by the next one. The same seed gives the same breaks as long
as the sources are the same: `--only 12,40` tries numbers 12 and 40 again, after the tests were
changed.

A row of a table, and all rows around it, count as one line: tables are long. The build is without
asserts, which notice more.
"""

import argparse
import concurrent.futures
import hashlib
import json
import math
import os
import pathlib
import random
import re
import resource
import shutil
import signal
import subprocess
import sys
import threading
import time
import typing

PROJECT = pathlib.Path(__file__).resolve().parent.parent
LAYERS = ["board", "eval", "search", "time", "uci", "book"]
# The test programs, low layer to high.
PROGRAMS = ["platform", "board", "eval", "time", "search", "smp", "book", "uci", "shell"]
# Tests get so many times the processor time that they take without a break, and some seconds;
# their time on the clock, which a busy machine stretches, counts for those that wait for ever.
PATIENCE, SPARE_SECONDS, SPARE_WAIT = 4, 10, 60
MEMORY_KB = 8 << 20  # address space of a test
MOST_OUTPUT = 16 << 20  # bytes
OUT_OF_TIME = 128 + signal.SIGXCPU  # exit status, as bash tells it


# What can be broken.


class Mutant(typing.NamedTuple):
    """A broken line; number is its place in the sequence that the seed gives."""

    number: int
    file: str  # relative to the tree
    line: int  # from 1
    kind: str
    before: str
    after: str


LITERAL = re.compile(
    r"""//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|(?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])'""", re.DOTALL
)


def mask(text):
    """The text with comments blanked out and literals of characters replaced, of the same shape."""

    def hide(match):
        filler = "_" if match.group()[0] in "\"'" else " "
        return re.sub(r"[^\n]", filler, match.group())

    return LITERAL.sub(hide, text)


# Statements that are no part of what is tested: what holds anyway, and what is only told.
UNTOUCHED = re.compile(r"\s*(?:assert|static_assert|log|trace|std::fprintf)\s*\(")
# Lines in which a sign means something else.
SKIPPED = re.compile(r"\s*(?:#|template\b|using\b|namespace\b|friend\b|class\b|struct\b|enum\b)|"
                     r".*\boperator\b|.*= (?:default|delete);")
DECLARATION = re.compile(
    r"\s*(?:const|constexpr|static|auto|inline|explicit|virtual|extern|typedef|case|default|goto|"
    r"delete|throw|else|do|\[\[)\b|\s*return\b(?!;)|\s*(?:[\w:]+(?:<.*>)?[*&]* +)+[\w\[\]]+ *[=({;]"
)
STATEMENT = re.compile(r"\s*(?:break;|continue;|return;|if \(.*\) .*;|(?:\+\+|--).*;|"
                       r"[*+\w:(-].*(?:=|\(|\+\+|--).*;)\s*$")
TABLE_ROW = re.compile(r"^(?=.*\d)[\s\d,.+{}()xXA-Fa-fuUlL'-]*$")

# (kind, pattern, what may take its place)
SIGNS = [
    ("comparison", r"(?<= )(==)(?= )", ["!="]),
    ("comparison", r"(?<= )(!=)(?= )", ["=="]),
    ("comparison", r"(?<= )(<)(?= )", ["<=", ">="]),
    ("comparison", r"(?<= )(>)(?= )", [">=", "<="]),
    ("comparison", r"(?<= )(<=)(?= )", ["<", ">"]),
    ("comparison", r"(?<= )(>=)(?= )", [">", "<"]),
    ("logic", r"(?<=[ \w)])(&&)(?= )", ["||"]),
    ("logic", r"(?<= )(\|\|)(?= )", ["&&"]),
    ("logic", r"(?<![\w)\]])(!)(?=[\w(])", [""]),
    ("logic", r"\b(true)\b", ["false"]),
    ("logic", r"\b(false)\b", ["true"]),
    ("sign", r"(?<= )(\+)(?= )", ["-"]),
    ("sign", r"(?<= )(-)(?= )", ["+"]),
    ("sign", r"(?<= )(\*)(?= )", ["/"]),
    ("sign", r"(?<= )(/)(?= )", ["*"]),
    ("sign", r"(?<= )(\+=)(?= )", ["-="]),
    ("sign", r"(?<= )(-=)(?= )", ["+="]),
    ("sign", r"(\+\+)", ["--"]),
    ("sign", r"(--)", ["++"]),
    ("sign", r"(?:(?<=[=,(?:{] )|(?<=[({\[])|(?<=return ))(-)(?=[\w(])", [""]),
    ("bits", r"(?<= )(&)(?= )", ["|"]),
    ("bits", r"(?<= )(\|)(?= )", ["&"]),
    ("bits", r"(?<= )(\^)(?= )", ["&"]),
    ("bits", r"(?<= )(<<)(?= )", [">>"]),
    ("bits", r"(?<= )(>>)(?= )", ["<<"]),
    ("bits", r"(?<= )(\|=)(?= )", ["&="]),
    ("bits", r"(?<= )(&=)(?= )", ["|="]),
    ("bits", r"(~)(?=[\w(])", [""]),
]
SIGNS = [(kind, re.compile(pattern), others) for kind, pattern, others in SIGNS]
CONDITION = re.compile(r"\b(?:if|while) \(")
NUMBER = re.compile(r"(?<![\w.'])(0x[0-9A-Fa-f']+|\d[\d']*)(\.\d+)?([uUlLfF]*)(?![\w.'])")


def closing(code, at):
    """The index of the bracket that closes the one at `at`, or None."""
    depth = 0
    for index in range(at, len(code)):
        depth += (code[index] == "(") - (code[index] == ")")
        if depth == 0:
            return index
    return None


def breaks_of(line, code, is_whole=True):
    """{kind: [broken line]} of a line; code is the line with its literals masked, is_whole whether
    a statement begins in it."""
    found = {}

    def add(kind, begin, end, text):
        broken = line[:begin] + text + line[end:]
        found.setdefault(kind, []).append(broken)

    if SKIPPED.match(code):
        return found
    for kind, pattern, others in SIGNS:
        for match in pattern.finditer(code):
            for other in others:
                add(kind, *match.span(1), other)
    for match in CONDITION.finditer(code):
        end = closing(code, match.end() - 1)
        if end is not None:
            begin = max(match.end(), code.rfind(";", match.end(), end) + 1)
            add("condition", begin, end, f"!({line[begin:end].strip()})")
    for match in NUMBER.finditer(code):
        digits, fraction, suffix = match.groups()
        value = int(digits.replace("'", ""), 0 if digits.startswith("0x") else 10)
        for other in (value + 1, value - 1):
            if other >= 0:
                text = f"0x{other:X}" if digits.startswith("0x") else str(other)
                add("constant", *match.span(), text + (fraction or "") + suffix)
    balanced = code.count("(") == code.count(")")
    if is_whole and balanced and STATEMENT.match(code) and not DECLARATION.match(code):
        indent = len(line) - len(line.lstrip())
        add("removed", indent, len(line), ";")
    return found


def candidates(text):
    """[lines that count as one: [(line number, {kind: [broken line]})]] of a source's text."""
    found, block = [], []
    lines, masked = text.split("\n"), mask(text).split("\n")
    before = ";"  # the last sign of code before the line
    untouched = 0  # brackets still open of a statement that is left as it is
    for number, (line, code) in enumerate(zip(lines, masked), 1):
        begins = before in ";{}:)" or before == ""
        if untouched or UNTOUCHED.match(code):
            untouched += code.count("(") - code.count(")")
        elif possible := breaks_of(line, code, begins):
            if TABLE_ROW.match(code) and block:
                block.append((number, possible))
            else:
                block = [(number, possible)]
                found.append(block)
            if not TABLE_ROW.match(code):
                block = []
        if code.strip():
            before = code.strip()[-1]
            if not TABLE_ROW.match(code):
                block = []
    return found


def sequence(tree, layers, seed):
    """All breaks in the order in which they are tried, one of each line."""
    places = []
    for layer in layers:
        for path in sorted((tree / "src" / layer).iterdir()):
            if path.suffix in (".cpp", ".h") and "_windows" not in path.name:
                text = path.read_text(encoding="utf-8")
                name = path.relative_to(tree).as_posix()
                places += [(name, text.split("\n"), block) for block in candidates(text)]
    chance = random.Random(seed)
    chance.shuffle(places)
    result = []
    for number, (name, lines, block) in enumerate(places, 1):
        line, possible = chance.choice(block)
        kind = chance.choice(sorted(possible))
        after = chance.choice(possible[kind])
        result.append(Mutant(number, name, line, kind, lines[line - 1], after))
    return result


# Whether the tests notice.


def end_session(process):
    """Kills all that a command has started; it is the first of a session of its own."""
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                if os.getsid(int(entry.name)) == process.pid:
                    os.kill(int(entry.name), signal.SIGKILL)
            except OSError:
                pass
    process.wait()


class Outcome(typing.NamedTuple):
    """How a command ended: its output, None as status when it took too long."""

    status: typing.Optional[int]
    output: str


class Times(typing.NamedTuple):
    """Seconds on the clock and of the processor that a command takes."""

    clock: float
    processor: float


class Workplace:
    """A copy of the tree and its build; one break is tried in it at a time."""

    def __init__(self, folder):
        self.folder = folder
        self.tree, self.build, self.scratch = folder / "tree", folder / "build", folder / "tmp"
        self.expected = {}  # test -> Times without a break
        self.hashes = {}  # file -> hash without a break

    def run(self, command, expected=None):
        """Runs a command, within a multiple of the expected times if they are given. Its memory and
        what it writes are bounded as well: broken programs know no end."""
        shutil.rmtree(self.scratch, ignore_errors=True)
        self.scratch.mkdir(parents=True)
        bounded = f'ulimit -Sv {MEMORY_KB}; ulimit -c 0; "$@" 2>&1 | head -c {MOST_OUTPUT}'
        limit = None
        if expected:
            bounded = f"ulimit -t {PATIENCE * expected.processor + SPARE_SECONDS:.0f}; {bounded}"
            limit = PATIENCE * expected.clock + SPARE_WAIT
        log = self.folder / "log"
        with open(log, "wb") as out:
            process = subprocess.Popen(
                ["bash", "-o", "pipefail", "-c", bounded, "bash", *map(str, command)],
                stdin=subprocess.DEVNULL,
                stdout=out,
                stderr=subprocess.DEVNULL,
                cwd=self.scratch,
                start_new_session=True,
                env={**os.environ, "TMPDIR": str(self.scratch), "TEST_TMPDIR": str(self.scratch),
                     "CCACHE_BASEDIR": str(self.folder),
                     "CCACHE_SLOPPINESS": "pch_defines,time_macros"},
            )
            try:
                status = process.wait(limit)
            except subprocess.TimeoutExpired:
                status = None
            end_session(process)
        with open(log, "rb") as file:
            file.seek(max(0, log.stat().st_size - 20000))
            output = file.read().decode("utf-8", "replace")
        return Outcome(status, output)

    def make(self, *targets, jobs=1):
        return self.run(["cmake", "--build", self.build, "-j", jobs, "--target", *targets])

    def copy_tree(self):
        """Brings the copy up to date; files that are the same are left alone."""
        names = subprocess.run(
            ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
            cwd=PROJECT, check=True, capture_output=True,
        ).stdout.decode().split("\0")
        wanted = {name for name in names if name and (PROJECT / name).is_file()}
        for path in self.tree.rglob("*") if self.tree.exists() else ():
            if path.is_file() and path.relative_to(self.tree).as_posix() not in wanted:
                path.unlink()
        for name in wanted:
            data, copy = (PROJECT / name).read_bytes(), self.tree / name
            if not copy.exists() or copy.read_bytes() != data:
                copy.parent.mkdir(parents=True, exist_ok=True)
                copy.write_bytes(data)
                shutil.copymode(PROJECT / name, copy)

    def prepare(self, jobs):
        """Builds everything unbroken and runs all tests. On failure: ends the program."""
        self.copy_tree()
        ccache = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []

        def require(name, outcome):
            if outcome.status != 0:
                sys.exit(f"{outcome.output}\nwithout a break: {name}: status {outcome.status}")

        require("configure", self.run([
            "cmake", "-G", "Ninja", "-S", self.tree, "-B", self.build, "-Wno-dev",
            "-DCMAKE_BUILD_TYPE=Release", "-DCMAKE_CXX_FLAGS_RELEASE=-O1 -DNDEBUG",
            "-DCMAKE_CXX_FLAGS=-w", "-DQUILL_BUILD_TESTS=ON", "-DQUILL_BUILD_BENCH=OFF", *ccache,
        ]))
        require("build", self.make("all", jobs=jobs))
        for name, command in self.tests(LAYERS[0]):
            began, before = time.monotonic(), resource.getrusage(resource.RUSAGE_CHILDREN)
            require(name, self.run(command))
            used = resource.getrusage(resource.RUSAGE_CHILDREN)
            processor = used.ru_utime + used.ru_stime - before.ru_utime - before.ru_stime
            self.expected[name] = Times(time.monotonic() - began, processor)
        made = filter(self.is_made, self.build.rglob("*"))
        self.hashes = {path: self.hash(path) for path in made}

    @staticmethod
    def is_made(path):
        return path.is_file() and (path.suffix == ".o" or os.access(path, os.X_OK))

    @staticmethod
    def hash(path):
        return hashlib.sha256(path.read_bytes()).digest()

    def is_changed(self, path):
        return path.exists() and self.hashes.get(path) != self.hash(path)

    def tests(self, layer):
        """(name, command) of all tests, those of the layer first."""
        order = sorted(PROGRAMS, key=lambda name: name != layer)
        for name in order:
            program = self.build / "tests" / f"{name}_tests"
            yield program.name, [program, "--gtest_filter=-*Slow*", "--gtest_fail_fast",
                                 "--gtest_brief=1"]
            if name == layer:
                stored = self.tree / "tests/data/fingerprint.txt"
                yield "fingerprint", [self.build / "tools/fingerprint", "--check", stored]
        # What is left: the names of GoogleTest's have a dot, and scripts don't break.
        yield "ctest", ["ctest", "--test-dir", self.build, "-LE", "slow", "--stop-on-failure",
                        "-j2", "-E", r"[.]|^fingerprint$|^layers$|^map$|^install|^tools_[^q]"]

    def attempt(self, mutant):
        """What came of a break: "invalid", "same", "survived", or the test that noticed it."""
        path = self.tree / mutant.file
        original = path.read_text(encoding="utf-8")
        lines = original.split("\n")
        lines[mutant.line - 1] = mutant.after
        path.write_text("\n".join(lines), encoding="utf-8")
        try:
            return self.verdict(mutant)
        finally:
            path.write_text(original, encoding="utf-8")

    def verdict(self, mutant):
        layer = mutant.file.split("/")[1]
        objects = [p for p in self.hashes if p.suffix == ".o" and "tests" not in p.parts]
        for name, command in self.tests(layer):
            made = self.make("all" if name == "ctest" else name)
            if made.status != 0:
                # A program that fails while it takes part in the build has noticed as well.
                has_compiled = "error:" not in made.output and name == "ctest"
                return "the build" if has_compiled else "invalid"
            if name == f"{layer}_tests" and mutant.file.endswith(".cpp"):
                stem = pathlib.Path(mutant.file).name + ".o"
                if not any(self.is_changed(p) for p in objects if p.name == stem):
                    return "same"
            if name != "ctest" and not self.is_changed(command[0]):
                continue
            done = self.run(command, self.expected[name])
            if done.status in (None, OUT_OF_TIME):
                return f"{name} (time)"
            if done.status != 0:
                failed = re.search(r"\[  FAILED  \] ([\w/.]+)|\d+ - (\S+) \(", done.output)
                which = failed and (failed.group(1) or failed.group(2))
                return f"{name} ({which or f'status {done.status}'})"
        return "survived"


class Run:
    """All breaks of a run, tried in several workplaces at once."""

    def __init__(self, mutants, count, places, minutes):
        self.mutants, self.count = mutants, count
        self.places = places
        self.end = time.monotonic() + 60 * minutes
        self.lock = threading.Lock()
        self.outcomes = {}  # index in mutants -> outcome
        self.next = 0

    def take(self):
        """The index of the next break, None when enough have been tried."""
        with self.lock:
            if time.monotonic() > self.end:
                return None
            tried = sum(o not in ("invalid", "same") for o in self.outcomes.values())
            if tried >= self.count or self.next >= len(self.mutants):
                return None
            self.next += 1
            return self.next - 1

    def work(self, place):
        while (index := self.take()) is not None:
            mutant, began = self.mutants[index], time.monotonic()
            outcome = place.attempt(mutant)
            with self.lock:
                self.outcomes[index] = outcome
            where = f"{mutant.file}:{mutant.line}"
            seconds = time.monotonic() - began
            print(f"{mutant.number:4} {where} {mutant.kind}: {outcome}, {seconds:.0f} s",
                  flush=True)
            if outcome == "survived":
                print(f"     - {mutant.before.strip()}\n     + {mutant.after.strip()}", flush=True)

    def results(self):
        """(mutant, outcome) of those that count, in order, no more than were asked for."""
        with concurrent.futures.ThreadPoolExecutor(len(self.places)) as pool:
            list(pool.map(self.work, self.places))
        valid = [(self.mutants[i], o) for i, o in sorted(self.outcomes.items())
                 if o not in ("invalid", "same")]
        return valid[: self.count]


def report(results, left_out):
    """Prints the shares by layer."""
    survivors = [mutant.number for mutant, outcome in results if outcome == "survived"]
    print("survivors: " + (", ".join(map(str, survivors)) or "none"))
    for layer in sorted({mutant.file.split("/")[1] for mutant, _ in results}):
        own = [outcome for mutant, outcome in results if mutant.file.split("/")[1] == layer]
        print(f"{layer}: {sum(o != 'survived' for o in own)} of {len(own)} caught")
    caught = len(results) - len(survivors)
    share = 100 * caught / max(1, len(results))
    print(f"all: {caught} of {len(results)} caught ({share:.1f} %); "
          f"{left_out} more did not compile or compiled to the same code")


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--count", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--layers", default=",".join(LAYERS), help="folders of src")
    parser.add_argument("--jobs", type=int, default=2, help="breaks that are tried at a time")
    parser.add_argument("--minutes", type=float, default=math.inf,
                        help="begin no break after so many")
    parser.add_argument("--only", help="numbers of breaks to try, in place of a count")
    parser.add_argument("--list", action="store_true", help="show the breaks and try none")
    args = parser.parse_args()

    mutants = sequence(PROJECT, args.layers.split(","), args.seed)
    if args.only:
        numbers = {int(number) for number in args.only.split(",")}
        mutants = [mutant for mutant in mutants if mutant.number in numbers]
        args.count = len(mutants)
    if args.list:
        for mutant in mutants[: args.count]:
            print(f"{mutant.number:4} {mutant.file}:{mutant.line} {mutant.kind}")
            print(f"     - {mutant.before.strip()}\n     + {mutant.after.strip()}")
        return 0

    folder = PROJECT / "build" / "mutate"
    places = [Workplace(folder / str(number)) for number in range(args.jobs)]
    for place in places:
        place.prepare(args.jobs)
        used = ", ".join(f"{name} {t.processor:.0f} s" for name, t in place.expected.items())
        print(f"workplace {place.folder.name}: the unbroken tree passes: {used}", flush=True)
    run = Run(mutants, args.count, places, args.minutes)
    results = run.results()
    records = [{**mutant._asdict(), "outcome": outcome} for mutant, outcome in results]
    (folder / "results.json").write_text(json.dumps(records, indent=1), encoding="utf-8")
    report(results, len(run.outcomes) - len(results))
    return 0


if __name__ == "__main__":
    sys.exit(main())
