#include "adapt/project.h"
#include "adapt/sdkimports.h"
#include "adapt/solution.h"
#include "copy/copyfileentry.h"

#include "tests/table.h"

class TestDotnet : public QObject
{
    Q_OBJECT

    // An SDK, and the folder of a copy with a project's own folder.
    struct Sdk
    {
        const QTemporaryDir root;
        const QString samples = root.filePath(u"sdk/samples"_s);
        const QString solution = root.filePath(u"sdk/samples/dotnet.sln"_s);
        const QString copy = root.filePath(u"a côpy"_s);

        Sdk() { writeTree(root.path(), {{u"sdk/samples/dotnet.sln"_s, {}}, {u"a côpy/P/"_s, {}}}); }
    };

private slots:
    void rewritesAProject_data() { addCases(QFINDTESTDATA("data/projects.txt"), {"copied", "before", "after"}); }

    void rewritesAProject()
    {
        QFETCH(QByteArray, copied);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        const Sdk sdk;
        writeFile(sdk.samples + u"/P/P.csproj"_s, before);
        RewriteProject({sdk.samples.toStdString(), sdk.copy.toStdString(), "P/P.csproj"}, copied.contains("project"),
                       copied.contains("wrapper"));
        QCOMPARE(readFile(sdk.copy + u"/P/P.csproj"_s), after.replace("{root}", sdk.root.path().toUtf8()));
    }

    void writesTheSolutionWithWindowsLineEnds()
    {
        const Sdk sdk;
        const QByteArray line(2047, 'x');
        for (const auto& [before, after] : {std::pair<QByteArray, QByteArray>("", ""),
                                            {"\xef\xbb\xbf\na\r\n\r\nb", "\xef\xbb\xbf\r\na\r\n\r\nb\r\n"},
                                            {line + line + "yz\nend", line + "\r\n" + line + "\r\nyz\r\nend\r\n"}}) {
            writeFile(sdk.solution, before);
            QVERIFY(FilterSln(sdk.solution, sdk.copy, true, false));
            QCOMPARE(readFile(sdk.copy + u"/dotnet.sln"_s), after);
        }
    }

    void rewritesTheProjectsOfASolution()
    {
        const Sdk sdk;
        const QByteArray before = "<P><ItemGroup><None Include='a\\b' /></ItemGroup></P>";
        const QByteArray after = "<P><ItemGroup><None Include='a/b' /></ItemGroup></P>";
        QByteArray solution = "Project('{t}') = 'N', 'P\\NoId.csproj'\n";
        for (const char* path : {"P\\Bad.csproj", "None\\M.csproj", "P\\P.csproj", "..\\out\\O.csproj", "P\\É 2.csproj"})
            solution.append("Project('{t}') = 'N', '").append(path).append("', '{1}'\n");
        for (const QString& path : {u"P/NoId.csproj"_s, u"None/M.csproj"_s, u"P/P.csproj"_s, u"../out/O.csproj"_s, u"P/É 2.csproj"_s})
            writeFile(sdk.samples + u'/' + path, before);
        writeFile(sdk.samples + u"/P/Bad.csproj"_s, "<P");
        writeFile(sdk.solution, solution.replace('\'', '"'));
        writeTree(sdk.root.path(), {{u"a côpy/P/Bad.csproj"_s, before}, {u"out/"_s, {}}});
        Tree expected = readTree(sdk.root.path());
        expected[u"a côpy/dotnet.sln"_s] = QByteArray(solution).replace("\n", "\r\n");
        expected[u"a côpy/P/P.csproj"_s] = expected[u"a côpy/P/É 2.csproj"_s] = after;
        QVERIFY(FilterSln(sdk.solution, sdk.copy, true, false));
        QCOMPARE(readTree(sdk.root.path()), expected);
    }

    void leavesProjectsAloneWithoutASolution()
    {
        const Sdk sdk;
        writeFile(sdk.samples + u"/P/P.csproj"_s, "<P/>");
        writeFile(sdk.solution, "Project(\"{t}\") = \"P\", \"P\\P.csproj\", \"{1}\"\n");
        // A folder takes the place of the copied solution.
        writeFile(sdk.copy + u"/dotnet.sln/"_s);
        const Tree before = readTree(sdk.copy);
        QVERIFY(!FilterSln(sdk.samples + u"/other.sln"_s, sdk.copy, true, false));
        QVERIFY(!FilterSln(sdk.solution, sdk.copy, true, false));
        QCOMPARE(readTree(sdk.copy), before);
    }

    void collectsTheRuntime_data()
    {
        const auto row = table<const ImportNames*, QString, QString>("names", "dylib", "exe");
        row("macOS", &macImportNames, u"lib%1.dylib"_s, u"%1"_s);
        row("Linux", &linuxImportNames, u"lib%1.so"_s, u"%1"_s);
        row("Windows", &windowsImportNames, u"%1.dll"_s, u"%1.exe"_s);
    }

    void collectsTheRuntime()
    {
        QFETCH(const ImportNames*, names);
        QFETCH(QString, dylib);
        QFETCH(QString, exe);
        // "@" makes a library's file name of a name; a folder ends in "/".
        const auto items = [&](QString text) { return text.replace(QRegularExpression(u"@([^ /]+)"_s), dylib.arg(u"\\1"_s)).split(u' '); };
        const Names libraries = items(u"@pakr1 @rowbase3 @PixNova @mtq @arcpack @qorSDK @LinkStage @vrk/ @OptoStdRefCore @MirrelWire "
                                      "@AssetGraph @kvo @OptoApi @OptoStd @qmav @bnx64 @zuvy-camx oep/ oep/d/ oep/d/x @wio-2.3.1"_s);
        const QTemporaryDir sdk;
        for (const QString& item : libraries + items(u"mtq @vrk/x @kvoui @PIXNOVA @mtq.12 @wio-2.3x1 @other OptoApix/x"_s))
            writeFile(sdk.filePath(u"lib/"_s + item));
        for (const QString& program : {u"qmav"_s, u"mtq"_s})
            writeFile(sdk.filePath(u"bin/"_s + exe.arg(program)));

        QList<CopyFileEntry> entries = {{{}, {}, u"kept"_s}};
        GetSdkImports(entries, sdk.filePath(u"samples"_s), u"/dst"_s, *names);
        QCOMPARE(entries.takeFirst().relativePath, u"kept"_s);
        Names found, expected = {u"/bin"_s, u"/bin/Debug"_s, u"/bin/Release"_s};
        for (const CopyFileEntry& entry : std::as_const(entries)) {
            found += entry.relativePath;
            QCOMPARE(entry.destinationPath, QDir::cleanPath(u"/dst/"_s + entry.relativePath));
            QVERIFY(QFileInfo::exists(entry.sourcePath));
            QVERIFY(entry.sourcePath == sdk.filePath(u"bin"_s) || entry.sourcePath.endsWith(entry.relativePath.section(u'/', 2)));
        }
        for (const QString& target : {u"bin/Debug/"_s, u"bin/Release/"_s}) {
            expected.insert(target == u"bin/Debug/" ? 3 : 4, target + exe.arg(u"qmav"_s));
            for (const QString& library : libraries)
                expected += QDir::cleanPath(target + library);
            QCOMPARE(found.removeAll(target + dylib.arg(u"kvoui"_s)), 1); // anywhere: a pattern's files come in no order
        }
        QCOMPARE(found, expected);
    }

    void collectsOnlyFoldersFromNothing()
    {
        QList<CopyFileEntry> entries;
        GetSdkImports(entries, u"/missing/samples"_s, u"/dst"_s);
        QCOMPARE(entries.size(), 3);
    }
};

QTEST_APPLESS_MAIN(TestDotnet)
#include "tst_dotnet.moc"
