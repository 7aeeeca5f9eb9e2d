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

// An absolute path, as it is spelled and with its links resolved. Empty if it cannot be determined.
struct Place
{
    fs::path spelled;
    fs::path resolved;
};

Place placeOf(const QString& path)
{
    // The conversion throws on text that is not well-formed.
    if (!path.isValidUtf16())
        return {};
    std::error_code error;
    const fs::path spelled = fs::absolute(QFileInfo(path).filesystemFilePath(), error);
    return {spelled, fs::weakly_canonical(spelled, error)};
}

// Whether `path` or one of the folders above it is `holder`: the same entry of the file system or,
// if one of the two does not exist, the same path. True also if that cannot be determined.
bool liesIn(fs::path path, const fs::path& holder)
{
    for (; !path.empty(); path = path.parent_path()) {
        std::error_code error;
        // Asked first, as `equivalent` may report any error as a missing file.
        const bool bothExist = fs::exists(path, error) && fs::exists(holder, error);
        if (path == holder || (bothExist && fs::equivalent(path, holder, error)) || error)
            return true;
        if (path == path.parent_path()) // the root
            return false;
    }
    return true; // the path is unknown
}

bool holds(const Place& holder, const Place& place)
{
    return holder.resolved.empty() || liesIn(place.spelled, holder.resolved) ||
           liesIn(place.resolved, holder.resolved);
}

// Compares names regardless of case and Unicode normalization, which some file systems ignore.
bool holdsMountPoint(const Place& place)
{
    const auto comparable = [](const QString& name) {
        return name.normalized(QString::NormalizationForm_C).toCaseFolded();
    };
    const auto holdsOne = [&](const fs::path& path) {
        // An empty name at the end makes the path end in a separator, as mount points do.
        const QString folder = QFileInfo(path / "").filePath();
        const QList<QString> points = MountPoints(folder);
        return path.empty() || points.isEmpty() ||
               std::any_of(points.begin(), points.end(), [&](const QString& point) {
                   return comparable(point).startsWith(comparable(folder));
               });
    };
    // Both, as a drive letter may stand for a folder on another drive.
    return holdsOne(place.spelled) || holdsOne(place.resolved);
}

bool holdsUserFolder(const Place& place)
{
    using Paths = QStandardPaths;
    const auto locations = {Paths::HomeLocation,     Paths::DocumentsLocation,
                            Paths::DesktopLocation,  Paths::DownloadLocation,
                            Paths::PicturesLocation, Paths::MusicLocation,
                            Paths::MoviesLocation};
    return std::any_of(locations.begin(), locations.end(), [&](Paths::StandardLocation location) {
        const QString folder = Paths::writableLocation(location);
        return !folder.isEmpty() && holds(place, placeOf(folder));
    });
}

bool overlaps(const Place& place, const QList<QString>& folders)
{
    return std::any_of(folders.begin(), folders.end(), [&](const QString& path) {
        const Place folder = placeOf(path);
        return holds(place, folder) || holds(folder, place);
    });
}

bool removeContents(const fs::path& folder);

// Removes the file, the link or the folder with its contents, as far as possible. Returns false if
// what stays might lead elsewhere. QDir::removeRecursively would make writable what it cannot
// remove, even through links.
bool removeAll(const fs::path& path)
{
    std::error_code error;
    if (fs::remove(path, error) || !error)
        return true;
    const fs::file_status status = fs::symlink_status(path, error);
    // Besides folders, only these types are sure not to be links on every platform.
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
    const Place place = placeOf(destination);
    if (destination.isEmpty() || place.spelled.empty())
        return true;
    std::error_code error;
    // A path such as "new/.." does not exist, but will once its folders are made.
    const bool exists = fs::exists(place.spelled, error) || fs::exists(place.resolved, error);
    const bool isNew = !exists && !error && !place.resolved.empty();
    return !isNew && (error || holdsUserFolder(place) || holdsMountPoint(place) ||
                      overlaps(place, sdk.folders()));
}

bool ClearDestination(const QString& destination)
{
    std::error_code error;
    const Place place = placeOf(destination);
    const fs::file_type type = fs::status(place.spelled, error).type();
    if (place.spelled.empty() || type == fs::file_type::none)
        return false;
    if (type == fs::file_type::directory) {
        const bool isHarmless = removeContents(place.spelled) && !holdsMountPoint(place);
        if (!QDir().rmdir(destination) && !isHarmless)
            return false;
    }
    QDir().mkpath(destination);
    return true;
}
