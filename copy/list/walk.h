#pragma once

#include <QList>
#include <QString>

// Appends every file and folder below `directory` to `out` in pre-order, siblings in the order of
// the file system, each as `relativePrefix` + "/" + its path relative to `directory`.
//
// Hidden entries, special files and broken links are left out; links to folders are followed. At
// the top level, so is each name in `excludeNames` and, unless `includeNames` is empty, each that
// is not in it. Names compare whole and case-sensitively.
//
// An unreadable or missing `directory` adds nothing. Does not look for link cycles. May be called
// on any thread.
void Walk(QList<QString>& out, QString relativePrefix, QString directory,
          const QList<QString>& includeNames, const QList<QString>& excludeNames);
