#include "kvo/path.h"

#include <algorithm>
#include <filesystem>

namespace kvo::path {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view separators = "/\\";

fs::path FromText(std::string_view text)
{
    const std::string slashed = ConvertSlashes(text, '/');
    return std::u8string(slashed.begin(), slashed.end());
}

std::string ToText(const fs::path& path, char separator)
{
    const std::u8string text = path.generic_u8string();
    return ConvertSlashes(std::string(text.begin(), text.end()), separator);
}

fs::path Normalised(const fs::path& path)
{
    const fs::path normal = path.lexically_normal();
    return normal.has_filename() ? normal : normal.parent_path();
}

fs::path Absolute(std::string_view path)
{
    std::error_code ignored; // without a current folder a relative path stays relative
    return Normalised(fs::current_path(ignored) / FromText(path));
}

} // namespace

std::string GetFilename(std::string_view path)
{
    return std::string(path.substr(path.find_last_of(separators) + 1));
}

std::string GetDirectory(std::string_view path)
{
    const std::size_t separator = path.find_last_of(separators);
    if (separator == std::string_view::npos)
        return {};
    const std::size_t last = path.find_last_not_of(separators, separator);
    return std::string(path.substr(0, last == std::string_view::npos ? 1 : last + 1));
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
    return ToText(Normalised(Absolute(base) / FromText(path)), separator);
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
