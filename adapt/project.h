#pragma once

#include <string>

// Where a project lies, all UTF-8 with "/" as separator.
struct ProjectLocation
{
    std::string solutionDir; // the SDK's samples folder, absolute
    std::string destination; // the root of the copy, absolute
    std::string path;        // the project file, relative to both
};

// Rewrites a .NET project file (.csproj) from the SDK into the copy so that it builds there:
// - Output goes to "..\bin\Debug", "..\bin\Release" or, where the group's condition names neither,
//   "..\bin". Intermediate output goes where it does by default.
// - Compile and None items and the Copy steps of the first Target refer to what was copied or, by
//   absolute path, to what stayed in the SDK. Those that use `$(`, `@(` or `%(` keep their
//   references. Items outside the project's folder get a Link, the others lose theirs.
// All other bytes stay the same, but blank lines before a removed element go with it.
//
// `localProjectFiles`: the files in the project's folder were copied. `copyWrapper`: so were the
// files outside it. If the project does not load, the copy's file stays as it is.
void RewriteProject(const ProjectLocation& location, bool localProjectFiles, bool copyWrapper);
