#include "quill_book/pgn_reader.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace quill {

namespace {

constexpr std::size_t MaxValueLength = 255;  // of a tag; no tag that is used needs more
constexpr std::size_t MaxWordLength = 31;    // longer words can't be moves
constexpr std::size_t MaxMoveLength = 15;

bool isBlank(int c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }
bool isDigit(int c) { return c >= '0' && c <= '9'; }

// Characters that end a word because they mean something by themselves.
bool endsWord(int c) {
  return c == TextSource::End || c == '\n' || isBlank(c) ||
         std::string_view("{}()[];$*").find(static_cast<char>(c)) != std::string_view::npos;
}

std::optional<GameResult> resultOf(std::string_view word) {
  if (word == "1-0") return GameResult::WhiteWins;
  if (word == "0-1") return GameResult::BlackWins;
  if (word == "1/2-1/2" || word == "1/2" || word == "\xC2\xBD-\xC2\xBD") return GameResult::Draw;
  return std::nullopt;
}

// "12.", "12...", "12.e4": what follows the number.
std::string_view withoutMoveNumber(std::string_view word) {
  const std::size_t digits = std::min(word.find_first_not_of("0123456789"), word.size());
  if (digits > 0 && digits < word.size() && word[digits] != '.') return word;
  word.remove_prefix(digits);
  word.remove_prefix(std::min(word.find_first_not_of('.'), word.size()));
  return word;
}

// Words that judge or explain a move: "+-", "=", "!?", "±", "N" for a novelty, "e.p."
bool isRemark(std::string_view word) {
  for (const std::string_view remark : {"N", "D", "e.p.", "ep", "ch", "mate"}) {
    if (word == remark) return true;
  }
  return std::all_of(word.begin(), word.end(), [](char c) {
    return static_cast<unsigned char>(c) >= 0x80 ||
           std::string_view("+-=/\\#~<>^_|'`,:!?").find(c) != std::string_view::npos;
  });
}

}  // namespace

std::string printable(const std::string& text) {
  constexpr std::size_t MaxLength = 60;
  std::string result = text.substr(0, MaxLength);
  for (char& c : result) {
    if (c < ' ' || c > '~') c = '?';
  }
  return result;
}

PgnReader::PgnReader(std::istream& in, int maxPly) : source_(in), maxPly_(maxPly) {}

bool PgnReader::next(PgnGame& game) {
  game_ = &game;
  while (skipToGame()) {
    game = PgnGame{};
    game.line = source_.line();
    const bool hasTags = source_.peek() == '[';
    if (hasTags) readTags();
    readMoveText();
    // Stray results and remarks between games are not games.
    if (hasTags || !game.moves.empty() || game.error) return true;
  }
  return false;
}

// Skips what may stand between games. False at the end of the text.
bool PgnReader::skipToGame() {
  while (true) {
    const int c = source_.peek();
    if (c == TextSource::End) return false;
    if ((c == '%' && source_.atLineStart()) || c == ';') {
      source_.skipLine();
    } else if (c == '\n' || isBlank(c)) {
      source_.get();
    } else {
      return true;
    }
  }
}

void PgnReader::readTags() {
  sawEvent_ = false;
  while (skipToGame() && source_.peek() == '[') {
    const bool isEvent = source_.startsWith("[Event ");
    if (isEvent && sawEvent_) return;  // the tags of the next game: this one has no moves
    sawEvent_ = sawEvent_ || isEvent;
    readTag();
  }
}

// Reads [Name "value"]. The value ends at a quote that a bracket follows, so that quotes inside it
// do no harm, or at the end of the line.
void PgnReader::readTag() {
  source_.get();
  std::string name;
  std::string value;
  while (isBlank(source_.peek())) source_.get();
  for (int c = source_.peek(); c != '"' && c != '\n' && c != ']' && c != TextSource::End;
       c = source_.peek()) {
    if (!isBlank(c) && name.size() < MaxValueLength) name += static_cast<char>(c);
    source_.get();
  }
  bool quoted = source_.peek() == '"';
  if (quoted) source_.get();
  bool afterQuote = false;  // only blanks since the last quote
  std::size_t length = 0;   // of the value up to the last quote
  while (source_.peek() != '\n' && source_.peek() != TextSource::End) {
    int c = source_.get();
    if (c == ']' && (afterQuote || !quoted)) break;
    if (c == '"') {
      afterQuote = true;
      length = value.size();
      continue;
    }
    if (!isBlank(c)) afterQuote = false;
    if (c == '\\' && (source_.peek() == '"' || source_.peek() == '\\')) c = source_.get();
    if (value.size() < MaxValueLength) value += static_cast<char>(c);
  }
  if (afterQuote) value.resize(length);
  useTag(name, value);
}

void PgnReader::useTag(const std::string& name, const std::string& value) {
  const auto rating = [&value] {
    const long number = std::strtol(value.c_str(), nullptr, 10);
    return number > 0 && number < 10000 ? static_cast<int>(number) : 0;
  };
  if (name == "FEN") game_->fen = value;
  if (name == "Variant") game_->variant = value;
  if (name == "WhiteElo") game_->whiteElo = rating();
  if (name == "BlackElo") game_->blackElo = rating();
  if (name == "Result") game_->result = resultOf(value).value_or(GameResult::Unknown);
}

void PgnReader::readMoveText() {
  while (readItem()) {
  }
}

// Reads one item of the move text. False when the game is over.
bool PgnReader::readItem() {
  const int c = source_.peek();
  const std::uint64_t line = source_.line();
  if (c == TextSource::End || (c == '[' && source_.onlyBlanksBefore())) return false;
  if ((c == '%' && source_.atLineStart()) || c == ';') {
    source_.skipLine();
  } else if (c == '{') {
    skipComment();
  } else if (c == '(') {
    skipVariation();
  } else if (c == '*') {
    source_.get();
    return false;
  } else if (c == '$') {
    source_.get();
    while (isDigit(source_.peek())) source_.get();
  } else if (c == ')' || c == '}' || c == '[' || c == ']') {
    source_.get();
    if (wantsMoves()) fail(line, std::string("stray '") + static_cast<char>(c) + "'");
  } else if (c == '\n' || isBlank(c)) {
    source_.get();
  } else {
    return !useWord(takeWord(), line);
  }
  return true;
}

// A tag inside a comment or variation: that was never closed, and the next game begins.
bool PgnReader::atForeignTag() { return source_.atLineStart() && source_.startsWith("[Event \""); }

void PgnReader::skipComment() {
  const std::uint64_t line = source_.line();
  source_.get();
  while (true) {
    if (atForeignTag() || source_.peek() == TextSource::End) {
      fail(line, "comment without end");
      return;
    }
    if (source_.get() == '}') return;
  }
}

void PgnReader::skipVariation() {
  const std::uint64_t line = source_.line();
  std::uint64_t depth = 0;
  do {
    const int c = source_.peek();
    if (atForeignTag() || c == TextSource::End) {
      fail(line, "variation without end");
      return;
    }
    if (c == '{') {
      skipComment();
    } else if (c == ';' || (c == '%' && source_.atLineStart())) {
      source_.skipLine();
    } else {
      source_.get();
      if (c == '(') ++depth;
      if (c == ')') --depth;
    }
  } while (depth > 0);
}

std::string PgnReader::takeWord() {
  std::string word;
  for (int c = source_.peek(); !endsWord(c); c = source_.peek()) {
    if (word.size() < MaxWordLength) word += static_cast<char>(c);
    source_.get();
  }
  return word;
}

// Returns whether the word is the result that ends the game.
bool PgnReader::useWord(std::string word, std::uint64_t line) {
  if (const auto result = resultOf(word)) {
    game_->result = *result;
    return true;
  }
  if (!wantsMoves()) return false;
  std::string_view text = withoutMoveNumber(word);
  if (text.empty()) return false;
  if (text == "--" || text == "Z0") {
    fail(line, "null move");
    return false;
  }
  if (isRemark(text)) return false;
  for (const std::string_view suffix : {"e.p.", "ep"}) {
    if (text.ends_with(suffix)) text.remove_suffix(suffix.size());
  }
  if (text.size() > MaxMoveLength) {
    fail(line, "not a move: " + printable(word));
    return false;
  }
  game_->moves.push_back({line, std::string(text)});
  // Some programs write castling with zeros; the engine reads letters.
  std::string& move = game_->moves.back().text;
  if (move.starts_with("0-0")) std::replace(move.begin(), move.end(), '0', 'O');
  return false;
}

bool PgnReader::wantsMoves() const { return static_cast<int>(game_->moves.size()) < maxPly_; }

void PgnReader::fail(std::uint64_t line, std::string reason) {
  if (!game_->error) game_->error = PgnError{line, std::move(reason)};
}

}  // namespace quill
