"""The layer check finds what it is there to find."""

import pathlib
import tempfile
import unittest

import check_layers


def complaints(files):
    """The complaints about a tree made of the files, a map of path -> text."""
    with tempfile.TemporaryDirectory() as folder:
        for path, text in files.items():
            file = pathlib.Path(folder, path)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
        return check_layers.check_tree(folder)


CLEAN = {
    "platform/clock.h": "#include <sys/time.h>\n",
    "shell/text.h": '#include "platform/clock.h"\n',
    "shell/console.h": '#include "uci/uci.h"\n#include "shell/text.h"\n',
    "board/fen.h": '#include "shell/text.h"\n#include <cstdint>\n',
    "search/tt.h": '#include "smp/pool.h"\n',
    "smp/pool.h": '#include "search/tt.h"\n',
    "uci/uci.h": '  #  include "search/tt.h"\n',
    "main.cpp": '#include "shell/console.h"\n',
}


class CheckLayers(unittest.TestCase):
    def test_downward_and_sideward_includes_pass(self):
        self.assertEqual(complaints(CLEAN), [])

    def test_each_violation_is_told_with_its_place(self):
        cases = [
            ("board/fen.h", '#pragma once\n#include "search/tt.h"\n', "src/board/fen.h:2: "),
            ("board/fen.h", '#include "shell/console.h"\n', "higher layer (shell)"),
            ("shell/text.h", '#include "board/fen.h"\n', "higher layer (board)"),
            ("search/tt.h", "#include <emmintrin.h>\n", "system header <emmintrin.h>"),
            ("search/tt.h", "#include <sys/mman.h>\n", "system header <sys/mman.h>"),
            ("uci/uci.h", '#include "uci/gone.h"\n', "no file below src/"),
            ("stray/a.h", "", "belongs to no layer"),
            ("uci/uci.h", "\n" * 601, "601 lines"),
        ]
        for path, text, expected in cases:
            with self.subTest(path=path, text=text[:40]):
                found = complaints({**CLEAN, path: text})
                self.assertEqual(len(found), 1, found)
                self.assertIn(expected, found[0])

    def test_an_empty_tree_is_no_success(self):
        self.assertNotEqual(complaints({}), [])


if __name__ == "__main__":
    unittest.main()
