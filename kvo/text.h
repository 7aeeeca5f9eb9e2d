#pragma once

#include <QString>
#include <QStringDecoder>

#include <string_view>

namespace kvo {

// Whether `part` occurs anywhere in `text`; case-sensitive. An empty part occurs in every text.
inline bool Contains(std::string_view text, std::string_view part)
{
    return text.find(part) != std::string_view::npos;
}

// Like QString::fromUtf8, but keeps a byte order mark at the beginning.
inline QString FromUtf8(std::string_view utf8)
{
    using Flag = QStringDecoder::Flag;
    QStringDecoder decode(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    return decode(utf8);
}

} // namespace kvo
