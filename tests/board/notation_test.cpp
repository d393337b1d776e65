#include "board/notation.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "board/make_move.h"
#include "support/capture.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/random_positions.h"
#include "support/reference.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

constexpr char CastlingFen[] = "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -";
constexpr char KnightsFen[] = "4k3/8/8/8/8/5N2/8/1N2K3 w - -";
constexpr char PawnPromotionFen[] = "3r3k/4P3/8/8/8/8/8/4K3 w - -";

std::string longText(const Board& board, Move move) {
  char text[MoveTextSize];
  const char* end = moveToText(board, text, move);
  EXPECT_EQ(end, text + std::strlen(text));
  return text;
}

std::string sanOf(Board& board, Move move) {
  char text[MoveTextSize];
  moveToSan(board, text, move);
  return text;
}

std::string uciText(Move move) {
  char text[6];
  const char* end = uciMoveText(text, move);
  EXPECT_EQ(end, text + std::strlen(text));
  return text;
}

// The move that the text means in the position, in long form; "%" for none.
std::string parsed(const char* fen, const char* text) {
  Board board = boardOf(fen);
  return longText(board, parseMove(board, text));
}

TEST(Notation, ReferenceMovesHaveTheirTexts) {
  forEachReference([](Board& board, const auto& reference) {
    std::size_t i = 0;
    for (const Move move : movesIn(reference["bits"])) {
      EXPECT_EQ(longText(board, move), reference["text"][i]);
      EXPECT_EQ(sanOf(board, move), reference["san"][i++]);
    }
  });
}

TEST(Notation, TextsOfOddMoves) {
  Board board = boardOf(StartFen);
  EXPECT_EQ(longText(board, NoMove), "%");
  EXPECT_EQ(sanOf(board, NoMove), "%");
  EXPECT_EQ(uciText(NoMove), "0000");
  EXPECT_EQ(uciText(withPromotion(makeQuiet(E7, E8), Knight)), "e7e8N");
  makeMove(board, makeQuiet(G1, F3));
  EXPECT_EQ(longText(board, makeQuiet(G1, F3)), "Ng1f3");
}

TEST(Notation, SanTellsRivalsApartWithTheLeastText) {
  const struct {
    const char* fen;
    Move move;
    const char* san;
  } cases[] = {
      {KnightsFen, makeQuiet(B1, D2), "Nbd2"},
      {"4k3/8/8/3N4/8/8/8/3NK3 w - -", makeQuiet(D1, C3), "N1c3"},
      // One rival on the file, another elsewhere: the rank is enough.
      {"4k3/8/8/1N1N4/8/8/8/3NK3 w - -", makeQuiet(D1, C3), "N1c3"},
      // One on the file, one on the rank: both are needed.
      {"4k3/8/8/1N1N4/8/8/8/1N2K3 w - -", makeQuiet(B5, C3), "Nb5c3"},
      // A pinned rival is none.
      {"4r1k1/8/8/8/8/8/4N3/1N2K3 w - -", makeQuiet(B1, C3), "Nc3"},
  };
  for (const auto& c : cases) {
    Board board = boardOf(c.fen);
    EXPECT_EQ(sanOf(board, c.move), c.san) << c.fen;
  }
}

TEST(Notation, TextsFitTheirBuffersWhateverTheMove) {
  RandomPositions positions(7);
  for (int i = 0; i < PropertyPositions; ++i) {
    Board& board = positions.next();
    const Move move = positions.bits();
    char text[MoveTextSize + 1];
    std::memset(text, '~', sizeof text);
    moveToText(board, text, move);
    moveToSan(board, text, move);
    ASSERT_EQ(text[MoveTextSize], '~') << std::hex << move;
    std::memset(text, '~', sizeof text);
    uciMoveText(text, move);
    ASSERT_EQ(text[6], '~') << std::hex << move;
  }
}

TEST(ParseMove, AllCommonFormsMeanTheMove) {
  constexpr char PawnCaptureFen[] = "4k3/8/8/8/8/2p5/1P6/4K3 w - -";
  const struct {
    const char* fen;
    const char* move;
    std::vector<const char*> texts;
  } cases[] = {
      {StartFen, "e2e4", {"e4", "e2e4", "e2-e4", "Pe4", "e4!", "Pe2e4", "e2-e4+?!", " e4\r\n"}},
      {StartFen, "Ng1f3", {"Nf3", "g1f3", "Ng1f3", "Ng1-f3", "Ngf3", "N1f3", "Nf3#"}},
      {KnightsFen, "Nb1d2", {"Nbd2"}},
      {KnightsFen, "Nf3d2", {"N3d2"}},
      {PawnPromotionFen, "e7e8=Q", {"e7e8", "e8", "e7e8q", "e8=Q+", "e8Q", "e7-e8=Q"}},
      {PawnPromotionFen, "e7e8=N", {"e7e8n", "e8=N", "e8N", "Pe8=N", "e7e8N"}},
      {PawnPromotionFen, "e7xd8=Q", {"ed", "exd", "exd8", "e7d8q", "exd8=Q", "e7xd8"}},
      // A "b" is a bishop only behind a whole move.
      {PawnPromotionFen, "e7e8=B", {"e7e8b", "e8=B"}},
      {PawnPromotionFen, "e7xd8=B", {"exd8b"}},
      {PawnPromotionFen, "%", {"e8b"}},
      {PawnCaptureFen, "b2xc3", {"bxc3", "bc"}},
      {CastlingFen, "O-O", {"O-O", "o-o", "OO", "e1g1", "Kg1", "Ke1-g1", "O-O+"}},
      {CastlingFen, "O-O-O", {"O-O-O", "o-o-o", "e1c1", "Kc1"}},
      {CastlingFen, "%", {"O", "O-O-O-O", "KO-O"}},
      {"4k3/8/8/8/8/8/8/5K2 w - -", "%", {"O-O"}},  // the king's step is no castling
      {StartFen, "%", {"",    "%", "%e4", "e",    "4", "N", "Nf",   "N3",   "e5",   "e2e5",
                       "Nf6", "x", "Pe",  "e1g1", "Q", "K", "d1d2", "bxc3", "e4e2", "  "}},
  };
  StreamCapture errors(stderr);
  for (const auto& c : cases) {
    for (const char* text : c.texts) EXPECT_EQ(parsed(c.fen, text), c.move) << text;
  }
  EXPECT_EQ(errors.text(), "");
  Board board;
  EXPECT_EQ(parseMove(board, nullptr), NoMove);
}

TEST(ParseMove, ForeignCharactersAndAmbiguousTextsAreReported) {
  StreamCapture errors(stderr);
  for (const char* text : {"0-0", "0000", "e9", "k\xC3", "Nd2"}) {
    EXPECT_EQ(parsed(KnightsFen, text), "%");
  }
  EXPECT_EQ(errors.text(),
            "illegal char in move 0-0: 48\n"
            "illegal char in move 0000: 48\n"
            "illegal char in move e9: 57\n"
            "illegal char in move k\xC3: 195\n"
            "ambiguous move: Nb1d2 _and_ Nf3d2\n");
}

TEST(ParseMove, EveryTextOfAMoveReadsBackAsTheMove) {
  RandomPositions positions(11);
  for (int i = 0; i < PropertyPositions / 20; ++i) {
    Board& board = positions.next();
    const std::vector<Move> moves = legalMovesOf(board);
    const Board before = board;
    for (const Move move : moves) {
      for (const std::string& text : {longText(board, move), sanOf(board, move), uciText(move)}) {
        ASSERT_EQ(parseMove(board, text.c_str()), move) << text << " in " << describe(board);
      }
    }
    ASSERT_EQ(difference(board, before), "") << describe(board);
  }
}

}  // namespace
}  // namespace quill::test
