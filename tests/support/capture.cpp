#include "support/capture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "shell/log.h"

namespace quill::test {

Capture::Capture() : file_(std::tmpfile()) {}

Capture::~Capture() { std::fclose(file_); }

std::string Capture::text() {
  std::fflush(nullptr);  // a standard stream may have the file as its target
  std::string bytes;
  char buffer[4096];
  // pread leaves the position that the writers share alone.
  for (ssize_t n; (n = pread(fileno(file_), buffer, sizeof buffer,
                             static_cast<off_t>(taken_ + bytes.size()))) > 0;) {
    bytes.append(buffer, static_cast<std::size_t>(n));
  }
  return bytes;
}

std::string Capture::take() {
  std::string result = text();
  taken_ += result.size();
  return result;
}

LogCapture::LogCapture() { setLogStream(stream()); }

LogCapture::~LogCapture() { setLogStream(stdout); }

StreamCapture::StreamCapture(std::FILE* stream) : stream_(stream), saved_(dup(fileno(stream))) {
  std::fflush(stream_);
  dup2(fileno(Capture::stream()), fileno(stream_));
}

StreamCapture::~StreamCapture() {
  std::fflush(stream_);
  dup2(saved_, fileno(stream_));
  close(saved_);
}

TestFolder::TestFolder() : path_(testing::TempDir() + "quill_test_XXXXXX") {
  EXPECT_NE(mkdtemp(path_.data()), nullptr);
}

TestFolder::~TestFolder() {
  std::error_code error;
  std::filesystem::remove_all(path_, error);
}

std::string TestFolder::write(const std::string& name, const std::string& bytes) const {
  std::ofstream(file(name), std::ios::binary) << bytes;
  return file(name);
}

}  // namespace quill::test
