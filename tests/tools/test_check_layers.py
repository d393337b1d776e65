"""The layer check finds what it is there to find."""

import pathlib
import tempfile
import unittest

import check_layers


def complaints(files, layers=()):
    """The complaints about a tree made of the files, a map of path -> text."""
    with tempfile.TemporaryDirectory() as folder:
        for path, text in files.items():
            file = pathlib.Path(folder, path)
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text)
        return check_layers.check_tree(folder, layers)


CLEAN = {
    "platform/clock.h": "#include <sys/time.h>\n",
    "shell/text.h": '#include "platform/clock.h"\n',
    "shell/console.h": '#include "uci/uci.h"\n#include "shell/text.h"\n',
    "board/fen.h": '#include "shell/text.h"\n#include <cstdint>\n',
    "search/search.cpp": '#include "smp/split.h"\n',
    "search/search.h": "",
    "smp/split.cpp": '#include "search/search.h"\n',
    "smp/split.h": "",
    "uci/uci.h": '  #  include "search/search.h"\n#include "uci/info.h"\n',
    "uci/info.h": "",
    "main.cpp": '#include "shell/console.h"\n',
}


class CheckLayers(unittest.TestCase):
    def test_downward_and_sideward_includes_pass(self):
        self.assertEqual(complaints(CLEAN), [])

    def test_each_violation_is_told_with_its_place(self):
        cases = [
            ("board/fen.h", '#pragma once\n#include "search/search.h"\n', "src/board/fen.h:2: "),
            ("board/fen.h", '#include "shell/console.h"\n', "higher layer (shell/)"),
            ("shell/text.h", '#include "board/fen.h"\n', "higher layer (board/)"),
            ("smp/split.h", '#include "search/search.h"\n', "higher layer (search/search)"),
            ("search/search.h", "#include <emmintrin.h>\n", "system header <emmintrin.h>"),
            ("search/search.h", "#include <sys/mman.h>\n", "system header <sys/mman.h>"),
            ("uci/uci.h", '#include "uci/gone.h"\n', "no file below src/"),
            ("stray/a.h", "", "belongs to no layer"),
            ("search/stray.h", "", "belongs to no layer"),
            ("uci/uci.h", "\n" * 601, "601 lines"),
        ]
        for path, text, expected in cases:
            with self.subTest(path=path, text=text[:40]):
                found = complaints({**CLEAN, path: text})
                self.assertEqual(len(found), 1, found)
                self.assertIn(expected, found[0])

    def test_a_circle_in_a_folder_is_told(self):
        found = complaints({**CLEAN, "uci/info.cpp": '#include "uci/uci.h"\n'})
        self.assertEqual([c.split(":")[0] for c in found], ["src/uci/info", "src/uci/uci"])

    def test_a_layer_that_is_not_there_is_told(self):
        self.assertEqual(len(complaints(CLEAN, ["platform/", "book/"])), 1)

    def test_an_empty_tree_is_no_success(self):
        self.assertNotEqual(complaints({}), [])


if __name__ == "__main__":
    unittest.main()
