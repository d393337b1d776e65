// A settings file.
#include "shell/settings.h"

#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quill;
  const fuzz::InputFile file(fuzz::textOf(data, size));
  Settings settings;
  FUZZ_CHECK(settings.load(file.path().c_str()));
  FUZZ_CHECK(settings.load(file.path().c_str()));
  settings.dump(fuzz::nowhere());
  for (const char* key : {"book.file", "uci.profile", "", "a"}) {
    const std::string text = settings.getString(key, "none");
    settings.set(EngineString(key), EngineString(text.c_str()));
    FUZZ_CHECK(std::string_view(settings.getString(key, "")) == text);
  }
  return 0;
}
