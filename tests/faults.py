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
from samples import run

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
mkdir -p /mnt/full /mnt/tiny /mnt/Documents/Copy/mount
mount -t tmpfs -o size=2m tmpfs /mnt/full
mount -t tmpfs -o size=80k tmpfs /mnt/tiny
mount -t tmpfs tmpfs /mnt/Documents/Copy/mount
exec $drop "$@"' sh "$@"
"""
PROGRAM, TESTS, *inside = sys.argv[1:]
if not inside:
    os.execvp("sh", ["sh", "-c", SANDBOX, TESTS, sys.executable, *sys.argv, "inside"])
SEED = os.environ.get("SEED", str(time.time_ns()))
random.seed(SEED)
print(f"SEED={SEED}", flush=True)

LIMIT = 2**20
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
        self.samples, self.started = self.root / "sdk/samples", self.root / "started"
        self.add(AS_IT_WAS | {"a/b": b"", SLN: SOLUTION})
        self.use_home(self.root)
        program = pathlib.Path("/usr/local/bin" if TESTS == "Mounts" else self.root, "cmake-gui")
        program.write_text(f'#!/bin/sh\n: >"{self.started}"')
        program.chmod(0o755)

    def add(self, contents, *options):
        self.options = options
        for name, data in contents.items():
            (self.samples / name).parent.mkdir(parents=True, exist_ok=True)
            (self.samples / name).write_bytes(data)

    def use_home(self, home):
        self.home, self.destination = home, pathlib.Path(home, "Documents/Copy")
        self.destination.parent.mkdir(exist_ok=True)

    def sdk(self):
        stats = {path: path.lstat() for path in self.samples.parent.rglob("*")}
        return {path: (stat.st_mode, stat.st_mtime_ns) for path, stat in stats.items()}

    def whole(self, but):
        """What a copy holds: everything, `but` for some contents, where None is no file."""
        sdk = b'set(ZUVYSDKDIR "%b/")' % os.fsencode(self.samples.parent)
        all = {
            name: data.replace(PLACEHOLDER, sdk)
            for name, data in files(self.samples).items()
            if (name == SLN) == bool(self.options)
        }
        return {name: data for name, data in (all | but).items() if data is not None}

    def start(self, prepare=lambda process: None):
        """A window that copies."""
        self.before, self.old = self.sdk(), files(self.destination)
        self.started.unlink(missing_ok=True)
        arguments = [f"PATH={self.root}", PROGRAM, *self.options, str(self.samples), "Copy"]
        window = Program("/usr/bin/env", *arguments, home=self.home)
        self.addCleanup(window.process.kill)
        prepare(window.process)
        window.act("push button", "Copy")
        wait(lambda: window.find("push button", "Yes") or window.find("dialog"), "dialog")
        if window.find("push button", "Yes"):
            window.act("push button", "Yes")
        return window

    def finish(self, window):
        self.assertIn("failed to open" if self.options else "in cmake-gui", window.message())
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)
        self.assertEqual(self.sdk(), self.before)

    def copy(self, but=None, *prepare):
        """Copies everything `but` for some contents, or nothing."""
        self.finish(self.start(*prepare))
        copied = files(self.destination)
        self.assertTrue(copied == (self.old if but is None else self.whole(but)))


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
        limit = resource.RLIMIT_FSIZE, (LIMIT, LIMIT)
        self.copy(AS_IT_WAS | {"large": None}, lambda process: resource.prlimit(process.pid, *limit))

    def test_destination_not_writable(self):
        self.destination.parent.chmod(0o500)
        self.copy()

    def test_links_that_stay(self):
        self.destination.mkdir()
        (self.destination / "a").symlink_to(self.samples.parent)
        (self.destination / LISTS).hardlink_to(self.samples / LISTS)
        self.destination.chmod(0o500)
        self.copy()

    def start_many(self):
        """A window at a random moment of its copy."""
        self.add({f"many/{number}": b"x" * 4000 for number in range(5000)})
        shutil.rmtree(self.destination, ignore_errors=True)
        window, count = self.start(), random.randrange(500)
        wait(lambda: len(list(self.destination.glob("many/*"))) > count, "copied files")
        return window

    def test_abort(self):
        window = self.start_many()
        window.act("push button", "Abort")
        self.finish(window)
        self.assertTrue(files(self.destination).items() < self.whole({}).items())

    def test_close(self):
        window = self.start_many()
        window.close()
        self.assertEqual(window.status(), 0)
        self.assertTrue(files(self.destination) == self.whole({}))

    def test_signals(self):
        for number, but in {signal.SIGINT: {}, signal.SIGHUP: {}, signal.SIGTERM: {}, signal.SIGKILL: AS_IT_WAS}.items():
            window = self.start_many()
            window.process.send_signal(number)
            self.assertEqual(window.status(), -9 if but else 0)
            self.assertTrue(files(self.destination).items() < self.whole(but).items())
            self.assertFalse(self.started.exists())
        self.copy({})

    def pause(self, meanwhile):
        window = self.start_many()
        window.process.send_signal(signal.SIGSTOP)
        another = meanwhile()
        window.process.send_signal(signal.SIGCONT)
        self.finish(window)
        return another

    def test_two_programs(self):
        self.finish(self.pause(self.start))
        # Both rewrite CMakeLists.txt, perhaps at once.
        self.assertTrue(files(self.destination).items() >= self.whole({LISTS: None}).items())

    def test_changes_while_copying(self):
        def change():
            for number, name in enumerate(self.whole({}).keys() - files(self.destination).keys()):
                path = self.samples / name
                path.unlink()
                # Gone, a folder, or another file.
                if number % 3 == 1:
                    path.mkdir()
                elif number % 3 == 2:
                    path.write_bytes(b"x" * 5000)
            self.before = self.sdk()

        self.pause(change)
        # One file was under way.
        self.assertLessEqual(len(files(self.destination).items() ^ self.whole({}).items()), 2)


class Mounts(Case):
    def test_full_file_system(self):
        self.use_home("/mnt/full")

        def fill(_):
            # Leaves just the room for the copied files.
            room = shutil.disk_usage(self.home).free - LIMIT
            pathlib.Path("/mnt/full/filler").write_bytes(bytes(room))

        self.copy(AS_IT_WAS, fill)

    def test_file_system_of_80_kb(self):
        self.use_home("/mnt/tiny")
        self.add({SLN: SOLUTION * 3000}, "--dotnet")
        self.copy({SLN: None})

    def test_mount_in_the_destination(self):
        self.use_home("/mnt")
        (self.destination / "mount/file").touch()
        self.copy()


unittest.main(argv=[sys.argv[0], TESTS], verbosity=2)
