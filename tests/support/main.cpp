// The main function of every test program: builds the tables that start-up builds in the engine.
#include <gtest/gtest.h>

#include "board/attacks.h"
#include "board/zobrist.h"

int main(int argc, char** argv) {
  quill::initTables();
  quill::initZobrist();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
