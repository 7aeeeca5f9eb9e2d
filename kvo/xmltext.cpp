#include "kvo/xmltext.h"

#include "kvo/text.h"

#include <QXmlStreamReader>

#include <algorithm>

using Qt::StringLiterals::operator""_ba;
using Qt::StringLiterals::operator""_s;

namespace kvo {

namespace {

constexpr QChar byteOrderMark(0xFEFF);

// See https://www.w3.org/TR/xml/#NT-Char.
bool IsForbidden(QChar c)
{
    return c < u' ' ? c != u'\t' && c != u'\n' && c != u'\r' : c > u'\xFFFD';
}

QByteArray DeclaredEncoding(const QByteArray& bytes)
{
    QXmlStreamReader reader(QString::fromLatin1(bytes.left(1024)));
    reader.readNext();
    const QByteArray name = reader.documentEncoding().toLatin1();
    return name.isEmpty() ? "UTF-8"_ba : name;
}

// The first line end of the text; LF if there is none.
QString LineEnd(const QString& text)
{
    const qsizetype carriageReturn = text.indexOf(u'\r'), lineFeed = text.indexOf(u'\n');
    if (carriageReturn < 0 || (lineFeed >= 0 && lineFeed < carriageReturn))
        return u"\n"_s;
    return lineFeed == carriageReturn + 1 ? u"\r\n"_s : u"\r"_s;
}

} // namespace

bool CXMLText::Decode(const QByteArray& bytes)
{
    const auto detected = QStringConverter::encodingForData(bytes, u'<');
    m_encoding = detected ? QByteArray(QStringConverter::nameForEncoding(*detected))
                          : DeclaredEncoding(bytes);
    QStringDecoder decoder(m_encoding.constData(), QStringConverter::Flag::ConvertInitialBom);
    if (!decoder.isValid())
        return false;
    m_text = decoder(bytes);
    if (m_text.startsWith(byteOrderMark)) {
        m_text.remove(0, 1);
        m_mark = QStringConverter::Flag::WriteBom;
    }
    m_lineEnd = LineEnd(m_text);
    // A reader would take a second mark for the first one.
    return !m_text.startsWith(byteOrderMark) && m_text.isValidUtf16() && Encode(m_text) == bytes &&
           std::none_of(m_text.cbegin(), m_text.cend(), IsForbidden);
}

std::optional<QByteArray> CXMLText::Encode(const QString& text) const
{
    QStringEncoder encoder(m_encoding.constData(), m_mark);
    QByteArray bytes = encoder(text);
    return encoder.hasError() ? std::nullopt : std::optional(bytes);
}

qsizetype CXMLText::SpaceBefore(qsizetype position) const
{
    while (position > 0 && spaces.contains(m_text[position - 1]))
        --position;
    return position;
}

qsizetype CXMLText::BlanksAfter(qsizetype position) const
{
    while (blanks.contains(m_text[position]))
        ++position;
    return position;
}

QString CXMLText::Lead(qsizetype position) const
{
    qsizetype lineStart = position;
    while (lineStart > 0 && blanks.contains(m_text[lineStart - 1]))
        --lineStart;
    const bool isFirstOnLine = lineStart == 0 || lineEnds.contains(m_text[lineStart - 1]);
    return isFirstOnLine ? m_lineEnd + m_text.sliced(lineStart, position - lineStart) : QString();
}

std::pair<qsizetype, qsizetype> CXMLText::NextValue(qsizetype position) const
{
    qsizetype quote = m_text.indexOf(u'=', position) + 1;
    while (spaces.contains(m_text[quote]))
        ++quote;
    return {quote + 1, m_text.indexOf(m_text[quote], quote + 1)};
}

qsizetype CXMLText::DataEnd(qsizetype position, qsizetype limit) const
{
    while ((position = m_text.indexOf(u'<', position)) < limit && MarkupEnd(position) == position)
        position = At(position, u"<![CDATA[") ? m_text.indexOf(u"]]>", position) : position + 1;
    return std::min(position, limit);
}

qsizetype CXMLText::MarkupEnd(qsizetype position) const
{
    for (;;) {
        if (At(position, u"<!--"))
            position = m_text.indexOf(u"-->", position + 4) + 3;
        else if (At(position, u"<?"))
            position = m_text.indexOf(u"?>", position + 2) + 2;
        else
            return position;
    }
}

QString CXMLText::Escaped(const std::string& utf8, char16_t quote) const
{
    QString text = FromUtf8(utf8);
    std::replace_if(text.begin(), text.end(), IsForbidden, QChar::ReplacementCharacter);
    const bool hasAll = Encode(text).has_value();
    QString escaped;
    for (const char32_t c : text.toStdU32String()) {
        const QString character = QStringView(QChar::fromUcs4(c)).toString();
        if (c == '&')
            escaped += u"&amp;"_s;
        else if (c == '<')
            escaped += u"&lt;"_s;
        else if (c == '\n' && !quote)
            escaped += m_lineEnd;
        else if ((c < ' ' && (quote || c != '\t')) || c == quote || !(hasAll || Encode(character)))
            escaped += u"&#%1;"_s.arg(uint(c));
        else
            escaped += character;
    }
    // "]]>" must not be in text, nor arise with what follows.
    if (!quote && escaped.endsWith(u']'))
        escaped.replace(escaped.size() - 1, 1, u"&#93;"_s);
    return quote ? escaped : escaped.replace(u"]]>"_s, u"]]&gt;"_s);
}

bool CXMLText::At(qsizetype position, QStringView what) const
{
    return QStringView(m_text).sliced(position).startsWith(what);
}

} // namespace kvo
