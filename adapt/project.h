#pragma once

#include <string>

// Where a project lies, all UTF-8 with "/" as separator.
struct ProjectLocation
{
    std::string solutionDir; // the SDK's samples folder, absolute
    std::string destination; // the root of the copy, absolute
    std::string path;        // the project file, relative to both
};

// Rewrites a .NET project file (.csproj) from the SDK into the copy so that it builds there: output
// goes to "..\bin" by configuration; Compile and None items and the Copy steps of the first Target
// refer to what was copied or, by absolute path, to what stayed in the SDK. Those that use `$(`,
// `@(` or `%(` keep their references. All other bytes stay the same.
//
// `localProjectFiles`: the files in the project's folder were copied. `copyWrapper`: so were the
// files outside it. A project that does not load leaves the copy's file alone.
void RewriteProject(const ProjectLocation& location, bool localProjectFiles, bool copyWrapper);
