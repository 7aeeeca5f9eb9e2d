#include "kvo/regularfile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace kvo {

bool OpenRegular(QFile& file, QIODevice::OpenMode mode)
{
    const QFileInfo info(file);
    return info.isFile() && !(info.isSymLink() && (mode & QIODevice::WriteOnly)) && file.open(mode);
}

std::optional<QByteArray> ReadWhole(const std::string& path)
{
    QFile file(QString::fromStdString(path));
    if (!OpenRegular(file, QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray bytes = file.readAll();
    return file.error() == QFile::NoError ? std::optional(bytes) : std::nullopt;
}

std::unique_ptr<QSaveFile> OpenReplacement(const std::string& path)
{
    const QFileInfo info(QString::fromStdString(path));
    if (path.empty() || info.isSymLink() || (info.exists() && !info.isFile()))
        return nullptr;
    auto file = std::make_unique<QSaveFile>(info.filePath());
    // commit() would not see that bytes still in a buffer could not be written.
    return file->open(QIODevice::WriteOnly | QIODevice::Unbuffered) ? std::move(file) : nullptr;
}

} // namespace kvo
