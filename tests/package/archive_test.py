"""The folder that an archive holds: complete, without libraries to look for, and free to move."""

import unittest

from installed import InstalledTest, files_below, run


class Archive(InstalledTest):
    def test_the_folder_is_all_that_is_needed(self):
        self.install("--prefix", self.root)
        self.assertEqual(files_below(self.root), {
            "quill", "quill-book", "quill.bbk", "quill.ini", "modern.ini", "README.txt",
            "LICENSE.txt"})
        for program in ("quill", "quill-book"):
            self.assertNotIn("INTERP", run("readelf", "-lW", self.root / program))
        moved = self.root.with_name("a folder")
        self.root.rename(moved)
        self.check_sessions(moved / "quill", moved / "quill.ini", moved / "quill.bbk")


if __name__ == "__main__":
    unittest.main()
