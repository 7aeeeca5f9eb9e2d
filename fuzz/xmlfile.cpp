// An XML file: refused, or saved with the same bytes and, after some edits, still an XML file.
#include "kvo/xmlfile.h"

#include "tests/tree.h"

#include <random>

using CNode = kvo::CXMLFile::CNode;

constexpr const char* names[] = {"a", "c", "Include"};
constexpr const char* values[] = {"", "]]", "..\\bin", " é <&>]]>'\"\t\n", "中\U0001F600"};

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
        CNode* node = file.GetCurr();
        while (CNode* next = random() % 2 ? node->Child() : node->Next())
            node = next;
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
            node->attributes.Remove(pick(names));
            break;
        case 4:
            node->name = pick(names);
            break;
        default:
            node->attributes[pick(names)] = pick(values);
        }
    }
    Q_ASSERT(file.Save(path.toStdString()) && file.Load(path.toStdString()));
    return 0;
}
