#pragma once

#include "kvo/xmlfile.h"
#include "kvo/xmltext.h"

class QXmlStreamReader;

namespace kvo {

// A document as it was loaded, and the tree that the caller edits. Part of CXMLFile; not for
// callers.
struct CXMLFile::Document
{
    // Reads `source` into `root`. False if it is malformed or refused. See xmlreader.cpp.
    bool Parse();
    // The text of `source`, changed where the tree has changed. See xmlwriter.cpp.
    QString Edited() const;

    CXMLText source;
    std::unique_ptr<CNode> root;
    std::vector<std::unique_ptr<CNode>> removed; // kept, as the caller may hold elements in them

private:
    class Writer;
    CNode* OpenElement(CNode* parent, const QXmlStreamReader& reader, qsizetype end);
};

} // namespace kvo
