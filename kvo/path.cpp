#include "kvo/path.h"

#include "kvo/text.h"

#include <QDir>

#include <algorithm>
#include <filesystem>

namespace kvo::path {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view separators = "/\\";

// The only place that turns text into a path. It goes through UTF-16, because on Windows a path
// from bytes that are not UTF-8 would throw.
fs::path FromText(std::string_view text)
{
    return FromUtf8(text).replace(u'\\', u'/').toStdU16String();
}

std::string ToText(const fs::path& path, char separator)
{
    QString text = QStringView(path.generic_u16string()).toString();
    return text.replace(u'/', QLatin1Char(separator)).toStdString();
}

fs::path Normalized(const fs::path& path)
{
    // Without the dot, "//" would stay "//".
    const fs::path normal = (path / ".").lexically_normal();
    return normal.has_filename() ? normal : normal.parent_path();
}

fs::path Absolute(std::string_view path)
{
    return Normalized(FromText(QDir::currentPath().toStdString()) / FromText(path));
}

} // namespace

std::string GetFilename(std::string_view path)
{
    return std::string(path.substr(path.find_last_of(separators) + 1));
}

std::string GetDirectory(std::string_view path)
{
    return ToText(FromText(path).parent_path(), '/');
}

std::string MakePath(std::string_view folder, std::string_view name, char separator)
{
    if (folder.empty())
        return std::string(name);
    std::string joined(folder.substr(0, folder.find_last_not_of(separators) + 1));
    joined += separator;
    joined += name.substr(std::min(name.find_first_not_of(separators), name.size()));
    return joined;
}

std::string ConvertSlashes(std::string_view path, char separator)
{
    std::string converted(path);
    std::replace(converted.begin(), converted.end(), '/', separator);
    std::replace(converted.begin(), converted.end(), '\\', separator);
    return converted;
}

std::string ExpandRelativePath(std::string_view base, std::string_view path, char separator)
{
    return ToText(Normalized(Absolute(base) / FromText(path)), separator);
}

std::string RelativePath(std::string_view base, std::string_view target, char separator)
{
    const fs::path absolute = Absolute(target);
    const fs::path relative = absolute.lexically_relative(Absolute(base));
    return ToText(relative.empty() ? absolute : relative, separator);
}

bool IsChildOfDirectory(std::string_view folder, std::string_view path)
{
    const fs::path relative = Absolute(path).lexically_relative(Absolute(folder));
    return !relative.empty() && relative != "." && *relative.begin() != "..";
}

} // namespace kvo::path
