// A solution and, from the first "<" on, its project "P\P.csproj".
#include "adapt/solution.h"
#include "kvo/xmlfile.h"

#include "tests/tree.h"

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size)
{
    const QByteArray input(data, qsizetype(size));
    const qsizetype end = input.contains('<') ? input.indexOf('<') : input.size();
    static const QTemporaryDir root;
    const Tree sdk = {
        {u"dotnet.sln"_s, input.first(end)}, {u"P/"_s, {}}, {u"P/P.csproj"_s, input.sliced(end)}};
    writeTree(root.filePath(u"sdk"_s), sdk);
    Names names;
    GetDotnetDirs(names, root.filePath(u"sdk"_s));
    Q_ASSERT(names.size() <= input.count("Project("));

    for (const bool copyWrapper : {false, true}) {
        writeTree(root.filePath(u"copy"_s), {{u"P/P.csproj"_s, "copied"}});
        Q_ASSERT(FilterSln(root.filePath(u"sdk/dotnet.sln"_s), root.filePath(u"copy"_s), true,
                           copyWrapper));
        Q_ASSERT(readTree(root.filePath(u"sdk"_s)) == sdk);
        Q_ASSERT(readTree(root.path()).size() == 2 + 2 * sdk.size());
        const QString project = root.filePath(u"copy/P/P.csproj"_s);
        Q_ASSERT(readFile(project) == "copied" || kvo::CXMLFile().Load(project.toStdString()));
    }
    return 0;
}
