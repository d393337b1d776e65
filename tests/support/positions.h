// Positions with a name, and the set of them from which random games start.
#pragma once

#include <cstdint>

namespace quill::test {

inline constexpr char StartFen[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
// Every kind of move in one position; the classic test of move generators.
inline constexpr char KiwipeteFen[] =
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";
// Pins along the fifth rank that en passant opens.
inline constexpr char RookEndingFen[] = "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -";
// Promotions, with and without capture, while castling is still open.
inline constexpr char PromotionFen[] =
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -";
inline constexpr char KnightForkFen[] = "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ -";
inline constexpr char QuietFen[] =
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -";

// Reachable positions rich in one kind of move each.
inline constexpr const char* VariedFens[] = {
    StartFen,
    KiwipeteFen,
    RookEndingFen,
    PromotionFen,
    KnightForkFen,
    QuietFen,
    // Pawns about to promote on both sides.
    "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N w - -",
    "n1n5/1Pk5/8/8/8/8/5Kp1/5N1N b - -",
    "2r1r3/1P1P1P1k/8/8/8/8/K1p1p1p1/1R3R2 w - -",
    // Pawns that meet on the fourth and fifth ranks.
    "4k3/p1p1p1p1/8/1P1P1P1P/p1p1p1p1/8/1P1P1P1P/4K3 w - -",
    "8/1p1p1p1p/8/K1P1P1Pr/R1p1p1pk/8/P1P1P1P1/8 b - -",
    "3q3b/1p1p1p2/k7/2P1P3/2p1p3/K7/1P1P1P2/3Q3B w - -",
    // Open boards: pins, discovered and double checks.
    "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -",
    "1q1r1b1k/8/8/3QR3/3qr3/8/8/1Q1R1B1K w - -",
    "q2b2r1/8/2n1k3/8/8/3K1N2/8/1R2B2Q b - -",
    "b2r3k/1q6/8/4N3/3P4/2K5/6Q1/B2R3B w - -",
    // A handful of men, where mates and stalemates are near.
    "8/8/8/3k4/8/3KP3/8/8 w - -",
    "k7/2Q5/8/8/8/8/p6K/8 w - -",
    "8/k1P5/8/1K6/8/8/1p6/8 w - -",
};

struct PerftCase {
  const char* fen;
  std::uint64_t counts[7];  // leaves by depth, depth 1 first; 0 where not given
};

// Published counts.
inline constexpr PerftCase PerftCases[] = {
    {StartFen, {20, 400, 8902, 197281, 4865609, 119060324, 0}},
    {KiwipeteFen, {48, 2039, 97862, 4085603, 193690690, 0, 0}},
    {RookEndingFen, {14, 191, 2812, 43238, 674624, 11030083, 178633661}},
    {PromotionFen, {6, 264, 9467, 422333, 15833292, 0, 0}},
    {KnightForkFen, {44, 1486, 62379, 2103487, 89941194, 0, 0}},
    {QuietFen, {46, 2079, 89890, 3894594, 164075551, 0, 0}},
};

}  // namespace quill::test
