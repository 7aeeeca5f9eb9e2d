#pragma once

#include <QString>

// One entry of the copy list. Whether a folder is created or a file copied is decided from the
// source at copy time. A list holds every folder before its contents.
struct CopyFileEntry
{
    QString sourcePath;
    QString destinationPath;
    QString relativePath; // to the destination, mostly beginning with "/"; only for display
};
