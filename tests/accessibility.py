"""Uses the real program as a screen reader does: reads it and acts on it over AT-SPI only."""

import pathlib
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
from desktop import Atspi, Program, has, wait, walk

FILES = 10000
BOXES = {
    "CMake": ["Run CMake-GUI after copying to generate buildable projects."],
    ".NET": [
        "Copy .NET wrapper so it can also be modified.",
        "Open the solution after copying.",
    ],
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

    def act(self, role, name, action):
        node = self.window.wait(role, name)
        names = [Atspi.Action.get_action_name(node, i) for i in range(node.get_n_actions())]
        self.assertTrue(node.do_action(names.index(action)))

    def test_controls(self):
        for mode, boxes in BOXES.items():
            with self.subTest(mode):
                self.start(*["--dotnet"] if mode == ".NET" else [])
                self.check_controls(boxes)
                self.act("push button", "Close", "Press")
                self.assertEqual(self.window.status(), 0)

    def check_controls(self, boxes):
        shown = [node for node in walk(self.window.application) if has(node, Atspi.StateType.SHOWING)]
        names = {role: [] for role in ("push button", "check box", "text")}
        for node in shown:
            names.setdefault(node.get_role_name(), []).append(node.get_name())
        self.assertEqual(names["check box"], boxes)
        self.assertEqual(sorted(names["push button"]), ["Choose Destination Folder", "Close", "Copy"])
        self.assertEqual(names["text"], ["Destination Folder:"])
        field = self.window.find("text")
        self.assertEqual(Atspi.Text.get_text(field, 0, -1), f"{self.root}/Documents/Copy")
        for box in boxes:
            for action in ("Toggle", "Press"):
                before = has(self.window.find("check box", box), Atspi.StateType.CHECKED)
                self.act("check box", box, action)
                after = has(self.window.find("check box", box), Atspi.StateType.CHECKED)
                self.assertNotEqual(after, before)

    def test_copy(self):
        self.start()
        # What the action does to the box must reach the copy: no cmake-gui is started.
        self.act("check box", BOXES["CMake"][0], "Toggle")
        self.act("push button", "Copy", "Press")
        dialog = self.window.wait("dialog", "Copy Progress")
        texts = set()

        def reads_progress():
            texts.update(node.get_name() for node in walk(dialog))
            return all(any(text.startswith(start) for text in texts) for start in ("/file ", "Progress: "))

        wait(reads_progress, "file name and percentage")
        self.assertIn("File:", texts)
        # Disabled, so that this asks nothing.
        self.act("push button", "Copy", "Press")
        self.assertFalse(self.window.find("dialog", "Warning"))
        self.act("push button", "Abort", "Press")
        message = f"Done copying files, you can now open the project in {self.root}/Documents/Copy."
        self.assertEqual(self.window.message(), message)
        self.window.key("Escape")
        self.assertLess(len(list((self.root / "Documents/Copy").iterdir())), FILES)

        self.act("push button", "Copy", "Press")
        self.window.wait("dialog", "Warning")
        self.assertTrue(has(self.window.find("push button", "No"), Atspi.StateType.FOCUSED))
        self.act("push button", "Yes", "Press")
        self.assertEqual(self.window.message(), message)
        self.assertEqual(len(list((self.root / "Documents/Copy").iterdir())), FILES)
        self.act("push button", "OK", "Press")
        self.assertEqual(self.window.status(), 0)


PROGRAM = sys.argv[1]
unittest.main(argv=sys.argv[:1], verbosity=2)
