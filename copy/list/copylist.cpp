#include "copy/list/copylist.h"

#include "copy/list/sdklayout.h"
#include "copy/list/walk.h"

#include <QStringBuilder>

using Qt::StringLiterals::operator""_s;

namespace {

// Appends entries for `items`, which are paths below `source` and, in the copy, below `destination`
// + `folder`.
void append(QList<CopyFileEntry>& entries, const QString& source, const QString& destination,
            const QString& folder, const QList<QString>& items)
{
    entries.reserve(entries.size() + items.size());
    // The view matters: two strings are joined by appending, which allocates more than is needed.
    for (const QString& item : items)
        entries.append({source % QStringView(item), destination % folder % item, folder + item});
}

} // namespace

QList<CopyFileEntry> ListCMakeCopy(const SdkLayout& sdk, const QString& destination,
                                   const QList<QString>& dotnetNames)
{
    QList<CopyFileEntry> entries;
    QList<QString> items;
    Walk(items, {}, sdk.samples, {}, dotnetNames + QList<QString>{solutionName});
    append(entries, sdk.samples, destination, {}, items);
    return entries;
}

QList<CopyFileEntry> ListDotnetCopy(const SdkLayout& sdk, const QString& destination,
                                    const QList<QString>& dotnetNames,
                                    const QList<CopyFileEntry>& runtime, bool copyWrapper)
{
    QList<CopyFileEntry> entries = runtime;
    if (copyWrapper) {
        QList<QString> items = {{}}; // the folder itself
        Walk(items, {}, sdk.wrapper, {}, {u"doc"_s});
        append(entries, sdk.wrapper, destination, u"/dotnet"_s, items);
    }
    QList<QString> items;
    Walk(items, {}, sdk.samples, dotnetNames + QList<QString>{solutionName}, {});
    append(entries, sdk.samples, destination, {}, items);
    return entries;
}
