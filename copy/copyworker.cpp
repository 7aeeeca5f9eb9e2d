#include "copy/copyworker.h"

#include "adapt/cmakelists.h"
#include "adapt/sdkimports.h"
#include "adapt/solution.h"
#include "copy/destination.h"
#include "copy/list/copyfileentry.h"
#include "copy/list/sdklayout.h"
#include "copy/list/walk.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
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

void copyEntry(const CopyFileEntry& entry)
{
    const QFileInfo source(entry.sourcePath);
    const bool isShortcut = source.isShortcut(); // a file of its own, though Qt follows it
    if (source.isDir() && !isShortcut) {
        QDir(entry.destinationPath).mkpath(u"."_s);
        return;
    }
    // A link may lead to a device.
    const bool isFile = isShortcut || source.isFile();
    if (!isFile || !QFile::copy(entry.sourcePath, entry.destinationPath))
        return;
    // The copy has the source's mode, and an SDK is often read-only.
    if (!source.permission(QFile::WriteOwner))
        QFile::setPermissions(entry.destinationPath, source.permissions() | QFile::WriteOwner);
}

} // namespace

CopyWorker::CopyWorker(QObject* parent, QString source, QString destination, bool dotnet,
                       bool copyWrapper)
    : QThread(parent)
    , m_source(std::move(source))
    , m_destination(std::move(destination))
    , m_dotnet(dotnet)
    , m_copyWrapper(copyWrapper)
{}

void CopyWorker::abort()
{
    m_abortRequested.store(true);
}

void CopyWorker::run()
{
    const SdkLayout sdk{m_source};
    const QList<CopyFileEntry> entries = copyList(sdk);
    if (IsLeftAlone(m_destination, sdk) || !ClearDestination(m_destination))
        return;
    copyEntries(entries);
    if (m_dotnet)
        FilterSln(sdk.solution, m_destination, /*localProjectFiles=*/true, m_copyWrapper);
    else
        FilterCMakeLists(m_destination + u"/CMakeLists.txt"_s, sdk.root);
}

QList<CopyFileEntry> CopyWorker::copyList(const SdkLayout& sdk) const
{
    QList<QString> dotnetNames;
    GetDotnetDirs(dotnetNames, m_source);
    dotnetNames.append(solutionName);
    QList<CopyFileEntry> entries;
    QList<QString> items;
    if (m_dotnet) {
        GetSdkImports(entries, m_source, m_destination);
        if (m_copyWrapper) {
            QList<QString> wrapper = {{}}; // the folder itself
            Walk(wrapper, {}, sdk.wrapper, {}, {u"doc"_s});
            append(entries, sdk.wrapper, m_destination, u"/dotnet"_s, wrapper);
        }
        Walk(items, {}, sdk.samples, dotnetNames, {});
    } else {
        Walk(items, {}, sdk.samples, {}, dotnetNames);
    }
    append(entries, sdk.samples, m_destination, {}, items);
    return entries;
}

void CopyWorker::copyEntries(const QList<CopyFileEntry>& entries)
{
    const int count = int(entries.size());
    for (int i = 0; i < count && !m_abortRequested.load(std::memory_order_acquire); ++i) {
        emit fileChanged(entries[i].relativePath);
        copyEntry(entries[i]);
        emit progressChanged(double(i + 1) / double(count));
    }
}
