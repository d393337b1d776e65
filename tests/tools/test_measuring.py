"""The measuring tools count right: a wrong count would make a bad engine look good."""

import argparse
import pathlib
import random
import unittest
import unittest.mock

import bratko_kopec
import fuzz_stdin
import gui_match_files
import match
import time_to_depth
from chess_rules import Position
from positions import MIDDLEGAMES, OPENINGS
from uci_client import Answer


PROJECT = pathlib.Path(__file__).resolve().parents[2]


class Positions(unittest.TestCase):
    def test_openings_and_positions_are_sound(self):
        for opening in OPENINGS:
            position = Position()
            for move in opening.split():
                self.assertIn(move, position.legal_moves(), opening)
                position.push(move)
        for fen in MIDDLEGAMES:
            self.assertFalse(Position(fen).is_in_check(), fen)
            self.assertGreater(len(Position(fen).legal_moves()), 20, fen)
        self.assertEqual(len(set(MIDDLEGAMES)), 20)

    def test_every_bratko_kopec_position_has_a_legal_solution(self):
        names = [name for name, _, best in bratko_kopec.read_epd() if best]
        self.assertEqual(names, [f"BK.{n:02}" for n in range(1, 25)])


class MatchClock(unittest.TestCase):
    def test_reads_time_controls(self):
        self.assertEqual(match.parse_control("10+0.1"), (10.0, 0.1, 0))
        self.assertEqual(match.parse_control("40/20"), (20.0, 0.0, 40))
        self.assertEqual(match.parse_control("5"), (5.0, 0.0, 0))

    def test_counts_increments_periods_and_flags(self):
        clock = match.Clock((1.0, 5.0, 0))
        self.assertTrue(clock.spend(0.9))
        self.assertAlmostEqual(clock.left, 5.1)
        self.assertFalse(clock.spend(5.2))  # the flag falls before the increment comes
        self.assertTrue(match.Clock((1.0, 0.0, 0), slack=0.05).spend(1.04))
        clock = match.Clock((10.0, 0.0, 2))
        clock.spend(1.0)
        self.assertEqual((clock.to_go, clock.left), (1, 9.0))
        clock.spend(2.0)
        self.assertEqual((clock.to_go, clock.left), (2, 17.0))


class ScriptedPlayer:
    """Answers "go" with the moves given, one after the other."""

    def __init__(self, moves, seconds=0.01, score=0):
        self.name, self.moves, self.seconds = "scripted", list(moves), seconds
        self.infos = [(0.0, f"info depth 1 score cp {score} pv a1a2")]

    def send(self, *_):
        pass

    def ready(self):
        pass

    def go(self, *_):
        return Answer(f"bestmove {self.moves.pop(0)}", self.infos, self.seconds)


class Referee(unittest.TestCase):
    def play(self, white, black, seconds=0.01, scores=None, max_plies=50):
        players = [
            ScriptedPlayer(white, seconds, scores[0] if scores else 0),
            ScriptedPlayer(black, 0.01, scores[1] if scores else 0),
        ]
        args = argparse.Namespace(
            slack=0, movetime=None, max_plies=max_plies, adjudicate=bool(scores)
        )
        return match.Game(players, "", (1.0, 0.0, 0), args).play()

    def test_sees_mate_illegal_moves_and_lost_clocks(self):
        self.assertEqual(self.play(["f2f3", "g2g4"], ["e7e5", "d8h4"]), ("0-1", "mate"))
        result, reason = self.play(["e2e4"], ["e7e4"])
        self.assertEqual((result, reason.split(":")[0]), ("1-0", "illegal move"))
        result, reason = self.play(["e2e4"], [], seconds=1.2)
        self.assertEqual((result, reason.split(":")[0]), ("0-1", "time forfeit"))
        self.assertEqual(self.play(["e2e4"], ["e7e5"], max_plies=2), ("1/2-1/2", "too long"))

    def test_adjudicates_only_where_both_engines_agree(self):
        moves = [("g1f3", "g8f6"), ("f3g1", "f6g8"), ("b1c3", "b8c6"), ("c3b1", "c6b8")]
        white, black = map(list, zip(*moves))
        self.assertEqual(self.play(white, black, scores=(-700, 700)), ("0-1", "adjudicated"))
        result = self.play(white, black, scores=(-700, 300))
        self.assertEqual(result, ("1/2-1/2", "repetition"))


class MatchScore(unittest.TestCase):
    def test_rates_the_difference(self):
        low, middle, high = match.rating_difference(64, 0, 36)
        self.assertAlmostEqual(middle, 100, delta=1)
        self.assertTrue(30 < low < middle < high < 180)
        self.assertAlmostEqual(match.rating_difference(10, 80, 10)[1], 0)

    def test_reads_different_openings_of_eight_plies(self):
        lines = match.read_openings(PROJECT / "data" / "openings.txt")
        self.assertGreater(len(lines), 75)
        self.assertEqual(len(lines), len(set(lines)))
        self.assertEqual({len(line.split()) for line in lines}, {8})


class GuiReport(unittest.TestCase):
    @staticmethod
    def game(white, black, result, comment):
        tags = f'[Event "x"]\n[White "{white}"]\n[Black "{black}"]\n[Result "{result}"]\n\n'
        return f"{tags}1. e4 {{a}} e5\n{{{comment}}} {result}\n\n"

    def test_counts_results_and_blames_the_loser(self):
        text = (
            self.game("quill", "rival", "1-0", "Xboard adjudication: Checkmate")
            + self.game("rival", "quill", "1-0", "Black forfeits on time")
            + self.game("rival", "quill", "0-1", "rival exited\nunexpectedly")
            + self.game("quill", "rival", "0-1", "Xboard: Forfeit due to illegal move: e2e5")
            + self.game("quill", "rival", "1/2-1/2", "Draw by repetition")
            + self.game("quill", "rival", "*", "")
        )
        wins, draws, losses, unfinished, faults = gui_match_files.summarise(
            gui_match_files.read_games(text), "quill"
        )
        self.assertEqual((wins, draws, losses, unfinished), (2, 1, 2, 1))
        self.assertEqual(
            faults, {(True, "time forfeit"): 1, (False, "crash"): 1, (True, "illegal move"): 1}
        )


class Gain(unittest.TestCase):
    def test_takes_medians(self):
        single, several = [(4.0, 100), (2.0, 110), (9.0, 90)], [(2.0, 200), (1.0, 180), (3.0, 190)]
        self.assertEqual(time_to_depth.gain_row(single, several), (4.0, 2.0, 2.0, 1.9))

    def test_the_speed_of_engines_side_by_side_is_their_sum(self):
        searches = {"fast": (1.0, 300), "slow": (2.0, 200)}
        with unittest.mock.patch.object(
            time_to_depth, "measure", lambda engine, *_: searches[engine]
        ):
            self.assertEqual(time_to_depth.side_by_side(searches, "fen", 9, 60, 0), (2.0, 500))

    def test_makes_disturbed_runs_again(self):
        results = iter([(1.0, 10), (1.1, 11), (1.2, 12)])
        stolen = iter([0.0, 0.5, 0.5, 0.6, 0.6, 0.61])
        runs = time_to_depth.Runs(5)
        with unittest.mock.patch.object(time_to_depth, "stolen_time", lambda: next(stolen)):
            self.assertEqual(runs.undisturbed(lambda: next(results)), (1.2, 12))
        self.assertEqual((runs.repeated, runs.disturbed), (2, 0))


class Fuzz(unittest.TestCase):
    def test_keeps_harmful_lines_out(self):
        console = fuzz_stdin.Lines(random.Random(1), has_huge_limits=False)
        protocol = fuzz_stdin.Lines(random.Random(1), has_huge_limits=True)
        for line in (b"x quit", b"perft 5", b"setoption name Hash value 4000", b"mt 99"):
            self.assertFalse(console.is_bearable(line), line)
        self.assertFalse(console.is_bearable(b"go movetime 99999"))
        self.assertTrue(protocol.is_bearable(b"go movetime 99999"))
        self.assertFalse(protocol.is_bearable(b" g tt"))

    def test_a_seed_gives_the_same_lines_again(self):
        def lines():
            maker = fuzz_stdin.Lines(random.Random(7), False)
            return [maker.next() for _ in range(300)]

        self.assertEqual(lines(), lines())


if __name__ == "__main__":
    unittest.main()
