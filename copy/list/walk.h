#pragma once

#include <QList>
#include <QString>

// Appends every file and folder below `directory` to `out` in pre-order, siblings in the order of
// the file system, each as `relativePrefix` + "/" + its path relative to `directory`.
//
// Left out are hidden entries, special files, broken links and, at the top level, names that are in
// `excludeNames` or not in `includeNames`, unless that is empty. Names compare whole and
// case-sensitively. Links to folders are followed.
//
// An unreadable or missing `directory` adds nothing. Does not look for link cycles. May be called
// on any thread.
void Walk(QList<QString>& out, QString relativePrefix, QString directory,
          const QList<QString>& includeNames, const QList<QString>& excludeNames);
