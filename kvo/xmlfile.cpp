#include "kvo/xmlfile.h"

#include "kvo/regularfile.h"
#include "kvo/xmldocument.h"

#include <QSaveFile>

#include <algorithm>

namespace kvo {

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

void CXMLFile::CNode::InsertChild(CNode* node, bool)
{
    if (!node || node->m_isOwned)
        return;
    node->m_isOwned = true;
    m_inserted.emplace_front(node);
    Append(node);
}

void CXMLFile::CNode::Append(CNode* node)
{
    node->m_parent = this;
    node->m_previous = m_lastChild;
    (m_lastChild ? m_lastChild->m_next : m_child) = node;
    m_lastChild = node;
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

CXMLFile::CXMLFile()
    : m_document(std::make_unique<Document>())
{}

CXMLFile::~CXMLFile() = default;

bool CXMLFile::Load(const std::string& path)
{
    const auto bytes = ReadWhole(path);
    auto document = std::make_unique<Document>();
    const bool loaded = bytes && document->source.Decode(*bytes) && document->Parse();
    m_document = loaded ? std::move(document) : std::make_unique<Document>();
    Root();
    return loaded;
}

bool CXMLFile::Save(const std::string& path) const
{
    const auto file = m_document->elements.empty() ? nullptr : OpenReplacement(path);
    if (!file)
        return false;
    const auto bytes = m_document->source.Encode(m_document->Edited());
    return bytes && file->write(*bytes) == bytes->size() && file->commit();
}

void CXMLFile::Root()
{
    m_current = m_document->elements.empty() ? nullptr : &m_document->elements.front();
}

void CXMLFile::Remove()
{
    if (CNode* const parent = m_current ? m_current->m_parent : nullptr) {
        CNode* const previous = m_current->m_previous;
        CNode* const next = m_current->m_next;
        (previous ? previous->m_next : parent->m_child) = next;
        (next ? next->m_previous : parent->m_lastChild) = previous;
        m_current->m_parent = m_current->m_previous = m_current->m_next = nullptr;
        if (m_current->IsLoaded())
            m_document->removed.emplace(m_current->m_begin, m_current->m_end);
    }
    Root();
}

} // namespace kvo
