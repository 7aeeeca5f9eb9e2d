#pragma once

#include "copy/list/copyfileentry.h"

#include <QList>

struct SdkLayout;

// What a copy of `sdk` to the folder `destination` consists of, in copy order. `dotnetNames` are
// the names of the projects in the SDK's solution. Missing or unreadable folders add nothing.

// CMake mode: all samples but the .NET projects and the solution.
QList<CopyFileEntry> ListCMakeCopy(const SdkLayout& sdk, const QString& destination,
                                   const QList<QString>& dotnetNames);

// .NET mode: the entries `runtime`, the wrapper's sources if `copyWrapper` is set, the .NET
// projects and the solution.
QList<CopyFileEntry> ListDotnetCopy(const SdkLayout& sdk, const QString& destination,
                                    const QList<QString>& dotnetNames,
                                    const QList<CopyFileEntry>& runtime, bool copyWrapper);
