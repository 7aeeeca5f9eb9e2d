"""What a user does with samples: copies them in the window, builds the copy and runs it."""

import shutil
import subprocess

from desktop import wait

CMAKE_BOX = "Run CMake-GUI after copying to generate buildable projects."
WRAPPER_BOX = "Copy .NET wrapper so it can also be modified."
SOLUTION_BOX = "Open the solution after copying."


def run(*command, cwd=None):
    """Runs a build step or a built program and returns what it prints."""
    command = [str(part) for part in command]
    output = {"stdout": subprocess.PIPE, "stderr": subprocess.STDOUT, "errors": "replace"}
    result = subprocess.run(command, cwd=cwd, check=False, **output)
    if result.returncode:
        raise RuntimeError(f"{' '.join(command)} failed:\n{result.stdout}")
    return result.stdout


def fingerprint(folder):
    """The mode, time and size of a folder and everything in it, by path."""
    stats = {path: path.lstat() for path in [folder, *folder.rglob("*")]}
    return {path: (stat.st_mode, stat.st_mtime_ns, stat.st_size) for path, stat in stats.items()}


def copy(window, boxes, screenshot):
    """Toggles the boxes, copies, takes a screenshot of the done message and closes the window."""
    for box in boxes:
        window.click("check box", box)
    window.click("push button", "Copy")
    ended = lambda: window.process.poll() is not None or window.find("dialog", "Copy Done")
    wait(ended, "end of the copy", 3600)
    window.message()
    window.screenshot(screenshot)
    window.key("Return")
    if status := window.status():
        raise RuntimeError(f"the program ended with status {status}")


def build_cmake(folder):
    run("cmake", "-S", folder, "-B", folder / "build")
    return run("cmake", "--build", folder / "build")


def run_cmake(folder):
    """What each sample of the built example SDK prints, by name."""
    build = folder / "build"
    samples = sorted(path.parent.name for path in folder.glob("*/CMakeLists.txt"))
    return {name: run(build / name / name, cwd=build) for name in samples}


def solution_builder():
    """The command that builds solutions here, or None."""
    commands = (["dotnet", "msbuild"], ["msbuild"], ["xbuild"])
    return next((command for command in commands if shutil.which(command[0])), None)


def build_dotnet(folder, configuration):
    # So that it tells where each program is put, and sums up the errors of each project.
    options = ["/nologo", "/v:n", f"/p:Configuration={configuration}"]
    return run(*solution_builder(), *options, "dotnet.sln", cwd=folder)


def run_dotnet(folder, configuration):
    """What each sample of the built example SDK prints, by name."""
    samples = sorted(path.stem for path in folder.glob("*/*.csproj"))
    return {name: run("mono", folder / "bin" / configuration / f"{name}.exe") for name in samples}
