"""Copies an SDK's samples with the real program, builds the copies and tells what is lost."""

import glob
import pathlib
import re
import shutil
import sys
import urllib.parse
from xml.parsers import expat

from desktop import Program
from samples import (
    CMAKE_BOX,
    SOLUTION_BOX,
    WRAPPER_BOX,
    build_cmake,
    build_dotnet,
    copy,
    fingerprint,
    run_cmake,
    run_dotnet,
    solution_builder,
)

PLACEHOLDER = '#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")'
PROJECT_LINE = re.compile(r'Project\("[^"]*"\)[ =]*"[^"]*"[, ]*"([^"]*proj)"')
ERROR = re.compile(r"\berror\b(?! \d)|undefined reference|No rule to make", re.IGNORECASE)
# Elements and attributes that name no file that a build reads.
IGNORED = re.compile(r"(Link|OutputPath|BaseIntermediateOutputPath|DocumentationFile)\b|.* Condition$")
# A path that leads upward, "..".
UPWARD = re.compile(r"""(?<![^\\/\s"'=)])\.\.(?![^\\/\s"'])""")


def values(project):
    """The line, place and text of each attribute and element of a project file."""
    found = []
    elements = []
    parser = expat.ParserCreate()

    def start(name, attributes):
        line = parser.CurrentLineNumber
        found.extend((line, f"{name} {key}", value) for key, value in attributes.items())
        elements.append([line, name, ""])

    def text(data):
        elements[-1][2] += data

    parser.StartElementHandler = start
    parser.CharacterDataHandler = text
    parser.EndElementHandler = lambda name: found.append(elements.pop())
    parser.Parse(project.read_bytes(), True)
    return [value for value in found if not IGNORED.match(value[1])]


def count(path, project, samples):
    """How many files a path in a project names, as far as can be told without a build."""
    for name in ("ProjectDir", "MSBuildProjectDirectory", "MSBuildThisFileDirectory"):
        path = path.replace(f"$({name})", f"{project.parent}/")
    path = path.replace("$(SolutionDir)", f"{samples}/").replace("\\", "/").strip()
    path = urllib.parse.unquote(path).replace("[", "[[]")
    return len(glob.glob(str(project.parent / path), recursive=True)) if path else 0


def lost_references(path, sdk, destination):
    """What a project names in the SDK's samples but not in their copy: line, place, text."""
    projects = values(sdk / path), values(destination / path)
    for (line, place, old), (_, _, new) in zip(*projects, strict=True):
        separators = r'[\s"|&<>]+' if place.endswith(("BuildEvent", "Command")) else ";"
        there = [count(part, sdk / path, sdk) for part in re.split(separators, old)]
        parts = re.split(separators, new)
        here = [count(part, destination / path, destination) for part in parts]
        upward = [number for part, number in zip(parts, here) if UPWARD.search(part)]
        # What an item excludes stays relative when what it includes does not.
        is_exclude = place in ("Compile Exclude", "None Exclude") and UPWARD.search(old)
        if sum(here) < sum(there) or 0 in upward or is_exclude:
            yield line, place, old.strip()


def first_errors(output):
    # CMake says below what is wrong.
    lines = re.sub(r"(CMake Error.*)\n+ +", r"\1 ", output).splitlines()
    return [line.strip() for line in lines if ERROR.search(line)][:5] or lines[-5:]


def show(title, lines):
    if lines:
        print(f"\n{title}", *lines, sep="\n  ")


class Trial:
    """One SDK, tried in the modes that it has."""

    def __init__(self, program, sdk, home, runs_samples):
        self.program, self.sdk, self.home, self.runs_samples = program, sdk, home, runs_samples
        self.samples = sdk / "samples"
        self.before = fingerprint(sdk)
        self.results = {}
        self.errors = {}  # names of builds, by their first errors
        self.lost = {}  # names of copies, by what they lack
        self.faults = []

    def try_cmake(self):
        if PLACEHOLDER not in (self.samples / "CMakeLists.txt").read_text(errors="replace"):
            self.faults.append(f"samples/CMakeLists.txt: no line {PLACEHOLDER}")
        destination = self.copy("CMake", [CMAKE_BOX])
        self.build("CMake", build_cmake, run_cmake, destination)

    def try_dotnet(self, name, boxes):
        if not (self.sdk / "bin").is_dir():
            self.faults.append("bin: no such folder, so the copies get no runtime libraries")
        destination = self.copy(name, [*boxes, SOLUTION_BOX], "--dotnet")
        self.check_projects(name, destination)
        if not solution_builder():
            self.faults.append(f"{name}: no dotnet, msbuild or xbuild to build the solution with")
            return
        for configuration in ("Debug", "Release"):
            label = f"{name}, {configuration}"
            self.build(label, build_dotnet, run_dotnet, destination, configuration)

    def copy(self, name, boxes, *options):
        print(f"Copying: {name} ...", flush=True)
        home = self.home / name
        shutil.rmtree(home, ignore_errors=True)
        home.mkdir(parents=True)
        folder = "Camera Sàmples"
        window = Program(self.program, *options, str(self.samples), folder, home=home)
        try:
            copy(window, boxes, home / "done.png")
        finally:
            window.process.kill()
        return home / "Documents" / folder

    def build(self, name, build, run, *arguments):
        print(f"Building: {name} ...", flush=True)
        try:
            build(*arguments)
        except RuntimeError as error:
            self.results[name] = "FAILED"
            errors = first_errors(str(error).replace(f"{arguments[0]}/", ""))
            self.errors.setdefault(tuple(errors), []).append(name)
            return
        self.results[name] = "built"
        if self.runs_samples:
            for sample, output in run(*arguments).items():
                print(f"--- {sample}\n{output}", end="")

    def check_projects(self, name, destination):
        lines = (self.samples / "dotnet.sln").read_text(errors="replace").splitlines()
        for number, line in enumerate(lines, 1):
            if match := PROJECT_LINE.match(line):
                path = match[1].replace("\\", "/")
                if (destination / path).is_file():
                    self.check_project(name, path, destination)
                else:
                    self.faults.append(f"samples/dotnet.sln:{number}: {path} is not in the copy")

    def check_project(self, name, path, destination):
        try:
            for line, place, text in lost_references(path, self.samples, destination):
                reference = f"samples/{path}:{line}: {place}: {text}"
                self.lost.setdefault(reference, set()).add(name)
        except expat.ExpatError as error:
            message = expat.ErrorString(error.code)
            self.faults.append(f"samples/{path}:{error.lineno}: not well-formed XML, {message}")

    def report(self):
        """Prints what was found and returns whether the SDK can ship."""
        changed = dict(self.before.items() ^ fingerprint(self.sdk).items())
        self.faults += [f"{path} was changed" for path in sorted(changed)]
        show("Results:", [f"{name:<30}{result}" for name, result in self.results.items()])
        show("Faults:", dict.fromkeys(self.faults))
        for errors, names in self.errors.items():
            show(f"First errors of {'; '.join(names)}:", errors)
        lost = (
            text if len(names) == 2 else f"{text} ({min(names)} only)"
            for text, names in self.lost.items()
        )
        show("Not in the copy:", list(lost))
        print(f"\nThe copies, and the window at their end, are in {self.home}")
        return not self.faults and not self.errors


def main():
    *options, program, sdk, home = sys.argv[1:]
    folders = (pathlib.Path(folder).resolve() for folder in (sdk, home))
    trial = Trial(program, *folders, "--run" in options)
    has_cmake = (trial.samples / "CMakeLists.txt").is_file()
    has_dotnet = (trial.samples / "dotnet.sln").is_file()
    if not has_cmake and not has_dotnet:
        sys.exit(f"{trial.samples} holds neither CMakeLists.txt nor dotnet.sln")
    if has_cmake:
        trial.try_cmake()
    else:
        trial.results["CMake"] = "not tried: no samples/CMakeLists.txt"
    if has_dotnet:
        trial.try_dotnet("dotnet", [])
        trial.try_dotnet("dotnet with wrapper", [WRAPPER_BOX])
    else:
        trial.results["dotnet"] = "not tried: no samples/dotnet.sln"
    sys.exit(0 if trial.report() else 1)


if __name__ == "__main__":
    main()
