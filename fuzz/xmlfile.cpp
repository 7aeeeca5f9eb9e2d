// An XML file: refused, or saved with the same bytes and, after some edits, loaded as edited.
#include "kvo/xmlfile.h"

#include "tests/tree.h"

#include <algorithm>
#include <random>
#include <vector>

using CNode = kvo::CXMLFile::CNode;

constexpr const char* names[] = {"a", "c", "Include"};
constexpr const char* values[] = {"", "]]", "..\\bin", " é <&>]]>'\"\t\n", "中\U0001F600"};

// Level by level.
static std::vector<CNode*> elements(const kvo::CXMLFile& file)
{
    std::vector<CNode*> all = {file.GetCurr()};
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (CNode* child = all[i]->Child(); child; child = child->Next())
            all.push_back(child);
    }
    return all;
}

// The value without white space, some of which goes with removed elements.
static std::string valueOf(const CNode* node)
{
    std::string value = node->value;
    std::erase_if(value, [](char c) { return strchr(" \t\n", c); });
    return value;
}

static bool isEdited(CNode* saved, CNode* node)
{
    return saved->name == node->name && !saved->Child() == !node->Child() &&
           !saved->Next() == !node->Next() && valueOf(saved) == valueOf(node) &&
           std::ranges::all_of(names, [&](const char* name) {
               return saved->attributes.Exists(name) == node->attributes.Exists(name) &&
                      saved->attributes[name] == node->attributes[name];
           });
}

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(u"file"_s);
    const QByteArray input(data, qsizetype(size));
    writeFile(path, input);
    kvo::CXMLFile file;
    if (!file.Load(path.toStdString()))
        return 0;
    Q_ASSERT(file.Save(path.toStdString()) && readFile(path) == input);

    std::minstd_rand random(qHash(input));
    const auto pick = [&](const auto& list) { return list[random() % std::size(list)]; };
    for (auto edits = random() % 8; edits > 0; --edits) {
        CNode* const node = pick(elements(file));
        const char* const name = pick(names);
        switch (random() % 6) {
        case 0:
            file.SetCurr(node);
            file.Remove();
            break;
        case 1:
            node->value = pick(values);
            break;
        case 2:
            node->InsertChild(new CNode("Link"), false);
            break;
        case 3:
            node->attributes.Remove(name);
            break;
        case 4:
            node->name = name;
            break;
        default:
            node->attributes[name] = pick(values);
        }
    }
    kvo::CXMLFile saved;
    Q_ASSERT(file.Save(path.toStdString()) && saved.Load(path.toStdString()));
    Q_ASSERT(std::ranges::equal(elements(saved), elements(file), isEdited));
    return 0;
}
