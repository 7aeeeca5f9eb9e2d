#include "kvo/xmlfile.h"

#include "kvo/xmltext.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QXmlStreamReader>

#include <algorithm>
#include <unordered_map>

namespace kvo {

namespace {

// A replacement of a piece of the loaded text.
struct Edit
{
    qsizetype begin;
    qsizetype end;
    QString text;
};

std::string Utf8(QStringView text)
{
    return text.toUtf8().toStdString();
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
    if (node && node != this && !node->m_parent && !node->IsLoaded())
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
    void LearnIndent(const CNode& parent, const CNode& child);
    void Remember(qsizetype begin, qsizetype end, const std::string& meaning);
    bool Changed(qsizetype begin, qsizetype end, const std::string& now) const;

    CXMLText source;
    QString indent; // of one level
    // What a piece of the text, named by where it begins, means if that is not what it says.
    std::unordered_map<qsizetype, std::string> meanings;
    std::unique_ptr<CNode> root;
    std::vector<std::unique_ptr<CNode>> removed; // the caller may still hold elements within
    CNode* current = nullptr;
};

bool CXMLFile::Document::Parse()
{
    const QString& text = source.Text();
    QXmlStreamReader reader(text);
    reader.setNamespaceProcessing(false);
    // Bounds what all entity references of the text can make together, not one alone.
    reader.setEntityExpansionLimit(std::min<qsizetype>(4096, 64'000'000 / (text.count(u'&') + 1)));

    CNode* open = nullptr;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        const qsizetype end = source.Begin() + reader.characterOffset();
        if (token == QXmlStreamReader::StartElement) {
            if (text[end - 1] == u'>')
                open = OpenElement(open, reader, end);
            else
                reader.skipCurrentElement(); // it comes from an entity
        } else if (token == QXmlStreamReader::EndElement) {
            CloseElement(*open, end);
            open = open->m_parent;
        } else if (token == QXmlStreamReader::Characters && open && !open->m_child) {
            open->value += reader.text().toUtf8().toStdString();
        }
    }
    if (indent.isEmpty())
        indent = QStringLiteral("  ");
    current = root.get();
    return !reader.hasError();
}

CXMLFile::CNode* CXMLFile::Document::OpenElement(CNode* parent, const QXmlStreamReader& reader,
                                                 qsizetype end)
{
    auto* node = new CNode(Utf8(reader.qualifiedName()));
    node->m_begin = source.Text().lastIndexOf(u'<', end - 1);
    node->m_content = node->m_valueEnd = node->m_contentEnd = node->m_end = end;
    if (parent) {
        parent->value.clear();
        parent->Append(node);
        LearnIndent(*parent, *node);
    } else {
        root.reset(node);
    }

    qsizetype position = node->m_begin + 1 + reader.qualifiedName().size();
    for (const QXmlStreamAttribute& attribute : reader.attributes()) {
        if (attribute.isDefault())
            continue;
        const AttribSpan span = *source.NextAttrib(position);
        const std::string value = Utf8(attribute.value());
        Remember(span.value, span.valueEnd, value);
        node->attributes.m_items.emplace_back(Utf8(attribute.qualifiedName()), value);
        position = span.valueEnd + 1;
    }
    return node;
}

void CXMLFile::Document::CloseElement(CNode& node, qsizetype end)
{
    if (end == node.m_end)
        return; // <a/>
    node.m_end = end;
    node.m_contentEnd = source.Text().lastIndexOf(u'<', end - 1);
    if (!node.m_child)
        node.m_valueEnd = node.m_contentEnd;
    Remember(node.m_content, node.m_valueEnd, node.value);
}

void CXMLFile::Document::LearnIndent(const CNode& parent, const CNode& child)
{
    if (!indent.isEmpty() || parent.m_child != &child)
        return;
    const QString outer = source.Lead(parent.m_begin);
    const QString inner = source.Lead(child.m_begin);
    if (!outer.isEmpty() && inner.startsWith(outer))
        indent = inner.sliced(outer.size());
}

void CXMLFile::Document::Remember(qsizetype begin, qsizetype end, const std::string& meaning)
{
    if (!Equals(source.Piece(begin, end), meaning))
        meanings.emplace(begin, meaning);
}

bool CXMLFile::Document::Changed(qsizetype begin, qsizetype end, const std::string& now) const
{
    const auto meaning = meanings.find(begin);
    return meaning == meanings.end() ? !Equals(source.Piece(begin, end), now)
                                     : meaning->second != now;
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
    void TakeOut(const CNode& node);

    QString AddedChildren(const CNode& parent, qsizetype end) const;
    QString ChildLead(const CNode& parent) const;
    QString Elements(const CNode* node, QString lead) const;
    QString StartTag(const CNode& node) const;
    static QString EndTag(const QString& name);
    QString Attribute(const std::pair<std::string, std::string>& attribute) const;

    const Document& m_document;
    const CXMLText& m_source;
    const QString& m_text;
    std::vector<Edit> m_edits;
};

QString CXMLFile::Writer::Edited()
{
    for (const auto& node : m_document.removed) {
        if (node->IsLoaded())
            TakeOut(*node);
    }
    for (const CNode* node = m_document.root.get(); node; node = Following(node)) {
        EditAttributes(*node);
        EditContent(*node);
    }
    std::stable_sort(m_edits.begin(), m_edits.end(), [](const Edit& a, const Edit& b) {
        return std::pair(a.begin, a.end) < std::pair(b.begin, b.end);
    });

    QString edited;
    qsizetype done = 0;
    for (const Edit& edit : m_edits) {
        if (edit.begin < done)
            continue; // within an element that was taken out
        edited += m_source.Piece(done, edit.begin);
        edited += edit.text;
        done = edit.end;
    }
    return edited += m_source.Piece(done, m_text.size());
}

// The next loaded element in the order of the file; inserted siblings come after loaded ones.
const CXMLFile::CNode* CXMLFile::Writer::Following(const CNode* node)
{
    if (node->m_child && node->m_child->IsLoaded())
        return node->m_child;
    while (node && !(node->m_next && node->m_next->IsLoaded()))
        node = node->m_parent;
    return node ? node->m_next : nullptr;
}

void CXMLFile::Writer::EditAttributes(const CNode& node)
{
    qsizetype position = node.m_begin + 1 + m_source.Name(node.m_begin).size();
    auto now = node.attributes.m_items.begin();
    const auto last = node.attributes.m_items.end();
    // Attributes are only taken out or added at the end, so one pass finds which are which.
    while (const auto span = m_source.NextAttrib(position)) {
        if (now == last || !Equals(span->name, now->first))
            m_edits.push_back({position, span->valueEnd + 1, {}});
        else {
            if (m_document.Changed(span->value, span->valueEnd, now->second)) {
                const char16_t quote = m_text[span->value - 1].unicode();
                m_edits.push_back(
                    {span->value, span->valueEnd, m_source.Escaped(now->second, quote)});
            }
            ++now;
        }
        position = span->valueEnd + 1;
    }
    for (; now != last; ++now)
        m_edits.push_back({position, position, Attribute(*now)});
}

void CXMLFile::Writer::EditContent(const CNode& node)
{
    const bool changed = m_document.Changed(node.m_content, node.m_valueEnd, node.value);
    const bool grown = node.m_lastChild && !node.m_lastChild->IsLoaded();
    if (!changed && !grown)
        return;
    const qsizetype end = std::max<qsizetype>(changed ? node.m_valueEnd : node.m_content,
                                              m_source.BlanksBefore(node.m_contentEnd));
    const QString added = grown ? AddedChildren(node, end) : QString();
    if (node.m_content == node.m_end) {
        const qsizetype slash = m_source.BlanksBefore(node.m_end - 2);
        const QStringView name = m_source.Name(node.m_begin);
        m_edits.push_back({slash, node.m_end,
                           u'>' + m_source.Escaped(node.value) + added + EndTag(name.toString())});
        return;
    }
    if (changed)
        ReplaceValue(node);
    m_edits.push_back({end, end, added});
}

void CXMLFile::Writer::ReplaceValue(const CNode& node)
{
    QString value = m_source.Escaped(node.value);
    qsizetype position = node.m_content;
    for (;;) {
        const qsizetype end = m_source.DataEnd(position, node.m_valueEnd);
        if (end > position || end == node.m_valueEnd)
            m_edits.push_back({position, end, std::exchange(value, {})});
        if (end == node.m_valueEnd)
            return;
        position = m_source.MarkupEnd(end);
    }
}

// Takes the white space before the element along, unless that would join words.
void CXMLFile::Writer::TakeOut(const CNode& node)
{
    const qsizetype blanks = m_source.BlanksBefore(node.m_begin);
    const QChar after = m_text[node.m_end];
    const bool apart = IsBlank(after) || (after == u'<' && m_text[blanks - 1] == u'>');
    m_edits.push_back({apart ? blanks : node.m_begin, node.m_end, {}});
}

// The inserted children, for `end`, where the white space before the end tag begins.
QString CXMLFile::Writer::AddedChildren(const CNode& parent, qsizetype end) const
{
    const CNode* first = parent.m_lastChild;
    while (first->m_previous && !first->m_previous->IsLoaded())
        first = first->m_previous;
    const QString lead = ChildLead(parent);
    const QString added = Elements(first, lead);
    const auto rest = m_source.Piece(end, parent.m_contentEnd);
    const bool closed = lead.isEmpty() || rest.contains(u'\n') || rest.contains(u'\r');
    return closed ? added : added + m_source.Lead(parent.m_begin);
}

QString CXMLFile::Writer::ChildLead(const CNode& parent) const
{
    if (parent.m_child->IsLoaded())
        return m_source.Lead(parent.m_child->m_begin);
    const QString lead = m_source.Lead(parent.m_begin);
    const bool hasText = parent.value.find_first_not_of(" \t\r\n") != std::string::npos;
    return lead.isEmpty() || hasText ? QString() : lead + m_document.indent;
}

// The inserted node, the siblings after it and all below them, each on a line of its own unless
// `lead` is empty.
QString CXMLFile::Writer::Elements(const CNode* node, QString lead) const
{
    const CNode* const parent = node->m_parent;
    const QString indent = lead.isEmpty() ? QString() : m_document.indent;
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
        return text + QStringLiteral(" />");
    text += u'>' + m_source.Escaped(node.value);
    return node.m_child ? text : text + EndTag(name);
}

QString CXMLFile::Writer::EndTag(const QString& name)
{
    return QStringLiteral("</") + name + u'>';
}

QString CXMLFile::Writer::Attribute(const std::pair<std::string, std::string>& attribute) const
{
    return u' ' + QString::fromStdString(attribute.first) + QStringLiteral("=\"") +
           m_source.Escaped(attribute.second, u'"') + u'"';
}

CXMLFile::CXMLFile() = default;
CXMLFile::~CXMLFile() = default;

bool CXMLFile::Load(const std::string& path)
{
    m_document.reset();
    QFile file(QString::fromStdString(path));
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    auto document = std::make_unique<Document>();
    if (!document->source.Decode(file.readAll()) || !document->Parse())
        return false;
    m_document = std::move(document);
    return true;
}

bool CXMLFile::Save(const std::string& path) const
{
    const QFileInfo info(QString::fromStdString(path));
    if (!m_document || path.empty() || (info.exists() && !info.isFile()))
        return false;
    const auto bytes = m_document->source.Encode(Writer(*m_document).Edited());
    QSaveFile file(info.filePath());
    return bytes && file.open(QIODevice::WriteOnly) && file.write(*bytes) == bytes->size() &&
           file.flush() && file.commit();
}

CXMLFile::CNode* CXMLFile::GetCurr() const
{
    return m_document ? m_document->current : nullptr;
}

void CXMLFile::SetCurr(CNode* node)
{
    if (m_document)
        m_document->current = node;
}

void CXMLFile::Root()
{
    if (m_document)
        m_document->current = m_document->root.get();
}

void CXMLFile::Remove()
{
    CNode* const node = GetCurr();
    if (node && node->m_parent) {
        node->m_parent->Detach(node);
        m_document->removed.emplace_back(node);
    }
    Root();
}

} // namespace kvo
