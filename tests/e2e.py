"""The real program, started and ended, and used by a screen reader."""

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


class EndToEnd(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="prjdup é "))
        self.addCleanup(shutil.rmtree, self.root)
        # A real one would outlive a test that fails.
        self.root.joinpath("cmake-gui").symlink_to("/bin/true")
        os.environ["PATH"] = f"{self.root}:{os.environ['PATH']}"
        self.sdk = self.root / "camera sdk"
        (self.sdk / "samples").mkdir(parents=True)
        self.copied = self.root / "Documents" / "Ma côpy"

    def open(self, *options):
        window = Program(PROGRAM, *options, str(self.sdk / "samples"), "Ma côpy", home=self.root)
        self.addCleanup(window.process.kill)
        return window

    def test_quits_without_its_two_arguments(self):
        for count in (0, 1, 3):
            samples.run(PROGRAM, *["x"] * count)

    def test_fails_without_its_document(self):
        layouts = self.root / "QtQuick/Layouts"
        layouts.mkdir(parents=True)
        (layouts / "qmldir").write_text("module QtQuick.Layouts\nimport none")
        environment = os.environ | {"QML_IMPORT_PATH": str(self.root)}
        self.assertEqual(subprocess.call([PROGRAM, "x", "y"], env=environment), 255)

    def test_names_its_controls(self):
        for options, boxes in BOXES.items():
            window = self.open(*options)
            shown = [n for n in walk(window.application) if has(n, Atspi.StateType.SHOWING)]
            names = lambda role: {node.get_name() for node in shown if has_role(node, role)}
            self.assertEqual(names("check box"), set(boxes))
            self.assertEqual(names("push button"), {"Choose Destination Folder", "Close", "Copy"})
            self.assertEqual(names("text"), {"Destination Folder:"})
            self.assertEqual(Atspi.Text.get_text(window.find("text"), 0, -1), str(self.copied))

    def test_copies_by_action(self):
        for number in range(10_000):
            (self.sdk / "samples" / f"file {number}").touch()
        window = self.open()
        for action, is_checked in {"Toggle": False, "Press": True}.items():
            window.act("check box", CMAKE_BOX, action)
            state = Atspi.StateType.CHECKED
            self.assertEqual(has(window.find("check box", CMAKE_BOX), state), is_checked)
        window.act("push button", "Copy")
        dialog = window.wait("dialog", "Copy Progress")
        text = lambda: " ".join(node.get_name() for node in walk(dialog))
        wait(lambda: re.search(r"File: /.* Progress: \d\d %", text()), "progress")
        # The button is disabled now, so this asks nothing.
        window.act("push button", "Copy")
        self.assertFalse(window.find("dialog", "Warning"))
        window.act("push button", "Abort")
        self.assertIn("finish generating", window.message())
        self.assertLess(len(list(self.copied.glob("file *"))), 10_000)
        window.key("Escape")
        window.act("push button", "Copy")
        window.act("push button", "Yes")
        self.assertIn("finish generating", window.message())
        self.assertEqual(len(list(self.copied.glob("file *"))), 10_000)
        window.act("push button", "OK")
        self.assertEqual(window.status(), 0)


PROGRAM = sys.argv[1]
unittest.main(argv=sys.argv[:1], verbosity=2)
