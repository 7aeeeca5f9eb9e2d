#include "copy/list/walk.h"

#include <QDir>
#include <QStringBuilder>

void Walk(QList<QString>& out, QString relativePrefix, QString directory,
          const QList<QString>& includeNames, const QList<QString>& excludeNames)
{
    // By default, a QDir sorts by name.
    const QDir folder(directory, {}, QDir::NoSort);
    for (const QFileInfo& entry : folder.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot)) {
        const QString path = entry.filePath();
        const auto name = QStringView(path).sliced(path.lastIndexOf(u'/') + 1);
        if (!includeNames.isEmpty() && !includeNames.contains(name))
            continue;
        if (excludeNames.contains(name))
            continue;
        const QString item = relativePrefix % u'/' % name;
        out.append(item);
        // A shortcut is a file.
        if (entry.isDir() && !entry.isShortcut())
            Walk(out, item, path, {}, {});
    }
}
