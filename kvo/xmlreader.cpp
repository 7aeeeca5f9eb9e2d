#include "kvo/xmldocument.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace kvo {

namespace {

std::string Utf8(QStringView text)
{
    return text.toUtf8().toStdString();
}

// QXmlStreamReader compares the attributes of a tag or of a DTD with each other, which takes
// minutes for very many. There is no "<" within a tag or an attribute list.
bool HasTooManyAttributes(QStringView text)
{
    qsizetype lists = 0;
    for (const QStringView piece : text.tokenize(u'<')) {
        if (piece.startsWith(u"!--") || piece.startsWith(u"![CDATA[") || piece.startsWith(u'?'))
            continue;
        int quotes = 0;
        QChar open;
        for (const QChar c : piece) {
            if (open.isNull() && c == u'>')
                break;
            if (open.isNull() ? c == u'"' || c == u'\'' : c == open) {
                open = open.isNull() ? c : QChar();
                ++quotes;
            }
        }
        if (piece.startsWith(u"!ATTLIST"))
            lists += piece.size();
        if (quotes > 2 * 1000 || lists > 64'000)
            return true;
    }
    return false;
}

} // namespace

bool CXMLFile::Document::Parse()
{
    const QString& text = source.Text();
    if (HasTooManyAttributes(text))
        return false;
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    // Limits what all entity references of the text can expand to together, not one alone.
    const qsizetype limit = 64'000'000 / (text.count(u'&') + 1);
    reader.setEntityExpansionLimit(int(std::min<qsizetype>(4096, limit)));

    CNode* open = nullptr;
    bool hasType = false;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        const qsizetype end = reader.characterOffset();
        if (token == QXmlStreamReader::StartElement) {
            if (text[end - 1] == u'>')
                open = OpenElement(open, reader, end);
            else
                reader.skipCurrentElement(); // it comes from an entity
        } else if (token == QXmlStreamReader::EndElement) {
            if (end != open->m_end) { // not <a/>
                open->m_contentEnd = text.lastIndexOf(u'<', end - 1);
                open->m_end = end;
            }
            open->m_loadedValue = open->value;
            open = open->m_parent;
        } else if (token == QXmlStreamReader::Characters && open && !open->m_child) {
            open->value += Utf8(reader.text());
        } else if (token == QXmlStreamReader::DTD &&
                   (!elements.empty() || std::exchange(hasType, true))) {
            return false; // the reader accepts any number anywhere
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
    if (parent) {
        parent->value.clear();
        parent->Append(&node);
    }
    const QXmlStreamAttributes attributes = reader.attributes(); // const, so as not to detach
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (!attribute.isDefault())
            node.attributes.m_items.emplace_back(Utf8(attribute.qualifiedName()),
                                                 Utf8(attribute.value()));
    }
    node.m_loadedAttributes = node.attributes;
    return &node;
}

} // namespace kvo
