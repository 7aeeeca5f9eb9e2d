#include "copy/list/walk.h"

#include <QDir>
#include <QStringBuilder>

void Walk(QList<QString>& out, QString relativePrefix, QString directory,
          const QList<QString>& includeNames, const QList<QString>& excludeNames)
{
    // Passed to entryInfoList, `NoSort` means the QDir's own order, which is by name unless set.
    const QDir folder(directory, {}, QDir::NoSort);
    const auto filters = QDir::Dirs | QDir::Files | QDir::Drives | QDir::NoDotAndDotDot;
    for (const QFileInfo& entry : folder.entryInfoList(filters, QDir::NoSort)) {
        const QString path = entry.filePath();
        const auto name = QStringView(path).sliced(path.lastIndexOf(u'/') + 1);
        if (!includeNames.isEmpty() && !includeNames.contains(name))
            continue;
        if (excludeNames.contains(name))
            continue;
        const QString item = relativePrefix % u'/' % name;
        out.append(item);
        // The name lists act on the top level only.
        if (entry.isDir())
            Walk(out, item, path, {}, {});
    }
}
