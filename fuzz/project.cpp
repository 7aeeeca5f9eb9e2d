// A solution and, from the first "<" on, its project "P\P.csproj".
#include "adapt/solution.h"
#include "kvo/xmlfile.h"

#include "tests/tree.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size)
{
    const QByteArray input(data, qsizetype(size));
    const qsizetype end = (input + '<').indexOf('<');
    const QByteArray solution = input.first(end);
    const QByteArray project = input.sliced(end);
    static const QTemporaryDir root;
    const QString sdk = root.filePath(u"sdk"_s);
    const QString copy = root.filePath(u"copy"_s);
    writeFile(sdk + u"/dotnet.sln"_s, solution);
    writeFile(sdk + u"/P/P.csproj"_s, project);
    Names names;
    GetDotnetDirs(names, sdk);
    Q_ASSERT(names.size() <= solution.count("Project("));

    for (const bool copyWrapper : {false, true}) {
        writeFile(copy + u"/P/P.csproj"_s, "copied");
        Q_ASSERT(FilterSln(sdk + u"/dotnet.sln"_s, copy, true, copyWrapper));
        Tree tree = readTree(root.path());
        Q_ASSERT(tree.size() == 8);
        Q_ASSERT(tree[u"sdk/dotnet.sln"_s] == solution && tree[u"sdk/P/P.csproj"_s] == project);
        Q_ASSERT(tree[u"copy/P/P.csproj"_s] == "copied" ||
                 kvo::CXMLFile().Load((copy + u"/P/P.csproj"_s).toStdString()));
    }
    return 0;
}
