#include "adapt/sdkimports.h"

#include "copy/list/copyfileentry.h"
#include "copy/list/sdklayout.h"
#include "copy/list/walk.h"

#include <QDir>
#include <QRegExp>

#include <span>

using Qt::StringLiterals::operator""_s;

namespace {

// Base names, as wildcard patterns.
constexpr const char* sdkDylibImports[] = {
    "pakr1", "rowbase3",       "PixNova",    "mtq",        "arcpack",   "qorSDK",  "LinkStage",
    "vrk",   "OptoStdRefCore", "MirrelWire", "AssetGraph", "kvo*",      "OptoApi", "OptoStd",
    "qmav",  "bnx64",          "zuvy-camx",  "oep",        "wio-2.3.1",
};
constexpr const char* sdkBinImports[] = {"qmav"};

// Sorted by name: passed to entryInfoList, `NoSort` means the QDir's own order.
QFileInfoList listFolder(const QString& folder)
{
    return QDir(folder).entryInfoList(
        QDir::Dirs | QDir::Files | QDir::Drives | QDir::NoDotAndDotDot, QDir::NoSort);
}

QRegExp wildcard(const QString& pattern)
{
    return QRegExp(pattern, Qt::CaseSensitive, QRegExp::Wildcard);
}

// Appends the entry that copies `found` into `outputDir` and, with `whole`, its contents.
void appendImport(QList<CopyFileEntry>& entries, const QDir& destination, const QString& outputDir,
                  const QFileInfo& found, bool whole)
{
    QList<QString> items = {{}};
    if (whole)
        Walk(items, {}, found.absoluteFilePath(), {}, {});
    for (const QString& item : std::as_const(items)) {
        const QString path = outputDir + u'/' + found.fileName() + item;
        entries.append({found.absoluteFilePath() + item, path, destination.relativeFilePath(path)});
    }
}

void appendImports(QList<CopyFileEntry>& entries, const QDir& destination,
                   std::span<const QString> outputDirs, const QFileInfoList& listing,
                   std::span<const char* const> baseNames, const char* prefix, const char* suffix)
{
    for (const QString& outputDir : outputDirs) {
        for (const char* baseName : baseNames) {
            const QString name = QString::fromLatin1(baseName);
            const QRegExp folder = wildcard(name);
            const QRegExp file =
                wildcard(QString::fromLatin1(prefix) + name + QString::fromLatin1(suffix));
            for (const QFileInfo& entry : listing) {
                const bool whole = entry.isDir() && folder.exactMatch(entry.fileName());
                if (whole || file.exactMatch(entry.fileName()))
                    appendImport(entries, destination, outputDir, entry, whole);
            }
        }
    }
}

} // namespace

void GetSdkImports(QList<CopyFileEntry>& entries, QString source, QString destination,
                   const ImportNames& names)
{
    const SdkLayout sdk{source};
    const QString bin = destination + u"/bin"_s;
    const QString outputDirs[] = {bin + u"/Debug"_s, bin + u"/Release"_s};

    // The source is only there to be a folder, so that the copy creates one.
    entries.append({sdk.bin, bin, u"/bin"_s});
    entries.append({sdk.bin, outputDirs[0], u"/bin/Debug"_s});
    entries.append({sdk.bin, outputDirs[1], u"/bin/Release"_s});

    appendImports(entries, QDir(destination), outputDirs, listFolder(sdk.bin), sdkBinImports,
                  names.exePrefix, names.exeSuffix);
    appendImports(entries, QDir(destination), outputDirs, listFolder(sdk.lib), sdkDylibImports,
                  names.dylibPrefix, names.dylibSuffix);
}
