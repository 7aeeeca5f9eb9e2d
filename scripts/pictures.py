"""Pictures of the window, its progress dialog and its done message."""

import pathlib
import shutil
import sys
import tempfile

from desktop import Program, wait

program, sdk, docs = sys.argv[1:]
# Short, because the pictures show it.
home = pathlib.Path(tempfile.gettempdir(), "jo")
with tempfile.TemporaryDirectory() as folder:
    samples = pathlib.Path(folder, "sdk", "samples")
    shutil.copytree(f"{sdk}/samples", samples)
    # Enough to see the progress.
    for number in range(20000):
        (samples / "Snapshot" / f"frame {number}.pgm").touch()

    window = Program(program, str(samples), "Camera Samples", home=home)
    window.screenshot(f"{docs}/window.png")
    window.click("check box", "Run CMake-GUI after copying to generate buildable projects.")
    window.click("push button", "Copy")
    bar = window.wait("progress bar")
    wait(lambda: int(bar.get_name().split()[1]) >= 40, "progress")
    window.screenshot(f"{docs}/progress.png")
    window.message()
    window.screenshot(f"{docs}/done.png")
    window.key("Return")
    window.status()
shutil.rmtree(home)
