#include "copy/destination.h"

#include "copy/list/sdklayout.h"
#include "copy/mountpoints.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <filesystem>

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

// Whether `path` is `holder` or, going up from one folder to the next, lies in it: by identity, or
// by path where neither exists. True also if that cannot be found out.
bool liesIn(fs::path path, const fs::path& holder)
{
    std::error_code error;
    for (; !path.empty() && path != holder; path = path.parent_path()) {
        // Asked first, as `equivalent` may report any error as a missing file.
        const bool bothExist = fs::exists(path, error) && fs::exists(holder, error);
        if ((bothExist && fs::equivalent(path, holder, error)) || error)
            return true;
        if (path == path.parent_path())
            return false;
    }
    return true;
}

bool holds(const QString& holder, const QString& path)
{
    const fs::path folder = resolved(holder);
    return folder.empty() || liesIn(absolute(path), folder) || liesIn(resolved(path), folder);
}

// Names are compared regardless of case and of how they compose their characters, which not every
// file system keeps.
bool holdsMountPoint(const QString& path)
{
    const auto comparable = [](const QString& name) {
        return name.normalized(QString::NormalizationForm_C).toCaseFolded();
    };
    const fs::path folder = resolved(path);
    const QString name = comparable(QFileInfo(folder / "").filePath());
    const QList<QString> points = MountPoints();
    return folder.empty() || points.isEmpty() ||
           std::ranges::any_of(
               points, [&](const QString& point) { return comparable(point).startsWith(name); });
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

bool removeContents(const fs::path& folder);

// Removes the file, the link or the folder with its contents, as far as possible. Returns whether
// nothing that stays leads elsewhere. QDir::removeRecursively would make what stays writable,
// through links too.
bool removeAll(const fs::path& path)
{
    std::error_code error;
    if (fs::remove(path, error) || !error)
        return true;
    const fs::file_status status = fs::symlink_status(path, error);
    // Of what is no folder, only some types are told apart from links on every platform.
    if (!is_directory(status))
        return (is_regular_file(status) || is_fifo(status) || is_socket(status)) &&
               fs::hard_link_count(path, error) == 1;
    const bool isHarmless = removeContents(path);
    return fs::remove(path, error) || isHarmless;
}

bool removeContents(const fs::path& folder)
{
    std::error_code error;
    bool isHarmless = true;
    fs::directory_iterator entry(folder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error))
        isHarmless = removeAll(entry->path()) && isHarmless;
    return isHarmless && !error;
}

} // namespace

bool IsLeftAlone(const QString& destination, const SdkLayout& sdk)
{
    std::error_code error;
    const fs::path folder = absolute(destination);
    const bool exists = fs::exists(folder, error);
    return destination.isEmpty() || folder.empty() || error || holdsUserFolder(destination) ||
           (exists && holdsMountPoint(destination)) ||
           std::ranges::any_of(sdk.folders(), [&](const QString& source) {
               return holds(destination, source) || (exists && holds(source, destination));
           });
}

bool ClearDestination(const QString& destination)
{
    std::error_code error;
    const fs::path folder = absolute(destination);
    const fs::file_type type = fs::status(folder, error).type();
    if (folder.empty() || type == fs::file_type::none)
        return false;
    if (type == fs::file_type::directory) {
        const bool isHarmless = removeContents(folder) && !holdsMountPoint(destination);
        if (!QDir().rmdir(destination) && !isHarmless)
            return false;
    }
    QDir().mkpath(destination);
    return true;
}
