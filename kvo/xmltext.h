#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <optional>
#include <string>

namespace kvo {

// An attribute in a start tag.
struct AttribSpan
{
    QStringView name;
    qsizetype value;
    qsizetype valueEnd; // where the closing quote stands
};

// Whether the character is white space to XML.
bool IsBlank(QChar c);
bool Equals(QStringView text, const std::string& utf8);

// The text of an XML file and where things stand in it. The functions that take a position rely
// on the text being well-formed.
class CXMLText
{
public:
    // Takes the bytes of a file. False when its encoding is unknown or does not give the same
    // bytes again.
    bool Decode(const QByteArray& bytes);
    // The text in the encoding of the file; nothing when that lacks one of the characters.
    std::optional<QByteArray> Encode(const QString& text) const;

    const QString& Text() const { return m_text; }
    // Begins with the byte order mark if the file does; an XML reader does not count it.
    qsizetype Begin() const;
    QStringView Piece(qsizetype begin, qsizetype end) const;

    qsizetype BlanksBefore(qsizetype position) const;
    // The line end and indentation of what stands at the position; empty when it is not the
    // first on its line.
    QString Lead(qsizetype position) const;
    // The name in the start tag.
    QStringView Name(qsizetype tag) const;
    // The next attribute of a start tag, from the end of its name or of the attribute before.
    std::optional<AttribSpan> NextAttrib(qsizetype position) const;
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
    QString m_text;
    QString m_lineEnd;
};

} // namespace kvo
