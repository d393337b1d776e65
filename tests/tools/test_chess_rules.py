"""The referee's rules against known counts and known ends of games."""

import unittest

from chess_rules import Position

PERFT = [
    ("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 3, 8902),
    ("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 2, 2039),
    ("8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 3, 2812),
    ("r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", 3, 9467),
    ("rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", 2, 1486),
]


class ChessRules(unittest.TestCase):
    def test_counts_the_published_numbers_of_moves(self):
        for fen, depth, count in PERFT:
            with self.subTest(fen=fen):
                self.assertEqual(Position(fen).perft(depth), count)
                self.assertEqual(Position(fen).fen(), fen)

    def test_knows_how_games_end(self):
        cases = [
            ("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", ("1/2-1/2", "stalemate")),
            ("6rk/5Npp/8/8/8/8/8/6K1 b - - 0 1", ("1-0", "mate")),
            ("8/8/4k3/8/8/3KB3/8/8 w - - 0 1", ("1/2-1/2", "insufficient material")),
            ("8/8/4k3/8/8/3KR3/8/8 w - - 100 80", ("1/2-1/2", "fifty moves")),
            ("8/8/4k3/8/8/3KR3/8/8 w - - 99 80", None),
            ("8/8/4k3/8/8/3KP3/8/8 w - - 0 1", None),
        ]
        for fen, outcome in cases:
            with self.subTest(fen=fen):
                self.assertEqual(Position(fen).outcome(), outcome)

    def test_the_third_occurrence_is_a_repetition(self):
        position = Position()
        for n, move in enumerate("g1f3 g8f6 f3g1 f6g8".split() * 2):
            self.assertIsNone(position.outcome(), f"after {n} plies")
            position.push(move)
        self.assertEqual(position.outcome(), ("1/2-1/2", "repetition"))

    def test_lost_castling_rights_make_a_different_position(self):
        position = Position("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1")
        for move in "a1b1 a8b8 b1a1 b8a8".split() * 2:
            position.push(move)
        self.assertIsNone(position.outcome())
        self.assertEqual(position.rights, "Kk")

    def test_reads_and_writes_algebraic_notation(self):
        cases = [
            ("4k3/P7/8/8/8/8/8/R3K2R w KQ - 0 1", "e1g1", "O-O"),
            ("4k3/P7/8/8/8/8/8/R3K2R w KQ - 0 1", "a7a8n", "a8=N"),
            ("4k3/P7/8/8/8/8/8/R3K2R w KQ - 0 1", "a7a8q", "a8=Q+"),
            ("7k/8/8/8/R7/8/8/R3K3 w - - 0 1", "a1a2", "R1a2"),
            ("6k1/8/8/8/8/8/8/R3K2R w - - 0 1", "a1a8", "Ra8+"),
            ("6k1/5ppp/8/8/8/8/8/R3K3 w - - 0 1", "a1a8", "Ra8#"),
            ("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", "exd6"),
        ]
        for fen, move, san in cases:
            with self.subTest(fen=fen, move=move):
                self.assertEqual(Position(fen).san(move), san)
                self.assertEqual(Position(fen).parse_san(san), move)


if __name__ == "__main__":
    unittest.main()
