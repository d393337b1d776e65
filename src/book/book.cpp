#include "book/book.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string_view>
#include <system_error>

#include "board/board.h"
#include "book/book_keys.h"
#include "platform/paths.h"

namespace quill {

namespace {

// The most records of one position that a look-up reads. No real book comes near it; it limits the
// time that a damaged book can cost.
constexpr int MaxRecordsRead = 65536;
// Records that are read together once the position is found.
constexpr std::uint64_t RecordsPerRead = MaxBookCandidates;
constexpr std::uint32_t MaxRecordSize = 18;

std::uint64_t bigEndian(const std::uint8_t* bytes, int size) {
  std::uint64_t value = 0;
  for (int i = 0; i < size; ++i) value = (value << 8) | bytes[i];
  return value;
}

float strengthOfElo(std::uint32_t elo) {
  const double strength = std::exp2((static_cast<double>(elo) - 2400) / 70);
  // Above an Elo of about 11360 a float can't hold it; the selector excludes such a move.
  if (strength > static_cast<double>(std::numeric_limits<float>::max())) {
    return std::numeric_limits<float>::infinity();
  }
  return static_cast<float>(strength);
}

std::uint32_t addSaturated(std::uint32_t a, std::uint32_t b) {
  return a > std::numeric_limits<std::uint32_t>::max() - b
             ? std::numeric_limits<std::uint32_t>::max()
             : a + b;
}

constexpr std::string_view PieceChars = "PNBRQKpnbrqk";
constexpr std::array<int, 6> PieceCodes = {BookPawn, BookKnight, BookBishop,
                                           BookRook, BookQueen,  BookKing};

// Reads a piece placement into the key.
// On failure: false, with one line on standard error when the pieces run off the board.
bool addPlacement(std::string_view placement, std::uint64_t& key) {
  int x = 0;
  int y = 7;
  for (std::size_t i = 0; i < placement.size(); ++i) {
    const char c = placement[i];
    if (c >= '1' && c <= '8') {
      x += c - '0';
    } else if (c == '/') {
      --y;
      x = 0;
    } else if (const std::size_t at = PieceChars.find(c); at != std::string_view::npos) {
      key ^= BookKeys[bookKeyIndex(PieceCodes[at % 6], y, at >= 6 ? 1 : 0, x)];
      ++x;
    }
    if (i + 1 == placement.size()) break;
    // The message shows the rest of the whole FEN, not only of the placement.
    if (x > 8) {
      std::fprintf(stderr, "illegal fen, x=%i>8: %s\n", x, placement.data() + i + 1);
      return false;
    }
    if (y < 0) {
      std::fprintf(stderr, "illegal fen, y=%i<0: %s\n", y, placement.data() + i + 1);
      return false;
    }
  }
  return true;
}

// Takes the next blank-separated field off the text, an empty one at its end.
std::string_view takeField(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  const std::string_view field = text.substr(0, text.find(' '));
  text.remove_prefix(field.size());
  return field;
}

// The number of plies before the full move that the field names.
int plyOfMoveNumber(std::string_view field) {
  constexpr int MaxNumber = 1000000000;  // keeps twice the number in range
  if (field.empty() || field[0] < '1' || field[0] > '9') return -2;
  std::int64_t number = 0;
  for (const char c : field) {
    if (c < '0' || c > '9') break;
    number = std::min<std::int64_t>(number * 10 + (c - '0'), MaxNumber);
  }
  return static_cast<int>(2 * number - 2);
}

}  // namespace

bool Book::open(const char* path) {
  close();
  // Checked before it is opened: opening a pipe could wait forever for a writer.
  std::error_code error;
  if (path == nullptr) return false;
  if (!std::filesystem::is_regular_file(platform::pathOf(path), error)) return false;
  // Look-ups jump about in the file, so a stream buffer would only read what is not needed.
  file_.rdbuf()->pubsetbuf(nullptr, 0);
  file_.open(path, std::ios::binary);
  if (!file_.is_open() || !readHeader()) {
    close();
    return false;
  }
  file_.clear();
  file_.seekg(0, std::ios::end);
  const std::streamoff size = file_.tellg();
  if (!file_ || size < 0) {
    close();
    return false;
  }
  fileSize_ = static_cast<std::uint64_t>(size);
  recordCount_ = fileSize_ / header_.recordSize;
  return true;
}

void Book::close() {
  if (file_.is_open()) file_.close();
  file_.clear();
  header_ = BookHeader{};
  fileSize_ = recordCount_ = position_ = readCount_ = 0;
  candidateCount_ = 0;
}

bool Book::readHeader() {
  std::array<std::uint8_t, BookHeader::Size> bytes;
  if (readAt(0, bytes.data(), bytes.size()) < bytes.size() || bigEndian(bytes.data(), 8) != 0) {
    return true;  // no header: bare records from the start of the file
  }
  header_.headerSize = std::max<std::uint32_t>(bytes[12], BookHeader::Size);
  header_.version = bytes[13];
  header_.recordSize = bytes[14];
  header_.flags = bytes[15];
  return (header_.flags & BookHeader::ReservedFlag) == 0 &&
         header_.recordSize == header_.fieldBytes();
}

// Bytes at or beyond the end of the file read as 0xFF. Returns how many there really are.
std::size_t Book::readAt(std::uint64_t offset, std::uint8_t* out, std::size_t size) {
  std::memset(out, 0xFF, size);
  ++readCount_;
  file_.clear();
  file_.seekg(static_cast<std::streamoff>(offset));
  file_.read(reinterpret_cast<char*>(out), static_cast<std::streamsize>(size));
  const auto got = static_cast<std::size_t>(file_.gcount());
  std::memset(out + got, 0xFF, size - got);
  return got;
}

std::uint64_t Book::keyOfSlot(std::uint64_t slot) {
  std::array<std::uint8_t, 8> bytes;
  readAt(header_.headerSize + slot * header_.recordSize, bytes.data(), bytes.size());
  return bigEndian(bytes.data(), 8);
}

std::optional<BookPosition> Book::bookKey(const char* fen) {
  if (fen == nullptr) return std::nullopt;
  std::string_view text(fen);
  BookPosition position{0, false, 0};
  if (!addPlacement(takeField(text), position.key)) return std::nullopt;
  position.black = takeField(text) == "b";
  for (const char c : takeField(text)) {
    if (c == 'K') position.key ^= BookKeys[BookWhiteShort];
    if (c == 'k') position.key ^= BookKeys[BookBlackShort];
    if (c == 'Q') position.key ^= BookKeys[BookWhiteLong];
    if (c == 'q') position.key ^= BookKeys[BookBlackLong];
  }
  const std::string_view enPassant = takeField(text);
  if (enPassant.size() >= 2 && enPassant[0] >= 'a' && enPassant[0] <= 'h' && enPassant[1] >= '1' &&
      enPassant[1] <= '8') {
    position.key ^= BookKeys[enPassant[0] - 'a'];
  }
  takeField(text);  // half-move clock
  position.ply = plyOfMoveNumber(takeField(text)) + (position.black ? 1 : 0);
  return position;
}

BookPosition Book::bookKey(const Board& board) {
  BookPosition position{0, board.stm == Black, 0};
  for (Bitboard men = board.occupied; men != 0;) {
    const Square square = popLowest(men);
    const PieceCode code = board.squares[square];
    const int black = belongsTo(code, Black) ? 1 : 0;
    position.key ^= BookKeys[bookKeyIndex(PieceCodes[static_cast<unsigned>(typeOf(code) - Pawn)],
                                          rankOf(square), black, fileOf(square))];
  }
  if ((board.castling & WhiteShort) != 0) position.key ^= BookKeys[BookWhiteShort];
  if ((board.castling & BlackShort) != 0) position.key ^= BookKeys[BookBlackShort];
  if ((board.castling & WhiteLong) != 0) position.key ^= BookKeys[BookWhiteLong];
  if ((board.castling & BlackLong) != 0) position.key ^= BookKeys[BookBlackLong];
  if (board.epSquare != 0) position.key ^= BookKeys[fileOf(board.epSquare)];
  // Full moves are counted from 1 whoever begins: a game that Black begins is a ply ahead.
  position.ply = board.gamePly() / 2 * 2 + (position.black ? 1 : 0);
  return position;
}

bool Book::find(std::uint64_t target) {
  if (recordCount_ == 0) return false;
  std::uint64_t low = 0;
  std::uint64_t high = recordCount_ - 1;
  while (true) {
    const std::uint64_t middle = low + (high - low) / 2;
    const std::uint64_t key = keyOfSlot(middle);
    if (low >= high) {
      position_ = header_.headerSize + middle * header_.recordSize;
      return key == target;
    }
    if (target > key) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
}

BookEntry Book::decode(const std::uint8_t* record) const {
  const auto field = [](const std::uint8_t* at) {
    return static_cast<std::uint32_t>(bigEndian(at, 2));
  };
  BookEntry entry{};
  entry.key = bigEndian(record, 8);
  entry.from = record[8];
  entry.to = record[9];
  const std::uint8_t* rest = record + 10;
  if (header_.hasCounts()) {
    entry.wins = field(rest);
    entry.draws = field(rest + 2);
    entry.losses = field(rest + 4);
    rest += 6;
  }
  if (header_.hasElo()) entry.strength = strengthOfElo(field(rest));
  return entry;
}

// Merges the entry with the last candidate when both have the same move, else stores it. Returns
// whether there is room for more.
bool Book::takeCandidate(const BookEntry& entry) {
  if (candidateCount_ > 0) {
    BookEntry& last = candidates_[candidateCount_ - 1];
    if ((entry.from & 0x7F) == (last.from & 0x7F) && entry.to == last.to) {
      last.wins = addSaturated(last.wins, entry.wins);
      last.draws = addSaturated(last.draws, entry.draws);
      last.losses = addSaturated(last.losses, entry.losses);
      last.strength += entry.strength;
      return true;
    }
  }
  candidates_[candidateCount_++] = entry;
  return candidateCount_ < MaxBookCandidates;
}

int Book::loadCandidates(const char* fen) {
  candidateCount_ = 0;
  const std::optional<BookPosition> position = bookKey(fen);
  return position ? loadCandidates(*position) : 0;
}

int Book::loadCandidates(const BookPosition& position) {
  candidateCount_ = 0;
  const std::uint64_t target = position.lookupKey();
  // No position has the key 0, but every record in a file of zeros does.
  if (target == 0 || !find(target)) return 0;

  std::array<std::uint8_t, RecordsPerRead * MaxRecordSize> block;
  const std::size_t blockSize = RecordsPerRead * header_.recordSize;
  for (int read = 0; read < MaxRecordsRead; position_ += blockSize) {
    const std::size_t got = readAt(position_, block.data(), blockSize);
    // A record that the end of the file cuts off does not count.
    const std::size_t records = got / header_.recordSize;
    for (std::size_t i = 0; i < records; ++i, ++read) {
      const BookEntry entry = decode(block.data() + i * header_.recordSize);
      if (entry.key != target || !takeCandidate(entry)) return candidateCount_;
    }
    if (records < RecordsPerRead) break;
  }
  return candidateCount_;
}

std::array<char, 5> Book::moveText(const BookEntry& entry) {
  return {static_cast<char>('a' + (entry.from & 7)),
          static_cast<char>('1' + ((entry.from & 0x7F) >> 4)),
          static_cast<char>('a' + (entry.to & 7)), static_cast<char>('1' + (entry.to >> 4)), '\0'};
}

}  // namespace quill
