#include "support/capture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

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

StreamCapture::StreamCapture(std::FILE* stream)
    : stream_(stream), file_(std::tmpfile()), saved_(dup(fileno(stream))) {
  std::fflush(stream_);
  dup2(fileno(file_), fileno(stream_));
}

StreamCapture::~StreamCapture() {
  std::fflush(stream_);
  dup2(saved_, fileno(stream_));
  close(saved_);
  std::fclose(file_);
}

std::string StreamCapture::text() {
  std::fflush(stream_);
  return readAll(file_, taken_);
}

std::string StreamCapture::take() {
  std::string result = text();
  taken_ += result.size();
  return result;
}

TempFile::TempFile(const std::string& bytes) : path_(testing::TempDir() + "quill_test_XXXXXX") {
  const int descriptor = mkstemp(path_.data());
  EXPECT_GE(descriptor, 0);
  EXPECT_EQ(write(descriptor, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  close(descriptor);
}

TempFile::~TempFile() { std::remove(path_.c_str()); }

}  // namespace quill::test
