"""The command line of quill-book: what it says, how it ends, and which files it touches."""

import os
import subprocess
import tempfile
import unittest


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
        done = subprocess.run([os.environ["QUILL_BOOK"], *words], capture_output=True, text=True,
                              cwd=self.folder, timeout=60, check=False)
        return done.returncode, done.stdout, done.stderr

    def test_help_is_an_answer_and_a_wrong_command_line_one_line_of_error(self):
        for words, start in (("-h", "quill-book makes"), ("--help", "quill-book makes"),
                             ("make -h", "usage: quill-book make"),
                             ("make a.pgn --help", "usage: quill-book make"),
                             ("dump --help", "usage: quill-book dump"),
                             ("check -h", "usage: quill-book check")):
            status, out, err = self.run_book(*words.split())
            self.assertEqual((status, out[:len(start)], err), (0, start, ""))
        for words, complaint in (("", "no command (try: quill-book "),
                                 ("bake", "unknown command: bake (try: quill-book "),
                                 ("make a", "make needs -o and the name of the book"),
                                 ("make -o b", "make needs a file of games"),
                                 ("make a -o", "-o needs a value"),
                                 ("make a -o --elo", "bad -o: --elo"),
                                 ("make a -o b --max-ply 0", "bad --max-ply: 0"),
                                 ("dump a --elo", "unknown option: --elo"),
                                 ("check a b", "check needs one book")):
            if "(try" not in complaint:
                complaint += f" (try: quill-book {words.split()[0]} "
            self.assertEqual(self.run_book(*words.split()),
                             (2, "", f"quill-book: {complaint}--help)\n"))


if __name__ == "__main__":
    unittest.main()
