"""Running a program so that sanitizer reports are found wherever it sends its standard error."""

import os
import pathlib


def environment(folder):
    """The environment that makes sanitizers write report files into the folder and end the program."""
    options = f"log_path={folder}/sanitizer:halt_on_error=1:abort_on_error=0:print_stacktrace=1"
    names = ("ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS")
    return {**os.environ, **{name: f"{os.environ.get(name, '')}:{options}".lstrip(":") for name in names}}


def reports(folder):
    """The texts of all reports in the folder."""
    return [path.read_text(errors="replace") for path in sorted(pathlib.Path(folder).glob("sanitizer.*"))]
