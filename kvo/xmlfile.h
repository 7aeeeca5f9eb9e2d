#pragma once

#include <cstddef>
#include <forward_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kvo {

// An XML 1.0 document that keeps every byte which no edit touches: its encoding, line ends,
// comments, quotes and white space. All strings are UTF-8. One document is used by one thread.
//
// DTDs and entities outside the file are never read. Elements in an entity's text are not nodes;
// they stay as written. Refused although well-formed, besides rarer things:
// - a version other than 1.0;
// - a tag with more than 1,000 attributes, and "<!ATTLIST" in a file of over 64,000 characters;
// - an entity that expands to over 4,096 characters (fewer if the file has over 15,624 "&"), or
//   that stands for an escaped "<" or "&" and is used in an attribute;
// - names with a colon first, last or twice, or with any colon outside of elements and attributes;
// - names of elements and processing instructions with characters that only the fifth edition of
//   XML 1.0 allows;
// - a system identifier with "<" or "&";
// - encodings that Qt lacks or cannot write back byte for byte.
// Malformed DTDs, encoding declarations and names of undeclared entities may go unnoticed.
class CXMLFile
{
public:
    // The attributes of an element, in the order of the file, without defaults from a DTD.
    class CAttribArray
    {
    public:
        bool Exists(const char* name) const;
        // The value; an absent attribute is added, empty. Valid until one is added or removed.
        std::string& operator[](const char* name);
        // Does nothing when the attribute is absent.
        void Remove(const char* name);

    private:
        friend class CXMLFile;
        std::vector<std::pair<std::string, std::string>> m_items;
    };

    // An element, valid until it or one around it is removed, or the document is destroyed or
    // loads again.
    //
    // Save writes what has changed in `name`, `value` and `attributes`; a character that XML does
    // not allow is written as U+FFFD.
    class CNode
    {
    public:
        // A detached element; the caller's until it is inserted.
        explicit CNode(std::string elementName)
            : name(std::move(elementName))
        {}
        CNode(const CNode&) = delete;
        CNode& operator=(const CNode&) = delete;

        // Makes the node, created with `new`, the last child; it belongs to this node then.
        // Ignored when the node is null or was inserted before. The boolean has no effect.
        void InsertChild(CNode* node, bool);

        // Null when there is none. Only elements are visited.
        CNode* FindChild(const char* childName) const;
        CNode* FindNext(const char* siblingName) const;
        CNode* Child() const { return m_child; }
        CNode* Next() const { return m_next; }

        std::string name; // must be a valid one
        // The character data, references resolved and line ends as LF; empty if it is only white
        // space around child elements, which then stays. A new value comes first, but after
        // comments and processing instructions at the very beginning. These stay everywhere; CDATA
        // sections and entity references go, unless the old value was empty beside child elements.
        std::string value;
        CAttribArray attributes;

    private:
        friend class CXMLFile;
        bool IsLoaded() const { return m_end != 0; }
        bool HasLoadedChild() const { return m_child && m_child->IsLoaded(); }

        void Append(CNode* node);

        bool m_isOwned = false;
        std::forward_list<std::unique_ptr<CNode>> m_inserted; // also those that have been removed
        CNode* m_parent = nullptr;
        CNode* m_child = nullptr;
        CNode* m_lastChild = nullptr;
        CNode* m_next = nullptr;
        CNode* m_previous = nullptr;

        // What was loaded, and where it is in the text, all zero for an inserted element:
        //
        //     <a b="c"> content </a>        <a b="c" />
        //     |        |        |   |       |          |
        //     m_begin  |        |   m_end   m_begin    m_content, m_contentEnd, m_end
        //              |        m_contentEnd
        //              m_content
        std::string m_loadedValue;
        CAttribArray m_loadedAttributes;
        std::ptrdiff_t m_begin = 0;
        std::ptrdiff_t m_content = 0;
        std::ptrdiff_t m_contentEnd = 0;
        std::ptrdiff_t m_end = 0;
        std::ptrdiff_t m_nameSize = 0;
    };

    // An empty document, without any node.
    CXMLFile();
    ~CXMLFile();

    // Replaces the document by the file's and makes the top element the current one. On failure
    // (no such file, not a regular file, unknown encoding, malformed, refused) the document is
    // empty.
    bool Load(const std::string& path);

    // Writes the document in its own encoding. False when it is empty or cannot be written; a file
    // at the path then stays as it was.
    bool Save(const std::string& path) const;

    // The current element; null in an empty document.
    CNode* GetCurr() const { return m_current; }
    void SetCurr(CNode* node) { m_current = node; }
    void Root();

    // Takes the current element out with all below it, and makes the top element the current one.
    // The top element itself, a detached one and null are left alone.
    void Remove();

private:
    struct Document;
    std::unique_ptr<Document> m_document; // never null
    CNode* m_current = nullptr;
};

} // namespace kvo
