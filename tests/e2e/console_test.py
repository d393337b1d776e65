"""A person at the console: start-up, the board, counting, searching."""

import os
import re
import signal
import subprocess
import unittest

from session import IS_SANITIZED, ON_WINDOWS, QUILL, START_FEN, TIMEOUT, SessionTest

BANNER = "quill-1.0\n\n"
ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")


class StartUp(SessionTest):
    def start_text(self, *args):
        return self.run_session("", *args).out

    def test_says_what_it_brought_up_on_the_processors_that_it_may_use(self):
        processors = os.sched_getaffinity(0)
        self.addCleanup(os.sched_setaffinity, 0, processors)
        os.sched_setaffinity(0, {min(processors)})
        self.assertEqual(
            self.start_text(),
            BANNER + "\nWarning: book not found: quill.bbk\n"
            "allocating hash...allocated 32Mb\n"
            "starting threads...started 1 threads\n"
            "\ninitialized\n% ")

    def test_default_settings_file_is_read(self):
        self.write("quill.ini", "book.file= \n")
        text = self.start_text()
        self.assertIn(BANNER + "inifile=quill.ini\n\nallocating hash...", text)

    def test_named_settings_file_stands_alone(self):
        self.write("quill.ini", "book.file=\n")
        self.write("my.ini", "  book.file  =  other.bbk  \r\n")
        self.assertIn("inifile=my.ini\n\nWarning: book not found: other.bbk\n",
                      self.start_text("my.ini"))
        text = self.start_text("missing.ini")
        self.assertNotIn("inifile", text)
        self.assertIn("Warning: book not found: quill.bbk\n", text)

    def test_settings_are_listed_once_the_book_is_open(self):
        # A header for 16-byte records with game counts, and nothing behind it.
        header = bytearray(16)
        header[12:16] = bytes([16, 1, 16, 2])
        self.write("good.bbk", bytes(header))
        self.write("quill.ini", "b=1\na=2\nbook.file=good.bbk\nb=3\n")
        self.assertIn("\nbook=good.bbk, 1 moves\nb=3\na=2\nbook.file=good.bbk\nallocating",
                      self.start_text())

    def test_some_words_as_only_argument_start_nothing(self):
        for word in ("bench", "--help", "--version"):
            self.write(word, "book.file=\n")  # not taken for the settings file
        self.assertEqual(self.start_text("--version"), "quill 1.0\n")
        self.assertRegex(self.start_text("--help"), r"^usage: quill \[SETTINGS\] [^%]*\n$")
        self.assertRegex(self.start_text("bench"), r"^\d+ ms, \d+ nodes \d+ nps\n$")
        self.assertIn("inifile=bench\n", self.start_text("bench", "--help"))


class Console(SessionTest):
    def say(self, text, *args):
        """The output behind the start-up, with all prompts kept."""
        result = self.run_session(text, *args)
        self.err = result.err
        return result.out.split("\ninitialized\n", 1)[1]

    def test_unknown_words_are_named(self):
        self.assertRegex(self.say("xyz 1 2\n  quit  \nxyz\n"),
                         r"^% unknown command: 'xyz'\n% \d{10}:exit\(\)!\n\n$")
        # Where it is part of the line's end, a carriage return belongs to no word.
        word = "a\tb" if ON_WINDOWS else "a\tb\r"
        self.assertEqual(self.say("a\tb\r\n"), f"% unknown command: '{word}'\n% ")

    def test_modern_hints_at_help_and_says_its_move(self):
        text = self.say("xyz 1\nfen 7k/8/5KQ1/8/8/8/8/8 w - -\nmt 1\ng\ng tt\n"
                        "fen 7k/6Q1/5K2/8/8/8/8/8 b - -\ng\n", "modern.ini")
        self.assertTrue(text.startswith("% unknown command: 'xyz' (help lists the commands)\n"))
        moves = re.findall(r"^.*move: .*$", text, re.MULTILINE)
        self.assertEqual(moves, ["move: Qg7"] * 2, "and nothing when there is no move")
        self.assertNotIn("move: ", self.say("mt 0\ng\n"))

    def test_help_lists_the_commands_of_the_manual(self):
        with open(os.path.join(ROOT, "docs", "uci.md"), encoding="utf-8") as file:
            section = file.read().split("## Console commands")[1].split("\n## ")[0]
        manual = set(re.findall(r"^\| `([^ `]+)", section, re.MULTILINE))
        help_lines = self.say("help\n").removeprefix("% ").split("\na move ")[0]
        self.assertEqual({line.split()[0] for line in help_lines.split("\n")}, manual)

    def test_typed_moves_are_played(self):
        for line in ("e2e4\n", "e2e4 e7e5\n"):  # the second word is not looked at
            self.assertIn("/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1\n", self.say(line))
        # Passing turns the board over silently.
        self.assertIn("/8/8/3PP3/8/PPP2PPP/RNBQKBNR b KQkq - 0 2\n", self.say("e2e4\n%\nd2d4\n"))
        self.assertEqual(self.say("e2e4 e7e5 g1f3\ne2e5\nK\n"),
                         "% unknown command: 'e2e4'\n% not a move: 'e2e5'\n"
                         "% unknown command: 'K'\n% ")

    def test_moves_are_listed_and_taken_back(self):
        text = self.say("e2e4\n%\nundo\nundo\nundo\nmoves\nfen 7k/8/6K1/8/8/8/8/R7 w - -\nnew\nd\n")
        self.assertEqual(re.findall(r"^\S*/\S* .*$|^.*take back$|^.*legal.*$", text, re.MULTILINE),
                         ["rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"] * 2 +
                         [START_FEN + " w KQkq - 0 1", "% no typed move to take back",
                          "% 20 legal moves", "7k/8/6K1/8/8/8/8/R7 w - - 0 1"] +
                         [START_FEN + " w KQkq - 0 1"] * 2)
        listed = self.say("fen 7k/P7/6K1/8/8/8/8/R3R3 w - -\nmoves\n").split(" legal moves\n")[1]
        for san in ("Rad1", "Ra6", "Re8#", "Rh1+", "a8=Q#", "a8=N", "Kf7"):
            self.assertIn(san, listed.split())
        self.assertEqual(self.say("d d4\nundo 2\n"),
                         "% not a move: 'd'\n% unknown command: 'undo'\n% ")

    def test_positions_are_set(self):
        fen = "4k3/8/8/8/8/8/4P3/4K3 b - -"
        for line in (fen, "fen " + fen, "fen   " + fen):
            self.assertIn("4k3/8/8/8/8/8/4P3/4K3 b - - 0 1", self.say(line + "\n"), line)
        self.assertIn("4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", self.say("4k3/////8/4P3/4K3\n"))
        text = self.say("fen nonsense\n")
        self.assertIn(START_FEN, text)  # kept, and shown
        self.assertNotEqual(self.err, "")

    def test_empty_lines_show_the_board(self):
        self.assertEqual(self.say("\n   \n").count(START_FEN), 2)

    def test_counts_move_trees(self):
        label = r"% perft 4 {19}197281 ops in \d+\.\d{3} seconds  ops/ms= *\S+,  ticks/op= *\S+\n"
        self.assertRegex(self.say("perft 4\n"), label)
        self.assertIn("        20 ops", self.say("perft\n"))
        self.assertIn("perft -1                      20 ops", self.say("perft -1\n"))
        self.assertEqual(self.say("perft 0\nperft x\ndivide x\n"), "% % % % ")
        self.assertEqual(self.say("perft 1024\ndivide 99999999999\n"), "% % % ")
        self.assertEqual(self.err, "perft: depth 1024 is too deep\n"
                                   "divide: depth 2147483647 is too deep\n")

    def test_divides_a_move_tree(self):
        text = self.say("divide 3\n")
        lines = text.removeprefix("% ").split("\n")
        self.assertEqual(lines[0], "----divide---")
        self.assertEqual(len(lines[1:21]), 20)
        self.assertIn("e2e4            600", lines)
        self.assertIn("Ng1f3           440", lines)
        self.assertEqual(lines[21:], ["-------------------", "total          8902", "% "])
        self.assertRegex(self.say("divide\n"), r"\ntotal            20\n")

    def test_eval_shows_the_weights_in_force(self):
        def shown(text):
            return {line[:14].strip(): int(line.split()[-1])
                    for line in text.split("\n") if re.search(r" -?\d+$", line)}

        text = self.say("eval\nsetoption name eval.kingattack value 0\neval\n")
        first, second = (shown(part) for part in text.split("% ")[1:4:2])
        self.assertEqual((first["attack on king"], first["value, White's"]), (5, 12))
        self.assertEqual((second["attack on king"], second["value, White's"]), (0, 7))
        text = self.say("fen 8/4p3/4k3/8/8/4K3/8/8 b - -\neval\n")
        self.assertRegex(text, r"\nendgame rules: exact result +-(\d+)\nvalue, Black's.* \1\n")

    def test_searches_for_the_time_set(self):
        text = self.say("mt\nmt 1\ng\ng tt\nmt x\n")
        self.assertIn("% maxtime=5.00s\n% maxtime=1.00s\n% ", text)
        self.assertTrue(text.endswith("% maxtime=0.00s\n% "), text[-60:])
        self.assertEqual(len(re.findall(r"^nodes  : ", text, re.MULTILINE)), 2)
        self.assertNotIn("bestmove", text)
        self.assertIn("position not in book\n", self.say("book\n"))

    def test_all_threads_take_part_in_a_search(self):
        text = self.say("setoption name Threads value 4\nmt 1\ng\n")
        self.assertEqual(len(re.findall(r"^slave : ", text, re.MULTILINE)), 3, text)

    @unittest.skipIf(IS_SANITIZED, "a sanitizer needs the address space itself")
    def test_a_table_too_large_for_the_memory_is_made_smaller(self):
        lines = "setoption name Hash value 4096\nposition startpos\ngo depth 5\n"
        result = self.run_session(lines, memory=(3 if ON_WINDOWS else 1) << 30)
        if "initialized" not in result.out:
            self.skipTest("this build needs more address space to start")
        self.assertIn("tt: malloc(4294967296) failed, retrying...\n", result.out)
        self.assertEqual(len(result.answers()), 1)

    def test_bench_leaves_everything_as_it_was(self):
        with open(os.path.join(ROOT, "tests", "data", "fingerprint.txt"), encoding="utf-8") as file:
            nodes = re.search(r"^search (\d+)$", file.read(), re.MULTILINE).group(1)
        # Neither the options nor the limits of an earlier search have an influence.
        text = self.say("setoption name MultiPV value 3\nsetoption name eval.kingattack value 0\n"
                        "setoption name Threads value 2\nmt 0\ne2e4\nbench\nmt\nfen\nmt 1\ng\n")
        self.assertRegex(text, rf"\n% \d+ ms, {nodes} nodes [1-9]\d* nps\n% maxtime=0\.00s\n")
        board, search = text.split(" nps\n")[1].split("% maxtime=1.00s\n")
        self.assertIn("/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1\n", board)
        self.assertIn(" 3) ", search)
        self.assertIn("\nslave : ", search)

    def test_forgets_the_limits_of_an_earlier_go(self):
        # "position" waits for the first search.
        text = self.say("mt 1\nposition startpos\ngo depth 1\nposition startpos\ng\n")
        self.assertRegex(text.split("bestmove")[1], r"\n +\[[3-9]/")

    def test_leaves_a_running_search_alone(self):
        lines = ["e2e4", "fen", "%", "divide", "perft", "g", "mt 5", "book", "bench", "d", "new",
                 "undo", "moves", "eval", "", START_FEN]
        self.say("\n".join(["position startpos", "go infinite", *lines, "quit\n"]))
        self.assertEqual(self.err, "".join(f"{line.split(' ')[0] or 'board'}: a search is running\n"
                                           for line in lines))


class Interrupt(SessionTest):
    """Ctrl-C. A program that inherits "ignore" from a shell's background job would not hear it."""

    def start(self, lines):
        """The program after reading the lines; ends with the test."""
        program = subprocess.Popen(
            QUILL, stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=self.folder,
            preexec_fn=lambda: signal.signal(signal.SIGINT, signal.SIG_DFL))
        self.addCleanup(program.communicate)
        self.addCleanup(program.kill)
        program.stdin.write(lines.encode())
        program.stdin.flush()
        return program

    @staticmethod
    def read_until(program, text):
        out = b""
        while not out.endswith(text):
            byte = program.stdout.read(1)
            if not byte:
                raise AssertionError(out.decode())
            out += byte
        return out.decode()

    def assert_interrupted(self, program):
        program.send_signal(signal.SIGINT)
        status = program.wait(TIMEOUT)
        if not ON_WINDOWS:  # there the status is the system's choice
            self.assertEqual(status, -signal.SIGINT)

    def test_ends_a_search_and_then_the_program(self):
        program = self.start("mt 1000\ng\ng\n")
        for _ in range(2):
            self.read_until(program, b"[4/")
            program.send_signal(signal.SIGINT)
            self.assertIn("nodes  : ", self.read_until(program, b"% "))
        self.assert_interrupted(program)

    def test_ends_the_program_under_the_protocol(self):
        program = self.start("mt 1000\nuci\ng\n")
        self.read_until(program, b"info depth 4 ")
        self.assert_interrupted(program)


if __name__ == "__main__":
    unittest.main()
