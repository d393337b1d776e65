// What happens between the start of the program and the first line of input.
#pragma once

#include <memory>

namespace quill {

struct Engine;

// Makes all output appear at once and as it is written.
void prepareStreams();

// What is to happen when memory can't be had: one line on standard error, and the program aborts.
[[noreturn]] void endWithoutMemory();

// The exit status of a program that the system grants no thread to search with.
inline constexpr int NoThread = -3;

void printBanner();

// Whether a processor with these features can run the engine. Returns the exit status: 0, or -1 or
// -2 after one line on standard error.
int checkProcessor(bool hasSse2, bool hasPopcnt);

// Builds the read-only tables and the engine's objects. To be called once.
std::unique_ptr<Engine> createEngine();

// Reads the settings file (nullptr: quill.ini, or else the one that was installed), sets the start
// position, opens the book, sizes the table and starts the threads. Reports its progress on standard
// output. Returns the exit status: 0, or NoThread after one line on standard error.
int startEngine(Engine& engine, const char* settingsFile);

}  // namespace quill
