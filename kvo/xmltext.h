#pragma once

#include <QByteArray>
#include <QString>
#include <QStringConverter>
#include <QStringView>

#include <optional>
#include <string>
#include <utility>

namespace kvo {

// What XML counts as white space.
inline constexpr QStringView blanks = u" \t";
inline constexpr QStringView lineEnds = u"\r\n";
inline constexpr QStringView spaces = u" \t\r\n";

// The text of an XML file, without its byte order mark, and, once it is known to be well-formed,
// where things are in it. Part of CXMLFile; not for callers.
class CXMLText
{
public:
    // Takes the bytes of a file. False if its encoding is unknown or would not write the same
    // bytes, or if it holds a second byte order mark or a character that XML forbids.
    bool Decode(const QByteArray& bytes);
    // The text in the encoding of the file, with the byte order mark if the file had one; nothing
    // if the encoding lacks one of the characters.
    std::optional<QByteArray> Encode(const QString& text) const;

    const QString& Text() const { return m_text; }
    // Where the white space that ends at the position begins.
    qsizetype SpaceBefore(qsizetype position) const;
    // Where the blanks that begin at the position end.
    qsizetype BlanksAfter(qsizetype position) const;
    // The file's line end and the indentation before the position; empty if the position is not the
    // first on its line.
    QString Lead(qsizetype position) const;
    // Where the value of the next attribute, without its quotes, begins and ends. Requires: the
    // position is in a start tag, at the end of the element's name or of another attribute.
    std::pair<qsizetype, qsizetype> NextValue(qsizetype position) const;
    // Where the data that begins at the position ends: at the next comment or processing
    // instruction, or at the limit.
    qsizetype DataEnd(qsizetype position, qsizetype limit) const;
    // Where the comments and processing instructions that begin at the position end; the position
    // itself if there are none.
    qsizetype MarkupEnd(qsizetype position) const;

    // The UTF-8 as character data or, if `quote` is given, as an attribute value within such
    // quotes.
    QString Escaped(const std::string& utf8, char16_t quote = 0) const;

private:
    bool At(qsizetype position, QStringView what) const;

    QByteArray m_encoding;
    QStringConverter::Flag m_mark = QStringConverter::Flag::Default;
    QString m_text;
    QString m_lineEnd;
};

} // namespace kvo
