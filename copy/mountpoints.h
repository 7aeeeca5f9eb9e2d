#pragma once

#include <QList>
#include <QString>

// The absolute paths of all mount points, each ending in "/"; none if they cannot be listed.
// Asks no file system, since a dead network mount might never answer.
QList<QString> MountPoints();
