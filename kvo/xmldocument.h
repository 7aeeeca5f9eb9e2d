#pragma once

#include "kvo/xmlfile.h"
#include "kvo/xmltext.h"

#include <deque>
#include <map>

class QXmlStreamReader;

namespace kvo {

// A document as it was loaded, and the tree that the caller edits. Part of CXMLFile; not for
// callers.
struct CXMLFile::Document
{
    // Reads `source` into `elements`. False if it is malformed or refused. See xmlreader.cpp.
    bool Parse();
    // The text of `source`, changed where the tree has changed. See xmlwriter.cpp.
    QString Edited() const;

    CXMLText source;
    std::deque<CNode> elements;             // in the order of the file, with the removed ones
    std::map<qsizetype, qsizetype> removed; // where the removed ones begin and end

private:
    class Writer;
    CNode* OpenElement(CNode* parent, const QXmlStreamReader& reader, qsizetype end);
    void CloseElement(CNode& node, qsizetype end) const;
};

} // namespace kvo
