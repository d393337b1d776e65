#include "support/capture.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include "shell/log.h"

namespace quill::test {

Capture::Capture() : path_(folder_.file("captured")), file_(std::fopen(path_.c_str(), "wb")) {}

Capture::~Capture() { std::fclose(file_); }

std::string Capture::text() {
  std::fflush(nullptr);  // a standard stream may have the file as its target
  std::ifstream file(path_, std::ios::binary);
  file.seekg(static_cast<std::streamoff>(taken_));
  return {std::istreambuf_iterator<char>(file), {}};
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

TestFolder::TestFolder() {
  std::random_device random;
  do {
    path_ = testing::TempDir() + "quill_test_" + std::to_string(random());
  } while (!std::filesystem::create_directory(path_));
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
