#include "book/book_path.h"

#include <filesystem>

#include "book/book.h"
#include "platform/install_places.h"
#include "platform/paths.h"

namespace quill {

std::string openBook(Book& book, const std::string& name, bool widely) {
  const std::filesystem::path own = platform::pathOf(name);
  const std::filesystem::path program = platform::programFolder();
  const std::filesystem::path data = (program / platform::DataPlace).lexically_normal();
  const std::filesystem::path folders[] = {"", program, data};
  for (const auto& folder : folders) {
    if (program.empty() && &folder != folders) break;
    const std::string path = platform::nameOf(folder / own);
    // Tried apart: a file that is no book must not close the one in use.
    if (Book trial; trial.open(path.c_str()) && book.open(path.c_str())) return path;
    if (!widely || own.is_absolute()) break;
  }
  return {};
}

}  // namespace quill
