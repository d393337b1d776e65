"""The modern profile at the hands of strict clients: what they parse, count and wait for."""

import os
import random
import re
import shutil
import subprocess
import time
import unittest

from chess_rules import START_FEN, Position
from session import QUILL, TIMEOUT, SessionTest
from strict_client import MOVE, StrictClient, after

SEQUENCES = int(os.environ.get("SEQUENCES", "100"))

MATED = "7k/6Q1/5K2/8/8/8/8/8 b - - 0 1"
STALEMATE = "7k/5K2/6Q1/8/8/8/8/8 b - - 0 1"
BARE_KINGS = "8/8/4k3/8/8/4K3/8/8 w - - 0 1"
MATE_IN_1 = "7k/8/5KQ1/8/8/8/8/8 w - - 0 1"
MATE_IN_3 = "r5rk/5p1p/5R2/4B3/8/8/7P/7K w - - 0 1"
TWO_ROOKS = "8/8/8/3k4/8/8/R7/1R5K w - - 0 1"
PROMOTIONS = "1n1n4/P1P3k1/8/8/8/8/p1p3K1/1N1N4 w - - 0 1"
CASTLING = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1"

# An option line as clients read it: no blank too many, and a default of the type.
OPTION = re.compile(
    r"option name (?P<name>\S+( \S+)*?) type (button|check default (true|false)|"
    r"string default \S+( \S+)*|"
    r"spin default (?P<value>-?\d+) min (?P<min>-?\d+) max (?P<max>-?\d+))")


class ModernTest(SessionTest):
    def client(self, *args):
        """Behind its "uci", and ended with the test."""
        client = StrictClient(self.folder, *(args or ("modern.ini",)))
        client.start()
        return client


class Handshake(ModernTest):
    def test_options_are_read_by_strict_clients_and_can_be_set_to_their_defaults(self):
        with StrictClient(self.folder, "modern.ini") as client:
            lines = client.start()
            options = {}
            for line in lines[lines.index("id author Orvelle") + 1 : -1]:
                match = OPTION.fullmatch(line)
                self.assertIsNotNone(match, line)
                self.assertNotIn(match["name"], options)
                options[match["name"]] = line
                if match["value"]:
                    self.assertIn(int(match["value"]), range(int(match["min"]),
                                                             int(match["max"]) + 1), line)
            self.assertLessEqual({"Clear Hash", "MultiPV", "Move Overhead", "Book File"},
                                 set(options))
            for name in set(options) - {"UCI_EngineAbout"}:
                value = re.search(" default (.*?)( min|$)", options[name])
                client.send(f"setoption name {name}" + (f" value {value[1]}" if value else ""))
            client.answer("depth 3", START_FEN)
        self.assertEqual((client.errors, client.notes), ([], []))

    def test_no_file_appears_and_standard_error_stays_silent_for_a_whole_game(self):
        with self.client() as client:
            client.send("ucinewgame")
            position = Position(PROMOTIONS)
            moves = []
            while position.outcome() is None and len(moves) < 60:
                client.set_position(PROMOTIONS, moves)
                moves.append(client.answer("wtime 300 btime 300 winc 4 binc 4").best)
                position.push(moves[-1])
            self.assertGreater(len(moves), 4)
        self.assertEqual((client.errors, client.notes, os.listdir(self.folder)), ([], [], []))

    def test_errors_go_where_the_settings_say(self):
        line = "unknown uci command: xyz\n"
        for profile in ("modern", "classic"):
            for log, expected in (("my.log", ("", line)), ("stderr", (line, "")),
                                  ("none", ("", ""))):
                self.write("my.ini", f"uci.profile={profile}\nuci.errorlog={log}\n")
                with self.client("my.ini") as client:
                    client.send("xyz")
                    client.ready()
                self.assertEqual("".join(client.errors), expected[0], (profile, log))
                path = os.path.join(self.folder, "my.log")
                if os.path.exists(path):
                    with open(path, encoding="ascii") as file:
                        self.assertEqual(file.read(), expected[1], (profile, log))
                    os.remove(path)
                else:
                    self.assertEqual(expected[1], "", (profile, log))
                self.assertEqual(os.listdir(self.folder), ["my.ini"], (profile, log))

    def test_files_are_found_in_a_folder_of_any_name(self):
        home = os.path.join(self.folder, "Schach-Müller", "棋")
        os.makedirs(home)
        program = shutil.copy(QUILL[-1], home)
        shutil.copy(os.path.join(os.path.dirname(QUILL[-1]), "quill.bbk"),
                    os.path.join(home, "Bücher.bbk"))
        self.write("Schach-Müller/棋/棋.ini", "book.file=Bücher.bbk\nuci.errorlog=Fehler-棋.log\n"
                   "uci.profile=modern\n")
        current = os.path.dirname(home)
        done = subprocess.run([*QUILL[:-1], program, "棋.ini"], input="uci\nxyz\n", cwd=current,
                              capture_output=True, encoding="utf-8", timeout=TIMEOUT, check=True)
        place = r".*Schach-Müller[/\\]棋[/\\]"
        self.assertRegex(done.stdout, rf"\ninifile={place}棋\.ini\n")
        self.assertRegex(done.stdout, rf"\nbook={place}Bücher\.bbk, \d+ moves\n")
        with open(os.path.join(current, "Fehler-棋.log"), encoding="ascii") as log:
            self.assertEqual(log.read(), "unknown uci command: xyz\n")

    def test_an_unknown_profile_is_named_and_counts_as_classic(self):
        self.write("my.ini", "uci.profile=Modern\n")
        out = self.run_session("uci\n", "my.ini").out
        self.assertIn("\nWarning: unknown uci.profile: Modern\n", out)
        self.assertIn("\noption name MultiPV         type spin   default 1", out)

    def test_carriage_returns_are_dropped(self):
        lines = ["uci", "debug on", "setoption name Threads value 1", "isready", "", "ucinewgame",
                 "position startpos moves e2e4", f"position fen {MATE_IN_1}", "go infinite", "stop"]
        result = self.run_session("\r\n".join(lines) + "\r\n", "modern.ini")
        self.assertEqual(result.err, "")
        self.assertRegex(result.out, f"\nreadyok\n(info .*\n)+bestmove {MOVE}( ponder {MOVE})?\n$")


class Limits(ModernTest):
    def test_an_unlimited_search_answers_when_it_is_told_to(self):
        with self.client() as client:
            for limits, fen, seen in (("infinite", BARE_KINGS, "info depth 120 "),
                                      ("ponder wtime 9 btime 9", BARE_KINGS, "info depth 120 "),
                                      ("ponder movetime 10", MATE_IN_1, "info depth 2"),
                                      ("infinite depth 1", START_FEN, "info depth 2"),
                                      ("", MATE_IN_1, "info depth 2"),
                                      ("infinite", MATED, "info depth 0")):
                client.set_position(fen)
                client.go(limits)
                client.until(seen)
                client.send("isready")
                if "ponder" not in limits:
                    client.send("ponderhit")
                client.drain(0.1)
                client.send("ponderhit" if "ponder" in limits else "stop")
                client.finish()
            for end in ("position startpos", "ucinewgame", "setoption name Hash value 2"):
                client.set_position(CASTLING)
                client.go("infinite")
                client.send("ponderhit")
                client.drain(0.02)
                client.send(end)
                client.finish()

    def test_a_mate_is_searched_for_until_it_is_found(self):
        with self.client() as client:
            client.answer("movetime 1", MATE_IN_3)
            client.send("ucinewgame")
            go = client.answer("mate 3", MATE_IN_3)
            self.assertEqual((go.last("mate"), go.best), ("3", "f6a6"))
            # Not the shortest mate: one that is short enough ends the search at once.
            client.send("setoption name Threads value 1")
            go = client.answer("mate 20", TWO_ROOKS)
            self.assertIn(int(go.last("mate")), range(3, 21))
            self.assertLess(int(go.last("depth")) + 1, 2 * int(go.last("mate")) - 1)
            client.set_position(CASTLING)
            go = client.go("mate 2")
            client.drain(0.2)
            self.assertIsNone(go.answered)
            client.send("stop")
            client.finish()

    def test_only_the_moves_named_are_searched(self):
        with self.client() as client:
            client.send("setoption name MultiPV value 3")
            go = client.answer("depth 6", CASTLING, only=["e1c1", "a2a3", "h1g1", "b2b3"])
            self.assertEqual({re.search(r"multipv (\d)", line)[1] for line in go.infos
                              if "multipv" in line}, {"1", "2", "3"})
            client.send("setoption name MultiPV value 1")
            client.answer("depth 5", PROMOTIONS, only=["a7b8n"])
            # What is no legal move restricts nothing, and words behind the moves are read.
            client.set_position(START_FEN)
            client.send("go searchmoves e2e5 depth 3")
            client.pending.append(go := type(go)(Position(), "depth 3"))
            client.finish()
            self.assertEqual(go.last("depth"), "3")

    def test_the_last_line_tells_all_of_the_move_however_short_the_search(self):
        with self.client() as client:
            for limits in ("depth 1", "nodes 1", "movetime 0", "wtime -50 btime -50", "infinite",
                           "wtime 1 btime 1 movestogo 1", "mate 1"):
                for fen in (START_FEN, MATED, STALEMATE, BARE_KINGS, PROMOTIONS):
                    for lines in (1, 3):
                        client.send(f"setoption name MultiPV value {lines}")
                        client.answer(limits, fen, stop="infinite" in limits or "mate" in limits)
            client.send("setoption name SendPv value false")
            client.answer("depth 4", CASTLING)
        self.assertEqual({line for line in client.errors if not line.startswith("No move")}, set())

    def test_the_overhead_comes_off_the_move_time(self):
        self.write("my.ini", "uci.profile=modern\ntime.overhead=60\n")
        with self.client("my.ini") as client:
            client.send("debug on")
            for overhead, time_left in ((None, 40), (95, 5), (0, 100), (5000, 0)):
                if overhead is not None:
                    client.send(f"setoption name Move Overhead value {overhead}")
                client.answer("movetime 100", CASTLING)
                self.assertEqual(client.notes.pop(),
                                 f"time normally {time_left} ms, at most {time_left} ms")
            client.send("debug off")
            client.answer("depth 1")
        self.assertEqual(client.notes, [])
        with self.client() as client:
            client.send("debug on")
            client.answer("movetime 100", CASTLING)
        self.assertEqual(client.notes, ["time normally 70 ms, at most 70 ms"])

    def test_refused_positions_and_moves_are_told_in_one_line(self):
        with self.client() as client:
            client.set_position(CASTLING)
            for line, note, fen in (
                    ("fen 8/8/8/8 w - - moves e2e4", "refused position: 8/8/8/8 w - - ", CASTLING),
                    ("fen", "refused position: ", CASTLING),
                    ("startpos moves e2e4 e2e4 d7d5", "refused move: e2e4",
                     after(Position(), ["e2e4"]).fen())):
                client.notes.clear()
                client.send("position " + line)
                client.position = Position(fen)
                client.answer("depth 3")
                self.assertEqual(client.notes, [note])


class BookMoves(ModernTest):
    """The book lies beside the program; the current folder is another one."""

    def is_from_book(self, client, limits, only=()):
        client.send("ucinewgame")
        client.set_position(START_FEN)
        go = client.go(limits, only)
        if go.waits:
            client.until("info depth 2")  # an answer would be too early
            client.send("stop")
        client.finish()
        return go.last("nodes") == "0"

    def test_the_book_is_asked_for_a_players_moves_only(self):
        clock = "wtime 9000 btime 9000"  # so long that even a slow machine searches some nodes
        with self.client() as client:
            for limits in (clock, "movetime 500", "wtime 0 btime 0 winc 50 binc 50"):
                self.assertTrue(self.is_from_book(client, limits), limits)
            for limits in ("infinite", "ponder " + clock, "depth 2", "nodes 50",
                           clock + " depth 2", clock + " nodes 50", "movetime 500 mate 1"):
                self.assertFalse(self.is_from_book(client, limits), limits)
            self.assertFalse(self.is_from_book(client, "movetime 500", only=["e2e4", "d2d4"]))
            for on, off in (("MultiPV value 2", "MultiPV value 1"),
                            ("UCI_AnalyseMode value true", "UCI_AnalyseMode value false"),
                            ("OwnBook value false", "OwnBook value true"),
                            ("Book File value <empty>", "Book File value quill.bbk")):
                client.send("setoption name " + on)
                self.assertFalse(self.is_from_book(client, clock), on)
                client.send("setoption name " + off)
                self.assertTrue(self.is_from_book(client, clock), off)
            client.send("setoption name Book File value no such.bbk")
            self.assertTrue(self.is_from_book(client, clock), "the book in use stays")
        self.assertEqual(client.notes, ["book not found: no such.bbk"])


class RandomCommands(ModernTest):
    """Commands at random moments, most of all when a search is about to end by itself."""

    BASES = (START_FEN, CASTLING, PROMOTIONS, MATE_IN_1, MATE_IN_3, MATED, STALEMATE, BARE_KINGS)
    OPTIONS = ("Hash value 1", "Hash value 3", "Threads value 1", "Threads value 2",
               "Threads value 3", "MultiPV value 1", "MultiPV value 3", "Clear Hash",
               "Ponder value true", "OwnBook value false", "UCI_AnalyseMode value true",
               "MultiPVMargin value 50", "eval.kingattack value 90", "Move Overhead value 0",
               "Move Overhead value 0", "Move Overhead value 30", "Unknown value 1",
               "UCI_LimitStrength value true", "UCI_LimitStrength value false",
               "UCI_Elo value 1250")

    def test_one_answer_for_each_go(self):
        seed = 20261123
        self.random = random.Random(seed)
        self.ends = {}  # limits -> seconds that their last search took
        self.searches = self.coincident = 0
        with self.client() as client:
            client.send("setoption name Move Overhead value 0")
            client.send("setoption name Hash value 1")
            try:
                for self.sequence in range(SEQUENCES):
                    self.run_sequence(client)
            except AssertionError as error:
                raise AssertionError(f"seed {seed}, sequence {self.sequence}:\n{error}") from None
            self.assertEqual(client.answers, self.searches)
        print(f"{SEQUENCES} sequences, {self.searches} searches, "
              f"{self.coincident} commands within a millisecond of an answer")
        known = (r"(uci::\w+\(\): search still running\? status=\d|Option not supported: Unknown|"
                 r"Expected current status==POSITION, got \d|No move generated! bm=0)\n")
        self.assertEqual([line for line in client.errors if not re.fullmatch(known, line)], [])

    def run_sequence(self, client):
        client.transcript.clear()
        for _ in range(self.random.randint(1, 3)):
            if self.random.random() < 0.3:
                client.send(self.random.choice(("ucinewgame", "isready", "debug on", "debug off",
                                                "stop", "ponderhit", "")) or "isready")
            if self.random.random() < 0.3:
                client.send("setoption name " + self.random.choice(self.OPTIONS))
            for _ in range(self.random.choice((0, 1, 1, 1, 2))):
                self.set_position(client)
            self.search(client)
        if any(go.waits or go.limits.startswith(("mate", "searchmoves")) or go.only
               for go in client.pending):
            client.send("stop")
        client.finish()

    def set_position(self, client):
        fen = self.random.choice(self.BASES)
        position, moves = Position(fen), []
        for _ in range(self.random.randint(0, 6)):
            if not (legal := position.legal_moves()):
                break
            moves.append(self.random.choice(legal))
            position.push(moves[-1])
        client.set_position(fen, moves)

    def limits(self):
        pick = self.random.choice
        limits = pick((f"movetime {pick((1, 2, 5, 10, 20))}", f"depth {pick((1, 2, 4))}",
                       f"nodes {pick((1, 1000, 5000))}", f"mate {pick((1, 2, 3))}", "infinite",
                       f"wtime {pick((-5, 1, 40, 200))} btime {pick((0, 1, 40, 200))}",
                       f"wtime 90 btime 90 winc {pick((0, 3))} binc 2 movestogo {pick((1, 5))}",
                       ""))
        return ("ponder " + limits).rstrip() if pick((False,) * 4 + (True,)) else limits

    def search(self, client):
        legal = client.position.legal_moves()
        some = legal and self.random.random() < 0.15
        only = self.random.sample(legal, min(len(legal), 3)) if some else ()
        go = client.go(self.limits(), only)
        self.searches += 1
        actions = ["stop"] * 5 + ["ponderhit", "isready", "ucinewgame", "position", "go", "stop",
                                  "setoption name Threads value 2", "setoption name Hash value 2"]
        for _ in range(self.random.choice((0, 1, 1, 2, 2))):
            self.wait_for_the_end(client, go)
            action = self.random.choice(actions)
            sent = time.monotonic()
            if action == "position":
                self.set_position(client)
            elif action == "go":
                client.go("nodes 300")
                self.searches += 1
            else:
                client.send(action)
            client.drain(self.random.choice((0.0, 0.0, 0.002)))
            if go.answered:
                self.coincident += abs(go.answered - sent) < 0.001
                if go.released == 0.0:
                    self.ends[go.limits] = go.answered - go.sent

    def wait_for_the_end(self, client, go):
        """Until the moment at which the search is about to end, if it ends by itself."""
        if go.answered or go.waits:
            client.drain(self.random.choice((0.0, 0.001, 0.005)))
            return
        end = go.sent + self.ends.get(go.limits, 0.005) + self.random.uniform(-0.001, 0.0005)
        while time.monotonic() < min(end, go.sent + 0.05):
            pass


if __name__ == "__main__":
    unittest.main()
