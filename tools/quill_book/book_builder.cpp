#include "quill_book/book_builder.h"

#include <algorithm>
#include <cassert>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <tuple>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/notation.h"
#include "book/book.h"
#include "platform/files.h"
#include "platform/paths.h"

namespace quill {

namespace {

constexpr std::uint64_t MaxCount = 65535;     // of a field in the file
constexpr std::size_t MinCapacity = 1 << 16;  // counts to collect before the first merge
constexpr std::size_t WriteBlock = 1 << 20;   // bytes
constexpr std::uint8_t BookVersion = 1;

std::uint8_t bookSquare(Square square) {
  return static_cast<std::uint8_t>(fileOf(square) | (rankOf(square) << 4));
}

void appendBigEndian(std::string& out, std::uint64_t value, int size) {
  for (int i = size - 1; i >= 0; --i) out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

// A book holds only the squares of a move, and the engine reads a promotion without a letter as one
// to a queen. Other promotions must not be counted as that one.
bool fitsInBook(Move move) { return !isPromotion(move) || promotionOf(move) == Queen; }

bool isStandardVariant(const std::string& variant) {
  for (const char* name : {"", "Standard", "standard", "Normal", "normal", "From Position", "?"}) {
    if (variant == name) return true;
  }
  return false;
}

// Makes an empty file of a new name beside the path and answers its name. An existing file keeps
// its contents: it may hold the games that the book is made from.
// On failure: an empty name.
std::string createBeside(const std::string& path) {
  constexpr int MaxAttempts = 100;
  for (int i = 0; i < MaxAttempts; ++i) {
    const std::string name = path + ".part" + (i == 0 ? "" : std::to_string(i));
    if (platform::createNewFile(name.c_str())) return name;
    if (errno != EEXIST) break;
  }
  return {};
}

}  // namespace

BookBuilder::BookBuilder(const BookOptions& options) : options_(options) {
  assert(options.maxPly <= MaxMaxPly);
  setFen(start_, StartPosition);
}

std::optional<PgnError> BookBuilder::setUp(const PgnGame& game) {
  if (!isStandardVariant(game.variant)) {
    return PgnError{game.line, "another variant of chess: " + printable(game.variant)};
  }
  if (game.fen.empty()) {
    board_ = start_;
  } else if (!setFen(board_, game.fen.c_str(), nullptr)) {
    return PgnError{game.line, "not a position: " + printable(game.fen)};
  }
  return std::nullopt;
}

BookBuilder::MoveCount BookBuilder::countOf(Move move, const PgnGame& game) const {
  MoveCount count{};
  count.key = Book::bookKey(board_).lookupKey();
  count.from = bookSquare(fromOf(move));
  count.to = bookSquare(toOf(move));
  const bool white = board_.stm == White;
  if (game.result == GameResult::Draw || game.result == GameResult::Unknown) {
    count.draws = 1;
  } else {
    ((game.result == GameResult::WhiteWins) == white ? count.wins : count.losses) = 1;
  }
  if (const int elo = white ? game.whiteElo : game.blackElo; elo > 0) {
    count.rated = 1;
    count.eloSum = static_cast<std::uint64_t>(elo);
  }
  return count;
}

std::optional<PgnError> BookBuilder::add(const PgnGame& game) {
  if (game.error) return game.error;
  if (auto error = setUp(game)) return error;
  ofGame_.clear();
  const std::size_t plies = std::min<std::size_t>(game.moves.size(), options_.maxPly);
  for (std::size_t i = 0; i < plies; ++i) {
    const PgnMove& text = game.moves[i];
    const Move move = parseMove(board_, text.text.c_str(), nullptr);
    if (move == NoMove) return PgnError{text.line, "not a legal move: " + printable(text.text)};
    if (fitsInBook(move)) ofGame_.push_back(countOf(move, game));
    makeMove(board_, move);
    updateAttackInfo(board_);
  }
  if (game.result == GameResult::Unknown) {
    ++gamesWithoutResult_;
    if (!options_.withUnfinished) return std::nullopt;
  }
  ++gamesCounted_;
  // Merging pays once as many counts have come in as were there before.
  if (counts_.size() + ofGame_.size() > std::max(MinCapacity, 2 * merged_)) merge();
  counts_.insert(counts_.end(), ofGame_.begin(), ofGame_.end());
  return std::nullopt;
}

// Sorts the counts and adds up those of the same move.
void BookBuilder::merge() {
  const auto order = [](const MoveCount& a, const MoveCount& b) {
    return std::tie(a.key, a.from, a.to) < std::tie(b.key, b.from, b.to);
  };
  std::sort(counts_.begin() + static_cast<std::ptrdiff_t>(merged_), counts_.end(), order);
  std::inplace_merge(counts_.begin(), counts_.begin() + static_cast<std::ptrdiff_t>(merged_),
                     counts_.end(), order);
  std::size_t last = 0;
  for (std::size_t i = 1; i < counts_.size(); ++i) {
    if (!counts_[i].isSameMove(counts_[last])) {
      counts_[++last] = counts_[i];
      continue;
    }
    counts_[last].eloSum += counts_[i].eloSum;
    counts_[last].rated += counts_[i].rated;
    counts_[last].wins += counts_[i].wins;
    counts_[last].draws += counts_[i].draws;
    counts_[last].losses += counts_[i].losses;
  }
  if (!counts_.empty()) counts_.resize(last + 1);
  merged_ = counts_.size();
}

// Appends the records of one position, its most played moves first, because a reader may look only
// at the first few. Counts that are too large are scaled down together, so that neither the moves'
// scores nor their shares of the games change.
void BookBuilder::appendPosition(std::vector<MoveCount>::iterator first,
                                 std::vector<MoveCount>::iterator last, std::string& out) {
  std::stable_sort(first, last,
                   [](const MoveCount& a, const MoveCount& b) { return a.games() > b.games(); });
  std::uint64_t largest = MaxCount;
  for (auto move = first; move != last; ++move) {
    largest = std::max<std::uint64_t>({largest, move->wins, move->draws, move->losses});
  }
  const auto scaled = [largest](std::uint32_t n) { return (n * MaxCount + largest / 2) / largest; };
  const std::uint64_t before = movesWritten_;
  for (auto move = first; move != last && move->games() >= options_.minGames; ++move) {
    const std::uint64_t counts[] = {scaled(move->wins), scaled(move->draws), scaled(move->losses)};
    if (counts[0] + counts[1] + counts[2] == 0) continue;
    appendBigEndian(out, move->key, 8);
    appendBigEndian(out, move->from, 1);
    appendBigEndian(out, move->to, 1);
    for (const std::uint64_t n : counts) appendBigEndian(out, n, 2);
    if (options_.withElo) {
      appendBigEndian(out, move->rated > 0 ? (move->eloSum + move->rated / 2) / move->rated : 0, 2);
    }
    ++movesWritten_;
  }
  if (movesWritten_ > before) ++positionsWritten_;
}

bool BookBuilder::write(const std::string& path) {
  merge();
  positionsWritten_ = movesWritten_ = 0;
  const std::string unfinished = createBeside(path);
  if (unfinished.empty()) return false;
  std::ofstream file(unfinished, std::ios::binary);
  BookHeader header;
  header.flags = BookHeader::CountsFlag | (options_.withElo ? BookHeader::EloFlag : 0);
  std::string out(12, '\0');
  for (const std::uint32_t byte :
       {BookHeader::Size, std::uint32_t{BookVersion}, header.fieldBytes(), header.flags}) {
    appendBigEndian(out, byte, 1);
  }
  for (auto first = counts_.begin(); first != counts_.end();) {
    const auto last = std::find_if(
        first, counts_.end(), [first](const MoveCount& count) { return count.key != first->key; });
    // This reorders the moves of the position, so merged_ is reset below.
    appendPosition(first, last, out);
    first = last;
    if (out.size() >= WriteBlock) {
      file << out;
      out.clear();
    }
  }
  merged_ = 0;
  file << out;
  file.close();
  std::error_code error;
  if (file) std::filesystem::rename(platform::pathOf(unfinished), platform::pathOf(path), error);
  if (file && !error) return true;
  std::error_code ignored;
  std::filesystem::remove(platform::pathOf(unfinished), ignored);
  return false;
}

}  // namespace quill
