"""Copies an SDK's samples with the real program, builds the copies and says what to mend."""

import collections
import os
import pathlib
import re
import shutil
import sys
from xml import sax

import references
import samples
from desktop import Program

PLACEHOLDER = '#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")'
NEAR_PLACEHOLDER = re.compile(r"@PRJDUP|\bset\s*\(\s*ZUVYSDKDIR", re.IGNORECASE)
SOLUTION_LINE = re.compile(r'Project\("[^"]*"\)[ =]*"([^"]*)"[, ]*"([^"]*\.\w*proj)"')
ERROR = re.compile(r"(?i)(?<!collect2: )\berror\b(?! \d|\(s\))|undefined ref|cannot find|No rule")
# In the summary of a solution's build, these lead to each error: the solution, the project, ...
SUMMARY_STEP = re.compile(r'"?([^"]+\.(?:sln|\w+proj))"? \(.*->')
COPIES = {"dotnet": [], "dotnet with wrapper": [samples.WRAPPER_BOX]}
CONFIGURATIONS = ("Debug", "Release")


def near_placeholder(lines):
    """Where CMakeLists.txt has something like the placeholder, and what is wrong."""
    for number, line in enumerate(lines, 1):
        if NEAR_PLACEHOLDER.search(line):
            return f"samples/CMakeLists.txt:{number}", f"'{line.strip()}' must be '{PLACEHOLDER}'"
    return "samples/CMakeLists.txt", f"has no line '{PLACEHOLDER}': add it before project()"


def reason_not_copied(name, path, root):
    """Why a copy lacks a project of the solution, and what to do."""
    folder, _, below = path.partition("/")
    spellings = [file.relative_to(root).as_posix() for file in root.rglob("*proj")]
    spelling = next((found for found in spellings if found.lower() == path.lower()), None)
    reasons = [
        (folder == "..", "lies outside samples/: compile its sources in instead"),
        (not spelling and not (root / folder).is_dir(), f"does not exist, nor does '{folder}'"),
        (not spelling, "does not exist"),
        (spelling != path, f"is spelled {spelling} in the SDK: spell both alike"),
        (not below, f"lies beside the solution: move it to a folder '{name}'"),
        ("/" in below, f"lies too deep: move its folder to samples/, named '{name}'"),
        (folder != name, f"lies in '{folder}': name the folder '{name}' like the project"),
        (True, "is not copied: it is hidden or unreadable"),
    ]
    return next(reason for applies, reason in reasons if applies)


def misplaced(project, assembly, configuration, output):
    """What is wrong with where a build put a project's assembly, if anything is."""
    # By xbuild: "Copying file from '...' to '...'"; by the others: "Name -> ...".
    match = re.search(rf"(?:' to '|-> )(.*/|){re.escape(assembly)}\.(?:exe|dll)\b", output)
    if not match and "Build FAILED." not in output:
        return "is not built: the solution's configurations leave it out"
    if not match or match[1] == f"bin/{configuration}/":
        return None
    folder = match[1].replace(f"/{configuration}/", "/<Configuration>/") or "./"
    if folder == "bin/":
        advice = "give Debug and Release a PropertyGroup and OutputPath each"
    elif project.count("/") > 1:
        advice = "move its folder directly into samples/"
    else:
        advice = "set OutputPath, in the project itself, and no OutDir"
    return f"is built in {folder}, away from bin/<Configuration>/ and its libraries: {advice}"


def error_lines(output):
    """The first errors, or else the last lines."""
    lines = [line.strip() for line in output.splitlines() if line.strip()]
    errors = dict.fromkeys(line for line in lines if ERROR.search(line))
    return list(errors)[:5] or lines[-5:]


def cmake_errors(output):
    """CMake's first error and what follows, or else the first errors of the compiler or linker."""
    _, error, rest = output.partition("CMake Error")
    lines = [line for line in (error + rest).splitlines() if line.strip()]
    return lines[:20] or error_lines(output)


def dotnet_errors(output, known):
    """The first errors of each project that failed, by its path, but none about a known one."""
    found = collections.defaultdict(str)
    project = "dotnet.sln"
    for line in output.partition("Build FAILED.")[2].splitlines():
        if match := SUMMARY_STEP.match(line):
            project = match[1]
        elif ERROR.search(line) and not any(path in project + line for path in known):
            found[project] += line + "\n"
    if not found and not known:
        found["dotnet.sln"] = output
    return {project: error_lines(lines) for project, lines in found.items()}


def counted(number, one, more):
    return f"1 {one}" if number == 1 else f"{number} {more}"


def only(names, count):
    """Names the copies or builds, unless it is all of them."""
    return "" if len(names) in (0, count) else f" (only in {'; '.join(sorted(names))})"


class Trial:
    """One SDK, tried in the modes that it has."""

    def __init__(self, program, sdk, home, runs_samples):
        self.program, self.sdk, self.home, self.runs_samples = program, sdk, home, runs_samples
        self.samples = sdk / "samples"
        self.before = samples.fingerprint(sdk)
        self.faults = collections.defaultdict(set)  # the builds that have each
        self.lost = collections.defaultdict(set)  # the copies that lack each
        self.assemblies = {}  # by project
        self.faulty_projects = set()  # whose build errors are left out

    def fault(self, file, text, details=(), builds=()):
        self.faults[file, "\n      ".join([text, *details])].update(builds)

    def lose(self, lost, copies=COPIES):
        for reference in lost:
            self.lost[reference].update(copies)

    def try_cmake(self):
        text = (self.samples / "CMakeLists.txt").read_text(errors="replace")
        if PLACEHOLDER not in text:
            self.fault(*near_placeholder(text.splitlines()))
        self.lose(references.lost_by_cmake(self.samples))
        destination = self.copy("CMake", [samples.CMAKE_BOX])
        failed, output = self.build("CMake", samples.build_cmake, samples.run_cmake, destination)
        if failed:
            self.fault("samples", "the CMake samples do not build", cmake_errors(output))

    def try_dotnet(self):
        if not (self.sdk / "bin").is_dir():
            self.fault("bin", "no such folder, so the copies get no runtime libraries")
        if not samples.solution_builder():
            self.fault("samples/dotnet.sln", "no dotnet, msbuild or xbuild here to build it with")
        for name, boxes in COPIES.items():
            destination = self.copy(name, [*boxes, samples.SOLUTION_BOX], "--dotnet")
            self.check_solution(name, destination)
            self.lose(references.lost_files(self.sdk, destination), [name])
            for configuration in CONFIGURATIONS if samples.solution_builder() else ():
                self.build_solution(f"{name}, {configuration}", destination, configuration)

    def copy(self, name, boxes, *options):
        print(f"Copying: {name} ...", flush=True)
        home = self.home / name
        home.mkdir(parents=True)
        folder = "Camera Sàmples"
        window = Program(self.program, *options, str(self.samples), folder, home=home)
        try:
            samples.copy(window, boxes, home / "done.png")
        finally:
            window.process.kill()
        return home / "Documents" / folder

    def build(self, name, build, run, destination, *arguments):
        """Whether the build failed, and what it printed."""
        print(f"Building: {name} ...", flush=True)
        try:
            failed, output = False, build(destination, *arguments)
        except RuntimeError as error:
            failed, output = True, str(error)
        if self.runs_samples and not failed:
            for sample, printed in run(destination, *arguments).items():
                print(f"--- {sample}\n{printed}", end="")
        return failed, output.replace(f"{destination}/", "")

    def build_solution(self, name, destination, configuration):
        steps = samples.build_dotnet, samples.run_dotnet
        failed, output = self.build(name, *steps, destination, configuration)
        if failed:
            # Without what differs between builds that fail alike.
            alike = output.replace(f"{destination.parent}/", "../")
            alike = alike.replace(f"/{configuration}/", "/<Configuration>/")
            for project, errors in dotnet_errors(alike, self.faulty_projects).items():
                self.fault(f"samples/{project}", "does not build", errors, builds=[name])
        for project, assembly in self.assemblies.items():
            if text := misplaced(project, assembly, configuration, output):
                self.fault(f"samples/{project}", text, builds=[name])

    def check_solution(self, name, destination):
        text = (self.samples / "dotnet.sln").read_text(errors="replace")
        for number, line in enumerate(text.splitlines(), 1):
            if match := SOLUTION_LINE.match(line):
                project, path = match[1], match[2].replace("\\", "/")
                # The copy has a project beside the solution, but none of its files.
                if "/" in path and (destination / path).is_file():
                    fault = self.check_project(name, path, destination)
                else:
                    reason = reason_not_copied(project, path, self.samples)
                    fault = f"dotnet.sln:{number}", f"{path} {reason}"
                if fault:
                    self.fault(f"samples/{fault[0]}", fault[1])
                    self.faulty_projects.add(path.removeprefix("../"))

    def check_project(self, name, path, destination):
        """Notes what the copy of a project lacks, and returns what else is wrong, and where."""
        try:
            lost, properties = references.lost_by_project(path, self.samples, destination)
        except sax.SAXParseException as error:
            file = os.path.relpath(error.getSystemId(), self.samples)
            return f"{file}:{error.getLineNumber()}", f"is not well-formed: {error.getMessage()}"
        self.lose(lost, [name])
        if "project sdk" in properties and samples.solution_builder() != ["dotnet", "msbuild"]:
            return path, "is of the newer format, which needs the dotnet command, not installed here"
        defaults = {"assemblyname": pathlib.Path(path).stem}
        assembly = references.expand("$(AssemblyName)", defaults | properties)
        if not path.endswith((".csproj", ".vbproj", ".fsproj")) or "$(" in assembly:
            return None
        for other, its_assembly in self.assemblies.items():
            if its_assembly == assembly and other != path:
                return path, f"is built as {assembly}, like {other}: give each its own AssemblyName"
        self.assemblies[path] = assembly
        return None

    def check_unchanged(self):
        changed = {path for path, _ in self.before.items() ^ samples.fingerprint(self.sdk).items()}
        parents = {parent for path in changed for parent in path.parents}
        for path in sorted(changed - parents):
            text = "was changed: a build must not write into the SDK"
            self.fault(path.relative_to(self.sdk), text)

    def report(self):
        """Prints what to mend; the last line says whether the SDK can ship."""
        if self.faults:
            print("\nFaults:")
        for (file, text), builds in self.faults.items():
            print(f"  {file}{only(builds, len(COPIES) * len(CONFIGURATIONS))}: {text}")
        if self.lost:
            print("\nNot in a copy (this alone does not keep the SDK from shipping):")
            print_lost(self.lost)

        if self.faults:
            print(f"\nCannot ship: {counted(len(self.faults), 'fault', 'faults')}.")
        elif self.lost:
            lost = counted(len(self.lost), "reference is", "references are")
            print(f"\nCan ship; {lost} lost.")
        else:
            print("Can ship.")


def print_lost(lost):
    """Prints one line for references from the same place and with the same advice."""
    groups = collections.defaultdict(list)
    for reference, copies in lost.items():
        alike = reference.file, reference.place, f"{reference.instead}{only(copies, len(COPIES))}"
        groups[alike].append(reference)
    for (file, place, instead), group in groups.items():
        where = ", ".join(dict.fromkeys(str(r.line) for r in group if r.line))
        texts = list(dict.fromkeys(r.text for r in group))
        more = f" and {len(texts) - 1} more" if texts[1:] else ""
        what = ": ".join(filter(None, (f"{file}:{where}".rstrip(":"), place, texts[0])))
        print(f"  {what}{more}; instead: {instead}")


def main():
    *options, program, sdk, home = sys.argv[1:]
    folders = (pathlib.Path(folder).resolve() for folder in (sdk, home))
    trial = Trial(program, *folders, "--run" in options)
    shutil.rmtree(trial.home, ignore_errors=True)
    modes = {"CMakeLists.txt": trial.try_cmake, "dotnet.sln": trial.try_dotnet}
    found = [file for file in modes if (trial.samples / file).is_file()]
    for file in sorted(modes.keys() - found):
        print(f"Not tried: there is no samples/{file}, which is fine without such samples.")
    for file in found:
        modes[file]()
    if not found:
        trial.fault("samples", f"holds neither {' nor '.join(modes)}")
    trial.check_unchanged()
    trial.report()
    sys.exit(1 if trial.faults else 0)


main()
