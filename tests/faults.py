"""Real faults and stops: the program ends by itself, copies what it can, leaves the SDK alone."""

import os
import pathlib
import resource
import shutil
import signal
import sys
import tempfile
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
mkdir -p /mnt/full "/mnt/a \\b/Copy/mount"
mount -t tmpfs -o size=1m tmpfs /mnt/full
mount -t tmpfs tmpfs "/mnt/a \\b/Copy/mount"
exec $drop "$@"' sh "$@"
"""
PROGRAM, TESTS, *inside = sys.argv[1:]
if not inside:
    os.execvp("sh", ["sh", "-c", SANDBOX, TESTS, sys.executable, *sys.argv, "inside"])

# The least room that a file takes.
PAGE = os.sysconf("SC_PAGE_SIZE")
PLACEHOLDER = b'#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")'
AS_IT_WAS = {"CMakeLists.txt": PLACEHOLDER.ljust(PAGE)}


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
        self.add(AS_IT_WAS | {"a/b": b""})
        program = pathlib.Path("/usr/local/bin" if TESTS == "Mounts" else self.root, "cmake-gui")
        program.write_text(f'#!/bin/sh\n: >"{self.started}"')
        program.chmod(0o755)

    def add(self, contents):
        for name, data in contents.items():
            (self.samples / name).parent.mkdir(parents=True, exist_ok=True)
            (self.samples / name).write_bytes(data)

    def copied(self):
        return files(self.destination).items()

    def whole(self, but={}):
        """A complete copy, except for the contents in `but`, where None stands for no file."""
        sdk = b'set(ZUVYSDKDIR "%b/")' % os.fsencode(self.sdk)
        source = files(self.samples)
        adapted = {name: data.replace(PLACEHOLDER, sdk) for name, data in source.items()}
        return {name: data for name, data in (adapted | but).items() if data is not None}.items()

    def start(self):
        """A window that copies."""
        self.before, exists = fingerprint(self.sdk), self.destination.exists()
        arguments = [f"PATH={self.root}", PROGRAM, str(self.samples), "Copy"]
        window = Program("/usr/bin/env", *arguments, home=self.root)
        self.addCleanup(window.process.kill)
        window.act("push button", "Copy")
        if exists:
            window.act("push button", "Yes")
        return window

    def copy(self, but={}):
        """Copies, and expects a whole copy as above or, if `but` is None, no change."""
        before = self.copied()
        window = self.start()
        self.assertIn("in cmake-gui", window.message())
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)
        self.assertEqual(fingerprint(self.sdk), self.before)
        self.assertTrue(self.copied() == (before if but is None else self.whole(but)))


class Faults(Case):
    def test_copies_what_it_can(self):
        # In a folder of its own, as Qt 6.8 ends a folder's list at such a name.
        odd = os.fsdecode(b"odd/\xff/\xff")
        self.add({name: b"x" for name in ("n" * 255, odd, "file", "folder/file")})
        os.mkfifo(self.root / "pipe")
        (self.samples / "pipe").symlink_to(self.root / "pipe")
        (self.samples / "file").chmod(0)
        (self.samples / "folder").chmod(0)
        self.copy({odd: None})

    def test_leaves_out_what_exceeds_a_limit(self):
        # Qt needs more than half of it to start.
        limit = 2**23
        self.add({"large": bytes(limit + 1)})
        resource.setrlimit(resource.RLIMIT_FSIZE, (limit, -1))
        self.addCleanup(resource.setrlimit, resource.RLIMIT_FSIZE, (-1, -1))
        self.copy({"large": None})

    def start_many(self):
        """A window in the middle of a copy."""
        self.add({f"many/{number}": b"x" * 4000 for number in range(5000)})
        shutil.rmtree(self.destination, ignore_errors=True)
        window = self.start()
        wait(lambda: any(self.destination.glob("many/*")), "copied files")
        return window

    def test_completes_the_copy_when_closed(self):
        window = self.start_many()
        window.close()
        self.assertEqual(window.status(), 0)
        self.assertTrue(self.copied() == self.whole())

    def test_ends_and_starts_nothing_on_signals(self):
        for number in (signal.SIGINT, signal.SIGHUP, signal.SIGTERM):
            window = self.start_many()
            window.process.send_signal(number)
            self.assertEqual(window.status(), 0)
            self.assertTrue(self.copied() < self.whole())
        self.assertFalse(self.started.exists())

    def test_completes_the_copy_of_a_killed_program(self):
        window = self.start_many()
        window.process.kill()
        window.status()
        self.assertTrue(self.copied() < self.whole(AS_IT_WAS))
        self.copy()


class Mounts(Case):
    def use(self, folder):
        self.destination.parent.rmdir()
        self.destination.parent.symlink_to(folder)

    def test_keeps_cmakelists_when_the_disk_is_full(self):
        self.use("/mnt/full")
        # Leaves just enough room for the copied file.
        filler = bytes(shutil.disk_usage("/mnt/full").free - PAGE)
        pathlib.Path("/mnt/full/filler").write_bytes(filler)
        self.copy(AS_IT_WAS)

    def test_leaves_alone_what_holds_a_mount(self):
        self.use("/mnt/a \\b")
        (self.destination / "mount/file").touch()
        self.copy(None)


unittest.main(argv=[sys.argv[0], TESTS], verbosity=2)
