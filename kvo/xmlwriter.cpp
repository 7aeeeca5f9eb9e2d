#include "kvo/xmldocument.h"

#include <algorithm>
#include <map>

using Qt::StringLiterals::operator""_s;

namespace kvo {

namespace {

// Edits of a text that are made all at once, at positions in the text as it was before.
class CEdits
{
public:
    // Puts `text` in place of what is between two positions. All spans go, also where they overlap,
    // but the text of an edit that begins inside another's span is dropped. Texts for one position
    // come in the order of their calls, and before a span that begins there.
    void Replace(qsizetype begin, qsizetype end, const QString& text = {})
    {
        m_edits.insert({{begin, end}, text});
    }

    QString Applied(QStringView text) const
    {
        QString edited;
        qsizetype done = 0;
        for (const auto& [span, replacement] : m_edits) {
            if (span.first >= done)
                edited.append(text.sliced(done, span.first - done)).append(replacement);
            done = std::max(done, span.second);
        }
        return edited.append(text.sliced(done));
    }

private:
    std::multimap<std::pair<qsizetype, qsizetype>, QString> m_edits; // by begin and end
};

} // namespace

// Finds what differs between the tree and the text.
class CXMLFile::Document::Writer
{
public:
    explicit Writer(const Document& document)
        : m_document(document)
        , m_source(document.source)
    {}

    QString Edited()
    {
        TakeOutRemoved();
        // What is edited in a removed element goes with it.
        for (const CNode& node : m_document.elements) {
            EditName(node);
            EditAttributes(node);
            EditContent(node);
        }
        return m_edits.Applied(m_source.Text());
    }

private:
    void EditName(const CNode& node)
    {
        const qsizetype begin = node.m_begin + 1;
        const QAnyStringView loaded = QStringView(m_source.Text()).sliced(begin, node.m_nameSize);
        if (loaded == QAnyStringView(node.name))
            return;
        const QString name = QString::fromStdString(node.name);
        m_edits.Replace(begin, begin + node.m_nameSize, name);
        const bool hasEndTag = node.m_content != node.m_end;
        const qsizetype endName = node.m_contentEnd + 2; // after "</"
        if (hasEndTag)
            m_edits.Replace(endName, endName + node.m_nameSize, name);
    }

    void EditAttributes(const CNode& node)
    {
        const auto& items = node.attributes.m_items;
        const auto& loaded = node.m_loadedAttributes.m_items;
        if (items == loaded)
            return;
        qsizetype position = node.m_begin + 1 + node.m_nameSize;
        auto now = items.begin();
        // Attributes are only removed, or added at the end, so one pass finds which are which.
        for (const auto& [name, value] : loaded) {
            const auto [begin, end] = m_source.NextValue(position);
            if (now == items.end() || now->first != name) {
                m_edits.Replace(position, end + 1);
            } else {
                if (now->second != value)
                    m_edits.Replace(begin, end,
                                    m_source.Escaped(now->second, m_source.Text()[end].unicode()));
                ++now;
            }
            position = end + 1;
        }
        for (; now != items.end(); ++now)
            m_edits.Replace(position, position, Attribute(*now));
    }

    void EditContent(const CNode& node)
    {
        const bool changed = node.value != node.m_loadedValue;
        const bool grown = node.m_lastChild && !node.m_lastChild->IsLoaded();
        if (!changed && !grown)
            return;
        const qsizetype end = changed && ReplacesText(node)
                                  ? node.m_contentEnd
                                  : m_source.SpaceBefore(node.m_contentEnd);
        const QString added = grown ? AddedChildren(node, end) : QString();
        if (node.m_content == node.m_end) {
            m_edits.Replace(m_source.SpaceBefore(node.m_end - 2), node.m_end,
                            u'>' + m_source.Escaped(node.value) + added + u"</"_s +
                                QString::fromStdString(node.name) + u'>');
            return;
        }
        if (changed)
            ReplaceValue(node);
        m_edits.Replace(end, end, added);
    }

    // Whether a new value takes the place of text. Without text, children keep the white space
    // between them.
    static bool ReplacesText(const CNode& node)
    {
        return !node.HasLoadedChild() || !node.m_loadedValue.empty();
    }

    void ReplaceValue(const CNode& node)
    {
        // Nothing that was removed can begin before this position and end after it.
        qsizetype position = m_source.MarkupEnd(node.m_content);
        m_edits.Replace(position, position, m_source.Escaped(node.value));
        if (!ReplacesText(node))
            return;
        for (const CNode* child = node.m_child; child && child->IsLoaded(); child = child->m_next) {
            RemoveData(position, child->m_begin);
            position = child->m_end;
        }
        RemoveData(position, node.m_contentEnd);
    }

    // Removes all between the positions but comments and processing instructions.
    void RemoveData(qsizetype position, qsizetype limit)
    {
        while (position < limit) {
            const qsizetype end = m_source.DataEnd(position, limit);
            m_edits.Replace(position, end);
            position = m_source.MarkupEnd(end);
        }
    }

    // Elements that end a line go with the white space before them. What else is on a line stays.
    void TakeOutRemoved()
    {
        const auto& removed = m_document.removed;
        for (auto next = removed.begin(); next != removed.end();) {
            // Elements with only blanks between them go as one.
            const qsizetype begin = next->first;
            qsizetype end = begin;
            qsizetype endWithBlanks = begin;
            for (; next != removed.end() && next->first <= endWithBlanks; ++next) {
                end = std::max(end, next->second);
                endWithBlanks = m_source.BlanksAfter(end);
            }
            const bool endsLine = lineEnds.contains(m_source.Text()[endWithBlanks]);
            const bool followsSpace = spaces.contains(m_source.Text()[begin - 1]);
            // A comment keeps "]]" and ">" apart.
            const bool mayJoin = m_source.Text()[begin - 1] == u']';
            m_edits.Replace(endsLine ? m_source.SpaceBefore(begin) : begin, end,
                            mayJoin ? u"<!---->"_s : QString());
            // By an edit of its own, as a child may be inserted at the end.
            if (endsLine || followsSpace)
                m_edits.Replace(end, endWithBlanks);
        }
    }

    // The inserted children, to be put at `end`: each indented like the first loaded one or, if
    // there is none, one level deeper than the parent; on the same line if that child or parent
    // begins no line, or if a parent without children has text.
    QString AddedChildren(const CNode& parent, qsizetype end) const
    {
        const bool hasSibling = parent.HasLoadedChild();
        const bool hasText = parent.value.find_first_not_of(" \t\r\n") != std::string::npos;
        const CNode& model = hasSibling ? *parent.m_child : parent;
        const QString outer = m_source.Lead(model.m_begin);
        const bool staysOnLine = outer.isEmpty() || (hasText && !hasSibling);
        const QString indent = staysOnLine ? QString() : Indent(model);
        const QString lead = staysOnLine ? QString() : outer + (hasSibling ? QString() : indent);
        QString added;
        for (const CNode* node = parent.m_child; node; node = node->m_next) {
            if (!node->IsLoaded())
                added += Element(*node, lead, indent);
        }
        const QString rest = m_source.Text().mid(end, parent.m_contentEnd - end);
        const bool endsLine = rest.contains(u'\r') || rest.contains(u'\n');
        if (!staysOnLine && !endsLine)
            added += m_source.Lead(parent.m_begin);
        return added;
    }

    // By how much the element is indented beyond its parent; two spaces if that cannot be told.
    QString Indent(const CNode& node) const
    {
        const QString outer = node.m_parent ? m_source.Lead(node.m_parent->m_begin) : QString();
        const QString inner = m_source.Lead(node.m_begin);
        return !outer.isEmpty() && inner.startsWith(outer) ? inner.sliced(outer.size()) : u"  "_s;
    }

    // An inserted element with all below it; each begins with `lead`, which grows by `indent` a
    // level.
    QString Element(const CNode& node, const QString& lead, const QString& indent) const
    {
        const QString name = QString::fromStdString(node.name);
        QString text = lead + u'<' + name;
        for (const auto& attribute : node.attributes.m_items)
            text += Attribute(attribute);
        if (!node.m_child && node.value.empty())
            return text + u" />"_s;
        text += u'>' + m_source.Escaped(node.value);
        for (const CNode* child = node.m_child; child; child = child->m_next)
            text += Element(*child, lead + indent, indent);
        return text + (node.m_child ? lead : QString()) + u"</"_s + name + u'>';
    }

    QString Attribute(const std::pair<std::string, std::string>& attribute) const
    {
        return u' ' + QString::fromStdString(attribute.first) + u"=\""_s +
               m_source.Escaped(attribute.second, u'"') + u'"';
    }

    const Document& m_document;
    const CXMLText& m_source;
    CEdits m_edits;
};

QString CXMLFile::Document::Edited() const
{
    return Writer(*this).Edited();
}

} // namespace kvo
