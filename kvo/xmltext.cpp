#include "kvo/xmltext.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>

namespace kvo {

namespace {

constexpr QChar byteOrderMark(0xFEFF);

QByteArray DeclaredEncoding(const QByteArray& bytes)
{
    QXmlStreamReader reader(QString::fromLatin1(bytes.left(1024)));
    reader.readNext();
    const QByteArray name = reader.documentEncoding().toLatin1();
    return name.isEmpty() ? QByteArrayLiteral("UTF-8") : name;
}

bool IsXmlChar(char32_t c)
{
    return c >= 0x20 ? c != 0xFFFE && c != 0xFFFF : c == '\t' || c == '\n' || c == '\r';
}

bool IsSpace(QChar c)
{
    return c == u' ' || c == u'\t';
}

} // namespace

bool IsBlank(QChar c)
{
    return IsSpace(c) || c == u'\r' || c == u'\n';
}

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
    static const QRegularExpression lineEnd(QStringLiteral("\r\n?|\n"));
    const auto match = lineEnd.match(m_text);
    m_lineEnd = match.hasMatch() ? match.captured() : QStringLiteral("\n");
    // A reader would take a second mark for the first one.
    return !m_text.startsWith(byteOrderMark) && Encode(m_text) == bytes;
}

std::optional<QByteArray> CXMLText::Encode(const QString& text) const
{
    QStringEncoder encoder(m_encoding.constData(), m_mark);
    QByteArray bytes = encoder(text);
    return encoder.hasError() ? std::nullopt : std::optional(bytes);
}

QStringView CXMLText::Piece(qsizetype begin, qsizetype end) const
{
    return QStringView(m_text).sliced(begin, end - begin);
}

qsizetype CXMLText::BlanksBefore(qsizetype position) const
{
    while (position > 0 && IsBlank(m_text[position - 1]))
        --position;
    return position;
}

qsizetype CXMLText::SpacesAfter(qsizetype position) const
{
    while (IsSpace(m_text[position]))
        ++position;
    return position;
}

QString CXMLText::Lead(qsizetype position) const
{
    qsizetype line = position;
    while (line > 0 && IsSpace(m_text[line - 1]))
        --line;
    if (line > 0 && !IsBlank(m_text[line - 1]))
        return {};
    return m_lineEnd + m_text.mid(line, position - line);
}

QStringView CXMLText::Name(qsizetype tag) const
{
    qsizetype end = tag + 1;
    while (!IsBlank(m_text[end]) && m_text[end] != u'/' && m_text[end] != u'>')
        ++end;
    return Piece(tag + 1, end);
}

CXMLText::Span CXMLText::NextValue(qsizetype position) const
{
    qsizetype quote = m_text.indexOf(u'=', position) + 1;
    while (IsBlank(m_text[quote]))
        ++quote;
    return {quote + 1, m_text.indexOf(m_text[quote], quote + 1)};
}

qsizetype CXMLText::DataEnd(qsizetype position, qsizetype limit) const
{
    while ((position = m_text.indexOf(u'<', position)) < limit && At(position, u"<![CDATA["))
        position = m_text.indexOf(u"]]>", position) + 3;
    return std::min(position, limit);
}

qsizetype CXMLText::MarkupEnd(qsizetype position) const
{
    return At(position, u"<?") ? m_text.indexOf(u"?>", position + 2) + 2
                               : m_text.indexOf(u"-->", position + 4) + 3;
}

QString CXMLText::Escaped(const std::string& utf8, char16_t quote) const
{
    QString escaped;
    for (const char32_t c : QString::fromStdString(utf8).toStdU32String())
        escaped += Escaped(IsXmlChar(c) ? c : U'\uFFFD', quote);
    return quote ? escaped : escaped.replace(QStringLiteral("]]>"), QStringLiteral("]]&gt;"));
}

QString CXMLText::Escaped(char32_t c, char16_t quote) const
{
    if (c == '&')
        return QStringLiteral("&amp;");
    if (c == '<')
        return QStringLiteral("&lt;");
    if (c == '\n' && !quote)
        return m_lineEnd;
    QString character = QString::fromUcs4(&c, 1);
    if ((c < ' ' && (quote || c != '\t')) || (quote && c == quote) ||
        (c > '~' && !Encode(character)))
        return QStringLiteral("&#%1;").arg(c);
    return character;
}

bool CXMLText::At(qsizetype position, QStringView what) const
{
    return QStringView(m_text).sliced(position).startsWith(what);
}

} // namespace kvo
