#include "copy/walk.h"

#include <QDir>

void Walk(QList<QString>& out, QString relativePrefix, QString directory,
          const QList<QString>& includeNames, const QList<QString>& excludeNames)
{
    const auto entries = QDir(directory).entryInfoList(
        QDir::Dirs | QDir::Files | QDir::Drives | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo& entry : entries) {
        const QString name = entry.fileName();
        if (!includeNames.isEmpty() && !includeNames.contains(name))
            continue;
        if (excludeNames.contains(name))
            continue;
        const QString item = relativePrefix + u'/' + name;
        out.append(item);
        // The name lists act on the top level only.
        if (entry.isDir())
            Walk(out, item, entry.filePath(), {}, {});
    }
}
