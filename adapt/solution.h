#pragma once

#include <QList>
#include <QString>

// Appends to `names` the name of every project that the solution `source` + "/dotnet.sln" lists,
// in file order. Each project has a folder of that name. Adds nothing if the file cannot be opened.
void GetDotnetDirs(QList<QString>& names, QString source);

// Adapts the copy of a solution: writes the solution at `solutionPath` into the folder
// `destination` with CR LF after every line, then rewrites each listed project from the SDK into
// the copy (see RewriteProject). Projects that do not load, or whose path leads out of
// `destination`, are skipped.
//
// Returns false, with no project touched, if the solution cannot be read, its copy cannot be opened
// for writing, or one of the two given paths has a "\" in a name. A file whose writing fails later
// stays as it was; that is ignored.
bool FilterSln(QString solutionPath, QString destination, bool localProjectFiles, bool copyWrapper);
