#pragma once

#include <string_view>

namespace kvo {

// Whether `part` occurs anywhere in `text`; case-sensitive. An empty part occurs in every text.
inline bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

} // namespace kvo
