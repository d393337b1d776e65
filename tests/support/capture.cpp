#include "support/capture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "shell/log.h"

namespace quill::test {

namespace {

std::string readAll(std::FILE* file, std::size_t from) {
  std::fflush(file);
  std::string bytes;
  char buffer[4096];
  // pread leaves the position that the writers share alone.
  for (ssize_t n; (n = pread(fileno(file), buffer, sizeof buffer,
                             static_cast<off_t>(from + bytes.size()))) > 0;) {
    bytes.append(buffer, static_cast<std::size_t>(n));
  }
  return bytes;
}

}  // namespace

Capture::Capture() : stream_(std::tmpfile()) {}

Capture::~Capture() { std::fclose(stream_); }

std::string Capture::text() { return readAll(stream_, taken_); }

std::string Capture::take() {
  std::string result = text();
  taken_ += result.size();
  return result;
}

LogCapture::LogCapture() { setLogStream(stream()); }

LogCapture::~LogCapture() { setLogStream(stdout); }

StreamCapture::StreamCapture(std::FILE* stream) : stream_(stream), saved_(dup(fileno(stream))) {
  std::fflush(stream_);
  dup2(fileno(file_.stream()), fileno(stream_));
}

StreamCapture::~StreamCapture() {
  std::fflush(stream_);
  dup2(saved_, fileno(stream_));
  close(saved_);
}

std::string StreamCapture::text() {
  std::fflush(stream_);
  return file_.text();
}

std::string StreamCapture::take() {
  std::fflush(stream_);
  return file_.take();
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
