#pragma once

#include "copy/list/copyfileentry.h"

#include <QList>

struct SdkLayout;

// Appends what a copy of `sdk` to the folder `destination` consists of besides the runtime, in copy
// order. `dotnetNames` are the names of the projects in the SDK's solution.
//
// CMake mode: all samples but these projects and the solution. .NET mode: the wrapper's sources if
// `copyWrapper` is set, then these projects and the solution. Missing or unreadable folders add
// nothing.
void ListCopy(QList<CopyFileEntry>& entries, const SdkLayout& sdk, const QString& destination,
              QList<QString> dotnetNames, bool dotnet, bool copyWrapper);
