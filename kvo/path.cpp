#include "kvo/path.h"

#include <algorithm>
#include <filesystem>

namespace kvo::path {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view separators = "/\\";

// Those of one path: where the platform allows "\" in a name, an absolute path is taken as it is.
std::string_view SeparatorsOf(std::string_view path)
{
    const bool asIs = fs::path::preferred_separator == '/' && path.starts_with('/');
    return asIs ? separators.substr(0, 1) : separators;
}

fs::path FromText(std::string_view text)
{
    std::string slashed(text);
    if (SeparatorsOf(text) == separators)
        slashed = ConvertSlashes(text, '/');
    return std::u8string(slashed.begin(), slashed.end());
}

std::string ToText(const fs::path& path, char separator)
{
    std::u8string text = path.generic_u8string();
    std::replace(text.begin(), text.end(), u8'/', char8_t(separator));
    return {text.begin(), text.end()};
}

fs::path Normalised(const fs::path& path)
{
    // The dot, as "//" alone would count as normal.
    const fs::path normal = (path / ".").lexically_normal();
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
    return std::string(path.substr(path.find_last_of(SeparatorsOf(path)) + 1));
}

std::string GetDirectory(std::string_view path)
{
    const std::size_t separator = path.find_last_of(SeparatorsOf(path));
    if (separator == std::string_view::npos)
        return {};
    const std::size_t last = path.find_last_not_of(SeparatorsOf(path), separator);
    return std::string(path.substr(0, last == std::string_view::npos ? 1 : last + 1));
}

std::string MakePath(std::string_view folder, std::string_view name, char separator)
{
    if (folder.empty())
        return std::string(name);
    std::string joined(folder.substr(0, folder.find_last_not_of(SeparatorsOf(folder)) + 1));
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
    // A relative path with "\" in a name would be read as another one.
    const bool leadsThere =
        !relative.empty() && relative.generic_u8string().find(u8'\\') == std::u8string::npos;
    return ToText(leadsThere ? relative : absolute, separator);
}

bool IsChildOfDirectory(std::string_view folder, std::string_view path)
{
    const fs::path relative = Absolute(path).lexically_relative(Absolute(folder));
    return !relative.empty() && relative != "." && *relative.begin() != "..";
}

} // namespace kvo::path
