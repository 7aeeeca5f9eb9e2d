#pragma once

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <unistd.h>

#ifdef Q_OS_LINUX
#include <linux/capability.h>
#include <sys/syscall.h>
#endif

using Names = QList<QString>;
using Qt::StringLiterals::operator""_ba;
using Qt::StringLiterals::operator""_s;

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

// Makes folders too: those above, and a path that ends in "/".
inline void writeFile(const QString& path, const QByteArray& content = {})
{
    QDir().mkpath(path.section(u'/', 0, -2));
    QFile file(path);
    if (!path.endsWith(u'/') &&
        (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()))
        qFatal("cannot write %s", qPrintable(path));
}

// All files and, with a "/" at their end, folders below `root`.
inline Names listTree(const QString& root)
{
    Names names;
    const auto all = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    for (QDirIterator entries(root, all, QDirIterator::Subdirectories); entries.hasNext();) {
        const QString path = entries.next();
        names += QDir(root).relativeFilePath(path) + (QFileInfo(path).isDir() ? u"/"_s : u""_s);
    }
    names.sort();
    return names;
}

// Lets modes count for root too, on this thread.
inline void obeyModes()
{
#ifdef Q_OS_LINUX
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct none[2]{};
    syscall(SYS_capset, &header, none);
#endif
}

// Puts Qt's standard paths into `path`, whatever the user has configured.
inline void setHome(const QString& path)
{
    qputenv("HOME", path.toUtf8());
    qputenv("CFFIXED_USER_HOME", path.toUtf8());
    qunsetenv("XDG_CONFIG_HOME");
}
