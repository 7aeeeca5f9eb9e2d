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

// How the platform names shared libraries and executables.
#if defined(Q_OS_MACOS)
constexpr QLatin1StringView dylibPrefix("lib"), dylibSuffix(".dylib"), exePrefix, exeSuffix;
#elif defined(Q_OS_WIN)
constexpr QLatin1StringView dylibPrefix, dylibSuffix(".dll"), exePrefix, exeSuffix(".exe");
#else
constexpr QLatin1StringView dylibPrefix("lib"), dylibSuffix(".so"), exePrefix, exeSuffix;
#endif

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

// Appends what `source` holds of `baseNames`, for each of `outputDirs`.
void appendImports(QList<CopyFileEntry>& entries, const QDir& destination,
                   std::span<const QString> outputDirs, const QString& source,
                   std::span<const char* const> baseNames, QLatin1StringView prefix,
                   QLatin1StringView suffix)
{
    const QDir folder(source, {}, QDir::NoSort);
    const QFileInfoList listing = folder.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString& outputDir : outputDirs) {
        for (const char* baseName : baseNames) {
            const QString name = QString::fromLatin1(baseName);
            const QRegExp folderName(name, Qt::CaseSensitive, QRegExp::Wildcard);
            const QRegExp fileName(prefix + name + suffix, Qt::CaseSensitive, QRegExp::Wildcard);
            for (const QFileInfo& entry : listing) {
                const bool isFolder = entry.isDir() && !entry.isShortcut(); // a shortcut is a file
                const bool whole = isFolder && folderName.exactMatch(entry.fileName());
                if (whole || fileName.exactMatch(entry.fileName()))
                    appendImport(entries, destination, outputDir, entry, whole);
            }
        }
    }
}

} // namespace

void GetSdkImports(QList<CopyFileEntry>& entries, QString source, QString destination)
{
    const SdkLayout sdk{source};
    // The source is only there to be a folder, so that the copy creates one.
    for (const QString& folder : {u"/bin"_s, u"/bin/Debug"_s, u"/bin/Release"_s})
        entries.append({sdk.bin, destination + folder, folder});

    const QString outputDirs[] = {destination + u"/bin/Debug"_s, destination + u"/bin/Release"_s};
    appendImports(entries, destination, outputDirs, sdk.bin, sdkBinImports, exePrefix, exeSuffix);
    appendImports(entries, destination, outputDirs, sdk.lib, sdkDylibImports, dylibPrefix,
                  dylibSuffix);
}
