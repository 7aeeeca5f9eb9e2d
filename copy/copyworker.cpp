#include "copy/copyworker.h"

#include "adapt/cmakelists.h"
#include "adapt/sdkimports.h"
#include "adapt/solution.h"
#include "copy/destination.h"
#include "copy/list/copylist.h"
#include "copy/list/sdklayout.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

using Qt::StringLiterals::operator""_s;

// Failures are ignored throughout: a run copies what it can.
namespace {

void copyEntry(const CopyFileEntry& entry)
{
    const QFileInfo source(entry.sourcePath);
    if (source.isDir()) {
        QDir(entry.destinationPath).mkpath(u"."_s);
        return;
    }
    // A link may lead to a device.
    if (!source.isFile() || !QFile::copy(entry.sourcePath, entry.destinationPath))
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
    // Complete before the first copy, so that progress is a fraction of a known number.
    const QList<CopyFileEntry> entries = copyList(sdk);
    if (IsLeftAlone(m_destination, sdk) || !ClearDestination(m_destination))
        return;
    copyEntries(entries);
    // Also after an abort, so that what was copied builds against the SDK.
    if (m_dotnet)
        FilterSln(sdk.solution, m_destination, /*localProjectFiles=*/true, m_copyWrapper);
    else
        FilterCMakeLists(m_destination + u"/CMakeLists.txt"_s, sdk.root);
}

QList<CopyFileEntry> CopyWorker::copyList(const SdkLayout& sdk) const
{
    QList<QString> dotnetNames;
    GetDotnetDirs(dotnetNames, m_source);
    QList<CopyFileEntry> entries;
    if (m_dotnet)
        GetSdkImports(entries, m_source, m_destination);
    ListCopy(entries, sdk, m_destination, dotnetNames, m_dotnet, m_copyWrapper);
    return entries;
}

void CopyWorker::copyEntries(const QList<CopyFileEntry>& entries)
{
    const int count = int(entries.size());
    for (int i = 0; i < count && !m_abortRequested.load(std::memory_order_acquire);) {
        const CopyFileEntry& entry = entries[i];
        emit fileChanged(entry.relativePath);
        copyEntry(entry);
        ++i;
        emit progressChanged(double(i) / double(count));
    }
}
