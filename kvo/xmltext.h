#pragma once

#include <QByteArray>
#include <QString>
#include <QStringConverter>
#include <QStringView>

#include <optional>
#include <string>
#include <utility>

namespace kvo {

// Whether the character is white space to XML.
bool IsBlank(QChar c);

// The text of an XML file, without its byte order mark, and where things stand in it. The functions
// that take a position rely on the text being well-formed.
class CXMLText
{
public:
    using Span = std::pair<qsizetype, qsizetype>; // where a piece begins and ends

    // Takes the bytes of a file. False when its encoding is unknown or does not give the same
    // bytes again.
    bool Decode(const QByteArray& bytes);
    // The text in the encoding of the file, with the byte order mark if the file had one; nothing
    // when the encoding lacks one of the characters.
    std::optional<QByteArray> Encode(const QString& text) const;

    const QString& Text() const { return m_text; }
    QStringView Piece(qsizetype begin, qsizetype end) const;

    // Where the white space that ends at the position begins.
    qsizetype BlanksBefore(qsizetype position) const;
    // Where the spaces and tabs that begin at the position end.
    qsizetype SpacesAfter(qsizetype position) const;
    // The line end and indentation of what stands at the position; empty when it is not the
    // first on its line.
    QString Lead(qsizetype position) const;
    // The name in the start tag.
    QStringView Name(qsizetype tag) const;
    // The value of the next attribute, from the end of the start tag's name or of the attribute
    // before.
    Span NextValue(qsizetype position) const;
    // Where the character data at the position ends: at a comment or processing instruction, or
    // at the limit.
    qsizetype DataEnd(qsizetype position, qsizetype limit) const;
    // Where the comment or processing instruction at the position ends.
    qsizetype MarkupEnd(qsizetype position) const;

    // The UTF-8 as character data, or as an attribute value within the given quotes.
    QString Escaped(const std::string& utf8, char16_t quote = 0) const;

private:
    bool At(qsizetype position, QStringView what) const;
    QString Escaped(char32_t c, char16_t quote) const;

    QByteArray m_encoding;
    QStringConverter::Flag m_mark = QStringConverter::Flag::Default;
    QString m_text;
    QString m_lineEnd;
};

} // namespace kvo
