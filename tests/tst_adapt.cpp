#include "adapt/cmakelists.h"
#include "adapt/project.h"
#include "adapt/sdkimports.h"
#include "adapt/solution.h"
#include "adapt/strtok_quo.h"
#include "copy/list/copyfileentry.h"

#include "tests/table.h"

#include <csignal>
#include <vector>

#include <sys/resource.h>

namespace {

// An SDK, and the folder of a copy.
struct Sdk
{
    const QTemporaryDir root;
    const QString samples = root.filePath(u"sdk/samples"_s);
    const QString solution = samples + u"/dotnet.sln"_s;
    const QString copy = root.filePath(u"a côpy"_s);
    const QString solutionCopy = copy + u"/dotnet.sln"_s;

    Sdk()
    {
        writeFile(samples + u'/');
        writeFile(copy + u"/P/"_s);
    }
};

// With " in place of '.
QByteArray quoted(QByteArray text)
{
    return text.replace('\'', '"');
}

QByteArray tokens(const QByteArray& text, const char* delimiters)
{
    // Of its exact size, so that the address sanitizer sees access past either end.
    const QByteArray line = quoted(text);
    std::vector<char> bytes(line.constData(), line.constData() + line.size() + 1);
    char* position = nullptr;
    QByteArray found;
    for (char* token = strtok_quo(bytes.data(), delimiters, &position); token;
         token = strtok_quo(nullptr, delimiters, &position))
        found += QByteArray("[") + token + ']';
    return found.replace('"', '\'');
}

// Calls `write` while no file can grow beyond 100 kB.
template <typename Function>
void writeWithLimit(Function write)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{100'000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    write();
    setrlimit(RLIMIT_FSIZE, &before);
}

} // namespace

class TestAdapt : public QObject
{
    Q_OBJECT

private slots:
    void pointsCMakeListsAtTheSdk()
    {
        const QByteArray line = "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")";
        const QByteArray text = "\xff\r\n" + line + line + "\n#" + line.toLower() + line.chopped(1);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"file"_s);
        for (const auto& [sdk, written] : {std::pair(u"/s"_s, "/s/"),
                                           {u"/"_s, "//"},
                                           {u"/opt/x/../camera sdk/é//"_s, "/opt/camera sdk/é/"}}) {
            writeFile(path, text);
            QVERIFY(FilterCMakeLists(path, sdk));
            QCOMPARE(readFile(path), QByteArray(text).replace(
                                         line, "set(ZUVYSDKDIR \"" + QByteArray(written) + "\")"));
        }
    }

    void splitsOutsideQuotes()
    {
        QCOMPARE(tokens("", " "), "");
        QCOMPARE(tokens("'My Sample', 'a b\\c.csproj'", ", "), "[My Sample][a b\\c.csproj]");
        QCOMPARE(tokens("  a", " "), "[][a]");
        QCOMPARE(tokens("a, ,b, ", ", "), "[a][b]");
        QCOMPARE(tokens("a' b' 'c d", " "), "[a' b][c d]");
        QCOMPARE(tokens("'", " "), "[]");
        QCOMPARE(tokens("'a, b' c'", ""), "[a, b' c]");
        QCOMPARE(tokens("'{id}'\n", ", "), "[{id}'\n]");
        QVERIFY(!strtok_quo(nullptr, " ", nullptr));
    }

    void rewritesAProject_data() { addCases(QFINDTESTDATA("data/tst_adapt-projects.txt")); }

    void rewritesAProject()
    {
        QFETCH(Case, change);
        const Sdk sdk;
        writeFile(sdk.samples + u"/P/P.csproj"_s, change.before);
        RewriteProject({sdk.samples.toStdString(), sdk.copy.toStdString(), "P/P.csproj"},
                       change.actions.contains("project"), change.actions.contains("wrapper"));
        QCOMPARE(readFile(sdk.copy + u"/P/P.csproj"_s),
                 change.after.replace("{root}", sdk.root.path().toUtf8()));
    }

    void namesTheProjectsOfASolution()
    {
        const Sdk sdk;
        writeFile(sdk.solution, quoted("\r\n"
                                       "Project('{t}') = 'A', 'A\\A.csproj', '{1}'\r\n"
                                       "EndProject\n"
                                       "Project('{t}')='É B' ,'B','{2}'\n"
                                       "Project('{t}') = 'no id', 'A\\A.csproj'\n"
                                       "\tProject('{t}') = 'no', 'A', '{3}'\n"
                                       " Project('{t}') = 'no', 'A', '{3}'\n"
                                       "project('{t}') = 'no', 'A', '{3}'\n"
                                       "Projects('{t}') = 'no', 'A', '{3}'\n"));
        Names names;
        GetDotnetDirs(names, sdk.samples);
        QCOMPARE(names, Names({u"A"_s, u"É B"_s}));
    }

    void writesSolutionLinesWithCrLf()
    {
        const Sdk sdk;
        const QByteArray longest(2047, '#');
        writeFile(sdk.solution, "a\n\r\n" + longest + '\n' + longest + "on\nlast");
        QVERIFY(FilterSln(sdk.solution, sdk.copy, true, false));
        QCOMPARE(readFile(sdk.solutionCopy),
                 "a\r\n\r\n" + longest + "\r\n" + longest + "\r\non\r\nlast\r\n");
    }

    void rewritesTheProjectsInTheCopy()
    {
        const Sdk sdk;
        QByteArray solution;
        for (const QString& path : {u"A/É 1.csproj"_s, u"A/bad.csproj"_s, u"../A/out.csproj"_s}) {
            writeFile(sdk.samples + u'/' + path, path.contains(u"bad") ? "<P" : "<P ></P >");
            writeFile(sdk.copy + u'/' + path, "copied");
            solution += "Project(\"{t}\") = \"A\", \"" + path.toUtf8() + "\", \"{1}\"\n";
        }
        writeFile(sdk.solution, solution.replace('/', '\\'));
        QVERIFY(FilterSln(sdk.solution, sdk.copy, true, false));
        QCOMPARE(readFile(sdk.copy + u"/A/É 1.csproj"_s), "<P ></P >");
        QCOMPARE(readFile(sdk.copy + u"/A/bad.csproj"_s), "copied");
        QCOMPARE(readFile(sdk.copy + u"/../A/out.csproj"_s), "copied");
    }

    void readsLinkedFilesOfTheSdk()
    {
        const Sdk sdk;
        const QString project = sdk.root.filePath(u"x"_s), solution = sdk.root.filePath(u"y"_s);
        writeFile(project, "<P/>");
        writeFile(solution, quoted("Project('{t}') = 'P', 'P.csproj', '{1}'\n"));
        QVERIFY(QFile::link(project, sdk.samples + u"/P.csproj"_s));
        QVERIFY(QFile::link(solution, sdk.solution));
        QVERIFY(FilterSln(sdk.solution, sdk.copy, true, false));
        QCOMPARE(readFile(sdk.copy + u"/P.csproj"_s), "<P/>");
    }

    void keepsWhatItCannotWriteWhole()
    {
        const Sdk sdk;
        const QByteArray fill(100'000, ' ');
        const QString projectCopy = sdk.copy + u"/P.csproj"_s;
        writeFile(sdk.samples + u"/P.csproj"_s, "<P>" + fill + "</P>");
        writeFile(sdk.solution, quoted("Project('{t}') = 'P', 'P.csproj', '{1}'\n") + fill);
        for (const QString& file : {sdk.solutionCopy, projectCopy})
            writeFile(file, "copied");
        writeWithLimit([&] { FilterSln(sdk.solution, sdk.copy, true, false); });
        for (const QString& file : {sdk.solutionCopy, projectCopy})
            QCOMPARE(readFile(file), "copied");
    }

    void writesNothingBesideAFolderWithABackslash()
    {
        const Sdk sdk;
        writeFile(sdk.solution);
        writeFile(sdk.solutionCopy, "mine");
        FilterSln(sdk.solution, sdk.copy + u'\\', true, false);
        QCOMPARE(readFile(sdk.solutionCopy), "mine");
    }

    void collectsTheRuntime()
    {
        const bool isMac = QSysInfo::kernelType() == u"darwin"_s;
        const QString library = isMac ? u"lib%1.dylib"_s : u"lib%1.so"_s;
        const QTemporaryDir sdk;
        for (const QString& name : {u"bin/qmav"_s, u"bin/qmav2"_s, u"lib/oep/x"_s})
            writeFile(sdk.filePath(name));
        for (const char* name : {"kvoui", "qmav", "wio-2.3.1", "wio-2.3x1", "mtq.12"})
            writeFile(sdk.filePath(u"lib/"_s + library.arg(QLatin1StringView(name))));

        Names expected = {u"/bin"_s, u"/bin/Debug"_s, u"/bin/Release"_s, u"bin/Debug/qmav"_s,
                          u"bin/Release/qmav"_s};
        // A folder is taken with what it holds.
        for (const QString& folder : {u"bin/Debug/"_s, u"bin/Release/"_s})
            for (const QString& name : {library.arg(u"kvoui"), library.arg(u"qmav"), u"oep"_s,
                                        u"oep/x"_s, library.arg(u"wio-2.3.1")})
                expected += folder + name;
        QList<CopyFileEntry> entries;
        GetSdkImports(entries, sdk.filePath(u"samples"_s), u"/dst"_s);
        Names found;
        for (const CopyFileEntry& entry : std::as_const(entries)) {
            found += entry.relativePath;
            QVERIFY(QFile::exists(entry.sourcePath));
        }
        QCOMPARE(found, expected);
    }
};

QTEST_APPLESS_MAIN(TestAdapt)
#include "tst_adapt.moc"
