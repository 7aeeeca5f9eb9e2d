"""What scripts/sdkchecker.py says of SDKs."""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).parent.parent / "scripts/sdkchecker.py"
LINE = 'Project("")="{0}","{0}/{0}.csproj","1"\n'
SET = '#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")\n'
FAULTS = {
    "CMakeLists.txt: no line #set": {"CMakeLists.txt": "project(x NONE)"},
    "/new was changed": {"CMakeLists.txt": SET + 'project(x)\nfile(TOUCH "${ZUVYSDKDIR}new")'},
    "First errors of CMake:\n  CMake Error at CMakeLists.txt:2 (message): no": {
        "CMakeLists.txt": SET + "message(FATAL_ERROR no)"
    },
    "dotnet.sln:1: P/P.csproj is not in the copy": {"dotnet.sln": LINE.format("P")},
    "CMake                         not tried": {"dotnet.sln": ""},
    "bin: no such folder": {"dotnet.sln": ""},
    "P.csproj:1: not well-formed XML": {"dotnet.sln": LINE.format("P"), "P/P.csproj": "<P"},
}
# What projects refer to: "+" is in both copies, "-" in none and "w" in none with the wrapper.
REFERENCES = r"""- <HintPath>..\not yet built</HintPath>
- <Import Project="..\a" />
- <Content Include="..\..\dotnet\A" />
- <PostBuildEvent>cp $(ProjectDir)..\..\dotnet\A .</PostBuildEvent>
- <Compile Include="..\..\dotnet\A;..\..\dotnet\A" />
- <Compile Exclude="..\0\*" />
- <None Include="$(ProjectDir)..\..\dotnet\A" />
w <Compile Include="..\0\[a] b" />
w <None Include="..\a" />
w <Copy SourceFiles="[a] b" />
w <Copy SourceFiles="..\..\lib\a" />
+ <Copy SourceFiles="..\..\dotnet\A" /><Copy SourceFiles="@(A)" />
+ <PostBuildEvent>cp $(ProjectDir)..\0\0.csproj .</PostBuildEvent>
+ <Content Include="$(SolutionDir)1\..\0\[a]%20b" />
+ <None Include="..\..\dotnet\A"><Link>..\A</Link></None>
+ <Compile Include="..\..\dotnet\*" Condition="'..\x'" />""".splitlines()


class SdkChecker(unittest.TestCase):
    def check(self, files, sdk="sdk"):
        with tempfile.TemporaryDirectory() as root:
            for name, text in files.items():
                path = pathlib.Path(root, "sdk/samples", name)
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            command = [sys.executable, SCRIPT, "--run", PROGRAM, sdk, "home"]
            result = subprocess.run(command, cwd=root, stdout=subprocess.PIPE, text=True)
        return result.returncode, result.stdout

    def test_example(self):
        status, output = self.check({}, SDK)
        self.assertEqual([status, output.count(" built\n"), output.count("mean 126")], [0, 5, 5])
        self.assertNotRegex(output, "(?i)error|fault|not in the copy")

    def test_faults(self):
        for text, files in FAULTS.items():
            status, output = self.check(files)
            self.assertEqual(status, 1)
            self.assertIn(text, output)

    def test_references(self):
        files = {"../lib/a": "", "../dotnet/A": "", "a": "", "dotnet.sln": ""}
        for number, line in enumerate(REFERENCES):
            group = "Target" if "<Copy" in line else "ItemGroup"
            files["dotnet.sln"] += LINE.format(number)
            files[f"{number}/{number}.csproj"] = f"<P>\n<{group}>{line[2:]}</{group}></P>"
            files[f"{number}/[a] b"] = ""
        lost = {}
        for number, only in re.findall(r"/(\d+).csproj:2: .*?(only\))?\n", self.check(files)[1]):
            lost[int(number)] = "w" if only else "-"
        found = [lost.get(number, "+") for number in range(len(REFERENCES))]
        self.assertEqual(found, [line[0] for line in REFERENCES])


PROGRAM, SDK = sys.argv[1:3]
unittest.main(argv=sys.argv[:1], verbosity=2)
