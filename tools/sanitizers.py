"""Running a program so that sanitizer reports are found wherever it sends its standard error."""

import os
import pathlib


def environment(folder):
    """The environment in which sanitizers write reports into the folder and end the program."""
    options = f"log_path={folder}/sanitizer:halt_on_error=1:abort_on_error=0:print_stacktrace=1"
    names = ("ASAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "LSAN_OPTIONS")
    given = {name: os.environ.get(name, "") for name in names}
    return {**os.environ, **{n: f"{given[n]}:{options}".lstrip(":") for n in names}}


def reports(folder):
    """The texts of all reports in the folder."""
    files = sorted(pathlib.Path(folder).glob("sanitizer.*"))
    return [file.read_text(errors="replace") for file in files]
