"""What samples refer to that their copies lack, and what to write instead."""

import glob
import os
import re
import urllib.parse
from typing import NamedTuple
from xml.parsers import expat

# Elements and attributes that name no file that a build reads.
IGNORED = re.compile(
    r"(Link|OutDir|\w*OutputPath|DocumentationFile)\b|.* (Condition|Destination\w+)$"
)
# A path that leads upward, "..".
UPWARD = re.compile(r"""(?<![^\\/\s"'=)])\.\.(?![^\\/\s"'])""")
CMAKE_VARIABLE = re.compile(r"\$\{(\w+)\}")
PROPERTY = re.compile(r"\$\((\w+)\)")
# What MSBuild reads, in its folder and all folders above, for each project.
SHARED_FILE = re.compile(r"(?i)Directory\..*\.(props|targets)|nuget\.config|global\.json")


class Lost(NamedTuple):
    """A reference to a file that a copy lacks; `file` is relative to the SDK."""

    file: str
    line: int
    place: str
    text: str
    instead: str


class NotWellFormed(Exception):
    """The arguments are the file, the line and what is wrong."""


def expand(text, properties):
    for _ in range(5):  # they may name others
        text = PROPERTY.sub(lambda match: properties.get(match[1].lower(), match[0]), text)
    return text


class ProjectFile:
    """The attributes, elements and properties of a project, or of XML that belongs to one."""

    def __init__(self, path):
        self.values = []  # line, place and text
        self.properties = {}
        self.is_newer_format = False
        self._open = []  # elements, as in values
        self._targets = 0
        self._parser = expat.ParserCreate()
        self._parser.StartElementHandler = self._start
        self._parser.CharacterDataHandler = self._text
        self._parser.EndElementHandler = self._end
        try:
            self._parser.Parse(path.read_bytes(), True)
        except expat.ExpatError as error:
            raise NotWellFormed(path, error.lineno, expat.ErrorString(error.code)) from error

    def _start(self, name, attributes):
        if not self._open:
            self.is_newer_format = "Sdk" in attributes
        self._targets += name == "Target"
        later = " in a later Target" if name == "Copy" and self._targets > 1 else ""
        line = self._parser.CurrentLineNumber
        for key, value in attributes.items():
            self._add(line, f"{name} {key}{later}", value)
        self._open.append([line, name, ""])

    def _text(self, data):
        self._open[-1][2] += data

    def _end(self, name):
        line, _, text = self._open.pop()
        if self._add(line, name, text) and self._open and self._open[-1][1] == "PropertyGroup":
            self.properties[name.lower()] = text.strip()

    def _add(self, line, place, text):
        is_read = not IGNORED.match(place)
        if is_read:
            self.values.append((line, place, text.strip()))
        return is_read


class Tree:
    """The SDK's samples or a copy of them, as a file of a project sees it."""

    def __init__(self, samples, project, file, properties):
        self.samples = samples
        self.folder = (samples / project).parent
        self.file_folder = (samples / file).parent
        self.properties = properties | {
            "solutiondir": f"{samples}/",
            "projectdir": f"{self.folder}/",
            "msbuildprojectdirectory": f"{self.folder}/",
            "msbuildthisfiledirectory": f"{self.file_folder}/",
        }

    def resolve(self, place, path):
        """The absolute path, which may hold wildcards."""
        path = urllib.parse.unquote(expand(path, self.properties)).replace("\\", "/").strip()
        folder = self.file_folder if place == "Import Project" else self.folder
        return os.path.normpath(folder / path) if path else ""

    def count(self, place, path):
        """How many files a path names, as far as can be told without a build."""
        pattern = self.resolve(place, path).replace("[", "[[]")
        found = glob.glob(pattern, recursive=True)
        return sum("*" not in path or os.path.isfile(name) for name in found)

    def leads_upward(self, path):
        path = expand(path, self.properties)
        # A property that only the build knows may lead anywhere.
        return UPWARD.search(path) and not path.startswith("$(")


def is_item(place):
    return place in ("Compile Include", "None Include")


def is_command(place):
    return place.endswith(("BuildEvent", "Command"))


def split(place, text):
    return re.split(r'[\s"|&<>]+' if is_command(place) else ";", text)


def advice(place, text, lost, there, here):
    """What docs/sdk.md says to have instead of the path `lost` in `text`."""
    is_step = place.startswith("Copy SourceFiles")
    path = there.resolve(place, lost)
    in_dotnet = os.path.relpath(path, there.samples.parent / "dotnet")
    in_samples = os.path.relpath(path, there.samples)
    folder = in_samples.split("/")[0]
    if place == "ProjectReference Include":
        return "compile its sources in" if folder == ".." else "add it to the solution"
    if place.endswith(" Exclude"):
        return "narrower wildcards"
    if not is_item(place) and not is_step:
        return "move it to a project's folder"
    if ";" in text:
        return "one item per path" if is_item(place) else "one step per path"
    if is_step and there.samples / folder == there.folder:
        return "$(MSBuildProjectDirectory)" + in_samples.removeprefix(folder).replace("/", "\\")
    if is_step and place.endswith("later Target"):
        return "a step of the first Target"
    if is_item(place) and folder != ".." and (here.samples / folder).is_dir():
        return "$(SolutionDir)" + in_samples.replace("/", "\\")
    if in_dotnet.startswith("doc/"):
        return "keep sources out of doc"
    if in_dotnet.startswith("../"):
        return "move it to dotnet/"
    return "the plain path " + os.path.relpath(path, there.folder).replace("/", "\\")


def compare(file, old_values, new_values, there, here):
    """What `file` refers to in the SDK (there) and its copy lacks (here)."""
    for (line, place, old), (_, _, new) in zip(old_values, new_values, strict=True):
        before = [(part, there.count(place, part)) for part in split(place, old)]
        after = [(part, here.count(place, part)) for part in split(place, new)]
        lost = [
            old_part
            for (old_part, old_count), (new_part, count) in zip(before, after)
            if count < old_count or (count == 0 and here.leads_upward(new_part))
        ]
        # Several paths that are rewritten as one may be fewer.
        is_shorter = len(after) < len(before)
        # What an item excludes stays relative when what it includes does not.
        is_exclude = place in ("Compile Exclude", "None Exclude") and there.leads_upward(old)
        if lost or is_shorter or is_exclude:
            first = lost[0] if lost else old
            text = first if is_command(place) else old
            instead = advice(place, text, first, there, here)
            if is_item(place) and new == old and "$(" not in old:
                instead = "an ItemGroup directly in the project"
            if not any(count for _, count in before):
                instead += " (the SDK lacks it too)"
            yield Lost(f"samples/{file}", line, place, text, instead)


def imported_files(project, samples, destination):
    """The project and those files that it imports of the samples, each with its content."""
    files = {project: ProjectFile(samples / project)}
    pending = [project]
    for file in pending:
        tree = Tree(samples, project, file, files[project].properties)
        for _, place, text in files[file].values:
            path = os.path.relpath(tree.resolve(place, text or "."), samples)
            if place != "Import Project" or path in files or not (destination / path).is_file():
                continue
            files[path] = ProjectFile(samples / path)
            files[project].properties |= files[path].properties
            pending.append(path)
    return files


def lost_by_project(project, files, samples, destination):
    """What a project, its imports and its .resx files refer to that the copy lacks."""
    roots = samples, destination
    properties = files[project].properties
    for file, content in files.items():
        copied = ProjectFile(destination / file)
        trees = (Tree(root, project, file, properties) for root in roots)
        yield from compare(file, content.values, copied.values, *trees)
    for path in sorted((samples / project).parent.rglob("*.resx")):
        file = path.relative_to(samples)
        # A file is followed by its type.
        values = [v for v in ProjectFile(path).values if v[1] == "value" and ";" in v[2]]
        yield from compare(file, values, values, *(Tree(root, file, file, {}) for root in roots))


def lost_beside_solution(samples):
    for folder in (samples, samples.parent):
        for path in sorted(folder.iterdir()):
            if SHARED_FILE.fullmatch(path.name):
                name = str(path.relative_to(samples.parent))
                yield Lost(name, 0, "", "stays behind", "one in each project's folder")


def upward_paths(path, samples):
    """The lines, words and targets of a CMake list's paths with "..", as far as they are known."""
    text = path.read_text(errors="replace")
    is_project = re.search(r"(?im)^\s*project\s*\(", text)
    folders = {
        "CMAKE_SOURCE_DIR": samples,
        "CMAKE_CURRENT_SOURCE_DIR": path.parent,
        "CMAKE_CURRENT_LIST_DIR": path.parent,
        "PROJECT_SOURCE_DIR": path.parent if is_project else samples,
    }
    for number, line in enumerate(text.splitlines(), 1):
        for word in re.split(r'[\s();"]+', line.split("#")[0]):
            target = CMAKE_VARIABLE.sub(lambda match: str(folders.get(match[1], match[0])), word)
            if ".." in word.split("/") and "$" not in target:
                yield number, word, os.path.normpath(path.parent / target)


def lost_by_cmake(samples, dotnet_names):
    """Where CMake's lists lead out of the samples by way of ".."."""
    for path in sorted([*samples.rglob("CMakeLists.txt"), *samples.rglob("*.cmake")]):
        file = path.relative_to(samples)
        if file.parts[0] in dotnet_names:
            continue
        for number, word, target in upward_paths(path, samples):
            in_sdk = os.path.relpath(target, samples.parent)
            if in_sdk.split("/")[0] == "..":
                yield Lost(f"samples/{file}", number, "", word, "move it to samples/")
            elif in_sdk.split("/")[0] != "samples":
                instead = "${ZUVYSDKDIR}" + in_sdk.removeprefix(".")
                yield Lost(f"samples/{file}", number, "", word, instead)
