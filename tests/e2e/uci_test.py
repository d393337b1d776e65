"""A GUI at the other end: whole games and odd sequences of commands."""

import re
import select
import subprocess
import time
import unittest

from session import QUILL, TIMEOUT, SessionTest
from uci_client import Engine

MOVE = r"[a-h][1-8][a-h][1-8][QRBN]?"
INFO = re.compile(
    r"^info depth \d+ (currmovenumber \d+ currmove " + MOVE + r"|seldepth \d+ "
    r"score (cp -?\d+|mate -?\d+)( upperbound| lowerbound)?)"
    r" time \d+ nodes \d+( nps \d+)? hashfull \d+( multipv \d+)?( pv( " + MOVE + r")+)?$")


class Protocol(SessionTest):
    def test_every_line_of_a_search_is_well_formed(self):
        result = self.run_session("uci\nsetoption name MultiPV value 2\nposition startpos moves "
                                  "e2e4\ngo movetime 700\n")
        self.assertEqual(result.log, "")
        lines = result.out.split("uciok\n")[1].splitlines()
        self.assertRegex(lines[-1], f"^bestmove {MOVE} ponder {MOVE}$")
        self.assertGreater(len(lines), 10)
        for line in lines[:-1]:
            self.assertRegex(line, INFO)

    def test_nothing_but_the_protocol_is_written(self):
        result = self.run_session("uci\nsetoption name Ponder value true\nsetoption name MultiPV "
                                  "value 1\nposition startpos\nposition startpos\n\n  \nquit\n")
        self.assertTrue(result.out.endswith("uciok\n"))

    def test_a_parent_that_watches_standard_error_sees_its_end_with_the_program(self):
        with subprocess.Popen(QUILL, cwd=self.folder, text=True, stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdin.write("uci\nuci\n")
            process.stdin.flush()
            for _ in range(2):
                while process.stdout.readline() != "uciok\n":
                    pass
            self.assertEqual(select.select([process.stderr], [], [], 0.2)[0], [])
            process.communicate("quit\n", TIMEOUT)
            self.assertEqual(process.returncode, 0)

    def test_warnings_go_to_the_error_log_for_ever(self):
        for count in (1, 2):
            result = self.run_session("uci\nuci\nxyz\nquit\n")
            self.assertEqual(result.out.count("uciok"), 2)
            self.assertTrue(result.out.endswith("unknown command: 'xyz'\n"))
            self.assertEqual(result.log, "unknown uci command: xyz\n" * count)
            self.assertEqual(result.err, "")
        result = self.run_session("setoption name X value 1\nquit\n")
        self.assertEqual(result.err, "Option not supported: X\n")

    def test_console_commands_still_work(self):
        result = self.run_session("uci\nposition startpos moves e2e4\nfen\nperft 1\nquit\n")
        self.assertIn("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b", result.out)
        self.assertIn("perft 1                       20 ops", result.out)
        self.assertNotIn("%", result.out.split("uciok")[1].replace("=", ""))

    def test_plays_from_the_book_at_once(self):
        self.write("quill.ini", "uci.profile=modern\n")  # finds the book beside the program
        with Engine(QUILL, cwd=self.folder, timeout=TIMEOUT) as engine:
            answer = engine.go("movetime 100000", "startpos")
        self.assertRegex(answer.move, MOVE)
        self.assertLessEqual(len(answer.infos), 1)

    def test_ponders_until_the_move_is_played(self):
        with Engine(QUILL, {"Threads": 4}, cwd=self.folder, timeout=TIMEOUT) as engine:
            engine.send("position startpos moves e2e4 e7e5", "go ponder movetime 100")
            time.sleep(0.5)
            engine.send("isready")
            lines = engine.until("readyok")
            self.assertGreater(len(lines), 5)
            self.assertNotIn("bestmove", "".join(lines))
            engine.send("ponderhit")
            self.assertRegex(engine.answer(time.monotonic()).move, MOVE)


class Sequences(SessionTest):
    def test_stop_right_behind_go_is_never_lost(self):
        result = self.run_session("uci\n" + "position startpos\ngo infinite\nstop\n" * 100)
        self.assertEqual(len(result.answers()), 100)
        self.assertNotIn("0000", "".join(result.answers()))

    def test_go_at_once_behind_bestmove(self):
        with Engine(QUILL, cwd=self.folder, timeout=TIMEOUT) as engine:
            for _ in range(200):
                engine.go("depth 1")
        self.assertEqual(engine.process.returncode, 0)


class Endings(SessionTest):
    def test_quit_during_a_search(self):
        for go in ("go infinite", "go ponder", "go movetime 100000"):
            result = self.run_session(f"uci\nsetoption name Threads value 4\nposition startpos\n"
                                      f"{go}\nquit\nisready\n")
            self.assertNotIn("readyok", result.out)

    def test_end_of_input_during_a_search(self):
        for go in ("go movetime 300", "go infinite", "go ponder wtime 9000", "go depth 6"):
            result = self.run_session(f"uci\nposition startpos\n{go}")
            self.assertEqual(len(result.answers()), 1, go)

class BadInput(SessionTest):
    def test_odd_bytes_and_lengths_leave_the_engine_alive(self):
        lines = [b"\0", b"uci\0x", b"\xff\xfe\x80", b"position startpos moves \0",
                 b"position fen " + b"a " * 300000, b"position fen " + b"8" * 1000000,
                 b"setoption name " + b"x" * 1000000, b"setoption name Hash value -1",
                 b"setoption name Threads value 99999999999", b"setoption name MultiPV value -7",
                 b"position startpos moves " + b"e2e4 " * 200000, b"go" * 500000,
                 b"setoption name UCI_Opponent value " + b"%s%n" * 1000, b"%n%n%s %s%n",
                 b"fen %s%n", b"perft 99999", b"\t\t", b"position", b"position fen", b"setoption"]
        result = self.run_session(b"uci\n" + b"\n".join(lines) + b"\nisready\nposition startpos\n"
                                  b"setoption name Hash value 4\ngo depth 2\n")
        self.assertIn("\nreadyok\n", result.out)
        self.assertEqual(len(result.answers()), 1)

    def test_positions_that_no_game_reaches_are_searched(self):
        fens = ["kK6/8/8/8/8/8/8/8 w - -", "4k3/4R3/8/8/8/8/8/4K3 w - -",
                "qqqqkqqq/q7/8/8/8/8/8/4K3 b - -", "4k3/8/8/8/8/8/8/R3K2R w KQkq -",
                "4k3/8/8/3pP3/8/8/8/4K3 w - d6", "4k3/8/8/8/8/8/8/4K3 w KQkq e4",
                "7k/5KQ1/8/8/8/8/8/8 b - -", "7k/5K2/6Q1/8/8/8/8/8 b - -"]
        for fen in fens:
            result = self.run_session(f"uci\nposition fen {fen}\ngo depth 6\n")
            self.assertEqual(len(result.answers()), 1, fen)


if __name__ == "__main__":
    unittest.main()
