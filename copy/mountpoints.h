#pragma once

#include <QList>
#include <QString>

// The absolute paths of all mount points, each ending in "/"; none if they cannot be listed. On
// Windows, also the roots of all drives and of the network share that holds the absolute `path`.
// Asks no file system, since a dead network mount might never answer.
QList<QString> MountPoints(const QString& path);
