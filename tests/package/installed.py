"""What the tests of installed programs share."""

import os
import pathlib
import subprocess
import tempfile
import unittest

BUILD = os.environ["QUILL_BUILD"]
CMAKE = os.environ["CMAKE"]
PROGRAMS = {"bin/quill", "bin/quill-book"}
MANUAL = {"share/man/man6/quill.6.gz", "share/man/man1/quill-book.1.gz"}


def files_below(folder):
    """The paths of all files below the folder, documents apart."""
    paths = (path for path in pathlib.Path(folder).rglob("*") if not path.is_dir())
    names = {path.relative_to(folder).as_posix() for path in paths}
    return {name for name in names if "/doc/" not in name}


def run(*words, **options):
    """The output of a command, which must succeed."""
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True,
                          timeout=120, check=False, **options)
    if done.returncode != 0:
        raise AssertionError(f"{words}: status {done.returncode}\n{done.stdout}{done.stderr}")
    return done.stdout


class InstalledTest(unittest.TestCase):
    """Each test has a folder to install into, and one to start the engine in."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve() / "root"
        self.current = self.root.with_name("current")
        self.current.mkdir()

    def install(self, *words, **environment):
        run(CMAKE, "--install", BUILD, *words, env={**os.environ, **environment})

    def session(self, program, *lines, arguments=()):
        """What the engine says to the lines, started in the current folder."""
        text = "".join(line + "\n" for line in (*lines, "quit"))
        return run(program, *arguments, cwd=self.current, input=text)

    def check_sessions(self, program, settings, book):
        """The program speaks today's protocol and plays from its book, wherever it is started;
        settings in the current folder go first, and nothing is written there."""
        game = self.session(program, "uci", "position startpos", "go wtime 60000 btime 60000")
        self.assertIn(f"\ninifile={settings}\n", game)
        self.assertIn(f"\nbook={book}, ", game)
        self.assertIn("\noption name Threads type spin", game)
        self.assertRegex(game, r"\ninfo depth 1 [^\n]* pv ([a-h][1-8]){2}\nbestmove ")
        self.assertEqual(os.listdir(self.current), [])
        (self.current / "quill.ini").write_text("book.file=none.bbk\n")
        text = self.session(program)
        self.assertIn("\ninifile=quill.ini\n\nWarning: book not found: none.bbk\n", text)
