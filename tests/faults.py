"""Real faults and stops: the program ends by itself, copies what it can, leaves the SDK alone."""

import os
import pathlib
import random
import resource
import shutil
import signal
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
from desktop import Program, wait
from samples import fingerprint, run

# Root could read and write everything. The file systems end with the tests.
SANDBOX = """
[ $(id -u) = 0 ] && export drop="setpriv --bounding-set=-all"
[ $0 = Mounts ] || exec $drop "$@"
[ "$drop" ] || { user=--map-root-user; export drop="unshare --user --map-user=$(id -u)"; }
why=$(unshare --mount $user mount -t tmpfs tmpfs /mnt 2>&1) ||
    { echo "Skipped: $0, as nothing can be mounted ($why)"; exit 77; }
exec unshare --mount $user sh -ec '
mount -t tmpfs tmpfs /usr/local/bin
mount -t tmpfs tmpfs /mnt
mkdir -p /mnt/full /mnt/tiny "/mnt/a \\b/Copy/mount"
mount -t tmpfs -o size=9m tmpfs /mnt/full
mount -t tmpfs -o size=80k tmpfs /mnt/tiny
mount -t tmpfs tmpfs "/mnt/a \\b/Copy/mount"
exec $drop "$@"' sh "$@"
"""
PROGRAM, TESTS, *inside = sys.argv[1:]
if not inside:
    os.execvp("sh", ["sh", "-c", SANDBOX, TESTS, sys.executable, *sys.argv, "inside"])
SEED = os.environ.get("SEED", str(time.time_ns()))
random.seed(SEED)
print(f"SEED={SEED}", flush=True)

# Qt needs more than half of it to start.
LIMIT = 2**23
SLN, LISTS = "dotnet.sln", "CMakeLists.txt"
SOLUTION = b'Project("{t}") = "P", "P\\P.csproj", "{1}"\r\n'
PLACEHOLDER = b'#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")'
AS_IT_WAS = {LISTS: PLACEHOLDER.ljust(LIMIT)}


def files(folder):
    """Contents by path of what can be read."""
    paths = [path for path in folder.rglob("*") if path.is_file() and os.access(path, os.R_OK)]
    return {str(path.relative_to(folder)): path.read_bytes() for path in paths}


class Case(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="a camera's development kit "))
        self.addCleanup(run, "rm", "-rf", self.root)
        self.addCleanup(run, "chmod", "-R", "u+rwX", self.root)
        self.sdk, self.samples = self.root / "sdk", self.root / "sdk/samples"
        self.destination, self.started = self.root / "Documents/Copy", self.root / "started"
        self.destination.parent.mkdir()
        self.add(AS_IT_WAS | {"a/b": b"", SLN: SOLUTION})
        program = pathlib.Path("/usr/local/bin" if TESTS == "Mounts" else self.root, "cmake-gui")
        program.write_text(f'#!/bin/sh\n: >"{self.started}"')
        program.chmod(0o755)

    def add(self, contents, *options):
        self.options = options
        for name, data in contents.items():
            (self.samples / name).parent.mkdir(parents=True, exist_ok=True)
            (self.samples / name).write_bytes(data)

    def copied(self):
        return files(self.destination).items()

    def whole(self, but={}):
        """A complete copy, `but` for some contents, where None is no file."""
        sdk = b'set(ZUVYSDKDIR "%b/")' % os.fsencode(self.sdk)
        adapted = {
            name: data.replace(PLACEHOLDER, sdk)
            for name, data in files(self.samples).items()
            if (name == SLN) == bool(self.options)
        }
        return {name: data for name, data in (adapted | but).items() if data is not None}.items()

    def start(self):
        """A window that copies."""
        self.before, exists = fingerprint(self.sdk), self.destination.exists()
        arguments = [f"PATH={self.root}", PROGRAM, *self.options, str(self.samples), "Copy"]
        window = Program("/usr/bin/env", *arguments, home=self.root)
        self.addCleanup(window.process.kill)
        window.act("push button", "Copy")
        if exists:
            window.act("push button", "Yes")
        return window

    def finish(self, window):
        self.assertIn("failed to open" if self.options else "in cmake-gui", window.message())
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)
        self.assertEqual(fingerprint(self.sdk), self.before)

    def copy(self, but={}):
        """Copies everything `but` for some contents, or with None nothing."""
        before = self.copied()
        self.finish(self.start())
        self.assertTrue(self.copied() == (before if but is None else self.whole(but)))


class Faults(Case):
    def test_odd_samples(self):
        # In a folder of its own: Qt 6.8 ends the list of a folder with such a name.
        odd = os.fsdecode(b"odd/\xff/\xff")
        self.add({name: b"x" for name in ("n" * 255, odd, "file", "folder/file")})
        os.mkfifo(self.root / "pipe")
        (self.samples / "pipe").symlink_to(self.root / "pipe")
        (self.samples / "file").chmod(0)
        (self.samples / "folder").chmod(0)
        self.copy({odd: None})

    def test_limit_on_file_sizes(self):
        self.add({"large": bytes(LIMIT + 1)})
        resource.setrlimit(resource.RLIMIT_FSIZE, (LIMIT, -1))
        self.addCleanup(resource.setrlimit, resource.RLIMIT_FSIZE, (-1, -1))
        self.copy(AS_IT_WAS | {"large": None})

    def test_links_that_stay(self):
        self.destination.mkdir()
        (self.destination / "a").symlink_to(self.sdk)
        (self.destination / LISTS).hardlink_to(self.samples / LISTS)
        self.destination.chmod(0o500)
        self.copy(None)

    def start_many(self):
        """A window at a random moment of its copy."""
        self.add({f"many/{number}": b"x" * 4000 for number in range(5000)})
        shutil.rmtree(self.destination, ignore_errors=True)
        window, count = self.start(), random.randrange(500)
        wait(lambda: len(list(self.destination.glob("many/*"))) > count, "copied files")
        return window

    def test_stops(self):
        window = self.start_many()
        window.close()
        self.assertEqual(window.status(), 0)
        self.assertTrue(self.copied() == self.whole())
        for number in (signal.SIGINT, signal.SIGHUP, signal.SIGTERM, signal.SIGKILL):
            window, but = self.start_many(), AS_IT_WAS if number == signal.SIGKILL else {}
            window.process.send_signal(number)
            self.assertEqual(window.status(), -number if but else 0)
            self.assertTrue(self.copied() < self.whole(but))
        self.assertFalse(self.started.exists())
        self.copy()
        window = self.start_many()
        window.act("push button", "Abort")
        self.finish(window)
        self.assertTrue(self.copied() < self.whole())

    def test_two_programs(self):
        window = self.start_many()
        window.process.send_signal(signal.SIGSTOP)
        another = self.start()
        window.process.send_signal(signal.SIGCONT)
        self.finish(window)
        self.finish(another)
        # Both rewrite CMakeLists.txt, perhaps at once.
        self.assertTrue(self.copied() >= self.whole({LISTS: None}))

    def test_changes_while_copying(self):
        window = self.start_many()
        window.process.send_signal(signal.SIGSTOP)
        for path in sorted(self.samples / name for name, _ in self.whole() - self.copied()):
            path.unlink()
            # To an empty file, a folder or nothing.
            random.choice((path.touch, path.mkdir, str))()
        self.before = fingerprint(self.sdk)
        window.process.send_signal(signal.SIGCONT)
        self.finish(window)
        # One file was under way.
        self.assertLessEqual(len(self.copied() ^ self.whole()), 2)


class Mounts(Case):
    def use(self, folder):
        self.destination.parent.rmdir()
        self.destination.parent.symlink_to(folder)

    def test_full_file_system(self):
        self.use("/mnt/full")
        # Leaves just the room for the copied files.
        filler = bytes(shutil.disk_usage("/mnt/full").free - LIMIT)
        pathlib.Path("/mnt/full/filler").write_bytes(filler)
        self.copy(AS_IT_WAS)

    def test_file_system_of_80_kb(self):
        self.use("/mnt/tiny")
        self.add({SLN: SOLUTION * 3000}, "--dotnet")
        self.copy({SLN: None})

    def test_mount_in_the_destination(self):
        self.use("/mnt/a \\b")
        (self.destination / "mount/file").touch()
        self.copy(None)


unittest.main(argv=[sys.argv[0], TESTS], verbosity=2)
