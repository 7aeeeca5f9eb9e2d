"""The real program on the example SDK, used by hand and by a screen reader."""

import os
import pathlib
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
import samples
from desktop import Atspi, Program, has, has_role, wait, walk
from samples import CMAKE_BOX, SOLUTION_BOX, WRAPPER_BOX

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

    def test_start(self):
        for count in (0, 1, 3):
            samples.run(PROGRAM, *["x"] * count)

    def test_cmake(self):
        with self.assertRaisesRegex(RuntimeError, "Copy them with Copy Project"):
            samples.run("cmake", "-S", self.sdk / "samples", "-B", self.root / "build")
        lines = {'#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")', f'set(ZUVYSDKDIR "{self.sdk}/")'}
        self.assertEqual(self.copy(boxes=[CMAKE_BOX]), {"CMakeLists.txt": lines})

    def test_dotnet(self):
        for boxes in ([SOLUTION_BOX], [WRAPPER_BOX, SOLUTION_BOX]):
            changes = self.copy("--dotnet", boxes=boxes)
            self.assertEqual(len(changes), 3)
            lines = set.union(*changes.values())
            for line in lines:
                self.assertRegex(line, RULES)
            self.assertEqual(str(self.sdk) in "".join(lines), WRAPPER_BOX not in boxes)
            shutil.rmtree(self.copied)

    def test_accessible_controls(self):
        for options, boxes in {(): [CMAKE_BOX], ("--dotnet",): [WRAPPER_BOX, SOLUTION_BOX]}.items():
            window = self.open(*options)
            shown = [n for n in walk(window.application) if has(n, Atspi.StateType.SHOWING)]
            names = lambda role: {node.get_name() for node in shown if has_role(node, role)}
            self.assertEqual(names("check box"), set(boxes))
            self.assertEqual(names("push button"), {"Choose Destination Folder", "Close", "Copy"})
            self.assertEqual(names("text"), {"Destination Folder:"})
            self.assertEqual(Atspi.Text.get_text(window.find("text"), 0, -1), str(self.copied))
            checked = lambda box: has(window.find("check box", box), Atspi.StateType.CHECKED)
            for box in boxes * 2:
                before = checked(box)
                window.act("check box", box, "Press" if before else "Toggle")
                self.assertNotEqual(checked(box), before)
            window.act("push button", "Close")
            self.assertEqual(window.status(), 0)

    def test_accessible_copy(self):
        for number in range(10_000):
            (self.sdk / "samples" / f"file {number}").touch()
        window = self.open()
        window.act("check box", CMAKE_BOX, "Toggle")
        window.act("push button", "Copy")
        dialog = window.wait("dialog", "Copy Progress")
        text = lambda: " ".join(node.get_name() for node in walk(dialog))
        wait(lambda: "File: /" in text() and "Progress: " in text(), "progress")
        # Disabled, so that this asks nothing.
        window.act("push button", "Copy")
        self.assertFalse(window.find("dialog", "Warning"))
        for button, complete in {"Abort": False, "Yes": True}.items():
            window.act("push button", button)
            self.assertEqual(window.message(), self.done)
            count = len(list(self.copied.glob("file *")))
            self.assertEqual(count == 10_000, complete)
            if not complete:
                window.key("Escape")
                window.act("push button", "Copy")
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)


PROGRAM, SDK = sys.argv[1:3]
unittest.main(argv=sys.argv[:1], verbosity=2)
