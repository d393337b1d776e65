"""The engine held back to a rating: whole games of the real program."""

import unittest

from chess_rules import Position
from positions import OPENINGS
from session import QUILL, TIMEOUT, SessionTest
from uci_client import Engine

CLOCK = "wtime 600000 btime 600000"  # never spent: the nodes alone decide, on any machine


class LimitedStrength(SessionTest):
    def player(self, elo):
        options = {"UCI_LimitStrength": "true", "UCI_Elo": elo, "OwnBook": "false"}
        engine = Engine([*QUILL, "modern.ini"], options, cwd=self.folder, name=str(elo),
                        timeout=TIMEOUT)
        self.addCleanup(engine.process.stdout.close)
        self.addCleanup(engine.quit)
        return engine

    def play(self, white, black, opening):
        """The moves of a game and its outcome, "1/2-1/2" when it grows too long."""
        position, moves = Position(), opening.split()
        for move in moves:
            position.push(move)
        for player in {white, black}:
            player.clear()
        while not position.outcome() and len(moves) < 240:
            player = white if position.white else black
            answer = player.go(CLOCK, "startpos moves " + " ".join(moves))
            self.assertIn(answer.move, position.legal_moves(), position.fen())
            words = answer.infos[-1][1].split()
            line = words[words.index("pv") + 1:]
            self.assertEqual(line[0], answer.move)
            self.assertEqual(line[1] if len(line) > 1 else None, answer.ponder)
            moves.append(answer.move)
            position.push(answer.move)
        return moves, (position.outcome() or ("1/2-1/2", ""))[0]

    def test_a_clock_that_is_nearly_spent_ends_the_search_before_its_nodes_do(self):
        player = self.player(2400)
        for opening in OPENINGS[:6]:
            answer = player.go("wtime 40 btime 40", "startpos moves " + opening)
            self.assertLess(answer.last("nodes"), 100000)

    def test_four_hundred_points_more_win_a_match(self):
        strong, weak = self.player(1700), self.player(1300)
        points = 0
        for opening in OPENINGS[2:5]:
            for strong_is_white in (True, False):
                order = (strong, weak) if strong_is_white else (weak, strong)
                _, outcome = self.play(*order, opening)
                winner = {"1-0": True, "0-1": False}.get(outcome)
                points += 0.5 if winner is None else float(winner == strong_is_white)
        self.assertGreaterEqual(points, 4.5)


if __name__ == "__main__":
    unittest.main()
