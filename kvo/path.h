#pragma once

#include <string>
#include <string_view>

// Path operations on UTF-8 text. Nothing here looks at the disk: links are not followed and case
// counts. Both "/" and "\" separate the components of every argument, also on systems where a name
// may hold "\"; `separator` is what a result is joined with. Bytes that are not UTF-8 may become
// U+FFFD.
namespace kvo::path {

// What follows the last separator; empty when the path ends in one.
std::string GetFilename(std::string_view path);

// The folder part with "/" as separator, but none at its end except for the root; empty if there is
// none.
std::string GetDirectory(std::string_view path);

// `folder` and the relative `name` joined by exactly one separator; both otherwise unchanged.
// An empty folder gives the name alone.
std::string MakePath(std::string_view folder, std::string_view name, char separator);

// The path with every "/" and "\" replaced by the separator.
std::string ConvertSlashes(std::string_view path, char separator);

// The functions below resolve "." and "..", which climbs no higher than the root. An argument that
// is relative or empty starts at the current folder, except ExpandRelativePath's `path`. Results
// have no trailing separator, except for the root.

// The absolute path that `path` names when it is read in the folder `base`: `base` itself if `path`
// is empty, `path` normalized if it is absolute.
std::string ExpandRelativePath(std::string_view base, std::string_view path, char separator);

// `target` as seen from the folder `base`, climbing with ".." where needed; "." for the folder
// itself, and the absolute target when no relative path leads there (another drive).
// ExpandRelativePath(base, RelativePath(base, target, '/'), '/') is the normalized target.
std::string RelativePath(std::string_view base, std::string_view target, char separator);

// Whether `path` lies inside `folder`, at any depth. A folder does not lie inside itself.
bool IsChildOfDirectory(std::string_view folder, std::string_view path);

} // namespace kvo::path
