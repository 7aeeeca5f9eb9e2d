"""Copies the example SDK's samples as a user would, then builds and runs the copy."""

import pathlib
import shutil
import sys

from desktop import Program, build_cmake, build_dotnet

program, samples, *options = sys.argv[1:]
dotnet = "--dotnet" in options
home = pathlib.Path("build/demo", "dotnet" if dotnet else "cmake").resolve()
shutil.rmtree(home, ignore_errors=True)
home.mkdir(parents=True)

window = Program(program, *options, samples, "Camera Samples", home=home)
if dotnet:
    # There is nothing here to open it with.
    window.click("check box", "Open the solution after copying.")
print("Pressing Copy ...")
window.click("push button", "Copy")
print(window.message())
window.screenshot(home / "done.png")
window.key("Return")
if window.status():
    sys.exit(f"The program ended with status {window.status()}.")
print(f"Screenshot: {home / 'done.png'}")

copy = home / "Documents" / "Camera Samples"
print(f"Building and running {copy} ...")
for name, output in (build_dotnet(copy, "Debug") if dotnet else build_cmake(copy)).items():
    print(f"--- {name}\n{output}", end="")
