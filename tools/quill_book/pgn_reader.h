// Reads chess games from PGN text as it is found in the wild.
//
// The reader knows the grammar, not the rules of chess: a game is its tags and a list of move
// texts. Comments, variations, numeric glyphs and evaluation marks are skipped. Whatever is wrong
// in a game, reading goes on with the next one. Memory does not depend on the size of the file.
#pragma once

#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "quill_book/text_source.h"

namespace quill {

enum class GameResult { Unknown, WhiteWins, BlackWins, Draw };

// Why a game can't be used, and where.
struct PgnError {
  std::uint64_t line;
  std::string reason;
};

struct PgnMove {
  std::uint64_t line;
  std::string text;  // short enough for the string's own buffer
};

struct PgnGame {
  std::uint64_t line = 0;                   // where it begins
  std::string fen;                          // the FEN tag, empty for the usual start position
  std::string variant;                      // the Variant tag
  GameResult result = GameResult::Unknown;  // of the move text, or of the Result tag
  int whiteElo = 0;                         // 0 when unknown
  int blackElo = 0;
  std::vector<PgnMove> moves;     // the first moves of the main line
  std::optional<PgnError> error;  // the first fault of the text
};

class PgnReader {
 public:
  // Keeps the first maxPly moves of each game. Unreadable moves and stray brackets after those are
  // not faults; a comment or variation without end always is, because it may hide other games.
  // The stream must outlive the reader.
  PgnReader(std::istream& in, int maxPly);

  // Reads the next game. False at the end of the text.
  bool next(PgnGame& game);

  std::uint64_t bytes() const { return source_.bytes(); }

 private:
  bool skipToGame();
  void readTags();
  void readTag();
  void useTag(const std::string& name, const std::string& value);
  void readMoveText();
  bool readItem();
  void skipComment();
  void skipVariation();
  bool atForeignTag();
  std::string takeWord();
  bool useWord(std::string word, std::uint64_t line);
  bool wantsMoves() const;
  void fail(std::uint64_t line, std::string reason);

  TextSource source_;
  int maxPly_;
  PgnGame* game_ = nullptr;  // the one being read
  bool sawEvent_ = false;    // its Event tag was read
};

// The text shortened for a message, with "?" for all that is not printable ASCII.
std::string printable(const std::string& text);

}  // namespace quill
