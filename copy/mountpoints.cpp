#include "copy/mountpoints.h"

#if defined(Q_OS_WIN)

#include <QDir>

#include <cwchar>
#include <vector>

#include <windows.h>

QList<QString> MountPoints(const QString& path)
{
    wchar_t volume[MAX_PATH];
    const HANDLE search = FindFirstVolumeW(volume, MAX_PATH);
    if (search == INVALID_HANDLE_VALUE)
        return {};
    QList<QString> points;
    bool ok = true;
    do {
        // The drive letters and folders at which it is mounted.
        DWORD size = 0;
        GetVolumePathNamesForVolumeNameW(volume, nullptr, 0, &size);
        std::vector<wchar_t> names(size + 1);
        ok = GetVolumePathNamesForVolumeNameW(volume, names.data(), size, &size);
        for (const wchar_t* name = names.data(); ok && *name; name += std::wcslen(name) + 1)
            points.append(QDir::fromNativeSeparators(QString::fromWCharArray(name)));
    } while (ok && FindNextVolumeW(search, volume, MAX_PATH));
    ok = ok && GetLastError() == ERROR_NO_MORE_FILES;
    FindVolumeClose(search);
    // Network drives have no volume.
    const QFileInfoList drives = QDir::drives();
    for (const QFileInfo& drive : drives)
        points.append(drive.filePath());
    if (path.startsWith(QStringLiteral("//")))
        points.append(path.section(u'/', 0, 3) + u'/'); // "//server/share/"
    return ok && !drives.isEmpty() ? points : QList<QString>();
}

#elif defined(Q_OS_MACOS)

#include <QFile>

#include <span>

#include <sys/mount.h>

QList<QString> MountPoints(const QString& /*path*/)
{
    struct statfs* mounts = nullptr;
    const int count = getmntinfo(&mounts, MNT_NOWAIT); // 0 if it fails
    QList<QString> points;
    for (const struct statfs& mount : std::span(mounts, std::size_t(count)))
        points.append(QFile::decodeName(mount.f_mntonname) + u'/');
    return points;
}

#else

#include <QFile>

QList<QString> MountPoints(const QString& /*path*/)
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    const QByteArray text = table.open(QIODevice::ReadOnly) ? table.readAll() : QByteArray();
    if (table.error() != QFile::NoError || text.isEmpty())
        return {};
    QList<QString> points;
    // A line: id, parent, device, root, mount point, ...
    for (const QByteArray& line : text.trimmed().split('\n')) {
        QByteArray point = line.split(' ').value(4);
        // "\" and three octal digits encode a blank, line end or backslash.
        for (qsizetype at = 0; (at = point.indexOf('\\', at)) >= 0; ++at)
            point.replace(at, 4, QByteArray(1, char(point.mid(at + 1, 3).toInt(nullptr, 8))));
        points.append(QFile::decodeName(point) + u'/');
    }
    return points;
}

#endif
