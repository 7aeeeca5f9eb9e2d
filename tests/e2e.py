"""The real program on the example SDK, used by hand and by a screen reader."""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
import samples
from desktop import Atspi, Program, has, has_role, wait, walk
from samples import CMAKE_BOX, SOLUTION_BOX, WRAPPER_BOX

BOXES = {(): [CMAKE_BOX], ("--dotnet",): [WRAPPER_BOX, SOLUTION_BOX]}
# The lines of a project that may change.
RULES = r"\s*</?(Compile|None|Link|OutputPath|BaseIntermediateOutputPath|Copy)\b"


class EndToEnd(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="prjdup é "))
        self.addCleanup(shutil.rmtree, self.root)
        # A real one would outlive a test that fails.
        self.root.joinpath("cmake-gui").symlink_to("/bin/true")
        os.environ["PATH"] = f"{self.root}:{os.environ['PATH']}"
        self.sdk = self.root / "camera sdk"
        shutil.copytree(SDK, self.sdk)
        self.copied = self.root / "Documents" / "Ma côpy"
        self.done = f"Done copying files, you can now open the project in {self.copied}."

    def open(self, *options):
        window = Program(PROGRAM, *options, str(self.sdk / "samples"), "Ma côpy", home=self.root)
        self.addCleanup(window.process.kill)
        return window

    def copy(self, *options, boxes):
        """Returns the changed lines of the copied files."""
        self.assertEqual(samples.copy(self.open(*options), boxes), self.done)
        lines = lambda path: set(path.read_text().splitlines())
        changes = {}
        for new in self.copied.rglob("*.*"):
            name = str(new.relative_to(self.copied))
            if (old := self.sdk / "samples" / name).exists():
                changes[name] = lines(old) ^ lines(new)
        return {name: lines for name, lines in changes.items() if lines}

    def test_quits_without_its_two_arguments(self):
        for count in (0, 1, 3):
            samples.run(PROGRAM, *["x"] * count)

    def test_fails_without_its_document(self):
        layouts = self.root / "QtQuick/Layouts"
        layouts.mkdir(parents=True)
        (layouts / "qmldir").write_text("module QtQuick.Layouts\nimport none")
        environment = os.environ | {"QML_IMPORT_PATH": str(self.root)}
        self.assertEqual(subprocess.call([PROGRAM, "x", "y"], env=environment), 255)

    def test_points_cmake_samples_at_the_sdk(self):
        lines = {'#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")', f'set(ZUVYSDKDIR "{self.sdk}/")'}
        self.assertEqual(self.copy(boxes=[CMAKE_BOX]), {"CMakeLists.txt": lines})

    def test_changes_dotnet_projects_by_the_rules(self):
        for boxes in ([SOLUTION_BOX], [WRAPPER_BOX, SOLUTION_BOX]):
            changes = self.copy("--dotnet", boxes=boxes)
            self.assertEqual(len(changes), 3)
            lines = set.union(*changes.values())
            for line in lines:
                self.assertRegex(line, RULES)
            self.assertEqual(str(self.sdk) in "".join(lines), WRAPPER_BOX not in boxes)
            shutil.rmtree(self.copied)

    def test_names_its_controls(self):
        for options, boxes in BOXES.items():
            window = self.open(*options)
            shown = [n for n in walk(window.application) if has(n, Atspi.StateType.SHOWING)]
            names = lambda role: {node.get_name() for node in shown if has_role(node, role)}
            self.assertEqual(names("check box"), set(boxes))
            self.assertEqual(names("push button"), {"Choose Destination Folder", "Close", "Copy"})
            self.assertEqual(names("text"), {"Destination Folder:"})
            self.assertEqual(Atspi.Text.get_text(window.find("text"), 0, -1), str(self.copied))

    def test_toggles_boxes_by_action(self):
        for options, boxes in BOXES.items():
            window = self.open(*options)
            checked = lambda box: has(window.find("check box", box), Atspi.StateType.CHECKED)
            for box in boxes * 2:
                before = checked(box)
                window.act("check box", box, "Press" if before else "Toggle")
                self.assertNotEqual(checked(box), before)

    def test_copies_by_action(self):
        for number in range(10_000):
            (self.sdk / "samples" / f"file {number}").touch()
        window = self.open()
        window.act("check box", CMAKE_BOX, "Toggle")
        window.act("push button", "Copy")
        dialog = window.wait("dialog", "Copy Progress")
        text = lambda: " ".join(node.get_name() for node in walk(dialog))
        wait(lambda: re.search(r"File: /.* Progress: \d\d %", text()), "progress")
        # Disabled, so that this asks nothing.
        window.act("push button", "Copy")
        self.assertFalse(window.find("dialog", "Warning"))
        window.act("push button", "Abort")
        self.assertEqual(window.message(), self.done)
        self.assertLess(len(list(self.copied.glob("file *"))), 10_000)
        window.key("Escape")
        window.act("push button", "Copy")
        window.act("push button", "Yes")
        self.assertEqual(window.message(), self.done)
        self.assertEqual(len(list(self.copied.glob("file *"))), 10_000)
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)


PROGRAM, SDK = sys.argv[1:3]
unittest.main(argv=sys.argv[:1], verbosity=2)
