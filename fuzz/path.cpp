// A folder and a target, each on a line: the way between them is found in both directions.
#include "kvo/path.h"

#include <QtGlobal>

#include <algorithm>

namespace path = kvo::path;

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size)
{
    const std::string_view input(data, size);
    const std::size_t end = std::min(input.find('\n'), size);
    const std::string_view base = input.substr(0, end);
    const std::string_view target = input.substr(std::min(end + 1, size));

    const std::string absolute = path::ExpandRelativePath({}, target, '/');
    const std::string relative = path::RelativePath(base, target, '/');
    Q_ASSERT(path::ExpandRelativePath(base, relative, '/') == absolute);
    Q_ASSERT(path::ExpandRelativePath(base, absolute, '/') == absolute);
    // An absolute result is one that cannot be told relatively.
    Q_ASSERT(relative.starts_with('/') ||
             path::IsChildOfDirectory(base, target) ==
                 (relative != "." && !(relative + '/').starts_with("../")));
    return 0;
}
