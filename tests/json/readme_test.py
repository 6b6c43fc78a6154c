"""What README.md shows of quask-json and jq is what they print."""

import os
import re
import shutil
import subprocess
import sys
import unittest

import running

if shutil.which("jq") is None:
    print("skipped: jq is not installed")
    sys.exit(77)


class Readme(unittest.TestCase):
    def test_shows_what_is_printed(self):
        values = {1: [b"HAZEL 23.28"], 4: [b"ASPEN 131.43", b"BEECH 43.96"], 6: [b"MAPLE 200.49"]}
        running.write_table("prices", b"char[16]", 16,
                            [[value.ljust(16, b"\0") for value in values.get(i, [])] for i in range(8)])
        pids = {"24364": running.hold(self, "prices", "price_feed", "vandral.1:rw", "slots:rw"),
                "24411": running.hold(self, "prices", "risk_view", "slots:r")}
        programs = os.path.join(running.root, "bin")
        os.mkdir(programs)
        os.symlink(running.program("QUASK_JSON"), os.path.join(programs, "quask-json"))
        environment = dict(running.environment, PATH=programs + ":" + os.environ["PATH"])

        with open(os.environ["README"], encoding="utf-8") as file:
            section = file.read().split("\n## For programs\n")[1].split("\n## ")[0]
        blocks = re.findall(r"```console\n\$ (.*)\n((?:.*\n)*?)```", section)
        self.assertEqual(len(blocks), 4)
        for command, expected in blocks:
            with self.subTest(command=command):
                for shown, pid in pids.items():
                    expected = expected.replace(shown, str(pid))
                found = subprocess.run(["bash", "-c", command], env=environment, stdout=subprocess.PIPE,
                                       check=True, timeout=60)
                self.assertEqual(found.stdout.decode(), expected)


if __name__ == "__main__":
    unittest.main()
