"""Real faults and stops of the real program: it ends by itself, copies what it can and leaves the SDK alone."""

import os
import pathlib
import random
import shutil
import signal
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
from desktop import Program, wait
from samples import run

# File systems that end with the tests. Root could read and write everything, so privileges go.
SANDBOX = """
mount -t tmpfs tmpfs /mnt && mkdir /mnt/full /mnt/read-only && mount -t tmpfs tmpfs /usr/local/bin &&
mount -t tmpfs -o size=1m tmpfs /mnt/full && mount -t tmpfs -o ro tmpfs /mnt/read-only &&
exec setpriv --bounding-set=-all "$@"
"""
if "--sandboxed" not in sys.argv:
    user = [] if os.getuid() == 0 else ["--map-root-user"]
    shell = ["sh", "-c", SANDBOX, "sh", sys.executable, *sys.argv, "--sandboxed"]
    os.execvp("unshare", ["unshare", "--mount", *user, *shell])

LONG = ["n" * 255]
PLACEHOLDER = b'#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")'
SLN, NET = "dotnet.sln", "P/P.csproj"
SOLUTION = b'Project("{t}") = "P", "P\\P.csproj", "{1}"\r\n'
PROJECT = b"<P><PropertyGroup><OutputPath>bin</OutputPath></PropertyGroup>%b</P>"
REFUSED = PROJECT.replace(b"bin", b"as it was")
ENTITIES = (b"<!ENTITY e%d '%b'>" % (i, b"&e%d;" % (i - 1) * 10) for i in range(1, 10))
BOMB = b"<!DOCTYPE P [<!ENTITY e0 'x'>%b]>" % b"".join(ENTITIES)
NOTHING, PART, ALL = range(3)

# What is wrong, how it is made, and how much is copied of what can be read.
FAULTS = {
    "full file system": (lambda t: t.use_home("/mnt/full") or t.add_many(400), PART),
    "read-only file system": (lambda t: t.use_home("/mnt/read-only"), NOTHING),
    "destination not writable": (lambda t: t.home.chmod(0o500), NOTHING),
    "link that cannot be removed": (lambda t: t.leave(lambda path: path.symlink_to(t.samples / path.name)), PART),
    "pipe that cannot be removed": (lambda t: t.leave(os.mkfifo), NOTHING),
    "file in place of the destination": (lambda t: t.add(t.destination), NOTHING),
    "file above the destination": (lambda t: t.add(t.destination.parent), NOTHING),
    "samples folder missing": (lambda t: t.add(t.destination / "old") or shutil.rmtree(t.samples), NOTHING),
    "path beyond the limit": (lambda t: t.use_home(t.home.joinpath(*LONG * 3)) or t.add(t.samples.joinpath(*LONG * 14)), PART),
    "name of 255 bytes": (lambda t: t.add(t.samples / "a" / LONG[0]), ALL),
    "names that are not UTF-8": (lambda t: t.add(t.samples / os.fsdecode(b"a/\xff/\xff")), ALL),
    "unreadable file": (lambda t: (t.samples / "a/b").chmod(0), ALL),
    "unreadable folder": (lambda t: (t.samples / "a").chmod(0), ALL),
    "link to a pipe": (lambda t: os.mkfifo(t.root / "pipe") or (t.samples / "a/p").symlink_to(t.root / "pipe"), ALL),
    "read-only SDK copied twice": (lambda t: run("chmod", "-R", "a-w", t.samples) or t.run_copy(), ALL),
    "malformed project": (lambda t: t.add_net(NET, REFUSED[:-1]), ALL),
    "project of 20 MB": (lambda t: t.add_net(NET, PROJECT % ((b"<C>" + b"x" * 1000 + b"</C>") * 20_000)), ALL),
    "project 100,000 deep": (lambda t: t.add_net(NET, PROJECT % (b"<C>" * 100_000 + b"</C>" * 100_000)), ALL),
    "entity bomb": (lambda t: t.add_net(NET, BOMB + REFUSED % b"&e9;"), ALL),
    "solution without end of line": (lambda t: t.add_net(SLN, SOLUTION[:-2]), ALL),
    "solution with NUL bytes": (lambda t: t.add_net(SLN, b"\0" + SOLUTION), PART),
    "solution of 100 MB": (lambda t: t.add_net(SLN, SOLUTION + (b"x" * 98 + b"\r\n") * 1_000_000), ALL),
}


def files(folder):
    """Contents by path of what can be read and named."""
    paths = [path for path in folder.rglob("*") if path.is_file() and os.access(path, os.R_OK)]
    return {str(path.relative_to(folder)): path.read_bytes() for path in paths if str(path).isprintable()}


class Faults(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="camera ", dir="/mnt"))
        self.use_home(self.root / "home")
        self.samples = self.root / "sdk" / "samples"
        self.options, self.before, self.outcome = [], None, "but could not find cmake-gui"
        contents = {"CMakeLists.txt": PLACEHOLDER.ljust(4096), "a/b": b"x", SLN: SOLUTION, NET: PROJECT}
        for name, data in contents.items():
            self.add(self.samples / name, data=data)

    def use_home(self, home):
        self.home = pathlib.Path(home)
        self.home.mkdir(parents=True, exist_ok=True)
        self.destination = self.home / "Documents" / "Copy"

    def add(self, *paths, data=b"x"):
        for path in paths:
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(data)

    def leave(self, make):
        """Makes something at the destination that stays there."""
        self.destination.mkdir(parents=True)
        make(self.destination / "CMakeLists.txt")
        self.destination.chmod(0o500)

    def add_net(self, name, data):
        self.options, self.outcome = ["--dotnet"], "but failed to open the solution"
        self.add(self.samples / name, data=data)

    def add_many(self, count=10_000):
        self.add(*(self.samples / "many" / str(number) for number in range(count)), data=b"x" * 4000)

    def sdk(self):
        stats = {path: path.lstat() for path in self.samples.parent.rglob("*")}
        return files(self.samples), {path: (stat.st_mode, stat.st_mtime_ns) for path, stat in stats.items()}

    def adapted(self, name, data):
        if name == SLN:
            return data.replace(b"\0", b"").removesuffix(b"\r\n") + b"\r\n"
        sdk = b'set(ZUVYSDKDIR "%b/")' % os.fsencode(self.samples.parent)
        return data.replace(PLACEHOLDER, sdk).replace(b">bin<", b">..\\bin<")

    def start(self):
        """A window that copies, whose program has no search path, which could lead to a real cmake-gui."""
        self.before = self.before or self.sdk()
        arguments = ["PATH=", sys.argv[1], *self.options, str(self.samples), "Copy"]
        window = Program("/usr/bin/env", *arguments, home=self.home)
        self.addCleanup(window.process.kill)
        window.act("push button", "Copy")
        wait(lambda: window.find("push button", "Yes") or window.find("dialog"), "dialog")
        if window.find("push button", "Yes"):
            window.act("push button", "Yes")
        return window

    def start_many(self):
        """A window at a random moment of its copy."""
        if not self.before:
            self.add_many()
        shutil.rmtree(self.destination, ignore_errors=True)
        window = self.start()
        count = random.randrange(1, 2000)
        wait(lambda: len(files(self.destination)) > count, "copied files")
        return window

    def finish(self, window):
        self.assertIn(self.outcome, window.message())
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)
        self.assertTrue(self.sdk() == self.before)

    def run_copy(self):
        self.finish(self.start())

    def check(self, share):
        """That every file at the destination is whole, and that so much is there."""
        net = bool(self.options)
        samples = {name: data for name, data in files(self.samples).items() if (name in (SLN, NET)) == net}
        copied = files(self.destination)
        for name, data in copied.items():
            whole = [self.adapted(name, samples[name])] + [samples[name]] * (share != ALL)
            self.assertTrue(data in whole, name)
        self.assertIn(len(copied), [[0], range(1, len(samples)), [len(samples)]][share])

    def test_faults(self):
        for name, (make, share) in FAULTS.items():
            with self.subTest(name):
                self.setUp()
                make(self)
                self.run_copy()
                self.check(share)

    def test_program_search(self):
        program, arguments = pathlib.Path("/usr/local/bin/cmake-gui"), self.root / "arguments"
        self.add(program, data=f"#!/bin/sh\nprintf '%s\\n' \"$@\" > '{arguments}'\n".encode())
        self.addCleanup(program.unlink)
        program.chmod(0o500)
        self.outcome = "in cmake-gui"
        self.run_copy()
        expected = f"-S\n{self.destination}\n-B\n{self.destination}/build\n"
        wait(lambda: arguments.exists() and arguments.read_text() == expected, "start of cmake-gui")

    def test_changes_while_copying(self):
        window = self.start_many()
        window.process.send_signal(signal.SIGSTOP)
        left = [path for path in self.samples.glob("many/*") if not (self.destination / "many" / path.name).exists()]
        self.assertGreater(len(left), 100)
        for number, path in enumerate(left):
            # Grown, gone, a folder, or another file.
            if number % 4:
                path.unlink()
            if number % 4 == 2:
                path.mkdir()
            elif number % 4 != 1:
                path.write_bytes(b"x" * 5000)
        self.before = self.sdk()
        window.process.send_signal(signal.SIGCONT)
        self.finish(window)
        copied = files(self.destination / "many")
        self.assertLessEqual(set(copied.values()), {b"x" * 4000, b"x" * 5000})
        self.assertLessEqual(set(files(self.samples / "many")), set(copied))

    def test_stops(self):
        for stop in ("close", "abort", "kill") * 3:
            window = self.start_many()
            if stop == "kill":
                window.process.kill()
                window.process.wait()
            elif stop == "close":
                window.close()
                self.assertEqual(window.status(), 0)
            else:
                window.act("push button", "Abort")
                self.finish(window)
            self.check(ALL if stop == "close" else PART)
        self.run_copy()
        self.check(ALL)

    def test_two_at_once(self):
        first = self.start_many()
        first.process.send_signal(signal.SIGSTOP)
        second = self.start()
        first.process.send_signal(signal.SIGCONT)
        self.finish(first)
        self.finish(second)
        self.assertLessEqual(files(self.destination / "many").items(), files(self.samples / "many").items())


unittest.main(argv=sys.argv[:1], verbosity=2)
