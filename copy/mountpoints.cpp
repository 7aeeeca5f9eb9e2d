#include "copy/mountpoints.h"

#if defined(Q_OS_WIN)

#include <QDir>

#include <cwchar>
#include <vector>

#include <windows.h>

namespace {

// Appends the drive letters and folders at which `volume` is mounted.
bool append(QList<QString>& points, const wchar_t* volume)
{
    DWORD size = 0;
    GetVolumePathNamesForVolumeNameW(volume, nullptr, 0, &size);
    std::vector<wchar_t> names(size + 1);
    if (!GetVolumePathNamesForVolumeNameW(volume, names.data(), size, &size))
        return false;
    for (const wchar_t* name = names.data(); *name; name += std::wcslen(name) + 1)
        points.append(QDir::fromNativeSeparators(QString::fromWCharArray(name)));
    return true;
}

} // namespace

QList<QString> MountPoints()
{
    wchar_t volume[MAX_PATH];
    const HANDLE search = FindFirstVolumeW(volume, MAX_PATH);
    if (search == INVALID_HANDLE_VALUE)
        return {};
    QList<QString> points;
    bool ok = true;
    do {
        ok = append(points, volume);
    } while (ok && FindNextVolumeW(search, volume, MAX_PATH));
    ok = ok && GetLastError() == ERROR_NO_MORE_FILES;
    FindVolumeClose(search);
    return ok ? points : QList<QString>();
}

#elif defined(Q_OS_MACOS)

#include <QFile>

#include <span>

#include <sys/mount.h>

QList<QString> MountPoints()
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

using Qt::StringLiterals::operator""_s;

namespace {

// Replaces "\" and three octal digits by the blank, line end or backslash that they encode.
QByteArray unescaped(QByteArray field)
{
    for (qsizetype at = 0; (at = field.indexOf('\\', at)) >= 0; ++at)
        field.replace(at, 4, QByteArray(1, char(field.mid(at + 1, 3).toInt(nullptr, 8))));
    return field;
}

} // namespace

QList<QString> MountPoints()
{
    QFile table(u"/proc/self/mountinfo"_s);
    if (!table.open(QIODevice::ReadOnly))
        return {};
    const QByteArray text = table.readAll();
    if (table.error() != QFile::NoError || text.isEmpty())
        return {};
    QList<QString> points;
    // A line: id, parent, device, root, mount point, ...
    for (const QByteArray& line : text.trimmed().split('\n'))
        points.append(QFile::decodeName(unescaped(line.split(' ').value(4))) + u'/');
    return points;
}

#endif
