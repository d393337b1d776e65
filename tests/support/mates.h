// Positions in which the side to move has a forced mate, each proved by trying all moves: that
// there is one in so many moves, and none in fewer.
#pragma once

namespace quill::test {

struct ForcedMate {
  int moves;  // of the mating side
  const char* fen;

  // What a search from the root scores.
  constexpr int score() const { return 30001 - 2 * moves; }
  // The iteration in which one thread has found it.
  constexpr int depth() const { return 2 * moves - 1; }
};

inline constexpr ForcedMate ForcedMates[] = {
    {2, "4q2b/1p3p2/k2p4/2P1P3/1Kp1B3/8/1P1P1P2/3Q4 w - -"},
    {2, "1q1r1b1k/4R3/1Q6/3Q4/4r3/8/8/4qB1K w - -"},
    {2, "6Q1/1k1q4/1p3p2/1P2b3/2p1p3/K4B2/5P2/8 b - -"},
    {2, "k7/6Q1/1p3p2/1P6/1KB5/2p1p3/2q2P2/8 w - -"},
    {2, "2Q1n3/1b4R1/8/1k6/7N/8/2b5/5K2 w - -"},
    {2, "1rb3n1/bpp4r/3qp2P/pN3k2/3P3P/8/n1P1NKQ1/R2B1R2 w - -"},
    {3, "rnb1Q2r/3P2pp/2pb4/pN3p2/2p4k/4B3/PPq3P1/2R3RK w - -"},
    {3, "7r/pk5B/3nr2B/3p4/8/2b2P1P/PpP3RP/R4K2 b - -"},
    {3, "5k2/2P5/3P2P1/P6P/3pp1pP/2p5/4KP2/n7 w - -"},
    {3, "8/4N3/P4kPP/8/6pP/4p3/2pp1P1B/n4K2 b - -"},
    {3, "3Q1B2/1P5k/2r5/5R2/4r3/1K6/6p1/1Rb1b3 w - -"},
    {3, "6k1/8/2P2PP1/p2Pp3/3PP3/p1P3pP/8/5K2 w - -"},
    {3, "3k4/3p4/4P3/8/1P6/q3p3/8/3K1B2 b - -"},
    {3, "1q1r1b1k/8/8/2Q1R3/3q1r2/8/8/1Q1R1B1K w - -"},
    {3, "3Br3/1P3P1k/5R2/8/8/2r5/K1p1p1p1/1R6 b - -"},
    {3, "5k1b/7r/2r1PBpN/2q5/n1Qp4/1PP2B2/6RP/RK6 w - -"},
    {4, "rnb4r/pp1PQ1pp/1q4k1/1N3p2/2p1Bb2/7P/PPP3P1/R1B2R1K w - -"},
    {4, "8/pk5B/r7/5n2/3p4/2b2PPP/PpP5/2R3K1 b - -"},
    {4, "7k/1P3B2/3R4/6N1/1q6/4r3/KR6/6r1 w - -"},
    {4, "2QR1q1k/8/4B3/4N3/1r6/1R6/1K6/2r5 w - -"},
    {4, "8/5r2/4p3/8/pK2p1p1/6p1/2p1k3/8 b - -"},
    {4, "8/8/4p3/8/4prp1/p5p1/4k3/2K5 b - -"},
    {4, "4r2k/4b2q/8/4q3/2r5/4R2Q/8/Q1R2B1K w - -"},
    {4, "2r3k1/1ppn2p1/P5Pp/p7/1q2PB1K/P2Rn2P/1RP5/6N1 b - -"},
};

}  // namespace quill::test
