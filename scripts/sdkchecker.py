"""Copies an SDK's samples with the real program, builds the copies and says what to mend."""

import collections
import pathlib
import re
import shutil
import sys
from typing import NamedTuple

import references
from builderrors import cmake_errors, dotnet_errors
from desktop import Program
from references import Lost
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
NEAR_PLACEHOLDER = re.compile(r"@PRJDUP|\bset\s*\(\s*ZUVYSDKDIR", re.IGNORECASE)
SOLUTION_LINE = re.compile(r'Project\("[^"]*"\)[ =]*"([^"]*)"[, ]*"([^"]*)"')
LIBRARY = re.compile(r".*\.(so|dll|dylib)(\.[\d.]+)?")
COPIES = {"dotnet": [], "dotnet with wrapper": [WRAPPER_BOX]}
CONFIGURATIONS = ("Debug", "Release")


class Fault(NamedTuple):
    file: str
    text: str
    details: tuple = ()


def near_placeholder(lines):
    """Where CMakeLists.txt has something like the placeholder, and what is wrong."""
    for number, line in enumerate(lines, 1):
        if NEAR_PLACEHOLDER.search(line):
            return f"samples/CMakeLists.txt:{number}", f"'{line.strip()}' must be '{PLACEHOLDER}'"
    return "samples/CMakeLists.txt", f"has no line '{PLACEHOLDER}': add it before project()"


def reason_not_copied(name, path, samples, names):
    """Why a copy lacks a project of the solution, and what to do."""
    folder, _, below = path.partition("/")
    if folder == "..":
        return "lies outside samples/: compile its sources in instead"
    if not (samples / path).is_file():
        for file in samples.rglob("*proj"):
            spelling = file.relative_to(samples).as_posix()
            if spelling.lower() == path.lower():
                return f"is spelled {spelling} in the SDK: spell both alike"
        return "does not exist" + ("" if (samples / folder).is_dir() else f", nor does '{folder}'")
    if not below:
        return f"lies beside the solution: move it to a folder '{name}'"
    if "/" in below:
        return f"lies too deep: move its folder to samples/, named '{name}' like the project"
    if folder not in names:
        return f"lies in '{folder}': name the folder '{name}' like the project"
    return "is not copied: it is hidden or unreadable"


def folder_built_in(assembly, output):
    """Where a build put an assembly, ending in a slash, or None if it built none."""
    # By xbuild: "Copying file from '...' to '...'"; by the others: "Name -> ...".
    match = re.search(rf"(?:' to '|-> )(.*/|){re.escape(assembly)}\.(?:exe|dll)\b", output)
    return match and (match[1] or "./")


def misplaced(project, folder):
    if folder == "bin/":
        advice = "give Debug and Release a PropertyGroup and OutputPath each"
    elif project.count("/") > 1:
        advice = "move its folder directly into samples/"
    else:
        advice = "set OutputPath, in the project itself, and no OutDir"
    return f"is built in {folder}, away from bin/<Configuration>/ and its libraries: {advice}"


def counted(number, noun):
    return f"{number} {noun}" if number == 1 else f"{number} {noun}s"


def only(names, count):
    """Names the copies or builds, unless it is all of them."""
    return "" if len(names) in (0, count) else f" (only in {'; '.join(sorted(names))})"


class Trial:
    """One SDK, tried in the modes that it has."""

    def __init__(self, program, sdk, home, runs_samples):
        self.program, self.sdk, self.home, self.runs_samples = program, sdk, home, runs_samples
        self.samples = sdk / "samples"
        self.before = fingerprint(sdk)
        self.faults = collections.defaultdict(set)  # the builds that have each
        self.lost = collections.defaultdict(set)  # the copies that lack each
        self.assemblies = {}  # by project
        self.faulty_projects = set()  # which their builds need not tell

    def fault(self, *fault, builds=()):
        self.faults[Fault(*fault)].update(builds)

    def try_cmake(self):
        text = (self.samples / "CMakeLists.txt").read_text(errors="replace")
        if PLACEHOLDER not in text:
            self.fault(*near_placeholder(text.splitlines()))
        dotnet_names = {name for _, name, _ in self.solution()}
        for lost in references.lost_by_cmake(self.samples, dotnet_names):
            self.lost[lost].update(COPIES)
        destination = self.copy("CMake", [CMAKE_BOX])
        failed, output = self.build("CMake", build_cmake, run_cmake, destination)
        if failed:
            self.fault("samples", "the CMake samples do not build", cmake_errors(output))

    def try_dotnet(self):
        if not (self.sdk / "bin").is_dir():
            self.fault("bin", "no such folder, so the copies get no runtime libraries")
        if not solution_builder():
            self.fault("samples/dotnet.sln", "no dotnet, msbuild or xbuild here to build it with")
        for lost in references.lost_beside_solution(self.samples):
            self.lost[lost].update(COPIES)
        for name, boxes in COPIES.items():
            destination = self.copy(name, [*boxes, SOLUTION_BOX], "--dotnet")
            self.check_projects(name, destination)
            self.check_libraries(name, destination)
            for configuration in CONFIGURATIONS if solution_builder() else ():
                self.build_solution(name, destination, configuration)

    def solution(self):
        """The lines, names and paths of the solution's projects and folders."""
        file = self.samples / "dotnet.sln"
        lines = file.read_text(errors="replace").splitlines() if file.exists() else []
        matches = ((number, SOLUTION_LINE.match(line)) for number, line in enumerate(lines, 1))
        return [(number, m[1], m[2].replace("\\", "/")) for number, m in matches if m]

    def copy(self, name, boxes, *options):
        print(f"Copying: {name} ...", flush=True)
        home = self.home / name
        if home.exists():
            shutil.rmtree(home)
        home.mkdir(parents=True)
        folder = "Camera Sàmples"
        window = Program(self.program, *options, str(self.samples), folder, home=home)
        try:
            copy(window, boxes, home / "done.png")
        finally:
            window.process.kill()
        return home / "Documents" / folder

    def build(self, name, build, run, *arguments):
        """Whether the build failed, and what it printed."""
        print(f"Building: {name} ...", flush=True)
        try:
            output = build(*arguments)
        except RuntimeError as error:
            return True, str(error).replace(f"{arguments[0]}/", "")
        if self.runs_samples:
            for sample, printed in run(*arguments).items():
                print(f"--- {sample}\n{printed}", end="")
        return False, output.replace(f"{arguments[0]}/", "")

    def build_solution(self, name, destination, configuration):
        build = f"{name}, {configuration}"
        failed, output = self.build(build, build_dotnet, run_dotnet, destination, configuration)
        if failed:
            for project, errors in dotnet_errors(output, self.faulty_projects).items():
                self.fault(f"samples/{project}", "does not build", errors, builds=[build])
        for project, assembly in self.assemblies.items():
            folder = folder_built_in(assembly, output)
            files = [f"{assembly}.exe", f"{assembly}.dll"]
            if any((destination / "bin" / configuration / file).exists() for file in files):
                continue
            if folder:
                folder = folder.replace(f"/{configuration}/", "/<Configuration>/")
                self.fault(f"samples/{project}", misplaced(project, folder), builds=[build])
            elif not failed:
                text = "is not built: the solution's configurations leave it out"
                self.fault(f"samples/{project}", text, builds=[build])

    def check_projects(self, name, destination):
        names = {name for _, name, _ in self.solution()}
        for number, project, path in self.solution():
            if not re.search(r"\.\w*proj$", path):
                continue
            if (destination / path).is_file():
                self.check_project(name, path, destination)
            else:
                reason = reason_not_copied(project, path, self.samples, names)
                self.fault(f"samples/dotnet.sln:{number}", f"{path} {reason}")
                self.faulty_projects.add(path.removeprefix("../"))

    def check_project(self, name, path, destination):
        try:
            files = references.imported_files(path, self.samples, destination)
            for lost in references.lost_by_project(path, files, self.samples, destination):
                self.lost[lost].add(name)
        except references.NotWellFormed as error:
            file, line, message = error.args
            file = file.relative_to(self.samples)
            self.fault(f"samples/{file}:{line}", f"is not well-formed XML: {message}")
            self.faulty_projects.add(path)
            return
        project = files[path]
        if project.is_newer_format and solution_builder() != ["dotnet", "msbuild"]:
            self.faulty_projects.add(path)
            text = "is of the newer format, which only dotnet builds: install that and try again"
            self.fault(f"samples/{path}", text)
        elif path.endswith((".csproj", ".vbproj", ".fsproj")):
            defaults = {"assemblyname": pathlib.Path(path).stem}
            assembly = references.expand("$(AssemblyName)", defaults | project.properties)
            if "$(" not in assembly:
                self.assemblies[path] = assembly

    def check_libraries(self, name, destination):
        for file in sorted((self.sdk / "lib").glob("*")):
            is_copied = (destination / "bin/Debug" / file.name).exists()
            if LIBRARY.fullmatch(file.name) and not is_copied:
                text = "is not copied beside the programs"
                instead = "a name of adapt/sdkimports.cpp, or load it from lib/"
                self.lost[Lost(f"lib/{file.name}", 0, "", text, instead)].add(name)

    def check_unchanged(self):
        changed = {path for path, _ in self.before.items() ^ fingerprint(self.sdk).items()}
        parents = {parent for path in changed for parent in path.parents}
        for path in sorted(changed - parents):
            text = "was changed: a build must not write into the SDK"
            self.fault(path.relative_to(self.sdk), text)

    def report(self):
        """Prints what to mend; the last line says whether the SDK can ship."""
        for file in ("CMakeLists.txt", "dotnet.sln"):
            if not (self.samples / file).is_file():
                print(f"\nNo samples/{file}: the mode that copies it was not tried.")
        if self.faults:
            print("\nFaults:")
        for fault, builds in self.faults.items():
            print(f"  {fault.file}: {fault.text}{only(builds, len(COPIES) * len(CONFIGURATIONS))}")
            for line in fault.details:
                print(f"      {line}")
        if self.lost:
            print("\nWhat a copy lacks, and what to have instead:")
        for line in lost_lines(self.lost):
            print(f"  {line}")
        if self.faults or self.lost:
            print(f"\nThe copies are in {self.home}; docs/sdk.md says what they may refer to.\n")

        if self.faults:
            print(f"Cannot ship: {counted(len(self.faults), 'fault')}.")
        elif self.lost:
            verb = "is" if len(self.lost) == 1 else "are"
            print(f"Can ship; {counted(len(self.lost), 'reference')} {verb} lost.")
        else:
            print("Can ship.")


def lost_lines(lost):
    """A line for all that a file refers to alike."""
    groups = collections.defaultdict(list)
    for reference, copies in lost.items():
        alike = reference.file, reference.place, reference.instead, only(copies, len(COPIES))
        groups[alike].append(reference)
    for (file, place, instead, copies), group in groups.items():
        where = ", ".join(dict.fromkeys(str(r.line) for r in group if r.line))
        texts = list(dict.fromkeys(r.text for r in group))
        more = f" and {len(texts) - 1} more" if texts[1:] else ""
        what = ": ".join(filter(None, (f"{file}:{where}".rstrip(":"), place, texts[0])))
        yield f"{what}{more}; instead: {instead}{copies}"


def main():
    *options, program, sdk, home = sys.argv[1:]
    folders = (pathlib.Path(folder).resolve() for folder in (sdk, home))
    trial = Trial(program, *folders, "--run" in options)
    modes = {"CMakeLists.txt": trial.try_cmake, "dotnet.sln": trial.try_dotnet}
    found = [file for file in modes if (trial.samples / file).is_file()]
    for file in found:
        modes[file]()
    if not found:
        trial.fault("samples", f"holds neither {' nor '.join(modes)}")
    trial.check_unchanged()
    trial.report()
    sys.exit(1 if trial.faults else 0)


if __name__ == "__main__":
    main()
