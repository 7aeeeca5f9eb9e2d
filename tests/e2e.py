"""The real program on the example SDK: used as by eye and hand and as by a screen reader; its copies build and run."""

import difflib
import itertools
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
from desktop import Atspi, Program, build_cmake, build_dotnet, has, has_role, run, wait, walk

CMAKE_BOXES = ["Run CMake-GUI after copying to generate buildable projects."]
DOTNET_BOXES = ["Copy .NET wrapper so it can also be modified.", "Open the solution after copying."]
# What the built samples print.
OUTPUT = json.loads(pathlib.Path(__file__).with_name("data").joinpath("output.json").read_text())
PROJECT_RULES = r"OutputPath|BaseIntermediateOutputPath|<(Compile|None) Include=|<Link>|</(Compile|None)>|<Copy "


def fingerprint(folder):
    """Every path with its mode, time and content."""
    stats = {path: path.lstat() for path in folder.rglob("*")}
    return {
        path: (stat.st_mode, stat.st_mtime_ns, path.is_file() and path.read_bytes()) for path, stat in stats.items()
    }


def changed_lines(old, new):
    lines = [path.read_bytes().splitlines(keepends=True) for path in (old, new)]
    diff = difflib.diff_bytes(difflib.unified_diff, *lines, n=0)
    return [line.decode() for line in diff if not line.startswith((b"---", b"+++", b"@@"))]


class EndToEnd(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="prjdup é "))
        self.addCleanup(shutil.rmtree, self.root)
        self.sdk = self.root / "camera sdk"
        shutil.copytree(SDK, self.sdk, symlinks=True)
        # As an installer leaves it.
        run("chmod", "-R", "a-w", self.sdk)
        self.addCleanup(run, "chmod", "-R", "u+w", self.sdk)
        self.before = fingerprint(self.sdk)
        self.destination = self.root / "Documents" / "Ma côpy"
        self.done = f"Done copying files, you can now open the project in {self.destination}."

    def open(self, *options):
        window = Program(PROGRAM, *options, str(self.sdk / "samples"), "Ma côpy", home=self.root)
        self.addCleanup(window.process.kill)
        return window

    def copy(self, *options, boxes):
        window = self.open(*options)
        for box in boxes:
            window.click("check box", box)
        window.click("push button", "Copy")
        self.assertEqual(window.message(), self.done)
        window.key("Return")
        self.assertEqual(window.status(), 0)
        self.assertEqual(fingerprint(self.sdk), self.before)

    def changes(self):
        """The changed lines of each file that differs from its original."""
        changes = {}
        for new in self.destination.rglob("*"):
            old = self.sdk / "samples" / new.relative_to(self.destination)
            if old.is_file() and (lines := changed_lines(old, new)):
                changes[str(new.relative_to(self.destination))] = lines
        return changes

    def test_start(self):
        for count in (0, 1, 3):
            command = [PROGRAM, "--style", "none", *["x"] * count]
            result = subprocess.run(command, env=os.environ | {"QT_QUICK_CONTROLS_STYLE": "none"}, timeout=60)
            self.assertEqual(result.returncode, 0)

    def test_cmake(self):
        with self.assertRaisesRegex(RuntimeError, "Copy them with Copy Project"):
            run("cmake", "-S", self.sdk / "samples", "-B", self.root / "build")
        self.copy(boxes=CMAKE_BOXES)
        old, new = '#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")', f'set(ZUVYSDKDIR "{self.sdk}/")'
        self.assertEqual(self.changes(), {"CMakeLists.txt": [f"-{old}\n", f"+{new}\n"]})
        self.assertEqual(build_cmake(self.destination), OUTPUT["CMake"])

    def test_dotnet(self):
        for boxes in (DOTNET_BOXES[1:], DOTNET_BOXES):
            self.copy("--dotnet", boxes=boxes)
            changes = self.changes()
            self.assertEqual(set(changes), {f"{name}/{name}.csproj" for name in OUTPUT[".NET"]})
            for line in sum(changes.values(), []):
                self.assertRegex(line, PROJECT_RULES)
            if boxes == DOTNET_BOXES:
                run("chmod", "u+w", self.sdk, self.sdk / "dotnet")
                (self.sdk / "dotnet").rename(self.root / "away")
            for configuration in ("Debug", "Release"):
                self.assertEqual(build_dotnet(self.destination, configuration), OUTPUT[".NET"])
            shutil.rmtree(self.destination)

    def test_accessible_controls(self):
        buttons = ["Choose Destination Folder", "Close", "Copy"]
        for options, boxes in {(): CMAKE_BOXES, ("--dotnet",): DOTNET_BOXES}.items():
            window = self.open(*options)
            shown = [node for node in walk(window.application) if has(node, Atspi.StateType.SHOWING)]
            for role, names in {"push button": buttons, "check box": boxes, "text": ["Destination Folder:"]}.items():
                found = sorted(node.get_name() for node in shown if has_role(node, role))
                self.assertEqual(found, names)
            self.assertEqual(Atspi.Text.get_text(window.find("text"), 0, -1), str(self.destination))
            for box, action in itertools.product(boxes, ("Toggle", "Press")):
                before = has(window.find("check box", box), Atspi.StateType.CHECKED)
                window.act("check box", box, action)
                self.assertNotEqual(has(window.find("check box", box), Atspi.StateType.CHECKED), before)
            window.act("push button", "Close")
            self.assertEqual(window.status(), 0)

    def test_accessible_copy(self):
        count = 10_000
        run("chmod", "u+w", self.sdk / "samples")
        for number in range(count):
            (self.sdk / "samples" / f"file {number}").touch()
        window = self.open()
        # What the action does to the box must reach the copy: no cmake-gui is started.
        window.act("check box", *CMAKE_BOXES, "Toggle")
        window.act("push button", "Copy")
        dialog = window.wait("dialog", "Copy Progress")

        def reads_progress():
            texts = " ".join(node.get_name() for node in walk(dialog))
            return "File: /" in texts and "Progress: " in texts

        wait(reads_progress, "file name and percentage")
        # Disabled, so that this asks nothing.
        window.act("push button", "Copy")
        self.assertFalse(window.find("dialog", "Warning"))
        for button, complete in {"Abort": False, "Yes": True}.items():
            window.act("push button", button)
            self.assertEqual(window.message(), self.done)
            self.assertEqual(len(list(self.destination.glob("file *"))) == count, complete)
            if not complete:
                window.key("Escape")
                window.act("push button", "Copy")
                self.assertTrue(has(window.wait("push button", "No"), Atspi.StateType.FOCUSED))
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)


PROGRAM, SDK = sys.argv[1:3]
unittest.main(argv=sys.argv[:1], verbosity=2)
