"""quask-stat -v -J keeps to its schema, and shows what the rows show."""

import json
import os
import re
import struct
import unittest

import running


class Details(unittest.TestCase):
    def setUp(self):
        running.write_table("feed/eq", b"int", 4, [[struct.pack("<i", i)] * (i % 4) for i in range(40)])

    def report(self, exit_status=0):
        found = running.run("QUASK_STAT", "-v", "-J", "feed/eq")
        self.assertEqual(found.returncode, exit_status, found)
        details = json.loads(found.stdout.decode("ascii"))
        running.validator("details").validate(details)
        return details

    def test_keep_to_the_schema(self):
        pid = running.hold(self, "feed/eq", "view", "slots:r", "vandral.1:r")
        details = self.report()
        self.assertEqual([(one["pid"], one["role"]) for one in details["clients"]], [(pid, "shadow")])
        self.assertEqual(sum(one["buckets"] for one in details["walk"]["histogram"]), 40)
        self.assertEqual(sum(one["buckets"] * one["length"] for one in details["walk"]["histogram"]),
                         details["walk"]["elements"])

    def test_of_headers_of_zeros_and_ones_keep_to_the_schema(self):
        for byte in (b"\0", b"\xff"):
            with self.subTest(byte=byte):
                for file in ("vandral.1", "vandral.2"):
                    with open(os.path.join(running.root, "feed/eq", file), "wb") as table_file:
                        table_file.write(byte * 56)
                self.report()

    def test_of_what_cannot_be_read_keep_to_the_schema(self):
        os.remove(os.path.join(running.root, "feed/eq/slots"))
        self.assertIsNone(self.report(1)["walk"])

    def test_have_the_table_as_in_the_rows(self):
        rows = json.loads(running.run("QUASK_STAT", "-J").stdout)["tables"]
        details = self.report()
        for name, value in rows[0].items():
            self.assertEqual(details["table"][name], value, name)

    def test_are_described_in_the_manual_member_by_member(self):
        with open(os.environ["MANUAL"], encoding="utf-8") as file:
            described = set(re.findall(r"^\.It Cm (.*)", file.read(), re.MULTILINE))
        described = {name for names in described for name in names.split(" , ")}
        with open(os.path.join(os.environ["SCHEMAS"], "details.schema.json"), encoding="utf-8") as file:
            schema = json.load(file)

        def names(part):
            for name, member in part.get("properties", {}).items():
                yield name
                yield from names(member)
                yield from names(member.get("items", {}))
        members = set(names(schema))
        for definition in schema["definitions"].values():
            members.update(names(definition))
        columns = set(schema["properties"]["table"]["properties"])
        missing = {name for name in members if (name.upper() if name in columns else name) not in described}
        self.assertEqual(missing, set())


if __name__ == "__main__":
    unittest.main()
