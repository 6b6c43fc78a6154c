"""Whatever table is scanned, quask-json says the same as quask, element by element."""

import json
import os
import re
import subprocess
import unittest

import running


def text_elements(line):
    """Bucket, and slot, mark and text of each element, of a line in hexadecimal."""
    head, *elements = re.split(r" (?=[0-9a-f]+-->)", line)
    elements[-1:] = [elements[-1].removesuffix(" ffffffff --> none")] if elements else []
    bucket = int(re.match(r"bucket\[([0-9a-f]+)\]", head).group(1), 16)
    parts = []
    for element in elements:
        slot, value = element.split("-->", 1)
        parts.append((int(slot, 16), value.startswith("*"), value.removeprefix("*")))
    return bucket, parts


def quoted(data, quote):
    """What quask prints of characters between quotes."""
    named = {ord("\n"): "\\n", ord("\t"): "\\t", ord("\r"): "\\r", ord("\\"): "\\\\", ord(quote): "\\" + quote}
    return quote + "".join(named.get(c, chr(c) if 0x20 <= c < 0x7f else f"\\x{c:02x}") for c in data) + quote


def pretty(value, data, of_string):
    """What quask -p prints of an element that quask-json says to have this value and these bytes.
    Numbers are their texts: nothing is lost by reading them."""
    if isinstance(value, list):
        return "{" + ", ".join(pretty(one, None, None) for one in value) + "}"
    if isinstance(value, bool):
        return "true" if value else "false"
    if value is None:
        return "not finite"
    if isinstance(value, Number):
        return value.text
    return of_string(data)


class Number:
    def __init__(self, text):
        self.text = text


def not_finite_alike(text):
    return re.sub(r"-?\b(nan|inf)\b", "not finite", text)


class Agreement(unittest.TestCase):
    def assert_same(self, found, expected):
        """That two texts are the same, or where the first difference is: to line up long texts, as
        assertEqual does, takes minutes."""
        if found != expected:
            same = len(os.path.commonprefix((found, expected)))
            piece = slice(max(0, same - 40), same + 40)
            self.fail(f"at character {same} there is {found[piece]!r}, expected is {expected[piece]!r}")

    def compare(self, name):
        plain = running.run("QUASK", "-e", name)
        by_type = running.run("QUASK", "-e", "-p", name)
        found = running.run("QUASK_JSON", "-e", name)
        self.assertEqual((plain.returncode, by_type.returncode, found.returncode), (0, 0, 0))
        self.assertEqual(found.stderr, b"")
        *buckets, counters = [json.loads(line, parse_int=Number, parse_float=Number, parse_constant=self.fail)
                              for line in running.lines(found.stdout)]
        for line in running.lines(found.stdout):
            self.check.validate(json.loads(line))
        *plain_lines, hits, restarts = plain.stdout.decode("ascii").splitlines()
        self.assertEqual(len(buckets), len(plain_lines))
        self.assertEqual(hits, "Lookaside hits: " + counters["lookasideHits"].text)
        self.assertEqual(restarts, "Chain restarts: " + counters["chainRestarts"].text)
        for bucket, line, typed in zip(buckets, plain_lines, by_type.stdout.decode("ascii").splitlines()):
            self.compare_bucket(bucket, line, typed)

    def compare_bucket(self, bucket, line, typed):
        number, elements = text_elements(line)
        self.assertEqual(bucket["bucket"].text, str(number))
        self.assert_same(str([(int(one["slot"].text), one["lookaside"], one["hex"]) for one in bucket["elements"]]),
                         str([(slot, mark, text.replace(" ", "")) for slot, mark, text in elements]))
        expected = typed.split("]", 1)[0] + "]"
        for one in bucket["elements"]:
            data = bytes.fromhex(one["hex"])
            expected += f" {int(one['slot'].text):x}-->{'*' if one['lookaside'] else ''}{self.text_of(one, data)}"
        self.assert_same(not_finite_alike(typed), expected + " ffffffff --> none")

    def text_of(self, one, data):
        if "value" not in one:
            return " ".join(one["hex"][i:i + 8] for i in range(0, len(one["hex"]), 8))
        value = one["value"]
        if isinstance(value, str) and self.is_one_character:
            self.assert_same(value, data.decode("utf-8", "replace"))
            return quoted(data, "'")
        if isinstance(value, str):
            data = data.split(b"\0", 1)[0]
            self.assert_same(value, data.decode("utf-8", "replace"))
            return quoted(data, '"')
        return pretty(value, None, None)

    def compare_lookaside_value(self, name):
        text = running.run("QUASK", "-x", name).stdout
        finished = running.run("QUASK_JSON", "-x", name)
        (line,) = running.lines(finished.stdout)
        self.headers.validate(json.loads(line))
        slots = json.loads(line, parse_int=Number, parse_float=Number, parse_constant=self.fail)["slots"]
        one = {member.removeprefix("lookaside").lower(): slots[member]
               for member in ("lookasideValue", "lookasideHex") if member in slots}
        expected = text.split(b"\tLookaside value: ")[1].split(b"\n\nPrimary")[0].decode("ascii")
        self.assert_same(not_finite_alike(expected), self.text_of(one, bytes.fromhex(one["hex"])))

    def test_of_tables_of_every_kind(self):
        self.check = running.validator("scan")
        self.headers = running.validator("headers")
        subprocess.run([running.program("WRITE_TABLES"), running.root, "1"], check=True)
        names = sorted(os.listdir(running.root))
        self.assertGreater(len(names), 150)
        for name in names:
            type_line = running.run("QUASK", "-x", name).stdout
            self.is_one_character = b'"char"\n' in type_line
            with self.subTest(name=name, type=re.search(rb"Value type: .*", type_line)):
                self.compare(name)
                self.compare_lookaside_value(name)


class Jq(unittest.TestCase):
    def test_reads_a_scan(self):
        try:
            subprocess.run(["jq", "--version"], stdout=subprocess.DEVNULL, check=True)
        except FileNotFoundError:
            self.skipTest("jq is not installed")
        running.make_table("jq/table", 8, 16, 20, 4)
        scan = running.run("QUASK_JSON", "jq/table").stdout
        counted = subprocess.run(["jq", "-s", "[.[].elements // empty | length] | add"], input=scan,
                                 stdout=subprocess.PIPE, check=True).stdout
        self.assertEqual(counted, b"%d\n" % scan.count(b'"slot":'))
        self.assertGreater(int(counted), 20)


if __name__ == "__main__":
    unittest.main()
