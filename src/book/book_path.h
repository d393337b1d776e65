// Which file a book's name stands for.
#pragma once

#include <string>

namespace quill {

class Book;

// Opens the book of the name. One that is not in the current folder is, if widely, looked for beside
// the program and then in the data folder that the build was installed for. Returns the path of
// the file that was opened.
// On failure: an empty path, and the book that was open before stays open.
std::string openBook(Book& book, const std::string& name, bool widely);

}  // namespace quill
