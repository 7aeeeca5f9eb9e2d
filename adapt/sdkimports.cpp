#include "adapt/sdkimports.h"

#include "copy/copyfileentry.h"
#include "copy/walk.h"

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

QFileInfoList list(const QString& folder)
{
    return QDir(folder).entryInfoList(
        QDir::Dirs | QDir::Files | QDir::Drives | QDir::NoDotAndDotDot, QDir::NoSort);
}

QRegExp wildcard(const QString& pattern)
{
    return QRegExp(pattern, Qt::CaseSensitive, QRegExp::Wildcard);
}

// Appends the entry that copies `source` into the folder `target` and, with `whole`, its contents.
void appendImport(QList<CopyFileEntry>& entries, const QDir& destination, const QString& target,
                  const QFileInfo& source, bool whole)
{
    QList<QString> items = {{}};
    if (whole)
        Walk(items, {}, source.absoluteFilePath(), {}, {});
    for (const QString& item : std::as_const(items)) {
        const QString path = target + u'/' + source.fileName() + item;
        entries.append(
            {source.absoluteFilePath() + item, path, destination.relativeFilePath(path)});
    }
}

void appendImports(QList<CopyFileEntry>& entries, const QDir& destination,
                   std::span<const QString> targets, const QFileInfoList& listing,
                   std::span<const char* const> baseNames, const char* prefix, const char* suffix)
{
    for (const QString& target : targets) {
        for (const char* baseName : baseNames) {
            const QString name = QString::fromLatin1(baseName);
            const QRegExp folder = wildcard(name);
            const QRegExp file =
                wildcard(QString::fromLatin1(prefix) + name + QString::fromLatin1(suffix));
            for (const QFileInfo& entry : listing) {
                const bool whole = entry.isDir() && folder.exactMatch(entry.fileName());
                if (whole || file.exactMatch(entry.fileName()))
                    appendImport(entries, destination, target, entry, whole);
            }
        }
    }
}

} // namespace

void GetSdkImports(QList<CopyFileEntry>& entries, QString source, QString destination,
                   const ImportNames& names)
{
    const QString bin = destination + u"/bin"_s;
    const QString targets[] = {bin + u"/Debug"_s, bin + u"/Release"_s};
    const QString binDir = QDir::cleanPath(source + u"/../bin"_s);
    const QString libDir = QDir::cleanPath(source + u"/../lib"_s);

    // A folder as the source makes a folder of the destination.
    entries.append({binDir, bin, u"/bin"_s});
    entries.append({binDir, targets[0], u"/bin/Debug"_s});
    entries.append({binDir, targets[1], u"/bin/Release"_s});

    appendImports(entries, QDir(destination), targets, list(binDir), sdkBinImports, names.exePrefix,
                  names.exeSuffix);
    appendImports(entries, QDir(destination), targets, list(libDir), sdkDylibImports,
                  names.dylibPrefix, names.dylibSuffix);
}
