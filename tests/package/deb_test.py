"""The Debian package: what it holds and needs, and a session of the engine in it."""

import glob
import os
import re
import shutil
import unittest

from installed import BUILD, MANUAL, PROGRAMS, InstalledTest, files_below, run

(PACKAGE,) = glob.glob(os.path.join(BUILD, "*.deb"))
DOCUMENTS = "usr/share/doc/quill"


class Package(InstalledTest):
    def setUp(self):
        super().setUp()
        run("dpkg-deb", "-x", PACKAGE, self.root)

    def field(self, name):
        return run("dpkg-deb", "-f", PACKAGE, name).strip()

    def test_holds_what_is_to_be_installed_and_nothing_else(self):
        self.assertEqual(
            files_below(self.root),
            {"etc/quill/quill.ini", "usr/share/quill/quill.bbk", "usr/share/quill/modern.ini"}
            | {"usr/" + name for name in PROGRAMS | MANUAL})
        for name in ("copyright", "changelog.gz", "changelog.Debian.gz", "README.md",
                     "docs/uci.md"):
            self.assertTrue((self.root / DOCUMENTS / name).is_file(), name)
        self.assertEqual(run("dpkg-deb", "-I", PACKAGE, "conffiles"), "/etc/quill/quill.ini\n")

    def test_needs_the_libraries_of_the_language_alone(self):
        needed = set(re.findall(r"(\S+) \([^)]*\)", self.field("Depends")))
        self.assertEqual(needed, {"libc6", "libgcc-s1", "libstdc++6"})

    def test_has_the_version_that_the_engine_tells(self):
        version = run(self.root / "usr/bin/quill", "--version").split()[1]
        self.assertEqual(self.field("Version"), version + "-1")
        changes = run("gzip", "-dc", self.root / DOCUMENTS / "changelog.Debian.gz")
        self.assertTrue(changes.startswith(f"quill ({version}-1) "), changes)

    @unittest.skipUnless(shutil.which("lintian"), "lintian is not installed")
    def test_has_no_fault_by_the_rules_for_packages(self):
        run("lintian", "--fail-on", "error", "--allow-root", PACKAGE)

    def test_engine_finds_its_settings_and_its_book(self):
        self.check_sessions(self.root / "usr/bin/quill", self.root / "etc/quill/quill.ini",
                            self.root / "usr/share/quill/quill.bbk")


if __name__ == "__main__":
    unittest.main()
