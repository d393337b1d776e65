// Output streams and files whose contents a test can read.
#pragma once

#include <cstdio>
#include <string>

namespace quill::test {

// A folder of the test's own that goes away with it.
class TestFolder {
 public:
  TestFolder();
  ~TestFolder();
  TestFolder(const TestFolder&) = delete;
  TestFolder& operator=(const TestFolder&) = delete;

  std::string file(const std::string& name) const { return path_ + '/' + name; }
  // Gives the file these bytes; answers its path.
  std::string write(const std::string& name, const std::string& bytes) const;

 private:
  std::string path_;
};

// A stream that keeps what is written to it.
class Capture {
 public:
  Capture();
  ~Capture();
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;

  std::FILE* stream() { return file_; }
  // Everything written so far, or since the last take.
  std::string text();
  std::string take();

 private:
  const TestFolder folder_;
  const std::string path_;
  std::FILE* const file_;
  std::size_t taken_ = 0;
};

// While it lives, the log goes into it; afterwards it is standard output again.
class LogCapture : public Capture {
 public:
  LogCapture();
  ~LogCapture();
};

// While it lives, what is written to a standard stream (stdout or stderr) goes into it.
class StreamCapture : public Capture {
 public:
  explicit StreamCapture(std::FILE* stream);
  ~StreamCapture();

 private:
  std::FILE* stream_;
  int saved_;  // descriptor of the stream's real target
};

}  // namespace quill::test
