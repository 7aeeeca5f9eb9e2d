#pragma once

#include <string>

// Where a project lies, all UTF-8 with "/" as separator.
struct ProjectLocation
{
    std::string solutionDir; // the SDK's samples folder
    std::string destination; // the root of the copy
    std::string path;        // the project file, relative to both
};

// Rewrites a .NET project file (.csproj) from the SDK into the copy so that it builds there:
// - A group keeps one OutputPath, unconditional: "..\bin\Debug", "..\bin\Release" or, if the
//   group's Condition names neither, "..\bin". BaseIntermediateOutputPath is removed.
// - Compile and None items and the Copy steps of the first Target refer to the copy or, by absolute
//   path, to the SDK (docs/sdk.md lists those that then lead nowhere). Those that use `$(`, `@(` or
//   `%(` stay as they are; of the others, only items outside the project's folder have a Link.
// All other bytes stay the same, but blank lines before a removed element go with it.
//
// `localProjectFiles`: the files in the project's folder were copied. `copyWrapper`: so were the
// files outside it. If the project does not load, the copy's file stays as it is.
void RewriteProject(const ProjectLocation& location, bool localProjectFiles, bool copyWrapper);
