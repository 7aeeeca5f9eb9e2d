"""Has a packaged program start cmake-gui, and checks whose Qt each of the two has loaded."""

import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile

from desktop import Program, wait


def cmake_gui():
    """The process that was started on the copy, or None."""
    for process in pathlib.Path("/proc").glob("[0-9]*"):
        try:
            command = process.joinpath("cmdline").read_text()
        except OSError:
            continue
        if "cmake-gui\0-S" in command and HOME in command:
            return process
    return None


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
    environment = started.joinpath("environ").read_bytes()
    assert environment == program.joinpath("environ").read_bytes(), environment
    window.message()
    window.key("Return")
    assert window.status() == 0
    os.kill(int(started.name), signal.SIGKILL)


PROGRAM, SAMPLES, ORIGIN = sys.argv[1:]
HOME = tempfile.mkdtemp(prefix="prjdup ")
try:
    check()
finally:
    shutil.rmtree(HOME)
