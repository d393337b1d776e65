"""cmake --install: which file goes where, and whether the engine finds the others from there."""

import shutil
import unittest

from installed import MANUAL, PROGRAMS, InstalledTest, files_below

EVERYTHING = PROGRAMS | MANUAL | {
    "share/quill/quill.bbk", "share/quill/modern.ini", "etc/quill/quill.ini"}


class Install(InstalledTest):
    def test_a_prefix_serves_wherever_it_is_moved(self):
        self.install("--prefix", self.root)
        self.assertEqual(files_below(self.root), EVERYTHING)
        self.assertTrue((self.root / "share/doc/quill/docs/uci.md").is_file())
        moved = self.root.with_name("moved")
        self.root.rename(moved)
        self.check_sessions(moved / "bin/quill", moved / "etc/quill/quill.ini",
                            moved / "share/quill/quill.bbk")

    def test_a_destdir_goes_before_the_prefix(self):
        self.install("--prefix", "/opt/quill", DESTDIR=str(self.root))
        self.assertEqual(files_below(self.root / "opt/quill"), EVERYTHING)
        self.assertEqual([path.name for path in self.root.iterdir()], ["opt"])

    def test_links_to_the_program_are_followed(self):
        self.install("--prefix", self.root)
        link = self.root.with_name("engine")
        link.symlink_to(self.root / "bin/quill")
        self.check_sessions(link, self.root / "etc/quill/quill.ini",
                            self.root / "share/quill/quill.bbk")

    def test_settings_can_be_named_from_anywhere(self):
        self.install("--prefix", self.root)
        text = self.session(self.root / "bin/quill", arguments=["modern.ini"])
        self.assertIn(f"\ninifile={self.root}/share/quill/modern.ini\n", text)

    def test_a_copied_program_does_without(self):
        self.install("--prefix", self.root)
        alone = self.root.with_name("alone")
        alone.mkdir()
        program = shutil.copy(self.root / "bin/quill", alone)
        text = self.session(program)
        self.assertNotIn("inifile=", text)
        self.assertIn("\nWarning: book not found: quill.bbk\n", text)


if __name__ == "__main__":
    unittest.main()
