"""What failed in a build, from all that it printed."""

import collections
import re

CMAKE_ERROR = re.compile(r"^CMake Error.*\n(?:(?: .*|Call Stack.*)?\n)*", re.MULTILINE)
ERROR = re.compile(r"(?i)(?<!collect2: )\berror\b(?! \d|\(s\))|undefined ref|cannot find|No rule")
# In the summary of a solution's build, these lead to each error: the solution, the project, ...
SUMMARY_STEP = re.compile(r'"?([^"]+\.(?:sln|\w+proj))"? \(.*->')


def error_lines(output):
    """The first errors, or else the last lines."""
    lines = [line.strip() for line in output.splitlines() if line.strip()]
    errors = dict.fromkeys(line for line in lines if ERROR.search(line))
    return list(errors)[:5] or lines[-5:]


def cmake_errors(output):
    """Whole messages of CMake, or else the first errors of the compiler or linker."""
    messages = list(dict.fromkeys(CMAKE_ERROR.findall(output)))[:3]
    lines = "".join(messages).splitlines()
    return [line for line in lines if line.strip()] or error_lines(output)


def dotnet_errors(output, known):
    """The first errors of each project that failed, by its path, from a build with /v:n.

    Those of a known project, and those that name one, are left out.
    """
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
