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

void ListCopy(QList<CopyFileEntry>& entries, const SdkLayout& sdk, const QString& destination,
              QList<QString> dotnetNames, bool dotnet, bool copyWrapper)
{
    if (dotnet && copyWrapper) {
        QList<QString> items = {{}}; // the folder itself
        Walk(items, {}, sdk.wrapper, {}, {u"doc"_s});
        append(entries, sdk.wrapper, destination, u"/dotnet"_s, items);
    }
    dotnetNames.append(solutionName);
    QList<QString> items;
    if (dotnet)
        Walk(items, {}, sdk.samples, dotnetNames, {});
    else
        Walk(items, {}, sdk.samples, {}, dotnetNames);
    append(entries, sdk.samples, destination, {}, items);
}
