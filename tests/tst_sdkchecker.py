"""What scripts/sdkchecker.py says of SDKs."""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).parent.parent / "scripts/sdkchecker.py"
SET = '#set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")\nproject(x C)\n'
LINK = 'file(WRITE x.c "int main(){}")\nlink_libraries(gone)\nadd_executable(x x.c)'
# What is said of SDKs with only these files.
VERDICTS = {
    "Can ship; 1 reference is lost.": {"CMakeLists.txt": SET + "# ../b\nset(x ../a)"},
    "samples: holds neither": {"Notes": ""},
    "samples/CMakeLists.txt: has no line '#set": {"CMakeLists.txt": "project(x NONE)"},
    ":2: '# set(ZUVYSDKDIR)' must be '#": {"CMakeLists.txt": "project(x NONE)\n# set(ZUVYSDKDIR)"},
    "new: was changed": {"CMakeLists.txt": SET + 'file(TOUCH "${ZUVYSDKDIR}new")'},
    "requested file:\n          gone": {"CMakeLists.txt": SET + "include(gone)"},
    "do not build\n      /usr/bin/ld: cannot find -lgone": {"CMakeLists.txt": SET + LINK},
    "\n      I quit": {"CMakeLists.txt": SET + "add_custom_target(x ALL echo I quit && false)"},
}
# What an SDK's projects refer to, after what is said of it.
REFERENCES = r"""
move it to a project's folder (the SDK lacks it too)|<HintPath>..\not built</HintPath><HintPath>..\b</HintPath>
move it to a project's folder|<Import Project="..\a" /><Import Project="own.props" />
move it to a project's folder|<Content Include="..\..\dotnet\A" />
move it to a project's folder|<PostBuildEvent>cp $(ProjectDir)..\..\dotnet\A .</PostBuildEvent>
move it to a project's folder|<PropertyGroup><R>..\..</R></PropertyGroup><Key>$(R)\lib\a</Key>
add it to the solution, or compile its sources in|<ProjectReference Include="..\a" />
each path on its own|<Compile Include="..\..\dotnet\A;..\..\dotnet\A" />
narrower wildcards|<Compile Exclude="..\0\*" />
the plain path ..\..\dotnet\A|<None Include="$(ProjectDir)..\..\dotnet\A" />
move it to dotnet/, not dotnet/doc/ (only in dotnet with wrapper)|<None Include="..\..\dotnet\doc\a" />
$(MSBuildProjectDirectory)\..\0\[a] b (only in dotnet with wrapper)|<Compile Include="..\0\[a] b" />
move it to dotnet/, not dotnet/doc/ (only in dotnet with wrapper)|<None Include="..\a" />
$(MSBuildProjectDirectory)\[a] b (only in dotnet with wrapper)|<Copy SourceFiles="[a] b" />
move it to dotnet/, not dotnet/doc/ (only in dotnet with wrapper)|<Copy SourceFiles="..\..\lib\a" />
move this step to the first Target in the file|</Target><Target><Copy SourceFiles="..\..\dotnet\A" />
|<Copy SourceFiles="..\..\dotnet\A" DestinationFolder="..\x" /><Copy SourceFiles="@(A)" />
|<PostBuildEvent>cp $(ProjectDir)..\0\0.csproj .</PostBuildEvent>
|<Content Include="$(SolutionDir)1\..\0\[a]%20b" />
|<None Include="..\..\dotnet\A"><Link>..\A</Link></None>
|<Compile Include="..\..\dotnet\*" Condition="'..\x'" />""".splitlines()[1:]
SOLUTION = """Microsoft Visual Studio Solution File, Format Version 12.00
{}Global
GlobalSection(SolutionConfigurationPlatforms) = preSolution
Debug|Any CPU = Debug|Any CPU
Release|Any CPU = Release|Any CPU
EndGlobalSection
GlobalSection(ProjectConfigurationPlatforms) = postSolution
{}EndGlobalSection
EndGlobal
"""
ENTRY = 'Project("{}") = "{}", "{}", "{}"\nEndProject\n'
BUILT = "{0}.{1}|Any CPU.Build.0 = {1}|Any CPU\n"
PROJECT = """<Project xmlns="http://schemas.microsoft.com/developer/msbuild/2003"><PropertyGroup>
<OutputType>Library</OutputType><OutputPath>x</OutputPath></PropertyGroup><ItemGroup>
<Compile Include="a.cs" /></ItemGroup>
<Import Project="$(MSBuildToolsPath)/Microsoft.CSharp.targets" /></Project>"""
NAMED_AWAY = PROJECT.replace("<Out", "<AssemblyName>Away</AssemblyName><Out", 1)
# The solution's projects and other files, and what is said of each. None: not in the SDK.
FILES = {
    "Away/Away.csproj": (PROJECT, " is built in bin/, away .*: give"),
    "Twin/Twin.csproj": (NAMED_AWAY, "is built as Away, like Away/Away.csproj"),
    "Deep/In/Deep.csproj": (PROJECT, " is built in Deep/bin/, away .*: move"),
    "Broken/Broken.csproj": (PROJECT.replace("a.cs", "b"), " does not build\n *CSC: error CS2001"),
    "Newer/Newer.csproj": ("<Project Sdk='' />", " is of the newer format"),
    "Xml/Xml.csproj": ("<P", "1: is not well-formed"),
    "lens/Lens.csproj": ("", "lies in 'lens': name the folder 'Lens'"),
    "Flat.csproj": (PROJECT, "lies beside the solution"),
    "Group/X/X.csproj": ("", "lies too deep"),
    "../dotnet/W.csproj": ("", "lies outside samples/"),
    "Case/Case.csproj": (None, "is spelled case/case.csproj"),
    "Gone/Gone.csproj": (None, "does not exist, nor does 'Gone'"),
    "4/4.resx": (r"<R><value>..\..\lib\a;T</value><value>..\a</value></R>", r"1: value: \.\..*"),
    "1/an.props": (r'<P><None Include="..\..\dotnet\A" /></P>', "1: None .*: an ItemGroup"),
    "Directory.Build.props": ("", " stays behind; instead: one in each"),
    "../lib/libown.so": ("", " is not copied"),
    "CMakeLists.txt": (SET + "set(x ${CMAKE_SOURCE_DIR}/../a)", r"3: .*/a; instead: \$.*}a\n"),
}


class SdkChecker(unittest.TestCase):
    def check(self, files, sdk="sdk"):
        files = files | {"../../home/CMake/Documents/Camera Sàmples/of the last run": ""}
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
        self.assertEqual([status, output.count("mean 126")], [0, 5])
        self.assertRegex(output, r"Building: .* ...\n(---.*\n([^:]*:.*\n)*)*Can ship.\n$")

    def test_verdicts(self):
        for text, files in VERDICTS.items():
            status, output = self.check(files)
            self.assertIn(text, output)
            is_fault = not text.startswith("Can ship")
            self.assertEqual(status, is_fault)
            self.assertEqual(output.endswith("\nCannot ship: 1 fault.\n"), is_fault)

    def test_solution(self):
        files = {"../lib/a": "", "../dotnet/A": "", "../dotnet/doc/a": "", "a": ""}
        files |= {"case/case.csproj": "", "1/own.props": "<P><Import Project='an.props' /></P>"}
        solution = ""
        for number, line in enumerate(REFERENCES):
            group = "Target" if "<Copy" in line else "ItemGroup"
            path = f"{number}/{number}.csproj"
            files[path] = f"<P>\n<{group}>{line.split('|')[1]}</{group}></P>"
            files[f"{number}/[a] b"] = ""
            solution += ENTRY.format("", number, path, "")
        built = ""
        for number, (path, (text, _)) in enumerate(FILES.items(), 10):
            if path.endswith("proj"):
                guid = f"{{00000000-0000-0000-0000-0000000000{number}}}"
                solution += ENTRY.format(guid, pathlib.Path(path).stem, path, guid)
                built += BUILT.format(guid, "Debug") + BUILT.format(guid, "Release")
            if text is not None:
                files |= {path: text, str(pathlib.PurePath(path).with_name("a.cs")): ""}
        files["dotnet.sln"] = SOLUTION.format(solution, built)
        status, output = self.check(files)

        lost = dict(re.findall(r"/(\d+).csproj:2: .*?; instead: (.*)\n", output))
        found = [lost.get(str(number), "") for number in range(len(REFERENCES))]
        self.assertEqual(found, [line.split("|")[0] for line in REFERENCES])
        for path, (_, text) in FILES.items():
            self.assertRegex(output, f"{path.removeprefix('../')}:? ?{text}")
        self.assertIn(r"..\not built and 1 more;", output)
        self.assertEqual(output.count("; instead: "), len(lost) + 5)
        self.assertEqual(output.splitlines()[-1], "Cannot ship: 13 faults.")


PROGRAM, SDK = sys.argv[1:3]
unittest.main(argv=sys.argv[:1], verbosity=2)
