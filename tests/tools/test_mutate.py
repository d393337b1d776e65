"""The breaks of mutate.py are those that it promises, and leave alone what they should."""

import pathlib
import unittest

import mutate

SOURCE = """\
#include "x.h"
// if (a < 1) return 2;
constexpr int Table[] = {
    1, 2,
    3, 4,
};
int f(int a, const char* text) {
  assert(a > 0 &&
         a < 9);
  int sum = 0;
  if (a < 1 && *text != '<') sum = -a;  // not a < 2
  log("a < b && c\\n", a + 1);
  use(sum);
  return sum;
}"""


class Breaks(unittest.TestCase):
    def test_only_code_that_is_tested_is_broken(self):
        blocks = mutate.candidates(SOURCE)
        self.assertEqual([[line for line, _ in block] for block in blocks],
                         [[4, 5], [10], [11], [13]])
        kinds = blocks[2][0][1]
        self.assertEqual(kinds["condition"], [
            "  if (!(a < 1 && *text != '<')) sum = -a;  // not a < 2"])
        self.assertEqual([line.split("//")[0].strip() for line in kinds["comparison"]], [
            "if (a < 1 && *text == '<') sum = -a;", "if (a <= 1 && *text != '<') sum = -a;",
            "if (a >= 1 && *text != '<') sum = -a;"])
        self.assertEqual(len(kinds["logic"]), 1)
        self.assertEqual(kinds["removed"], ["  ;"])
        self.assertEqual(list(blocks[3][0][1]), ["removed"])
        self.assertNotIn("removed", blocks[1][0][1], "a declaration is needed")

    def test_a_seed_gives_the_same_breaks_one_of_each_line(self):
        project = pathlib.Path(__file__).resolve().parents[2]
        breaks = mutate.sequence(project, ["time", "book"], 3)
        self.assertEqual(breaks, mutate.sequence(project, ["time", "book"], 3))
        self.assertNotEqual(breaks, mutate.sequence(project, ["time", "book"], 4))
        self.assertEqual(len({(b.file, b.line) for b in breaks}), len(breaks))
        for b in breaks:
            self.assertNotEqual(b.before, b.after)


if __name__ == "__main__":
    unittest.main()
