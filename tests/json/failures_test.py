"""However a run ends, quask-json ends as quask does, with the same messages, and leaves whole lines."""

import json
import os
import resource
import signal
import struct
import subprocess
import unittest

import running

MANY = 60000


class Failures(unittest.TestCase):
    def both(self, *arguments, **options):
        """Both programs end in the same way, which is returned, with what quask-json printed."""
        text = running.run("QUASK", *arguments, **options)
        found = running.run("QUASK_JSON", *arguments, **options)
        self.assertEqual(found.returncode, text.returncode)
        self.assertEqual(found.stderr.replace(running.program("QUASK_JSON").encode(), b"PROGRAM"),
                         text.stderr.replace(running.program("QUASK").encode(), b"PROGRAM"))
        return found

    @staticmethod
    def write_small():
        running.write_table("small", b"int", 4, [[struct.pack("<i", 7)], [], [b"\1\0\0\0", b"\2\0\0\0"]])

    @staticmethod
    def write_large():
        running.write_table("large", b"int", 4, [[struct.pack("<I", i)] for i in range(MANY)])

    @staticmethod
    def patch(name, file, offset, data):
        with open(os.path.join(running.root, name, file), "r+b") as table_file:
            table_file.seek(offset)
            table_file.write(data)

    def setUp(self):
        subprocess.run(["find", running.root, "-mindepth", "1", "-delete"], check=True)
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    def test_a_sound_table(self):
        self.write_small()
        found = self.both("small")
        self.assertEqual(found.stdout.decode(),
                         '{"bucket":0,"elements":[{"slot":0,"value":7,"hex":"07000000","lookaside":false}]}\n'
                         '{"bucket":2,"elements":[{"slot":1,"value":1,"hex":"01000000","lookaside":false},'
                         '{"slot":2,"value":2,"hex":"02000000","lookaside":false}]}\n'
                         '{"lookasideHits":0,"chainRestarts":0}\n')
        self.assertEqual(found.returncode, 0)

    def test_the_choice_of_a_table(self):
        self.assertEqual(self.both("-x").stderr, b"No table was found.\n")
        self.write_small()
        self.write_large()
        self.assertEqual(self.both().returncode, 1)
        self.assertEqual(self.both("-w", "nowhere").stderr, b"No table was found.\n")

    def test_the_command_line(self):
        self.write_small()
        self.assertEqual(self.both("-z", "small").returncode, 0)
        self.assertEqual(self.both("--wh", "small").returncode, 0)
        self.assertEqual(self.both("small", "-f").returncode, 0)
        self.assertEqual(self.both("-p", "-t", "small", "more").returncode, 0)
        self.assertEqual(running.run("QUASK_JSON", "-h", "-z").stderr, b"")
        self.assertEqual(self.both("-f", "/nowhere/file").returncode, 1)

    def test_a_header_that_fails_a_check(self):
        self.write_small()
        self.patch("small", "slots", 152, b"\7")
        self.assertEqual(running.run("QUASK", "small").stderr, b"Error attaching to Quask small\n")
        found = running.run("QUASK_JSON", "small")
        self.assertEqual(found.stdout, b"")
        self.assertRegex(found.stderr, rb"\AQuask small validation failed: SlotTable::Header::validate\(\) "
                                       rb"checksum fail: .*\nError attaching to Quask small\n\Z")
        self.assertEqual(found.returncode, 1)

    def test_files_that_are_missing(self):
        self.write_small()
        os.remove(os.path.join(running.root, "small/vandral.2"))
        self.assertEqual(self.both("-x", "small").stderr, b"Error attaching Vandral reader for small\n")
        os.remove(os.path.join(running.root, "small/slots"))
        for option in ("-e", "-x"):
            found = self.both(option, "small")
            self.assertEqual((found.stdout, found.returncode), (b"", 1))

    def test_a_corrupt_chain_ends_the_run_after_the_lines_before(self):
        self.write_small()
        for what, following in (("out of range", 77), ("a circle", 1)):
            with self.subTest(what):
                self.write_small()
                self.patch("small", "slots", 176 + 24 * (1 + 2), struct.pack("<II", 1, following))
                found = self.both("small")
                self.assertEqual(found.returncode, -signal.SIGABRT)
                (line,) = running.lines(found.stdout)
                self.assertEqual(json.loads(line)["bucket"], 0)

    def test_a_value_larger_than_the_file(self):
        self.write_small()
        running.write_table("small", b"Feed::Picture", 2**20, [[b"x"]])
        os.truncate(os.path.join(running.root, "small/slots"), 4096)
        self.assertEqual(self.both("small").returncode, -signal.SIGABRT)

    def test_many_buckets_that_lead_to_one_long_chain(self):
        running.write_table("long", b"int", 4, [[b"\7\0\0\0"] * 20000] + [[]] * 19999)
        self.patch("long", "buckets", 24, struct.pack("<II", 0, 0) * 20000)
        found = self.both("long")
        self.assertEqual(found.returncode, -signal.SIGABRT)
        self.assertIn(b"the chains up to bucket:", found.stderr)

    def test_output_that_cannot_be_written(self):
        self.write_large()
        running.make_table("sound", 8, 4, 3, 2)
        with open("/dev/full", "wb") as full:
            for arguments in (["large"], ["-w", "large"], ["-a"], ["-h"]):
                found = self.both(*arguments, stdout=full)
                self.assertEqual(found.stderr, b"Error writing to standard output\n")
                self.assertEqual(found.returncode, 1)
        found = self.both("large", stdout=None, preexec_fn=lambda: os.close(1))
        self.assertEqual((found.stderr, found.returncode), (b"Error writing to standard output\n", 1))

    def test_a_reader_that_is_gone(self):
        self.write_large()
        for name in ("QUASK", "QUASK_JSON"):
            reading, writing = os.pipe()
            os.close(reading)
            found = running.run(name, "large", stdout=writing)
            os.close(writing)
            self.assertEqual((found.stderr, found.returncode), (b"", -signal.SIGPIPE))

    def test_sigterm_while_lines_are_written_leaves_whole_lines(self):
        self.write_large()
        with subprocess.Popen([running.program("QUASK_JSON"), "large"], env=running.environment,
                              stdout=subprocess.PIPE) as child:
            first = child.stdout.read(1)  # it writes, and waits for the pipe to be read
            child.send_signal(signal.SIGTERM)
            found = running.lines(first + child.stdout.read())
        self.assertEqual(child.returncode, -signal.SIGTERM)
        self.assertLess(len(found), MANY)
        for i, line in enumerate(found):
            self.assertEqual(json.loads(line)["bucket"], i)

    @unittest.skipIf(os.environ["SANITIZER"], "the sanitizer needs memory of its own")
    def test_large_values_need_memory_for_two_of_them(self):
        mebibyte = 2**20
        size = 2 * mebibyte
        running.write_table("large", b"char[%d]" % size, size, [[b"\x01" * size, b"\xff" * size]])
        # The file, the two values and the buffer of a third, and what a program takes anyway. The
        # text of a value would be eight times as large.
        limit = 3 * size + 3 * size + 8 * mebibyte

        def limited():
            resource.setrlimit(resource.RLIMIT_AS, (limit, limit))

        found = self.both("large", preexec_fn=limited)
        self.assertEqual(found.returncode, 0)
        elements = json.loads(running.lines(found.stdout)[0])["elements"]
        self.assertEqual(elements[0]["value"], "\x01" * size)
        self.assertEqual(elements[1]["value"], "\ufffd" * size)
        self.assertEqual([one["hex"] for one in elements], ["01" * size, "ff" * size])


if __name__ == "__main__":
    unittest.main()
