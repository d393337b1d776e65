"""The command line of quill-book: what it says, how it ends, and which files it touches."""

import os
import subprocess
import tempfile
import unittest

from uci_client import command_words

BOOK = command_words(os.environ["QUILL_BOOK"])


class QuillBook(unittest.TestCase):
    """Each test has a folder of its own as the program's current directory."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name

    def write(self, name, text):
        with open(os.path.join(self.folder, name), "w", encoding="ascii") as file:
            file.write(text)

    def run_book(self, *words):
        """Answers the exit status, standard output and standard error."""
        done = subprocess.run([*BOOK, *words], capture_output=True, text=True, cwd=self.folder,
                              timeout=60, check=False)
        return done.returncode, done.stdout, done.stderr

    def test_help_is_an_answer_and_a_wrong_command_line_one_line_of_error(self):
        for words, start in (("-h", "quill-book makes"), ("--help", "quill-book makes"),
                             ("make -h", "usage: quill-book make"),
                             ("make a.pgn --help", "usage: quill-book make"),
                             ("dump --help", "usage: quill-book dump"),
                             ("check -h", "usage: quill-book check")):
            status, out, err = self.run_book(*words.split())
            self.assertEqual((status, out[:len(start)], err), (0, start, ""))
        for words, complaint in (("", "no command"),
                                 ("bake", "unknown command: bake"),
                                 ("make a", "make needs -o and the name of the book"),
                                 ("make -o b", "make needs a file of games"),
                                 ("make a -o", "-o needs a value"),
                                 ("make a -o --elo", "bad -o: --elo"),
                                 ("make a -o b --max-ply 0", "bad --max-ply: 0"),
                                 ("dump a --elo", "unknown option: --elo"),
                                 ("check a b", "check needs one book")):
            command = "" if words in ("", "bake") else words.split()[0] + " "
            error = f"quill-book: {complaint} (try: quill-book {command}--help)\n"
            self.assertEqual(self.run_book(*words.split()), (2, "", error))

    def test_files_that_can_not_be_used_are_named_and_nothing_is_written(self):
        self.write("a.pgn", "1. e4 1-0\n")
        os.mkdir(os.path.join(self.folder, "folder"))
        os.symlink("a.pgn", os.path.join(self.folder, "soft"))
        os.link(os.path.join(self.folder, "a.pgn"), os.path.join(self.folder, "hard"))
        before = sorted(os.listdir(self.folder))
        same = "not written, it is one of the files of games"
        for words, complaint in (("make a.pgn none.pgn -o b", "none.pgn: no such file"),
                                 ("make folder -o b", "folder: is a directory"),
                                 ("make /proc/self/mem -o b", "/proc/self/mem: can't be read"),
                                 ("dump none", "none: no such file"),
                                 ("check folder", "folder: is a directory"),
                                 ("make a.pgn -o folder", "folder: is a directory"),
                                 ("make a.pgn -o no/b", "no/b: can't be written"),
                                 ("make a.pgn -o a.pgn", "a.pgn: " + same),
                                 ("make a.pgn -o folder/../a.pgn", "folder/../a.pgn: " + same),
                                 ("make a.pgn -o soft", "soft: " + same),
                                 ("make hard -o a.pgn", "a.pgn: " + same)):
            self.assertEqual(self.run_book(*words.split()), (1, "", complaint + "\n"))
        self.assertEqual(sorted(os.listdir(self.folder)), before)
        with open(os.path.join(self.folder, "a.pgn"), encoding="ascii") as file:
            self.assertEqual(file.read(), "1. e4 1-0\n")

    @unittest.skipIf(BOOK[-1].endswith(".exe"), "Windows has no pipes among its files")
    def test_a_pipe_is_not_written_to(self):
        self.write("a.pgn", "1. e4 1-0\n")
        os.mkfifo(os.path.join(self.folder, "pipe"))
        self.assertEqual(self.run_book("make", "a.pgn", "-o", "pipe"),
                         (1, "", "pipe: is not a regular file\n"))

    def test_size_of_a_book_is_what_the_engine_says(self):
        self.write("a.pgn", "1. e4 e5 1-0\n1. d4 *\n")
        self.write("quill.ini", "book.file=b\n")
        for words, used, size, reachable in (
                ("", "1 games used, 0 skipped, 1 without a result",
                 "3 moves (the header counts as 1) in 2 positions", 2),
                ("--elo --unfinished",
                 "2 games used, 0 skipped, 1 without a result among those used",
                 "3 moves (the header counts as 0) in 2 positions", 3)):
            self.assertEqual(self.run_book("make", "a.pgn", "-o", "b", *words.split()),
                             (0, f"{used}\nb: {size}\n", ""))
            sound = f"b: sound, {size}, 2 of them reachable with {reachable} moves\n"
            self.assertEqual(self.run_book("check", "b"), (0, sound, ""))
            engine = subprocess.run(command_words(os.environ["QUILL"]), input="quit\n", capture_output=True,
                                    text=True, cwd=self.folder, timeout=60, check=True)
            self.assertIn("\nbook=b, 3 moves\n", engine.stdout)


if __name__ == "__main__":
    unittest.main()
