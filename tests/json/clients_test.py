"""quask-json -w and -a name the clients that quask names, whatever they and their tables are called."""

import json
import os
import shutil
import unittest

import running

STRANGE = "a\"b\\c\n\t\x1b[31m \u00e4 " + "\udcff\udc80"  # with two bytes that are not UTF-8
READ_AS = "a\"b\\c\n\t\x1b[31m \u00e4 \ufffd\ufffd"


class Clients(unittest.TestCase):
    def test_have_their_roles(self):
        running.make_table("feed/eq", 8, 4, 3, 2)
        expected = {
            "writers": [("writer", running.hold(self, "feed/eq", "writer", "vandral.1:rw"))],
            "shadows": [("shadow", running.hold(self, "feed/eq", "shadow", "vandral.1:r", "slots:r"))],
            "keyshadows": [("keyshadow", running.hold(self, "feed/eq", "keyshadow", "vandral.1:r", "slots:r", "orvik:r"))],
            "readers": [("reader", running.hold(self, "feed/eq", "reader", "slots:r"))]}
        (table,) = running.json_report("clients", "-w", "feed/eq")
        found = {role: [(one["command"], one["pid"]) for one in table[role]] for role in expected}
        self.assertEqual(found, expected)
        text = running.run("QUASK", "-w", "feed/eq").stdout.decode("ascii")
        for role, title in zip(expected, ("Writer", "Shadow", "Keyshadow", "Reader")):
            (one,) = table[role]
            self.assertIn("{}: {command}-{pid}({program}) \n".format(title, **one).rstrip(), text)
        self.assertIn("Capacity: slots:{slots} buckets:{buckets} primary_notifications:{primaryNotifications} "
                      "secondary_notifications:{secondaryNotifications}\n".format(**table["capacity"]), text)
        self.assertIn(f"Occupied slots: {table['occupiedSlots']}\n", text)

    def test_of_all_tables_are_one_line_each(self):
        running.make_table("all/one", 8, 4, 3, 2)
        running.make_table("all/two", 8, 4, 3, 2)
        pid = running.hold(self, "all/two", "reader", "slots:r")
        tables = {table["table"]: table for table in running.json_report("clients", "-a")}
        self.assertEqual(tables["all/one"]["readers"], [])
        self.assertEqual([client["pid"] for client in tables["all/two"]["readers"]], [pid])
        report = os.path.join(running.root, "report")
        self.assertEqual(running.run("QUASK_JSON", "-f", report).stdout, b"")
        with open(report, "rb") as file:
            self.assertEqual(len(running.lines(file.read())), len(tables))

    def test_figures_that_are_not_available_are_null(self):
        running.make_table("part", 8, 4, 3, 2)
        os.remove(os.path.join(running.root, "part/slots"))
        (table,) = running.json_report("clients", "-w", "part")
        self.assertEqual(table["capacity"], {"slots": None, "buckets": None, "primaryNotifications": 0,
                                             "secondaryNotifications": 0})
        self.assertIsNone(table["occupiedSlots"])

    def test_are_there_for_an_ordinary_user_with_a_warning(self):
        running.make_table("mine", 8, 4, 3, 2)
        for arguments in (["-w", "mine"], ["-a"]):
            found = running.run_as_user("QUASK_JSON", *arguments)
            self.assertEqual(found.stderr, b"You should run this command as root.\n")
            self.assertIn("mine", [json.loads(line)["table"] for line in running.lines(found.stdout)])
            self.assertEqual(found.returncode, 0)

    def test_of_directories_elsewhere_have_no_table(self):
        beside = os.path.join(running.root + "-beside", "feed")
        self.addCleanup(shutil.rmtree, os.path.dirname(beside))
        os.makedirs(beside)
        running.make_table("feed", 8, 4, 3, 2)
        shutil.copy(os.path.join(running.root, "feed/slots"), beside)
        pid = running.hold(self, beside, "reader", "slots:r")
        tables = {table["directory"]: table for table in running.json_report("clients", "-a")}
        self.assertIsNone(tables[beside]["table"])
        self.assertEqual([client["pid"] for client in tables[beside]["readers"]], [pid])

    def test_with_strange_names_break_no_line(self):
        running.make_table(STRANGE, 8, 4, 3, 2)
        (table,) = running.json_report("clients", "-w", "/a\"b")
        self.assertEqual(table["table"], READ_AS)
        (headers,) = running.json_report("headers", "-x", "/a\"b")
        self.assertEqual(headers["table"], READ_AS)
        # The kernel's list of mappings is ambiguous where a name has spaces or newlines.
        name = "".join(STRANGE.split())
        running.make_table(name, 8, 4, 3, 2)
        pid = running.hold(self, name, name, "slots:r")
        tables = {table["table"]: table for table in running.json_report("clients", "-a")}
        read_as = "".join(READ_AS.split())
        self.assertEqual(tables[read_as]["readers"], [{"command": read_as, "pid": pid, "program": read_as}])


if __name__ == "__main__":
    unittest.main()
