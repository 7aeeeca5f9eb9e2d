#pragma once

#include <QList>
#include <QString>

struct CopyFileEntry;

// Appends the entries that make "bin/Debug" and "bin/Release" below the folder `destination` and
// fill both with the SDK's runtime: its executable from "bin" and its libraries from "lib", the
// siblings of the samples folder `source`. A folder with the base name of one of them is taken
// whole. What does not exist is left out.
void GetSdkImports(QList<CopyFileEntry>& entries, QString source, QString destination);
