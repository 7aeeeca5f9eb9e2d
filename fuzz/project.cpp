// A solution and, from the first "<" on, its project "P\P.csproj".
#include "adapt/solution.h"
#include "kvo/xmlfile.h"

#include "fuzz/require.h"
#include "tests/tree.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size)
{
    const QByteArray input(data, qsizetype(size));
    const qsizetype end = input.contains('<') ? input.indexOf('<') : input.size();
    static const QTemporaryDir root;
    const Tree sdk = {{u"dotnet.sln"_s, input.first(end)}, {u"P/"_s, {}}, {u"P/P.csproj"_s, input.sliced(end)}};
    writeTree(root.filePath(u"sdk"_s), sdk);
    Names names;
    GetDotnetDirs(names, root.filePath(u"sdk"_s));
    require(names.size() <= input.count("Project("));

    for (const bool copyWrapper : {false, true}) {
        writeTree(root.filePath(u"copy"_s), {{u"P/P.csproj"_s, "copied"}});
        require(FilterSln(root.filePath(u"sdk/dotnet.sln"_s), root.filePath(u"copy"_s), true, copyWrapper));
        require(readTree(root.filePath(u"sdk"_s)) == sdk);
        require(readTree(root.path()).size() == 2 + 2 * sdk.size());
        const QString project = root.filePath(u"copy/P/P.csproj"_s);
        require(readFile(project) == "copied" || kvo::CXMLFile().Load(project.toStdString()));
    }
    return 0;
}
