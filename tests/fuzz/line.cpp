// The lines of a session, in either profile, with short searches running while they come.
//
// The first byte chooses the profile, the threads and whether the protocol has taken over. The line
// "wait" is the fuzzer's own: it lets a search get on. Left out is what would only take long or
// touch files.
#include <algorithm>
#include <cctype>
#include <memory>

#include "board/fen.h"
#include "fuzz/fuzz.h"
#include "platform/thread.h"
#include "shell/console.h"
#include "shell/engine.h"

namespace {

using namespace quill;

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// Whether the text has a number of more than so many digits.
bool hasLongNumber(const std::string& text, int digits) {
  int run = 0;
  for (const char c : text) {
    run = c >= '0' && c <= '9' ? run + 1 : 0;
    if (run > digits) return true;
  }
  return false;
}

bool isWanted(const std::string& line) {
  std::string text = lowerCase(line);
  text.erase(text.find_last_not_of(" \r") + 1);  // as the modern profile reads it
  const std::string word = text.substr(0, text.find(' '));
  if (word == "quit" || word == "g" || word == "bench") return false;
  if (word == "perft" || word == "divide")
    return text.size() == word.size() + 2 && text.back() < '4';
  if (word != "setoption") return true;
  if (text.find("book") != std::string::npos) return false;
  const bool isBig =
      text.find("hash") != std::string::npos || text.find("threads") != std::string::npos;
  return !isBig || !hasLongNumber(text, 1);
}

// An engine as its start-up leaves it, but small and without files, and with what the options of an
// earlier input have changed. There is one for each choice: to make one takes longer than most
// inputs do.
Engine& engineOf(unsigned choice) {
  static std::unique_ptr<Engine> engines[8];
  auto& engine = engines[choice];
  const bool speaksProtocol = (choice & 4) != 0;
  if (engine == nullptr || engine->uci.uciMode() != speaksProtocol) {
    engine = std::make_unique<Engine>(1);
    if (speaksProtocol) handleLine(*engine, "uci");
  }
  engine->uci.setProfile((choice & 1) != 0 ? ModernProfile : ClassicProfile);
  setFen(engine->pool.board(), StartPosition);
  engine->tt.resize(1024);
  engine->timeControl.setMoveTime(20);
  engine->pool.setThreadCount((choice & 2) != 0 ? 2 : 1);
  return *engine;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::initOnce();
  if (size == 0) return 0;
  const fuzz::InputFile file(fuzz::textOf(data + 1, size - 1));
  std::FILE* const in = std::fopen(file.path().c_str(), "rb");
  FUZZ_CHECK(in != nullptr);
  Engine& engine = engineOf(data[0] % 8);
  InputLines lines(in);
  std::string text;
  while (lines.next(text, InputLines::ConsoleLimit)) {
    if (text == "wait") {
      platform::sleepMicroseconds(1000);
    } else if (isWanted(text)) {
      handleLine(engine, text);
    }
  }
  std::fclose(in);
  handleLine(engine, "stop");
  engine.pool.waitIdle();
  return 0;
}
