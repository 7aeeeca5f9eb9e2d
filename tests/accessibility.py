"""Uses the real program as a screen reader does: reads it and acts on it over AT-SPI only."""

import itertools
import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
from desktop import Atspi, Program, has, wait, walk

FILES = 10000
BOXES = {
    (): ["Run CMake-GUI after copying to generate buildable projects."],
    ("--dotnet",): ["Copy .NET wrapper so it can also be modified.", "Open the solution after copying."],
}


class Accessibility(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.samples = self.root / "sdk" / "samples"
        self.samples.mkdir(parents=True)
        for number in range(FILES):
            (self.samples / f"file {number}").touch()

    def start(self, *options):
        self.window = Program(PROGRAM, *options, str(self.samples), "Copy", home=self.root)
        self.addCleanup(self.window.process.kill)

    def act(self, role, name, action="Press"):
        node = self.window.wait(role, name)
        names = [Atspi.Action.get_action_name(node, i) for i in range(node.get_n_actions())]
        self.assertTrue(node.do_action(names.index(action)))

    def test_controls(self):
        buttons = ["Choose Destination Folder", "Close", "Copy"]
        for options, boxes in BOXES.items():
            self.start(*options)
            shown = [node for node in walk(self.window.application) if has(node, Atspi.StateType.SHOWING)]
            controls = sorted((node.get_role_name(), node.get_name()) for node in shown)
            for role, names in {"push button": buttons, "check box": boxes, "text": ["Destination Folder:"]}.items():
                self.assertEqual([name for found, name in controls if found == role], names)
            field = self.window.find("text")
            self.assertEqual(Atspi.Text.get_text(field, 0, -1), f"{self.root}/Documents/Copy")
            for box, action in itertools.product(boxes, ("Toggle", "Press")):
                before = has(self.window.find("check box", box), Atspi.StateType.CHECKED)
                self.act("check box", box, action)
                self.assertNotEqual(has(self.window.find("check box", box), Atspi.StateType.CHECKED), before)
            self.act("push button", "Close")
            self.assertEqual(self.window.status(), 0)

    def test_copy(self):
        self.start()
        # What the action does to the box must reach the copy: no cmake-gui is started.
        self.act("check box", *BOXES[()], "Toggle")
        self.act("push button", "Copy")
        dialog = self.window.wait("dialog", "Copy Progress")

        def reads_progress():
            texts = " ".join(node.get_name() for node in walk(dialog))
            return "File: /file " in texts and "Progress: " in texts

        wait(reads_progress, "file name and percentage")
        # Disabled, so that this asks nothing.
        self.act("push button", "Copy")
        self.assertFalse(self.window.find("dialog", "Warning"))
        message = f"Done copying files, you can now open the project in {self.root}/Documents/Copy."
        for button, complete in {"Abort": False, "Yes": True}.items():
            self.act("push button", button)
            self.assertEqual(self.window.message(), message)
            self.assertEqual(len(list((self.root / "Documents/Copy").iterdir())) == FILES, complete)
            if not complete:
                self.window.key("Escape")
                self.act("push button", "Copy")
                self.assertTrue(has(self.window.wait("push button", "No"), Atspi.StateType.FOCUSED))
        self.act("push button", "OK")
        self.assertEqual(self.window.status(), 0)


PROGRAM = sys.argv[1]
unittest.main(argv=sys.argv[:1], verbosity=2)
