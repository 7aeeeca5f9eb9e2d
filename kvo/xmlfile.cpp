#include "kvo/xmlfile.h"

#include "kvo/wholefile.h"
#include "kvo/xmltext.h"

#include <QSaveFile>
#include <QXmlStreamReader>

#include <algorithm>
#include <map>

using Qt::StringLiterals::operator""_s;

namespace kvo {

namespace {

std::string Utf8(QStringView text)
{
    return text.toUtf8().toStdString();
}

// The quotes that open or close a value in what follows a "<", up to the ">" that ends the tag.
int CountQuotes(QStringView tag)
{
    int quotes = 0;
    QChar open;
    for (const QChar c : tag) {
        if (open.isNull() && c == u'>')
            break;
        if (open.isNull() ? c == u'"' || c == u'\'' : c == open) {
            open = open.isNull() ? c : QChar();
            ++quotes;
        }
    }
    return quotes;
}

// QXmlStreamReader compares the attributes of a tag with each other, which takes minutes for very
// many. No "<" stands within a tag.
bool HasHugeTag(QStringView text)
{
    for (const QStringView piece : text.tokenize(u'<')) {
        const bool isText =
            piece.startsWith(u"!--") || piece.startsWith(u"![CDATA[") || piece.startsWith(u'?');
        if (!isText && CountQuotes(piece) > 2 * 1000)
            return true;
    }
    return false;
}

} // namespace

bool CXMLFile::CAttribArray::Exists(const char* name) const
{
    return std::any_of(m_items.begin(), m_items.end(),
                       [name](const auto& item) { return item.first == name; });
}

std::string& CXMLFile::CAttribArray::operator[](const char* name)
{
    for (auto& [key, value] : m_items) {
        if (key == name)
            return value;
    }
    return m_items.emplace_back(name, std::string()).second;
}

void CXMLFile::CAttribArray::Remove(const char* name)
{
    std::erase_if(m_items, [name](const auto& item) { return item.first == name; });
}

CXMLFile::CNode::CNode(std::string name)
    : name(std::move(name))
{}

CXMLFile::CNode::~CNode()
{
    // The children's children move up in front of their parent's sibling, so that no depth of
    // nesting uses up the stack.
    for (CNode* node = m_child; node;) {
        if (node->m_child) {
            node->m_lastChild->m_next = node->m_next;
            node->m_next = std::exchange(node->m_child, nullptr);
        }
        delete std::exchange(node, node->m_next);
    }
}

void CXMLFile::CNode::Append(CNode* node)
{
    node->m_isOwned = true;
    node->m_parent = this;
    node->m_previous = m_lastChild;
    (m_lastChild ? m_lastChild->m_next : m_child) = node;
    m_lastChild = node;
}

void CXMLFile::CNode::Detach(CNode* node)
{
    (node->m_previous ? node->m_previous->m_next : m_child) = node->m_next;
    (node->m_next ? node->m_next->m_previous : m_lastChild) = node->m_previous;
    node->m_parent = node->m_previous = node->m_next = nullptr;
}

void CXMLFile::CNode::InsertChild(CNode* node, bool)
{
    if (node && node != this && !node->m_isOwned)
        Append(node);
}

CXMLFile::CNode* CXMLFile::CNode::FindChild(const char* childName) const
{
    return !m_child || m_child->name == childName ? m_child : m_child->FindNext(childName);
}

CXMLFile::CNode* CXMLFile::CNode::FindNext(const char* siblingName) const
{
    CNode* node = m_next;
    while (node && node->name != siblingName)
        node = node->m_next;
    return node;
}

// What was loaded: the text and the tree of its elements.
struct CXMLFile::Document
{
    bool Parse();
    CNode* OpenElement(CNode* parent, const QXmlStreamReader& reader, qsizetype end);
    void CloseElement(CNode& node, qsizetype end);

    CXMLText source;
    std::unique_ptr<CNode> root;
    std::vector<std::unique_ptr<CNode>> removed; // the caller may still hold elements within
};

bool CXMLFile::Document::Parse()
{
    const QString& text = source.Text();
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    // Bounds what all entity references of the text can make together, not one alone.
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
            CloseElement(*open, end);
            open = open->m_parent;
        } else if (token == QXmlStreamReader::Characters && open && !open->m_child) {
            open->value += Utf8(reader.text());
        } else if (token == QXmlStreamReader::DTD && (root || std::exchange(hasType, true))) {
            return false; // the reader takes any number anywhere
        }
    }
    return !reader.hasError();
}

CXMLFile::CNode* CXMLFile::Document::OpenElement(CNode* parent, const QXmlStreamReader& reader,
                                                 qsizetype end)
{
    auto* node = new CNode(Utf8(reader.qualifiedName()));
    node->m_begin = source.Text().lastIndexOf(u'<', end - 1);
    node->m_content = node->m_contentEnd = node->m_end = end;
    if (parent) {
        parent->value.clear();
        parent->Append(node);
    } else {
        node->m_isOwned = true;
        root.reset(node);
    }
    const QXmlStreamAttributes attributes = reader.attributes(); // const, not to copy them all
    for (const QXmlStreamAttribute& attribute : attributes) {
        if (!attribute.isDefault())
            node->attributes.m_items.emplace_back(Utf8(attribute.qualifiedName()),
                                                  Utf8(attribute.value()));
    }
    node->m_loadedAttributes = node->attributes;
    return node;
}

void CXMLFile::Document::CloseElement(CNode& node, qsizetype end)
{
    if (end == node.m_end)
        return; // <a/>
    node.m_end = end;
    node.m_contentEnd = source.Text().lastIndexOf(u'<', end - 1);
    node.m_loadedValue = node.value;
}

// Turns what differs between the tree and the text into edits of the text.
class CXMLFile::Writer
{
public:
    explicit Writer(const Document& document)
        : m_document(document)
        , m_source(document.source)
        , m_text(document.source.Text())
    {}
    QString Edited();

private:
    static const CNode* Following(const CNode* node);

    void EditAttributes(const CNode& node);
    void EditContent(const CNode& node);
    void ReplaceValue(const CNode& node);
    void TakeOutRemoved();

    QString AddedChildren(const CNode& parent, qsizetype end) const;
    QString Indent(const CNode& node) const;
    QString Elements(const CNode* node, QString lead, const QString& indent) const;
    QString StartTag(const CNode& node) const;
    static QString EndTag(const QString& name);
    QString Attribute(const std::pair<std::string, std::string>& attribute) const;

    const Document& m_document;
    const CXMLText& m_source;
    const QString& m_text;
    std::map<qsizetype, qsizetype> m_removed;       // where elements that are to go begin and end
    std::multimap<CXMLText::Span, QString> m_edits; // what takes the place of a piece of the text
};

QString CXMLFile::Writer::Edited()
{
    for (const auto& node : m_document.removed) {
        if (node->IsLoaded())
            m_removed.emplace(node->m_begin, node->m_end);
    }
    TakeOutRemoved();
    for (const CNode* node = m_document.root.get(); node; node = Following(node)) {
        EditAttributes(*node);
        EditContent(*node);
    }
    QString edited;
    qsizetype done = 0;
    for (const auto& [span, text] : m_edits) {
        if (span.first >= done) { // not within what is gone
            edited += m_source.Piece(done, span.first);
            edited += text;
        }
        done = std::max(done, span.second);
    }
    return edited += m_source.Piece(done, m_text.size());
}

// The next loaded element in the order of the file; inserted siblings come after loaded ones.
const CXMLFile::CNode* CXMLFile::Writer::Following(const CNode* node)
{
    if (node->HasLoadedChild())
        return node->m_child;
    while (node && !(node->m_next && node->m_next->IsLoaded()))
        node = node->m_parent;
    return node ? node->m_next : nullptr;
}

void CXMLFile::Writer::EditAttributes(const CNode& node)
{
    const auto& items = node.attributes.m_items;
    const auto& loaded = node.m_loadedAttributes.m_items;
    if (items == loaded)
        return;
    qsizetype position = node.m_begin + 1 + m_source.Name(node.m_begin).size();
    auto now = items.begin();
    // Attributes are only taken out or added at the end, so one pass finds which are which.
    for (const auto& [name, value] : loaded) {
        const auto [begin, end] = m_source.NextValue(position);
        if (now == items.end() || now->first != name) {
            m_edits.insert({{position, end + 1}, {}});
        } else {
            if (now->second != value) {
                const QChar quote = m_text[end];
                m_edits.insert({{begin, end}, m_source.Escaped(now->second, quote.unicode())});
            }
            ++now;
        }
        position = end + 1;
    }
    for (; now != items.end(); ++now)
        m_edits.insert({{position, position}, Attribute(*now)});
}

void CXMLFile::Writer::EditContent(const CNode& node)
{
    const bool changed = node.value != node.m_loadedValue;
    const bool grown = node.m_lastChild && !node.m_lastChild->IsLoaded();
    if (!changed && !grown)
        return;
    const qsizetype end = changed && !node.HasLoadedChild()
                              ? node.m_contentEnd
                              : m_source.BlanksBefore(node.m_contentEnd);
    const QString added = grown ? AddedChildren(node, end) : QString();
    if (node.m_content == node.m_end) {
        const qsizetype slash = m_source.BlanksBefore(node.m_end - 2);
        const QStringView name = m_source.Name(node.m_begin);
        m_edits.insert({{slash, node.m_end},
                        u'>' + m_source.Escaped(node.value) + added + EndTag(name.toString())});
        return;
    }
    if (changed)
        ReplaceValue(node);
    if (grown)
        m_edits.insert({{end, end}, added});
}

void CXMLFile::Writer::ReplaceValue(const CNode& node)
{
    QString value = m_source.Escaped(node.value);
    const qsizetype valueEnd = node.HasLoadedChild() ? node.m_content : node.m_contentEnd;
    qsizetype position = node.m_content;
    for (;;) {
        const qsizetype end = m_source.DataEnd(position, valueEnd);
        if (end > position || end == valueEnd)
            m_edits.insert({{position, end}, std::exchange(value, {})});
        if (end == valueEnd)
            return;
        const auto removed = m_removed.find(end);
        position = removed != m_removed.end() ? removed->second : m_source.MarkupEnd(end);
    }
}

// A whole line goes with the white space that led to it. What else stands on a line stays where
// it is, and no words are joined.
void CXMLFile::Writer::TakeOutRemoved()
{
    for (auto next = m_removed.begin(); next != m_removed.end();) {
        const qsizetype begin = next->first;
        qsizetype end = begin;
        qsizetype after = begin;
        for (; next != m_removed.end() && next->first <= after; ++next) {
            end = std::max(end, next->second);
            after = m_source.SpacesAfter(end);
        }
        const bool lineEnds = m_text[after] == u'\r' || m_text[after] == u'\n';
        m_edits.insert({{lineEnds ? m_source.BlanksBefore(begin) : begin, end}, {}});
        if (lineEnds || IsBlank(m_text[begin - 1]))
            m_edits.insert({{end, after}, {}});
    }
}

// The inserted children, to be put at `end`. They stand as the first loaded one does, or one level
// deeper than the parent.
QString CXMLFile::Writer::AddedChildren(const CNode& parent, qsizetype end) const
{
    const CNode* first = parent.m_lastChild;
    while (first->m_previous && !first->m_previous->IsLoaded())
        first = first->m_previous;
    const bool hasSibling = parent.HasLoadedChild();
    const bool hasText = parent.value.find_first_not_of(" \t\r\n") != std::string::npos;
    const CNode& model = hasSibling ? *parent.m_child : parent;
    const QString lead = m_source.Lead(model.m_begin);
    if (lead.isEmpty() || (hasText && !hasSibling))
        return Elements(first, {}, {});
    const QString indent = Indent(model);
    const QString added = Elements(first, hasSibling ? lead : lead + indent, indent);
    const QStringView rest = m_source.Piece(end, parent.m_contentEnd);
    const bool closed = rest.contains(u'\n') || rest.contains(u'\r');
    return closed ? added : added + m_source.Lead(parent.m_begin);
}

// What the element is indented by beyond its parent; the top element shows nothing of the kind.
QString CXMLFile::Writer::Indent(const CNode& node) const
{
    const QString outer = node.m_parent ? m_source.Lead(node.m_parent->m_begin) : QString();
    const QString inner = m_source.Lead(node.m_begin);
    return !outer.isEmpty() && inner.startsWith(outer) ? inner.sliced(outer.size()) : u"  "_s;
}

// The inserted node, the siblings after it and all below them, each on a line of its own unless
// `lead` is empty.
QString CXMLFile::Writer::Elements(const CNode* node, QString lead, const QString& indent) const
{
    const CNode* const parent = node->m_parent;
    QString text;
    while (node != parent) {
        text += lead + StartTag(*node);
        if (node->m_child) {
            node = node->m_child;
            lead += indent;
            continue;
        }
        while (!node->m_next && node->m_parent != parent) {
            node = node->m_parent;
            lead.chop(indent.size());
            text += lead + EndTag(QString::fromStdString(node->name));
        }
        node = node->m_next ? node->m_next : parent;
    }
    return text;
}

// The start tag and the value, and the end tag if there are no children to come before it.
QString CXMLFile::Writer::StartTag(const CNode& node) const
{
    const QString name = QString::fromStdString(node.name);
    QString text = u'<' + name;
    for (const auto& attribute : node.attributes.m_items)
        text += Attribute(attribute);
    if (!node.m_child && node.value.empty())
        return text + u" />"_s;
    text += u'>' + m_source.Escaped(node.value);
    return node.m_child ? text : text + EndTag(name);
}

QString CXMLFile::Writer::EndTag(const QString& name)
{
    return u"</"_s + name + u'>';
}

QString CXMLFile::Writer::Attribute(const std::pair<std::string, std::string>& attribute) const
{
    return u' ' + QString::fromStdString(attribute.first) + u"=\""_s +
           m_source.Escaped(attribute.second, u'"') + u'"';
}

CXMLFile::CXMLFile()
    : m_document(std::make_unique<Document>())
{}

CXMLFile::~CXMLFile() = default;

bool CXMLFile::Load(const std::string& path)
{
    const auto bytes = ReadWhole(path);
    auto document = std::make_unique<Document>();
    const bool loaded = bytes && document->source.Decode(*bytes) &&
                        !HasHugeTag(document->source.Text()) && document->Parse();
    m_document = loaded ? std::move(document) : std::make_unique<Document>();
    Root();
    return loaded;
}

bool CXMLFile::Save(const std::string& path) const
{
    const auto file = m_document->root ? OpenReplacement(path) : nullptr;
    if (!file)
        return false;
    const auto bytes = m_document->source.Encode(Writer(*m_document).Edited());
    return bytes && file->write(*bytes) == bytes->size() && file->commit();
}

void CXMLFile::Root()
{
    m_current = m_document->root.get();
}

void CXMLFile::Remove()
{
    if (m_current && m_current->m_parent) {
        m_current->m_parent->Detach(m_current);
        m_document->removed.emplace_back(m_current);
    }
    Root();
}

} // namespace kvo
