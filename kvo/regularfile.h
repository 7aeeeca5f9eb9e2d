#pragma once

#include <QByteArray>
#include <QIODevice>

#include <memory>
#include <optional>
#include <string>

class QFile;
class QSaveFile;

// Access to regular files only: opening a pipe or a device could block forever. A symbolic link is
// followed to read, never to write, because its target may be anywhere.
namespace kvo {

// Opens `file`. False if it is not a regular file or cannot be opened in this mode.
bool OpenRegular(QFile& file, QIODevice::OpenMode mode);

// The content of the file at the UTF-8 `path`; nothing if it cannot be read to its end.
std::optional<QByteArray> ReadWhole(const std::string& path);

// A new file, open for writing. Its commit() puts it in place of the one at the UTF-8 `path`, or
// leaves that as it was if a write failed. If a write takes fewer bytes than given, the caller must
// not commit. Null if the file cannot be created.
std::unique_ptr<QSaveFile> OpenReplacement(const std::string& path);

} // namespace kvo
