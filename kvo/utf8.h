#pragma once

#include <QString>
#include <QStringDecoder>

#include <string_view>

namespace kvo {

// Like QString::fromUtf8, but keeps a byte order mark at the beginning. Not for callers.
inline QString FromUtf8(std::string_view utf8)
{
    using Flag = QStringDecoder::Flag;
    QStringDecoder decode(QStringDecoder::Utf8, Flag::Stateless | Flag::ConvertInitialBom);
    return decode(utf8);
}

} // namespace kvo
