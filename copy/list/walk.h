#pragma once

#include <QList>
#include <QString>

// Appends every file and folder below `directory` to `out` in pre-order, each as `relativePrefix`
// + "/" + its path relative to `directory`. Siblings come in no promised order.
//
// Hidden entries, special files and broken links are left out; links count as their targets.
// A non-empty `includeNames` takes only the named top-level entries; `excludeNames` drops named
// top-level entries and wins over `includeNames`. Names compare whole and case-sensitively.
//
// An unreadable or missing `directory` adds nothing. Link cycles are not looked for. May be called
// on any thread.
void Walk(QList<QString>& out, QString relativePrefix, QString directory,
          const QList<QString>& includeNames, const QList<QString>& excludeNames);
