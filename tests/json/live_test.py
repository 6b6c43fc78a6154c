"""Beside a writer at full speed, every line is one whole JSON text, and what the writer leaves alone is there."""

import os
import subprocess
import unittest

import running

STABLE = 50


class Live(unittest.TestCase):
    def setUp(self):
        command = [running.program("LIVE_WRITER"), os.path.join(running.root, "hot"), "16", "8", str(STABLE), "6", "4000"]
        self.writer = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.assertEqual(self.writer.stdout.readline(), b"ready\n")

    def tearDown(self):
        self.writer.communicate()

    def test_scans_keep_to_the_schema_and_lose_nothing(self):
        stable = None
        for _ in range(5):
            *buckets, counters = running.json_report("scan", "-e", "hot")
            self.assertEqual(set(counters), {"lookasideHits", "chainRestarts"})
            self.assertEqual([one["bucket"] for one in buckets], list(range(8)))
            found = {one["hex"] for bucket in buckets for one in bucket["elements"]}
            stable = found if stable is None else stable & found
        self.assertGreaterEqual(len(stable), STABLE)

    def test_header_reports_keep_to_the_schema(self):
        for _ in range(5):
            (headers,) = running.json_report("headers", "-x", "hot")
            self.assertLessEqual(headers["slots"]["occupiedSlots"], headers["slots"]["mappedSlots"])

    def test_a_client_is_found_beside_the_writer(self):
        pid = running.hold(self, "hot", "price_feed", "slots:rw", "vandral.1:rw")
        (table,) = running.json_report("clients", "-w", "hot")
        self.assertIn((pid, "price_feed"), [(client["pid"], client["command"]) for client in table["writers"]])



if __name__ == "__main__":
    unittest.main()
