// An XML file: refused, or saved with the same bytes and, after an edit, loaded again with that edit and no other.
#include "kvo/xmlfile.h"

#include "fuzz/require.h"
#include "tests/tree.h"

#include <functional>
#include <random>
#include <vector>

using CNode = kvo::CXMLFile::CNode;

namespace {

constexpr const char* names[] = {"a", "Condition", "Include", "Name", "SourceFiles"};
constexpr const char* values[] = {"", "x", "..\\bin", " é <&>]]>'\"\t\n", "中\U0001F600"};

std::vector<CNode*> elements(const kvo::CXMLFile& file)
{
    std::vector<CNode*> all = {file.GetCurr()};
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (CNode* child = all[i]->Child(); child; child = child->Next())
            all.push_back(child);
    }
    return all;
}

// Less the text of one element and, as it is no value, that around child elements.
std::string meaning(const kvo::CXMLFile& file, std::size_t without)
{
    std::string text;
    for (CNode* node : elements(file)) {
        text += '<' + node->name;
        for (const char* name : names)
            text += node->attributes.Exists(name) ? node->attributes[name] + '"' : "-";
        text += without-- == 0 || node->Child() ? ">" : '>' + node->value;
        for (CNode* child = node->Child(); child; child = child->Next())
            text += '+';
    }
    return text;
}

// Returns which of the elements has lost a child, so that its text is no value yet.
std::size_t edit(kvo::CXMLFile& file, std::minstd_rand random)
{
    const auto pick = [&](const auto& list) { return list[random() % std::size(list)]; };
    const auto all = elements(file);
    const std::size_t place = random() % all.size();
    CNode* const node = all[place];
    const std::function<void()> edits[] = {
        [&] { file.SetCurr(node->Child()), file.Remove(); },
        [&] { node->InsertChild(new CNode("Link"), false); },
        [&] { node->attributes.Remove(pick(names)); },
        [&] { node->attributes[pick(names)] = pick(values); },
        [&] { node->value = pick(values); },
    };
    const std::size_t choice = random() % std::size(edits);
    edits[choice]();
    return choice == 0 ? place : all.size();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(u"file"_s);
    const QByteArray input(data, qsizetype(size));
    writeFile(path, input);
    kvo::CXMLFile file;
    if (!file.Load(path.toStdString()))
        return 0;
    require(file.Save(path.toStdString()) && readFile(path) == input);

    const std::size_t without = edit(file, std::minstd_rand(qHash(input)));
    kvo::CXMLFile saved;
    require(file.Save(path.toStdString()) && saved.Load(path.toStdString()));
    require(meaning(saved, without) == meaning(file, without));
    return 0;
}
