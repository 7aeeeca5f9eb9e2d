#pragma once

#include <QString>

struct SdkLayout;

// Whether a copy must leave `destination` alone because more than an old copy could be lost. False
// for one that does not exist. Otherwise true for an empty path, and for one that
// - is, holds or lies in one of the folders of `sdk`;
// - is or holds the home folder or one of the user's standard folders (documents, pictures, ...);
// - is or holds a mount point.
// No link or spelling of a path hides any of this. True also if any of this cannot be
// determined.
bool IsLeftAlone(const QString& destination, const SdkLayout& sdk);

// Removes the folder `destination`, for which IsLeftAlone is false, with all its contents as far as
// possible, and creates it again. Of a link to a folder, the contents go and the link stays.
//
// Returns false if what could not be removed might lead a copy elsewhere: a link, a file with more
// than one hard link, a mount point, a device, or something that cannot be examined.
bool ClearDestination(const QString& destination);
