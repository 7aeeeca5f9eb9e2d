#pragma once

#include <QList>
#include <QString>

struct CopyFileEntry;

// How a platform names shared libraries and executables.
struct ImportNames
{
    const char* dylibPrefix;
    const char* dylibSuffix;
    const char* exePrefix;
    const char* exeSuffix;
};
inline constexpr ImportNames macImportNames = {"lib", ".dylib", "", ""};
inline constexpr ImportNames linuxImportNames = {"lib", ".so", "", ""};
inline constexpr ImportNames windowsImportNames = {"", ".dll", "", ".exe"};
#if defined(Q_OS_MACOS)
inline constexpr const ImportNames& nativeImportNames = macImportNames;
#elif defined(Q_OS_WIN)
inline constexpr const ImportNames& nativeImportNames = windowsImportNames;
#else
inline constexpr const ImportNames& nativeImportNames = linuxImportNames;
#endif

// Appends the entries that make "bin/Debug" and "bin/Release" below the folder `destination` and
// fill both with the SDK's runtime: its executable from "bin" and its libraries from "lib", the
// siblings of the samples folder `source`. Files that do not exist are left out.
void GetSdkImports(QList<CopyFileEntry>& entries, QString source, QString destination,
                   const ImportNames& names = nativeImportNames);
