"""The machine fails: streams end, files change, memory and rights are missing, the clock jumps."""

import glob
import os
import resource
import shutil
import signal
import subprocess
import threading
import time
import unittest

from session import IS_SANITIZED, QUILL, TIMEOUT, SessionTest

# Exit statuses as a POSIX system tells them.
NO_THREAD = 256 - 3
OUTPUT_LOST = 256 - 4
NO_OUTPUT = b"Cannot go on: standard output takes no more\n"
STRANGER = 54321  # a user with no processes and no rights
SEARCH = b"position startpos\ngo infinite\n"
PROGRAM = QUILL[-1]
LIBFAKETIME = glob.glob("/usr/lib/*/faketime/libfaketimeMT.so.1")

is_root = hasattr(os, "geteuid") and os.geteuid() == 0
needs_root = unittest.skipUnless(is_root, "only root can run the program as somebody else")


@unittest.skipIf(IS_SANITIZED, "a sanitizer fails in other ways")
@unittest.skipIf(len(QUILL) > 1, "the faults are those of this system itself")
class FaultTest(SessionTest):
    def start(self, *args, program=PROGRAM, limits=(), prepare=lambda: None, **options):
        """The program in the test's folder, within the limits, each a resource and its amount."""
        def prepare_all():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            for name, amount in limits:
                resource.setrlimit(name, (amount, amount))
            prepare()

        pipes = {name: subprocess.PIPE for name in ("stdin", "stdout", "stderr")}
        process = subprocess.Popen([program, *args], cwd=self.folder, preexec_fn=prepare_all,
                                   **{**pipes, **options})
        self.addCleanup(lambda: [stream.close() for stream in
                                 (process.stdin, process.stdout, process.stderr) if stream])
        # What hangs is killed, so that whoever waits for its output sees an end.
        watchdog = threading.Timer(TIMEOUT, process.kill)
        watchdog.start()
        for clean_up in (process.wait, process.kill, watchdog.cancel):
            self.addCleanup(clean_up)
        return process

    def run_to_end(self, text, *args, **options):
        """A whole session: the exit status, and all that came on both streams."""
        process = self.start(*args, **options)
        out, err = process.communicate(text.encode(), TIMEOUT)
        return process.returncode, (out or b"").decode(), (err or b"").decode()

    def within(self, **limits):
        """The limits, given by the last word of their names; skips where no program could start."""
        limits = [(getattr(resource, "RLIMIT_" + name), amount) for name, amount in limits.items()]
        if self.run_to_end("", "--version", limits=limits)[0] != 0:
            self.skipTest("this build takes more than the limit leaves")
        return limits

    def as_stranger(self):
        """Options that start a copy of the program as a user who may not write to its folder."""
        os.chmod(self.folder, 0o755)
        program = os.path.join(self.folder, "quill")
        shutil.copy(PROGRAM, program)
        return {"program": program, "user": STRANGER, "group": STRANGER, "extra_groups": []}

    def tell(self, process, text):
        process.stdin.write(text)
        process.stdin.flush()

    def read_until(self, process, start):
        """The lines up to the first that begins so."""
        lines = []
        while not lines or not lines[-1].startswith(start):
            lines.append(process.stdout.readline())
            self.assertTrue(lines[-1].endswith(b"\n"), lines)
        return lines


class Output(FaultTest):
    def expect_lost(self, process, err=NO_OUTPUT):
        # Its input stays open: it ends by itself.
        self.assertEqual(process.wait(TIMEOUT), OUTPUT_LOST)
        self.assertEqual(process.stderr.read(), err)

    def test_a_full_device_ends_the_program(self):
        with open("/dev/full", "wb") as full:
            for args in ((), ("--version",)):
                self.expect_lost(self.start(*args, stdout=full))

    def test_output_that_was_closed_at_the_start_ends_the_program(self):
        self.expect_lost(self.start(stdout=None, prepare=lambda: os.close(1)))

    def test_a_disk_that_fills_up_ends_a_search(self):
        # Without the signal that comes with it, the limit is like a full disk.
        ignore = lambda: signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        with open(os.path.join(self.folder, "out"), "wb") as out:
            for number, command in enumerate((b"uci\n" + SEARCH, b"mt 1000\ng\n")):
                size = out.tell() + 1900  # more than start-up writes
                process = self.start(stdout=out, prepare=ignore, restore_signals=False,
                                     limits=[(resource.RLIMIT_FSIZE, size)])
                self.tell(process, command)
                # From "uci" on standard error is the error log.
                self.expect_lost(process, NO_OUTPUT if number else b"")
                out.seek(0, os.SEEK_END)
        self.assertEqual(self.read_log().encode(), NO_OUTPUT)

    def test_output_that_nobody_reads_ends_a_search_quietly(self):
        # The second parent ignores the signal, and has it ignored by its children.
        for is_default in (True, False):
            process = self.start(restore_signals=is_default)
            self.tell(process, b"mt 1000\ng\n")
            self.read_until(process, b"  [4/")
            process.stdout.close()
            self.assertEqual(process.wait(TIMEOUT), -signal.SIGPIPE)
            self.assertEqual(process.stderr.read(), b"")

    def test_errors_that_go_nowhere_do_no_harm(self):
        text = "setoption name X value 1\n" * 2 + "isready\n"
        reader, writer = os.pipe()
        os.close(reader)
        with open("/dev/full", "wb") as full, os.fdopen(writer, "wb") as unread:
            for err in (full, unread):
                status, out, _ = self.run_to_end(text, stderr=err)
                self.assertEqual(status, 0)
                self.assertIn("readyok\n", out)


class Input(FaultTest):
    def test_the_last_line_needs_no_end(self):
        result = self.run_session("uci\nposition startpos\ngo infinite\nsto")
        self.assertEqual(len(result.answers()), 1)
        self.assertEqual(result.log, "unknown uci command: sto\n")

    def test_without_input_the_program_ends(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        for options in ({"stdin": folder}, {"prepare": lambda: os.close(0), "stdin": None}):
            process = self.start(**options)
            self.assertEqual(process.wait(TIMEOUT), 0)
            self.assertTrue(process.stdout.read().endswith(b"\ninitialized\n% "))


class Files(FaultTest):
    def copy_book(self):
        book = os.path.join(self.folder, "quill.bbk")
        shutil.copy(os.path.join(os.path.dirname(PROGRAM), "quill.bbk"), book)
        return book

    def test_only_files_are_read_for_settings(self):
        os.mkfifo(os.path.join(self.folder, "quill.ini"))
        for args in ((), ("/dev/urandom",), ("/dev/tty",), ("/dev/stdin",)):
            process = self.start(*args)  # its input stays open
            out = b"".join(self.read_until(process, b"initialized"))
            self.assertNotIn(b"inifile", out)

    def test_a_book_that_changes_under_the_program_does_no_harm(self):
        path = self.copy_book()
        with open(path, "rb") as file:
            data = file.read()
        process = self.start()
        self.tell(process, b"uci\n")

        def is_in_book():
            self.tell(process, b"position startpos\ngo depth 2\n")
            lines = self.read_until(process, b"bestmove ")
            self.assertRegex(lines[-1], rb"^bestmove [a-h][1-8][a-h][1-8]\b")
            return not any(line.startswith(b"info ") for line in lines)

        self.assertTrue(is_in_book())
        for size in (0, 8, len(data) // 2 + 7, 16):
            os.truncate(path, size)
            is_in_book()
        self.assertFalse(is_in_book())
        for changed in (b"\0" * len(data), b"\xff" * len(data), os.urandom(len(data))):
            self.write("quill.bbk", changed)
            is_in_book()
        self.write("quill.bbk", data)
        self.assertTrue(is_in_book())
        # Another file of the same name is not the one in use.
        self.write("other", b"")
        os.replace(os.path.join(self.folder, "other"), path)
        self.assertTrue(is_in_book())
        self.assertEqual(process.communicate(b"quit\n", TIMEOUT)[1], b"")

    def test_a_file_may_take_the_place_of_a_closed_stream(self):
        self.copy_book()
        status, out, _ = self.run_to_end("uci\nposition startpos\ngo depth 2\nxyz\n",
                                         stderr=None, prepare=lambda: os.close(2))
        self.assertEqual(status, 0)
        self.assertRegex(out, r"uciok\nbestmove [a-h]\d[a-h]\d\n")  # from the book
        self.assertEqual(self.read_log(), "unknown uci command: xyz\n")

    @needs_root
    def test_an_unreadable_book_is_not_found(self):
        os.chmod(self.copy_book(), 0)
        status, out, err = self.run_to_end("", **self.as_stranger())
        self.assertEqual((status, err), (0, ""))
        self.assertIn("\nWarning: book not found: quill.bbk\n", out)

    def expect_play_without_log(self, process):
        """Warnings stay where they were when the log can't be written."""
        out, err = process.communicate(b"uci\nxyz\nposition startpos\ngo depth 3\n", TIMEOUT)
        self.assertEqual(process.returncode, 0)
        self.assertRegex(out, rb"\nbestmove [a-h]\d[a-h]\d ponder [a-h]\d[a-h]\d\n$")
        self.assertEqual(err, b"unknown uci command: xyz\n")

    @needs_root
    def test_no_folder_to_write_to(self):
        self.expect_play_without_log(self.start(**self.as_stranger()))
        self.assertEqual(self.read_log(), "")

    def test_no_folder_and_no_files_at_all(self):
        process = self.start()
        self.read_until(process, b"initialized")
        resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (3, 3))
        self.expect_play_without_log(process)
        folder = os.path.join(self.folder, "gone")
        os.mkdir(folder)
        self.expect_play_without_log(
            self.start(prepare=lambda: (os.chdir(folder), os.rmdir(folder))))


class Memory(FaultTest):
    def setUp(self):
        super().setUp()
        # One thread, so that what is needed does not depend on the machine.
        processors = os.sched_getaffinity(0)
        self.addCleanup(os.sched_setaffinity, 0, processors)
        os.sched_setaffinity(0, {min(processors)})

    def test_the_program_searches_or_says_why_not(self):
        statuses = set()
        for megabytes in range(40, 100, 6):
            limits = self.within(AS=megabytes << 20)
            status, out, err = self.run_to_end("position startpos\ngo depth 3\n", limits=limits)
            statuses.add(status)
            if status == 0:
                self.assertRegex(out, r"\nbestmove [a-h]\d")
                self.assertEqual(err, "")
            else:
                self.assertIn(status, (NO_THREAD, -signal.SIGABRT))
                self.assertRegex(err, r"^[^\n]+\n$")
        self.assertLessEqual({0, NO_THREAD}, statuses)

    @needs_root
    def test_without_a_thread_the_program_ends(self):
        stranger = self.as_stranger()
        self.assertEqual(
            self.run_to_end("go\n", limits=self.within(NPROC=1), **stranger),
            (NO_THREAD, "quill-1.0\n\n\nWarning: book not found: quill.bbk\n"
             "allocating hash...allocated 32Mb\nstarting threads...\n",
             "Cannot start: system grants no search thread (limit of memory or processes)\n"))
        self.assertEqual(self.run_to_end("", "bench", limits=self.within(NPROC=1), **stranger),
                         (NO_THREAD, "", "bench: system grants no search thread\n"))

    @needs_root
    def test_with_some_threads_the_program_searches(self):
        status, out, _ = self.run_to_end(
            "setoption name Threads value 8\nuci\nposition startpos\ngo depth 3\n",
            limits=self.within(NPROC=4), **self.as_stranger())
        self.assertEqual(status, 0)
        self.assertRegex(out, r"\noption name Threads +type spin +default 3 ")
        self.assertRegex(out, r"\nbestmove [a-h]\d")

    def test_a_table_too_large_becomes_a_smaller_one(self):
        status, out, err = self.run_to_end(
            "setoption name Hash value 4096\nposition startpos\ngo depth 3\n",
            limits=self.within(AS=160 << 20))
        self.assertEqual((status, err), (0, ""))
        self.assertRegex(out, r"\btt: malloc\(4294967296\) failed, retrying\.\.\.\n"
                              r"(tt: malloc\(\d+\) failed, retrying\.\.\.\n)+")
        self.assertRegex(out, r"\nbestmove [a-h]\d")

    def test_a_line_too_long_ends_the_program_with_a_word(self):
        process = self.start(limits=self.within(AS=160 << 20))
        process.communicate(b"uci\nposition fen " + b"8" * (60 << 20), TIMEOUT)
        self.assertEqual(process.returncode, -signal.SIGABRT)
        self.assertEqual(self.read_log(), "FATAL: out of memory\n")


class Signals(FaultTest):
    def test_end_a_search_at_once_and_quietly(self):
        listen = lambda: signal.signal(signal.SIGINT, signal.SIG_DFL)
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            process = self.start(prepare=listen)
            self.tell(process, b"uci\nsetoption name Threads value 3\n" + SEARCH)
            self.read_until(process, b"info depth 4 ")
            process.send_signal(number)
            self.assertEqual(process.wait(TIMEOUT), -number)
            self.assertRegex(process.stdout.read(), rb"^(info [^\n]*\n)*$")
            self.assertEqual(process.stderr.read(), b"")
        self.assertEqual(self.read_log(), "")


class Clock(FaultTest):
    @unittest.skipUnless(LIBFAKETIME, "the library of the package libfaketime is missing")
    def test_a_clock_that_is_set_does_not_change_the_time_of_a_search(self):
        offset = os.path.join(self.folder, "offset")
        environment = {**os.environ, "LD_PRELOAD": LIBFAKETIME[0], "FAKETIME_NO_CACHE": "1",
                       "FAKETIME_TIMESTAMP_FILE": offset, "FAKETIME_DONT_FAKE_MONOTONIC": "1"}

        def set_clock(text):
            self.write("new", text)
            os.replace(os.path.join(self.folder, "new"), offset)

        set_clock("-10d")
        date = subprocess.run(["date", "+%s"], env=environment, capture_output=True, check=False)
        if date.returncode != 0 or int(date.stdout) > time.time() - 86400:
            self.skipTest("the library has no effect here")
        if self.run_to_end("", "--version", env=environment)[0] != 0:
            self.skipTest("this build can't be started with the library")
        process = self.start(env=environment)
        self.tell(process, b"uci\n")
        for jump in ("+10d", "-10d"):
            began = time.monotonic()
            self.tell(process, b"position startpos\ngo movetime 600\n")
            time.sleep(0.2)
            set_clock(jump)
            info = self.read_until(process, b"bestmove ")[-2].split()
            self.assertGreater(time.monotonic() - began, 0.5)
            self.assertLess(int(info[info.index(b"time") + 1]), TIMEOUT * 1000)


if __name__ == "__main__":
    unittest.main()
