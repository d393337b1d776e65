// Every number that shapes the search, with what it is for. Scores are centipawns, depths plies.
#pragma once

#include <array>

namespace quill {

// Plies of search stack: no line is longer, and no table by ply.
inline constexpr int MaxSearchPly = 128;

// A side that is mated at ply p scores -MateScore + p.
inline constexpr int MateScore = 30000;
inline constexpr int DrawScore = 0;
// From here on a score is decisive: no evaluation reaches it, static pruning leaves it alone, and a
// table entry of any depth proves it.
inline constexpr int DecisiveScore = 10000;
// Beyond this a score is a forced mate: internal deepening takes it as it is, and reports show it as
// a count of moves. No search gives exactly this score.
inline constexpr int ForcedMateScore = 29000;
// Beyond this the table keeps a score relative to its node.
inline constexpr int TableMateScore = 29010;

// Below this ply a node is searched, deeper ones are evaluated: keeps every stack index under 128.
inline constexpr int DeepestPly = 119;
inline constexpr int DeepestIteration = 120;

// How far the static evaluation may be off, by remaining depth: for static null-move pruning and
// for futility pruning.
inline constexpr std::array<int, 7> Margin = {0, 50, 50, 250, 550, 1150, 1150};

inline constexpr int StaticNullDepth = 4;  // static null-move pruning up to this depth
inline constexpr int FutilityDepth = 5;    // futility pruning of late quiet moves up to this depth

// The null move is tried when the evaluation is this much above beta.
inline constexpr int NullMoveMargin = 13;
inline constexpr int NullMoveReduction = 5;      // with two or more pieces
inline constexpr int NullMoveFewReduction = 4;   // with fewer, for fear of zugzwang
inline constexpr int VerificationReduction = 5;  // with a bishop, rook or queen
inline constexpr int VerificationFewReduction = 4;

inline constexpr int InternalReduction = 2;  // of internal iterative deepening
// Recaptures and entries into pawn endings are extended above this depth.
inline constexpr int ExtensionDepth = 3;

inline constexpr int LateReduction = 2;     // of late moves while a rook or queen is left
inline constexpr int LateFewReduction = 1;  // and otherwise

// Nodes are split among threads from this depth on: what is below is done before a helper arrives.
inline constexpr int SplitDepth = 4;

// Checks of the clock: every so many nodes, a power of two.
inline constexpr unsigned PollNodes = 256;
inline constexpr unsigned PollQNodes = 4096;

// Quiescence.
inline constexpr int QuiescenceCheckDepth = 2;  // plies with quiet checks
inline constexpr int MatedNextScore = -9000;    // stand pat while the enemy threatens mate in one
inline constexpr int DeltaMargin = 199;         // need above this prunes captures
inline constexpr int DeltaNothing = 1199;       // above this no capture helps
inline constexpr int DeltaRooks = 699;          // up to this, rooks are worth taking
inline constexpr int DeltaMinors = 499;         // up to this, knights and bishops too
inline constexpr int DeltaSlack = 50;           // the pruned captures' assumed shortfall
inline constexpr int EvasionMargin = 50;        // above eval + this, quiet evasions are dropped

// Aspiration windows: from this depth on, opened step by step around the last iteration's scores.
inline constexpr int AspirationDepth = 4;
inline constexpr std::array<int, 7> AspirationSteps = {25, 50, 150, 400, 650, 1250, 60000};

}  // namespace quill
