#pragma once

#include <QByteArray>

#include <memory>
#include <optional>
#include <string>

class QSaveFile;

// Regular files by UTF-8 path; a folder, a pipe or a device is neither read nor replaced, and a
// link is read only, as its target may lie anywhere.
namespace kvo {

// Nothing when the file cannot be read to its end.
std::optional<QByteArray> ReadWhole(const std::string& path);

// A file, open for writing, whose commit() puts it in the place of the one at the path, or leaves
// that as it was when not everything could be written. Null when it cannot be made.
std::unique_ptr<QSaveFile> OpenReplacement(const std::string& path);

} // namespace kvo
