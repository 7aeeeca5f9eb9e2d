// An XML file: refused, or saved with the same bytes and, after an edit, loaded again with that
// edit and no other.
#include "kvo/xmlfile.h"

#include "tests/tree.h"

#include <algorithm>
#include <functional>
#include <random>
#include <vector>

using CNode = kvo::CXMLFile::CNode;

constexpr const char* names[] = {"a", "Condition", "Include", "Name", "SourceFiles"};
constexpr const char* values[] = {"", "x", "..\\bin", " é <&>]]>'\"\t\n", "中\U0001F600"};

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

// Text around child elements is no value.
static bool areSame(CNode* a, CNode* b)
{
    return a->name == b->name && !a->Child() == !b->Child() && !a->Next() == !b->Next() &&
           (a->Child() || a->value == b->value) &&
           std::ranges::all_of(names, [&](const char* name) {
               return a->attributes.Exists(name) == b->attributes.Exists(name) &&
                      a->attributes[name] == b->attributes[name];
           });
}

static void edit(kvo::CXMLFile& file, std::minstd_rand random)
{
    const auto pick = [&](const auto& list) { return list[random() % std::size(list)]; };
    CNode* const node = pick(elements(file));
    const char* const name = pick(names);
    const char* const value = pick(values);
    const std::function<void()> edits[] = {
        [&] { file.SetCurr(node->Next()), file.Remove(); },
        // With a value, as the text that was around a last child would be one.
        [&] { file.SetCurr(node->Child()), file.Remove(), node->value = "x"; },
        [&] { node->value = value; },
        [&] { node->InsertChild(new CNode("Link"), false); },
        [&] { node->attributes.Remove(name); },
        [&] { node->attributes[name] = value; },
    };
    pick(edits)();
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

    edit(file, std::minstd_rand(qHash(input)));
    kvo::CXMLFile saved;
    Q_ASSERT(file.Save(path.toStdString()) && saved.Load(path.toStdString()));
    Q_ASSERT(std::ranges::equal(elements(saved), elements(file), areSame));
    return 0;
}
