#pragma once

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QMap>

// A folder's files by relative path, with their contents; a path that ends in "/" is a folder.
using Tree = QMap<QString, QByteArray>;

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

inline void writeFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
}

inline void writeTree(const QString& root, const Tree& tree)
{
    for (auto entry = tree.begin(); entry != tree.end(); ++entry) {
        const QString path = root + u'/' + entry.key();
        if (path.endsWith(u'/'))
            QDir().mkpath(path);
        else
            writeFile(path, entry.value());
    }
}

inline Tree readTree(const QString& root)
{
    Tree tree;
    const auto filters = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    QDirIterator entries(root, filters, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QFileInfo entry(entries.next());
        const QString path = QDir(root).relativeFilePath(entry.filePath());
        if (entry.isDir())
            tree.insert(path + u'/', {});
        else
            tree.insert(path, readFile(entry.filePath()));
    }
    return tree;
}

// Makes `path` the home folder that Qt's standard paths lie in, whatever the user has configured.
inline void setHome(const QString& path)
{
    qputenv("HOME", path.toUtf8());
    qputenv("CFFIXED_USER_HOME", path.toUtf8());
    qunsetenv("XDG_CONFIG_HOME");
}
