#pragma once

#include <QString>

#include <algorithm>
#include <map>
#include <utility>

namespace kvo {

// Edits of a text that are made all at once, at positions in the text as it was before. Part of
// CXMLFile; not for callers.
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

} // namespace kvo
