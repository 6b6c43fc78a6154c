"""What the tests of quask-json share: a root directory of their own, both programs, the schemas."""

import atexit
import json
import os
import shutil
import struct
import subprocess
import sys
import tempfile

try:
    import jsonschema
except ImportError:
    print("skipped: python3-jsonschema is not installed")
    sys.exit(77)


def enter_own_namespace():
    """The reports on all tables are to meet no processes but the test's own: runs the test again in
    a namespace. Where the system allows none, it is skipped."""
    if "OWN_PROCESSES" in os.environ:
        return
    os.environ["OWN_PROCESSES"] = "yes"
    for rights in ([], ["--map-root-user"]):
        command = ["unshare", *rights, "--pid", "--fork", "--kill-child", "--mount-proc"]
        if subprocess.run([*command, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
            os.execvp("unshare", [*command, sys.executable, "-B", *sys.argv])
    print("skipped: no namespaces")
    sys.exit(77)


enter_own_namespace()
root = tempfile.mkdtemp(prefix="quask-test.", dir="/dev/shm")
atexit.register(shutil.rmtree, root, ignore_errors=True)

environment = dict(os.environ, QUASK_TEST_ROOT=root)
for name in ("DOVAN_DEBUG", "POSIXLY_CORRECT"):
    environment.pop(name, None)


def program(name):
    """The path of QUASK, QUASK_JSON, WRITE_TABLES, LIVE_WRITER or MAPPING_CLIENT."""
    return os.environ[name]


def run(name, *arguments, **options):
    """What the program printed, as bytes, and how it ended; negative for a signal."""
    options.setdefault("stdout", subprocess.PIPE)
    return subprocess.run([program(name), *arguments], env=environment, stderr=subprocess.PIPE,
                          stdin=subprocess.DEVNULL, timeout=120, check=False, **options)


def run_as_user(name, *arguments):
    """The same by a user who is not root, whose real identity is another."""
    for other in (["setpriv", "--ruid", "65534"], ["unshare", "--user"]):
        if subprocess.run([*other, "true"], stderr=subprocess.DEVNULL, check=False).returncode == 0:
            own = {variable: text for variable, text in environment.items() if variable != "J5_CHROOT"}
            return subprocess.run([*other, program(name), *arguments], env=own, stdin=subprocess.DEVNULL,
                                  capture_output=True, timeout=120, check=False)
    raise RuntimeError("nobody may become another user")


def validator(report):
    """Checks a parsed line against the schema of the report: scan, headers or clients."""
    with open(os.path.join(os.environ["SCHEMAS"], report + ".schema.json"), encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft7Validator.check_schema(schema)
    return jsonschema.Draft7Validator(schema)


def lines(output):
    """The JSON texts of an output, which is whole lines of ASCII."""
    text = output.decode("ascii")
    assert text == "" or text.endswith("\n"), text[-100:]
    return text.splitlines()


def json_report(report, *arguments):
    """The parsed lines of a report that succeeds in silence; each keeps to its schema."""
    finished = run("QUASK_JSON", *arguments)
    assert finished.returncode == 0, finished
    assert finished.stderr == b"", finished.stderr
    parsed = [json.loads(line) for line in lines(finished.stdout)]
    check = validator(report)
    for one in parsed:
        check.validate(one)
    return parsed


NO_SLOT = 0xffffffff


def write_table(name, value_type, value_size, chains):
    """A table that stands still, with a bucket for each chain: a list of values, the head first. The
    slots of the first chain come first."""
    def checksum(*fields):
        total = 0
        for field in fields:
            one = 2166136261
            for byte in field:
                one = (one ^ byte) * 16777619 & 0xffffffff
            total += one
        return total & 0xffffffff

    def link(slot):
        return struct.pack("<II", 0, slot)

    slot_size = (16 + value_size + 7) // 8 * 8
    heads, slots, count = [], [], 0
    for chain in chains:
        heads.append(link(count if chain else NO_SLOT))
        for i, value in enumerate(chain):
            count += 1
            following = link(count if i + 1 < len(chain) else NO_SLOT)
            slots.append((following + struct.pack("<II", NO_SLOT, 0) + value).ljust(slot_size, b"\0"))
    sizes = [struct.pack("<I", size) for size in (value_size, slot_size, count)]
    types = [value_type.ljust(64, b"\0"), b"Quask::Table".ljust(64, b"\0")]
    header = (b"QUASKSLT" + struct.pack("<II", 4, 1) + b"".join(types) + b"".join(sizes) +
              struct.pack("<IIIII", checksum(*types, *sizes), count, NO_SLOT, 0, count))
    lookaside = (link(NO_SLOT) + struct.pack("<II", NO_SLOT, 0)).ljust(slot_size, b"\0")
    directory = os.path.join(root, name)
    os.makedirs(directory, exist_ok=True)
    contents = {"buckets": b"QUASKBKT" + struct.pack("<IIII", 1, 1, len(chains), 1) + b"".join(heads),
                "slots": header + lookaside + b"".join(slots),
                "vandral.1": struct.pack("<8sI", b"QUASKVDL", 1).ljust(56, b"\0"),
                "vandral.2": struct.pack("<8sI", b"QUASKVDL", 1).ljust(56, b"\0"),
                "orvik": bytes(8)}
    for file, data in contents.items():
        with open(os.path.join(directory, file), "wb") as table_file:
            table_file.write(data)


def hold(case, table, name, *files):
    """The ID of a process that runs a program of this name and has these files of the table mapped,
    each with its mode, until the test case ends."""
    path = os.path.join(root, "programs", name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    shutil.copy(program("MAPPING_CLIENT"), path)
    client = subprocess.Popen([path, *(os.path.join(root, table, file) for file in files)],
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    case.addCleanup(client.communicate)
    case.assertEqual(client.stdout.readline(), b"ready\n")
    return client.pid


def make_table(name, *arguments):
    """A hot table that nobody changes any more; see live_writer."""
    subprocess.run([program("LIVE_WRITER"), os.path.join(root, name), *map(str, arguments)],
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, check=True)
