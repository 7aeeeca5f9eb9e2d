"""Copies the example SDK with the real program from the real window, builds and runs the copy."""

import difflib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "scripts"))
from desktop import Program, build_cmake, build_dotnet, run

FRAMES = [f"Frame {i}: minimum {8 * i}, maximum {220 + 8 * i}, mean {110 + 8 * i}.00" for i in range(3)]
CMAKE_OUTPUT = {
    "CameraList": "qorSDK 1.0, cameras: 1\nCamera 0: QorSim 64, serial QS-0042, 64 x 48\n",
    "FrameStatistics": "\n".join(FRAMES) + "\n",
    "Snapshot": "snapshot.pgm written\n",
}
DOTNET_OUTPUT = {
    "DotnetGrab": "QorSim 64, serial QS-0042\nFrame 0: mean 110.00\nFrame 1: mean 118.00\nFrame 2: mean 126.00\n",
    "DotnetInfo": "qorSDK 1.0, cameras: 1\n",
    "DotnetSettings": "Frame 0: 64 x 48\nFrame 1: 64 x 48\n",
}
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

    def copy(self, *options, boxes):
        window = Program(PROGRAM, *options, str(self.sdk / "samples"), "Ma côpy", home=self.root)
        self.addCleanup(window.process.kill)
        for box in boxes:
            window.click("check box", box)
        window.click("push button", "Copy")
        copy = self.root / "Documents" / "Ma côpy"
        self.assertEqual(window.message(), f"Done copying files, you can now open the project in {copy}.")
        window.key("Return")
        self.assertEqual(window.status(), 0)
        self.assertEqual(fingerprint(self.sdk), self.before)
        return copy

    def changes(self, copy):
        """The changed lines of each file that differs from its original."""
        pairs = [(self.sdk / "samples" / path.relative_to(copy), path) for path in copy.rglob("*")]
        changes = {str(new.relative_to(copy)): changed_lines(old, new) for old, new in pairs if old.is_file()}
        return {name: lines for name, lines in changes.items() if lines}

    def test_start(self):
        for count in (0, 1, 3):
            command = [PROGRAM, "--style", "none", *["x"] * count]
            result = subprocess.run(command, env=os.environ | {"QT_QUICK_CONTROLS_STYLE": "none"}, timeout=60)
            self.assertEqual(result.returncode, 0)

    def test_cmake(self):
        with self.assertRaisesRegex(RuntimeError, "Copy them with Copy Project"):
            run("cmake", "-S", self.sdk / "samples", "-B", self.root / "build")
        copy = self.copy(boxes=["Run CMake-GUI after copying to generate buildable projects."])
        old, new = '#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")', f'set(ZUVYSDKDIR "{self.sdk}/")'
        self.assertEqual(self.changes(copy), {"CMakeLists.txt": [f"-{old}\n", f"+{new}\n"]})
        self.assertEqual(build_cmake(copy), CMAKE_OUTPUT)

    def test_dotnet(self):
        for wrapper in ([], ["Copy .NET wrapper so it can also be modified."]):
            copy = self.copy("--dotnet", boxes=["Open the solution after copying.", *wrapper])
            changes = self.changes(copy)
            self.assertEqual(set(changes), {f"{name}/{name}.csproj" for name in DOTNET_OUTPUT})
            for line in sum(changes.values(), []):
                self.assertRegex(line, PROJECT_RULES)
            if wrapper:
                run("chmod", "u+w", self.sdk, self.sdk / "dotnet")
                (self.sdk / "dotnet").rename(self.root / "away")
            for configuration in ("Debug", "Release"):
                self.assertEqual(build_dotnet(copy, configuration), DOTNET_OUTPUT)
            shutil.rmtree(copy)


PROGRAM, SDK = sys.argv[1:3]
unittest.main(argv=sys.argv[:1], verbosity=2)
