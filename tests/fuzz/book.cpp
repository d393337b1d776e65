// A book file: look-ups of positions that are in it or not, and the choice of a move.
#include "book/book.h"

#include "book/book_selector.h"
#include "fuzz/fuzz.h"

namespace {

using namespace quill;

constexpr const char* Fens[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1",
    "8/8/4k3/8/8/4K3/8/8 w - - 0 1",
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::initOnce();
  const fuzz::InputFile file(fuzz::textOf(data, size));
  Book book;
  if (!book.open(file.path().c_str())) return 0;
  BookSelector selector(book, 1);
  for (const char* fen : Fens) {
    const int count = book.loadCandidates(fen);
    FUZZ_CHECK(count >= 0 && count <= MaxBookCandidates);
    for (const BookEntry& entry : book.candidates()) Book::moveText(entry);
    if (count > 0) selector.choose(count, false);
    selector.probe(fen);
    selector.printCandidates(fen, fuzz::nowhere());
  }
  return 0;
}
