"""What failed in a build, from all that it printed."""

import collections
import re

CMAKE_ERROR = re.compile(r"^CMake Error.*\n(?:(?: .*|Call Stack.*)?\n)*", re.MULTILINE)
ERROR = re.compile(
    r"\berror\b(?! \d|\(s\))|undefined reference|cannot find|No rule to make", re.IGNORECASE
)
# Says only that there were errors before.
CONSEQUENCE = re.compile(r"collect2: |.*\*\*\* .* Error \d")
# In the summary of a solution's build, these lead to each error: the solution, the project, ...
SUMMARY_STEP = re.compile(r'"?([^"]+\.(?:sln|\w+proj))"? \(.*->')
ERROR_IN_PROJECT = re.compile(r"\s*(\S.*proj) ?: +error")


def error_lines(output):
    """The first errors, or else the last lines."""
    lines = [line.strip() for line in output.splitlines() if line.strip()]
    errors = [line for line in lines if ERROR.search(line) and not CONSEQUENCE.match(line)]
    return tuple(dict.fromkeys(errors))[:5] or tuple(lines[-5:])


def cmake_errors(output):
    """Whole messages of CMake, or else the first errors of the compiler or linker."""
    messages = list(dict.fromkeys(CMAKE_ERROR.findall(output)))[:3]
    lines = "".join(messages).splitlines()
    return tuple(line for line in lines if line.strip()) or error_lines(output)


def dotnet_errors(output, known):
    """The first errors of each project that failed, by its path, from a build with /v:n.

    Those that name a known project are left out.
    """
    found = collections.defaultdict(str)
    project = "dotnet.sln"
    for line in output.partition("Build FAILED.")[2].splitlines():
        if match := SUMMARY_STEP.match(line):
            project = match[1]
        elif ERROR.search(line):
            match = ERROR_IN_PROJECT.match(line)
            found[match[1] if match else project] += line + "\n"
    if not found:
        return {"dotnet.sln": error_lines(output)}
    unknown = {
        project: [line for line in lines.splitlines() if not any(path in line for path in known)]
        for project, lines in found.items()
    }
    return {project: error_lines("\n".join(lines)) for project, lines in unknown.items() if lines}
