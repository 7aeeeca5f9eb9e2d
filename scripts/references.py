"""What samples refer to that their copies lack, and what to write instead."""

import glob
import itertools
import os
import re
import string
import urllib.parse
from typing import NamedTuple
from xml import sax

# Elements and attributes that name no file that a build reads.
IGNORED = re.compile(r"(Link|OutDir|\w*OutputPath|DocumentationFile)\b|"
                     r".* (Condition|Destination\w+)$")
# What docs/sdk.md says to have instead of what a copy keeps as written.
INSTEAD = {
    "Compile Include": "an ItemGroup directly in the project",
    "None Include": "an ItemGroup directly in the project",
    "Copy SourceFiles": "move this step to the first Target in the file",
    "Compile Exclude": "narrower wildcards",
    "None Exclude": "narrower wildcards",
    "ProjectReference Include": "add it to the solution, or compile its sources in",
}
PROPERTY = re.compile(r"\$\((\w+)\)")
# What builds read for each project, from its folder and all above.
SHARED_FILE = re.compile(r"(?i)Directory\..*\.(props|targets)|nuget\.config|global\.json")
LIBRARY = re.compile(r".*\.(so|dll|dylib)(\.[\d.]+)?")


class Lost(NamedTuple):
    """A reference to a file that a copy lacks; `file` is relative to the SDK."""

    file: str
    text: str
    instead: str
    place: str = ""
    line: int = 0


class Values(sax.ContentHandler):
    """The line, place and text of each attribute and element in XML."""

    def __init__(self, path):
        super().__init__()
        self.found = []
        sax.parse(str(path), self)

    def startElement(self, name, attributes):
        self._line, self._text = self._locator.getLineNumber(), ""
        for key, value in attributes.items():
            self._add(f"{name} {key}", value)

    def characters(self, content):
        self._text += content

    def endElement(self, name):
        self._add(name, self._text)
        self._text = ""

    def _add(self, place, text):
        if not IGNORED.match(place):
            self.found.append((self._line, place, text.strip()))


def expand(text, properties):
    for _ in range(5):  # they may name others
        text = PROPERTY.sub(lambda match: properties.get(match[1].lower(), match[0]), text)
    return text


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
        folder = self.file_folder if place in ("Import Project", "value") else self.folder
        return os.path.normpath(folder / path) if path else ""

    def count(self, place, path):
        """How many files a path names, as far as can be told without a build."""
        pattern = self.resolve(place, path).replace("[", "[[]")
        found = glob.glob(pattern, recursive=True)
        return sum("*" not in path or os.path.isfile(name) for name in found)


def split(place, text):
    if place == "value":  # in a .resx file: a path and its type
        return text.split(";")[:-1]
    is_command = place.endswith(("BuildEvent", "Command"))
    return re.split(r'[\s"|&<>]+' if is_command else r"\s*;\s*", text)


def advice(place, lost, old, new, there, here):
    """What to have instead of the path `lost` in `old`, which is `new` in the copy."""
    is_rewritten = place in ("Compile Include", "None Include", "Copy SourceFiles")
    if not is_rewritten or (new == old and "$(" not in old):
        return INSTEAD.get(place, "move it to a project's folder")
    if ";" in old:
        return "each path on its own"
    path = there.resolve(place, lost)
    from_project = os.path.relpath(path, there.folder).replace("/", "\\")
    top, folder = f"{os.path.relpath(path, there.samples.parent)}/".split("/")[:2]
    if top == "samples" and (here.samples / folder).is_dir():
        return f"$(MSBuildProjectDirectory)\\{from_project}"
    if top == "dotnet" and folder != "doc":
        return f"the plain path {from_project}"
    return "move it to dotnet/, not dotnet/doc/"


def read_project(project, samples, destination):
    """What is in a project, its .resx files and its imports, as far as copied; its properties."""
    resx = sorted((destination / project).parent.rglob("*.resx"))
    # The project after its .resx files, as its properties hide theirs of the same name.
    pending = [*(str(path.relative_to(destination)) for path in resx), project]
    files, properties = {}, {}
    for file in pending:
        files[file] = Values(samples / file).found
        properties |= {place.lower(): text for _, place, text in files[file]}
        tree = Tree(samples, project, file, properties)
        for text in [text for _, place, text in files[file] if place == "Import Project"]:
            path = os.path.relpath(tree.resolve("Import Project", text or "."), samples)
            if path not in pending and (destination / path).is_file():
                pending.append(path)
    return files, properties


def lost_by_project(project, samples, destination):
    """What a project refers to in the SDK (there) and lacks in the copy (here); its properties."""
    lost = []
    files, properties = read_project(project, samples, destination)
    for file, values in files.items():
        there, here = (Tree(root, project, file, properties) for root in (samples, destination))
        copied = Values(destination / file).found
        for (line, place, old), (_, _, new) in zip(values, copied, strict=True):
            # Several paths may have been rewritten as one.
            parts = itertools.zip_longest(split(place, old), split(place, new), fillvalue="")
            for path, new_path in parts:
                before, after = there.count(place, path), here.count(place, new_path)
                # What an item excludes stays relative when what it includes does not.
                is_useless = after == 0 or place.endswith(" Exclude")
                is_upward = expand(new_path, properties).startswith(("../", "..\\"))
                if after < before or (is_useless and is_upward):
                    instead = advice(place, path, old, new, there, here)
                    if before == 0:
                        instead += " (the SDK lacks it too)"
                    lost.append(Lost(f"samples/{file}", path, instead, place, line))
    return lost, properties


def lost_files(sdk, destination):
    """Files that builds or programs read though nothing refers to them."""
    for path in sorted([*sdk.iterdir(), *sdk.glob("samples/*")]):
        if SHARED_FILE.fullmatch(path.name):
            yield Lost(str(path.relative_to(sdk)), "stays behind", "one in each project's folder")
    for path in sorted(sdk.glob("lib/*")):
        if LIBRARY.fullmatch(path.name) and not (destination / "bin/Debug" / path.name).exists():
            instead = "rename it like one in the tool's adapt/sdkimports.cpp, or load it from lib/"
            yield Lost(f"lib/{path.name}", "is not copied beside the programs", instead)


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
            template = string.Template(word)
            is_known = "$" not in template.safe_substitute(dict.fromkeys(folders, ""))
            if ".." in word.split("/") and is_known:
                target = template.substitute(folders)
                yield number, word, os.path.normpath(path.parent / target)


def lost_by_cmake(samples):
    """Where CMake's lists lead out of the samples by way of ".."."""
    for path in sorted([*samples.rglob("CMakeLists.txt"), *samples.rglob("*.cmake")]):
        for number, word, target in upward_paths(path, samples):
            in_sdk = os.path.relpath(target, samples.parent)
            top = in_sdk.split("/")[0]
            instead = "move it to samples/" if top == ".." else f"${{ZUVYSDKDIR}}{in_sdk}"
            if top != "samples":
                yield Lost(str(path.relative_to(samples.parent)), word, instead, line=number)
