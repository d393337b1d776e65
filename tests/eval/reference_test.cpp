// The evaluation against the reference positions, term by term in the order in which it sums them.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
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

// A reference position set up with an Evaluator of its own.
struct ReferenceCase {
  explicit ReferenceCase(const json& reference, const EvalTables& tables = defaultTables())
      : trace(reference["trace"]), evaluator(board, tables) {
    const std::string fen = reference["fen"];
    EXPECT_TRUE(setFen(board, fen.c_str())) << fen;
  }

  static const EvalTables& defaultTables() {
    static const EvalTables tables;
    return tables;
  }

  Board board;
  const json& trace;
  Evaluator evaluator;
};

json pairOf(ScorePair pair) { return {openingOf(pair), endgameOf(pair)}; }

class EvaluationReference : public testing::Test {
 protected:
  template <typename Check>
  void forEachPosition(Check check) {
    for (const json& reference : referencePositions()) {
      SCOPED_TRACE(reference["fen"].get<std::string>());
      ReferenceCase setup(reference);
      check(setup);
    }
  }
};

TEST_F(EvaluationReference, MaterialAndTrappedPiecesAgree) {
  forEachPosition([](ReferenceCase& s) {
    int scale = -1;
    EXPECT_EQ(materialBalance(s.board, scale), s.trace["materialBalance"].get<int>());
    EXPECT_EQ(scale, s.trace["materialScale"].is_null() ? -1 : s.trace["materialScale"].get<int>());
    EXPECT_EQ(trappedPieces(s.evaluator), s.trace["trapped"].get<int>());
  });
}

TEST_F(EvaluationReference, PawnEntriesAgree) {
  forEachPosition([](ReferenceCase& s) {
    const PawnEntry& entry = pawnStructure(s.evaluator);
    EXPECT_EQ(entry.passed, parseHex(s.trace["passedSet"]));
    for (const Colour c : {White, Black}) {
      const PawnEntry::SideValues& side = entry.side[c];
      EXPECT_EQ(side.opening, s.trace["pawnOpening"][c].get<int>());
      EXPECT_EQ(side.endgame, s.trace["pawnEndgame"][c].get<int>());
      EXPECT_EQ(side.candidate, s.trace["candidate"][c].get<int>());
      const json shelter = {side.shelter[ShelterB], side.shelter[ShelterE], side.shelter[ShelterG]};
      EXPECT_EQ(shelter, s.trace["entryShelter"][c]);
    }
  });
}

TEST_F(EvaluationReference, PassedPawnsAndKingSheltersAgree) {
  forEachPosition([](ReferenceCase& s) {
    pawnStructure(s.evaluator);
    for (const Colour c : {White, Black}) {
      int opening = 0;
      int endgame = 0;
      passedPawns(s.evaluator, c, opening, endgame);
      EXPECT_EQ(opening, s.trace["passedOpening"][c].get<int>());
      EXPECT_EQ(endgame, s.trace["passedEndgame"][c].get<int>());
      EXPECT_EQ(kingShelter(s.evaluator, c), s.trace["kingShelter"][c].get<int>());
      EXPECT_EQ(s.evaluator.shelter[c], s.trace["shelter"][c].get<int>());
    }
  });
}

TEST_F(EvaluationReference, PieceTermsAgreeByKindOfPiece) {
  forEachPosition([](ReferenceCase& s) {
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
        EXPECT_EQ(kingAttack(s.evaluator, c, sums.attack), detail["kingAttack"].get<int>());
        // The reference counts attacking pawns among the attackers.
        const int pawns = detail["pawnPart"].get<int>() > 0 ? 1 : 0;
        EXPECT_EQ(sums.attack.count, detail["count"].get<int>() - pawns);
        EXPECT_EQ(sums.attack.weight, detail["weight"].get<int>());
      }
      EXPECT_EQ(pieceTerms(s.evaluator, c), s.trace["pieceTerms"][c].get<int>());
    }
  });
}

TEST_F(EvaluationReference, EndgameRulesAgree) {
  forEachPosition([](ReferenceCase& s) {
    pawnStructure(s.evaluator);
    int score = s.trace["scoreBeforeRules"];
    int scale = s.trace["materialScale"].is_null() ? 1024 : s.trace["materialScale"].get<int>();
    const bool isExact = endgameRules(s.evaluator, score, scale);
    EXPECT_EQ(isExact, s.trace["exact"].get<bool>()) << s.trace["rules"];
    EXPECT_EQ(score, s.trace["scoreAfterRules"].get<int>()) << s.trace["rules"];
    if (!isExact) {
      EXPECT_EQ(scale, s.trace["scale"].get<int>()) << s.trace["rules"];
    }
    if (!s.trace["pawnRace"].is_null()) {
      const RaceCounts counts = pawnRaceCounts(s.evaluator);
      EXPECT_EQ(json({counts.moves[White], counts.moves[Black]}), s.trace["pawnRaceCounts"]);
      EXPECT_EQ(pawnRace(s.evaluator), s.trace["pawnRace"].get<int>());
    }
  });
}

TEST_F(EvaluationReference, ResultsAgree) {
  for (const json& reference : referencePositions()) {
    ReferenceCase setup(reference);
    EXPECT_EQ(evaluate(setup.evaluator), reference["evaluate"].get<int>()) << reference["fen"];
  }
}

TEST_F(EvaluationReference, ResultsUnderOtherWeightsAgree) {
  std::map<std::string, EvalTables> tablesByPercent;
  for (const json& reference : referencePositions()) {
    for (const auto& [percents, expected] : reference["evalWeights"].items()) {
      EvalTables& tables = tablesByPercent[percents];
      std::istringstream list(percents);
      int index = 0;
      for (std::string percent; std::getline(list, percent, ',');)
        setEvalWeight(tables, index++, std::stoi(percent) * 1024 / 100);
      ASSERT_EQ(index, EvalWeightCount);
      ReferenceCase setup(reference, tables);
      // The reference does not keep its results out of the range of mate scores.
      const int limited = std::clamp(expected.get<int>(), -MaxEvaluation, MaxEvaluation);
      EXPECT_EQ(evaluate(setup.evaluator), limited) << reference["fen"] << percents;
    }
  }
}

TEST_F(EvaluationReference, ResultsAfterQuietPliesAgree) {
  for (const json& reference : referencePositions()) {
    for (const auto& [plies, expected] : reference["evalFifty"].items()) {
      ReferenceCase setup(reference);
      setup.board.lastIrreversible = setup.board.ply - std::stoi(plies);
      EXPECT_EQ(evaluate(setup.evaluator), expected.get<int>()) << reference["fen"] << plies;
    }
  }
}

}  // namespace
}  // namespace quill::test
