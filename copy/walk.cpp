#include "copy/walk.h"

#include <QDirIterator>
#include <QStringBuilder>

namespace {

struct Entry
{
    QString item;
    QString folder; // null for a file
};

} // namespace

void Walk(QList<QString>& out, QString relativePrefix, QString directory,
          const QList<QString>& includeNames, const QList<QString>& excludeNames)
{
    // Listed whole before going down, so that one folder at a time is open; and not by QDir, which
    // always sorts.
    QDirIterator listing(QDir(directory, {}, QDir::NoSort,
                              QDir::Dirs | QDir::Files | QDir::Drives | QDir::NoDotAndDotDot));
    QList<Entry> entries;
    while (listing.hasNext()) {
        const QFileInfo info = listing.nextFileInfo();
        const QString path = info.filePath();
        const auto name = QStringView(path).sliced(path.lastIndexOf(u'/') + 1);
        if (!includeNames.isEmpty() && !includeNames.contains(name))
            continue;
        if (excludeNames.contains(name))
            continue;
        entries.append({relativePrefix % u'/' % name, info.isDir() ? path : QString()});
    }
    for (const Entry& entry : std::as_const(entries)) {
        out.append(entry.item);
        // The name lists act on the top level only.
        if (!entry.folder.isNull())
            Walk(out, entry.item, entry.folder, {}, {});
    }
}
