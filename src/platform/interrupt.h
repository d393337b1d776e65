// The user's wish to interrupt (Ctrl-C, on Windows also Ctrl-Break) as something to ask for.
#pragma once

namespace quill::platform {

// While it lives, the first interrupt is noted and does nothing else; the second one ends the
// program, as every interrupt does without a watch. A program that was started with interrupts
// ignored goes on ignoring them.
// Requires: one at a time.
class InterruptWatch {
 public:
  InterruptWatch();
  ~InterruptWatch();
  InterruptWatch(const InterruptWatch&) = delete;
  InterruptWatch& operator=(const InterruptWatch&) = delete;

  // An interrupt has come since the watch began. Any thread.
  bool hasCome() const;
};

}  // namespace quill::platform
