// The evaluation against the reference positions, term by term in the order in which it sums them.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "board/attacks.h"
#include "board/fen.h"
#include "eval/endgame.h"
#include "eval/evaluate.h"
#include "eval/king_safety.h"
#include "eval/material.h"
#include "eval/passed_pawns.h"
#include "eval/pawn_race.h"
#include "eval/pawns.h"
#include "eval/pieces.h"
#include "eval/trapped.h"
#include "support/reference.h"

namespace quill::test {
namespace {

using nlohmann::json;

const EvalTables Tables;

// A reference position with an Evaluator of its own and what the reference tells of each term.
struct ReferenceCase {
  const Board& board;
  const json& trace;
  Evaluator evaluator{board, Tables};
};

template <typename Check>
void forEachCase(Check check) {
  forEachReference([check](const Board& board, const json& reference) {
    ReferenceCase setup{board, reference["trace"]};
    check(setup);
  });
}

json pairOf(ScorePair pair) { return {openingOf(pair), endgameOf(pair)}; }

TEST(EvaluationReference, MaterialAndTrappedPiecesAgree) {
  forEachCase([](ReferenceCase& s) {
    int scale = -1;
    EXPECT_EQ(materialBalance(s.board, scale), s.trace["materialBalance"]);
    EXPECT_EQ(scale, s.trace["materialScale"].is_null() ? json(-1) : s.trace["materialScale"]);
    EXPECT_EQ(trappedPieces(s.evaluator), s.trace["trapped"]);
  });
}

TEST(EvaluationReference, PawnEntriesAgree) {
  forEachCase([](ReferenceCase& s) {
    const PawnEntry& entry = pawnStructure(s.evaluator);
    EXPECT_EQ(entry.passed, parseHex(s.trace["passedSet"]));
    for (const Colour c : {White, Black}) {
      const PawnEntry::SideValues& side = entry.side[c];
      EXPECT_EQ(side.opening, s.trace["pawnOpening"][c]);
      EXPECT_EQ(side.endgame, s.trace["pawnEndgame"][c]);
      EXPECT_EQ(side.candidate, s.trace["candidate"][c]);
      const json shelter = {side.shelter[ShelterB], side.shelter[ShelterE], side.shelter[ShelterG]};
      EXPECT_EQ(shelter, s.trace["entryShelter"][c]);
    }
  });
}

TEST(EvaluationReference, PassedPawnsAndKingSheltersAgree) {
  forEachCase([](ReferenceCase& s) {
    pawnStructure(s.evaluator);
    for (const Colour c : {White, Black}) {
      int opening = 0;
      int endgame = 0;
      passedPawns(s.evaluator, c, opening, endgame);
      EXPECT_EQ(opening, s.trace["passedOpening"][c]);
      EXPECT_EQ(endgame, s.trace["passedEndgame"][c]);
      EXPECT_EQ(kingShelter(s.evaluator, c), s.trace["kingShelter"][c]);
      EXPECT_EQ(s.evaluator.shelter[c], s.trace["shelter"][c]);
    }
  });
}

TEST(EvaluationReference, PieceTermsAgreeByKindOfPiece) {
  forEachCase([](ReferenceCase& s) {
    pawnStructure(s.evaluator);
    for (const Colour c : {White, Black}) kingShelter(s.evaluator, c);
    for (const Colour c : {White, Black}) {
      const json& detail = s.trace["pieceDetail"][c];
      const PieceSums sums = pieceSums(s.evaluator, c);
      EXPECT_EQ(pairOf(sums.contacts), detail["pairs"]["contacts"]);
      EXPECT_EQ(pairOf(sums.knights), detail["pairs"]["knights"]);
      EXPECT_EQ(pairOf(sums.bishops), detail["pairs"]["bishops"]);
      EXPECT_EQ(pairOf(sums.rooks), detail["pairs"]["rooks"]);
      EXPECT_EQ(pairOf(sums.queens), detail["pairs"]["queens"]);
      if (detail["record"].get<bool>()) {
        EXPECT_EQ(kingAttack(s.evaluator, c, sums.attack), detail["kingAttack"]);
        // The reference counts attacking pawns among the attackers.
        const int pawns = detail["pawnPart"].get<int>() > 0 ? 1 : 0;
        EXPECT_EQ(sums.attack.count, detail["count"].get<int>() - pawns);
        EXPECT_EQ(sums.attack.weight, detail["weight"]);
      }
      EXPECT_EQ(pieceTerms(s.evaluator, c), s.trace["pieceTerms"][c]);
    }
  });
}

TEST(EvaluationReference, EndgameRulesAgree) {
  forEachCase([](ReferenceCase& s) {
    pawnStructure(s.evaluator);
    int score = s.trace["scoreBeforeRules"];
    int scale = s.trace["materialScale"].is_null() ? 1024 : s.trace["materialScale"].get<int>();
    const bool isExact = endgameRules(s.evaluator, score, scale);
    EXPECT_EQ(isExact, s.trace["exact"]) << s.trace["rules"];
    EXPECT_EQ(score, s.trace["scoreAfterRules"]) << s.trace["rules"];
    if (!isExact) {
      EXPECT_EQ(scale, s.trace["scale"]) << s.trace["rules"];
    }
    if (!s.trace["pawnRace"].is_null()) {
      const RaceCounts counts = pawnRaceCounts(s.evaluator);
      EXPECT_EQ(json({counts.moves[White], counts.moves[Black]}), s.trace["pawnRaceCounts"]);
      EXPECT_EQ(pawnRace(s.evaluator), s.trace["pawnRace"]);
    }
  });
}

TEST(EvaluationReference, ResultsAgreeAlsoAfterQuietPlies) {
  forEachReference([](Board& board, const json& reference) {
    Evaluator evaluator(board, Tables);
    EXPECT_EQ(evaluate(evaluator), reference["evaluate"]);
    for (const auto& [plies, expected] : reference["evalFifty"].items()) {
      clearEvaluator(evaluator);
      board.lastIrreversible = board.ply - std::stoi(plies);
      EXPECT_EQ(evaluate(evaluator), expected) << plies;
    }
  });
}

TEST(EvaluationReference, ResultsUnderOtherWeightsAgree) {
  forEachReference([](const Board& board, const json& reference) {
    for (const auto& [percents, expected] : reference["evalWeights"].items()) {
      EvalTables tables;
      std::istringstream list(percents);
      int index = 0;
      for (std::string percent; std::getline(list, percent, ',');)
        setEvalWeight(tables, index++, std::stoi(percent) * 1024 / 100);
      ASSERT_EQ(index, EvalWeightCount);
      Evaluator evaluator(board, tables);
      // The reference does not keep its results out of the range of mate scores.
      const int limited = std::clamp(expected.get<int>(), -MaxEvaluation, MaxEvaluation);
      EXPECT_EQ(evaluate(evaluator), limited) << percents;
    }
  });
}

}  // namespace
}  // namespace quill::test
