"""Has a packaged program start cmake-gui, and checks whose Qt each of the two has loaded."""

import os
import pathlib
import signal
import subprocess
import sys
import tempfile

from desktop import Program, wait


def cmake_gui():
    """The process that was started on the copy, or None."""
    search = ["pgrep", "-f", "cmake-gui -S " + HOME]
    found = subprocess.run(search, stdout=subprocess.PIPE, text=True).stdout.strip()
    return pathlib.Path("/proc", found) if found else None


def ready(process):
    """Whether the real cmake-gui shows its window, or the one that stands in for it has stopped."""
    search = ["xdotool", "search", "--name", "^CMake .*" + HOME]
    shown = subprocess.run(search, stdout=subprocess.DEVNULL, check=False).returncode == 0
    return shown or "(stopped)" in process.joinpath("status").read_text()


def in_folder(process):
    """For each library and plug-in of Qt that is loaded, whether it is one of the movable folder."""
    files = process.joinpath("maps").read_text().splitlines()
    return {"/lib/prjdup/" in file for file in files if "/libq" in file.lower()}


def check():
    window = Program(PROGRAM, SAMPLES, "Copy", home=HOME)
    program = pathlib.Path(f"/proc/{window.process.pid}")
    assert in_folder(program) == {ORIGIN == "folder"}
    window.act("push button", "Copy")
    started = wait(cmake_gui, "cmake-gui")
    wait(lambda: ready(started), "window of cmake-gui")
    assert True not in in_folder(started)
    assert started.joinpath("environ").read_bytes() == program.joinpath("environ").read_bytes()
    window.message()
    window.key("Return")
    assert window.status() == 0
    os.kill(int(started.name), signal.SIGKILL)


PROGRAM, SAMPLES, ORIGIN = sys.argv[1:]
with tempfile.TemporaryDirectory(prefix="prjdup ") as HOME:
    check()
