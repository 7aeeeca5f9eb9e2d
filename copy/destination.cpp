#include "copy/destination.h"

#include "copy/list/sdklayout.h"
#include "copy/mountpoints.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <filesystem>

using Qt::StringLiterals::operator""_s;

namespace fs = std::filesystem;

namespace {

// Empty if that fails, as for text that is not well-formed, on which the conversion throws.
fs::path absolute(const QString& path)
{
    std::error_code error;
    return path.isValidUtf16() ? fs::absolute(QFileInfo(path).filesystemFilePath(), error)
                               : fs::path();
}

// The absolute path with its links resolved, as far as it exists; empty if that fails.
fs::path resolved(const QString& path)
{
    std::error_code error;
    const fs::path result = fs::weakly_canonical(absolute(path), error);
    return result.has_filename() ? result : result.parent_path();
}

// By identity, or by path where neither exists. Asks for both before, as `equivalent` may report
// any error as a missing file.
bool isSame(const fs::path& a, const fs::path& b, std::error_code& error)
{
    return a == b || (fs::exists(a, error) && fs::exists(b, error) && fs::equivalent(a, b, error));
}

// Whether `path` is `holder` or, going up from one folder to the next, lies in it. True also if
// that cannot be found out.
bool liesIn(fs::path path, const fs::path& holder)
{
    std::error_code error;
    while (!path.empty() && !isSame(path, holder, error) && !error) {
        if (path == path.parent_path())
            return false;
        path = path.parent_path();
    }
    return true;
}

bool holds(const QString& holder, const QString& path)
{
    const fs::path folder = resolved(holder);
    return folder.empty() || liesIn(absolute(path), folder) || liesIn(resolved(path), folder);
}

bool holdsMountPoint(const QString& path)
{
    QString folder = QFileInfo(resolved(path)).filePath();
    if (!folder.endsWith(u'/'))
        folder += u'/';
    const QList<QString> points = MountPoints();
    return points.isEmpty() || std::ranges::any_of(points, [&](const QString& point) {
               return point.startsWith(folder, Qt::CaseInsensitive);
           });
}

bool holdsUserFolder(const QString& path)
{
    using Paths = QStandardPaths;
    const auto locations = {Paths::HomeLocation,     Paths::DocumentsLocation,
                            Paths::DesktopLocation,  Paths::DownloadLocation,
                            Paths::PicturesLocation, Paths::MusicLocation,
                            Paths::MoviesLocation};
    return std::ranges::any_of(locations, [&](Paths::StandardLocation location) {
        const QString folder = Paths::writableLocation(location);
        return !folder.isEmpty() && holds(path, folder);
    });
}

// True for a link, a file with more than one hard link, and what cannot be looked at.
bool leadsElsewhere(const fs::directory_entry& entry)
{
    std::error_code error;
    return entry.is_symlink(error) || error || entry.hard_link_count(error) != 1;
}

// Removes what is in `folder`, as far as possible. Returns whether nothing that stays leads
// elsewhere. QDir::removeRecursively would make what stays writable, through links too.
bool removeContents(const fs::path& folder)
{
    std::error_code error, failure;
    bool harmless = true;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        const bool isFolder =
            !entry->is_symlink(failure) && !failure && entry->is_directory(failure);
        const bool isEmptied = isFolder && removeContents(entry->path());
        if (!fs::remove(entry->path(), failure) && failure)
            harmless = harmless && (isFolder ? isEmptied : !leadsElsewhere(*entry));
    }
    return harmless && !error;
}

} // namespace

bool IsLeftAlone(const QString& destination, const SdkLayout& sdk)
{
    std::error_code error;
    const bool exists = fs::exists(absolute(destination), error);
    return destination.isEmpty() || error || holdsUserFolder(destination) ||
           (exists && holdsMountPoint(destination)) ||
           std::ranges::any_of(sdk.folders(), [&](const QString& folder) {
               return holds(destination, folder) || (exists && holds(folder, destination));
           });
}

bool ClearDestination(const QString& destination)
{
    std::error_code error;
    const fs::path folder = absolute(destination);
    const fs::file_type type = fs::status(folder, error).type();
    if (type == fs::file_type::none)
        return false;
    if (type == fs::file_type::directory) {
        const bool isHarmless = removeContents(folder) && !holdsMountPoint(destination);
        if (!QDir().rmdir(destination) && !isHarmless)
            return false;
    }
    QDir(destination).mkpath(u"."_s);
    return true;
}
