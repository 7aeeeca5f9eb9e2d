#include "kvo/xmldocument.h"

#include <QRegularExpression>
#include <QXmlStreamReader>

#include <algorithm>

using Qt::StringLiterals::operator""_s;

namespace kvo {

namespace {

std::string Utf8(QStringView text)
{
    return text.toUtf8().toStdString();
}

// QXmlStreamReader compares the attributes of a tag or of a DTD with each other, which takes
// minutes for very many.
bool HasTooManyAttributes(const QString& text)
{
    // 1,001 values in one tag, outside of comments, CDATA sections, instructions and declarations.
    static const QRegularExpression values(uR"(
        <(?: !-- (?:[^-]++|-(?!->))*+ | !\[CDATA\[ (?:[^]]++|](?!]>))*+ | \? (?:[^?]++|\?(?!>))*+
           | ![A-Z] (?:[^<>"']++|(?1))*+ ) (*SKIP)(*FAIL)
        | <(?:[^<>"']*+ ("[^"]*+"|'[^']*+')){1001})"_s,
                                           QRegularExpression::ExtendedPatternSyntaxOption);
    // Decode() has made sure that the text is valid UTF-16.
    const auto match = values.match(text, 0, QRegularExpression::NormalMatch,
                                    QRegularExpression::DontCheckSubjectStringMatchOption);
    return !match.isValid() || match.hasMatch() ||
           (text.size() > 64'000 && text.contains(u"<!ATTLIST"_s));
}

// See https://www.w3.org/TR/xml/#NT-Name.
bool IsName(QStringView text)
{
    static const QRegularExpression name(
        uR"(\A([:A-Z_a-z\x{C0}-\x{D6}\x{D8}-\x{F6}\x{F8}-\x{2FF}\x{370}-\x{37D}\x{37F}-\x{1FFF})"
        R"(\x{200C}\x{200D}\x{2070}-\x{218F}\x{2C00}-\x{2FEF}\x{3001}-\x{D7FF}\x{F900}-\x{FDCF})"
        R"(\x{FDF0}-\x{FFFD}\x{10000}-\x{EFFFF}])((?1)|[-.0-9\x{B7}\x{300}-\x{36F}\x{203F}\x{2040}])*\z)"_s);
    const auto isAsciiLetter = [](QChar c) { return c < u'\x80' && c.isLetter(); };
    // Nearly every name is plain, and this is faster.
    const bool isPlain = std::all_of(text.begin(), text.end(), isAsciiLetter);
    return isPlain || name.match(text.toString()).hasMatch();
}

// Whether the names that the reader does not check are valid, except those that a DTD gives to
// elements and attributes.
bool HasValidNames(const QXmlStreamReader& reader)
{
    const auto isNamed = [](const auto& item) { return IsName(item.name()); };
    const auto attributes = reader.attributes();
    if (reader.tokenType() != QXmlStreamReader::DTD)
        return std::all_of(attributes.begin(), attributes.end(),
                           [](const auto& item) { return IsName(item.qualifiedName()); });
    const auto entities = reader.entityDeclarations();
    const auto notations = reader.notationDeclarations();
    return IsName(reader.dtdName()) && std::all_of(entities.begin(), entities.end(), isNamed) &&
           std::all_of(notations.begin(), notations.end(), isNamed);
}

} // namespace

bool CXMLFile::Document::Parse()
{
    const QString& text = source.Text();
    if (HasTooManyAttributes(text))
        return false;
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    // At most 4,096 characters for a reference, and about 64,000,000 for all of them together.
    const qsizetype limit = 64'000'000 / (text.count(u'&') + 1);
    reader.setEntityExpansionLimit(int(std::min<qsizetype>(4096, limit)));

    CNode* open = nullptr;
    bool hasType = false;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (!HasValidNames(reader))
            return false;
        const qsizetype end = reader.characterOffset();
        if (token == QXmlStreamReader::StartElement) {
            if (text[end - 1] == u'>')
                open = OpenElement(open, reader, end);
            else
                reader.skipCurrentElement(); // it comes from an entity
        } else if (token == QXmlStreamReader::EndElement) {
            CloseElement(*open, end);
            open = open->m_parent;
        } else if (token == QXmlStreamReader::Characters && open) {
            open->value += Utf8(reader.text());
        } else if (token == QXmlStreamReader::DTD &&
                   (!elements.empty() || std::exchange(hasType, true))) {
            return false; // the reader accepts document types anywhere
        }
    }
    return !reader.hasError();
}

CXMLFile::CNode* CXMLFile::Document::OpenElement(CNode* parent, const QXmlStreamReader& reader,
                                                 qsizetype end)
{
    CNode& node = elements.emplace_back(Utf8(reader.qualifiedName()));
    node.m_isOwned = true;
    node.m_nameSize = reader.qualifiedName().size();
    node.m_begin = source.Text().lastIndexOf(u'<', end - 1);
    node.m_content = node.m_contentEnd = node.m_end = end;
    if (parent)
        parent->Append(&node);
    const QXmlStreamAttributes attributes = reader.attributes(); // const, so as not to detach
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (!attribute.isDefault())
            node.attributes.m_items.emplace_back(Utf8(attribute.qualifiedName()),
                                                 Utf8(attribute.value()));
    }
    node.m_loadedAttributes = node.attributes;
    return &node;
}

void CXMLFile::Document::CloseElement(CNode& node, qsizetype end) const
{
    if (end != node.m_end) { // not <a/>
        node.m_contentEnd = source.Text().lastIndexOf(u'<', end - 1);
        node.m_end = end;
    }
    const bool isLayout = node.value.find_first_not_of(" \t\n") == std::string::npos;
    if (node.m_child && isLayout)
        node.value.clear();
    node.m_loadedValue = node.value;
}

} // namespace kvo
