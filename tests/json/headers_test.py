"""quask-json -x shows the figures that quask -x shows, and says what is odd about them."""

import os
import struct
import unittest

import running

FILES = {"buckets": "buckets", "slots": "slots", "primaryVandral": "vandral.1", "secondaryVandral": "vandral.2"}


def text_lines(name):
    """The fields of quask -x, by section and name."""
    sections = {}
    for line in running.run("QUASK", "-x", name).stdout.decode("ascii").splitlines():
        if line.startswith("\t"):
            field, value = line[1:].split(": ", 1)
            section[field] = value
        elif " header: (" in line:
            section = sections.setdefault(line.split(" header:")[0], {})
    return sections


class Headers(unittest.TestCase):
    def setUp(self):
        running.make_table("feed/eq", 8, 4, 3, 2)

    def put(self, file, offset, data):
        with open(os.path.join(running.root, "feed/eq", file), "r+b") as table_file:
            table_file.seek(offset)
            table_file.write(data)

    def report(self):
        (headers,) = running.json_report("headers", "-x", "feed/eq")
        return headers

    def odd(self):
        """The flags that are set."""
        return [f"{section}.{flag}" for section, header in self.report().items() if section in FILES
                for flag in ("badMagic", "unknownVersion", "badChecksum") if header.get(flag)]

    def test_show_what_quask_shows(self):
        found = self.report()
        text = text_lines("feed/eq")
        self.assertEqual(found["table"], "feed/eq")
        self.assertEqual(found["directory"], running.root + "/feed/eq")
        for section, title in (("buckets", "Buckets"), ("slots", "Slots"), ("primaryVandral", "Primary vandral"),
                               ("secondaryVandral", "Secondary vandral")):
            header, lines = found[section], text[title]
            self.assertEqual(lines["Magic"], f'0x{header["magicNumber"]:x} ("{header["magic"]}")')
            self.assertEqual(lines["Version"], str(header["version"]))
            self.assertEqual(lines["Orvik"], "{orvik} (pid: {orvikPid} instanceId: {orvikInstanceId})".format(**header))
        buckets, slots = found["buckets"], found["slots"]
        self.assertEqual(text["Buckets"]["Size"], f'{buckets["size"]} buckets')
        self.assertEqual(text["Buckets"]["Owner pid"], str(buckets["ownerPid"]))
        head = slots["freeListHead"]
        self.assertEqual({name: text["Slots"][name] for name in text["Slots"] if name not in ("Magic", "Version", "Orvik")}, {
            "Hash": f'0x{slots["hash"]:08x}',
            "Occupied slots": str(slots["occupiedSlots"]),
            "Mapped slots": f'{slots["mappedSlotsVersion"]}:{slots["mappedSlots"]}',
            "Max slots": str(slots["maxSlots"]),
            "Value type": f'{slots["valueSize"]} bytes "{slots["valueType"]}"',
            "Class type": f'"{slots["classType"]}"',
            "Slot size": f'{slots["slotSize"]} bytes',
            "Head of free list": "None" if head is None else str(head),
            "Lookaside version": f'0x{slots["lookasideVersion"]:08x}',
            "Lookaside value": slots["lookasideHex"][:8] + " " + slots["lookasideHex"][8:]})
        for section, title in (("primaryVandral", "Primary vandral"), ("secondaryVandral", "Secondary vandral")):
            header, lines = found[section], text[title]
            self.assertEqual(lines["Minimum sequence"], str(header["minimumSequence"]))
            self.assertEqual(lines["Number of connected readers"], str(header["connectedReaders"]))
            self.assertEqual(lines["Notifications"], f'{header["notificationsVersion"]:x}:{header["notifications"]}')
            self.assertEqual(lines["Current table"],
                             f'{header["currentTable"].capitalize()} (version: 0x{header["currentTableVersion"]:08x})')

    def test_of_a_sound_table_are_not_odd(self):
        self.assertEqual(self.odd(), [])

    def test_say_which_magic_is_bad(self):
        for section, file in FILES.items():
            with self.subTest(file=file):
                running.make_table("feed/eq", 8, 4, 3, 2)
                self.put(file, 0, b"\n\xff")
                self.assertEqual(self.odd(), [section + ".badMagic"])
                self.assertTrue(self.report()[section]["magic"].startswith("..ASK"))

    def test_say_which_version_is_unknown(self):
        for section, file in FILES.items():
            with self.subTest(file=file):
                running.make_table("feed/eq", 8, 4, 3, 2)
                self.put(file, 8, struct.pack("<I", 99))
                self.assertEqual(self.odd(), [section + ".unknownVersion"])

    def test_say_that_the_checksum_is_bad(self):
        self.put("slots", 152, struct.pack("<I", 12345))
        self.assertEqual(self.odd(), ["slots.badChecksum"])

    def test_have_exact_numbers_and_any_type_name(self):
        self.put("vandral.1", 16, struct.pack("<Q", 2**64 - 1))
        self.put("slots", 16, b'a"\\\n\xff\x7f\xc3\xa4\0')
        self.put("slots", 164, struct.pack("<I", 2**32 - 1))
        found = self.report()
        self.assertEqual(found["primaryVandral"]["minimumSequence"], 2**64 - 1)
        self.assertEqual(found["slots"]["valueType"], 'a"\\\n\ufffd\x7f\xe4')
        self.assertNotIn("lookasideValue", found["slots"])
        self.assertIsNone(found["slots"]["freeListHead"])

    def test_of_headers_of_zeros_and_ones_keep_to_the_schema(self):
        for byte in (b"\0", b"\xff"):
            with self.subTest(byte=byte):
                running.make_table("feed/eq", 8, 4, 3, 2)
                for file in FILES.values():
                    self.put(file, 0, byte * 56)
                self.put("slots", 56, byte * 144)
                self.report()


if __name__ == "__main__":
    unittest.main()
