#include "adapt/project.h"
#include "adapt/sdkimports.h"
#include "adapt/solution.h"
#include "copy/copyfileentry.h"

#include "tests/tree.h"

#include <QTemporaryDir>
#include <QTest>

using Names = QList<QString>;
using Qt::StringLiterals::operator""_s;

namespace {

const QByteArray kSolution = "\xef\xbb\xbf\r\nProject(\"{t}\") = \"P\", \"P\\P.csproj\", \"{1}\"\r\n";

// An SDK with one project, and the folder of a copy with the project's own folder.
struct Sdk
{
    QTemporaryDir root;
    QString samples = root.filePath(u"sdk/samples"_s);
    QString copy = root.filePath(u"a côpy"_s);

    Sdk() { writeTree(root.path(), {{u"sdk/samples/dotnet.sln"_s, kSolution}, {u"a côpy/P/"_s, {}}}); }

    // What becomes of the project `content`, with "%1" for the SDK's folder in both.
    QByteArray rewritten(const QByteArray& content, bool localProjectFiles, bool copyWrapper) const
    {
        writeFile(samples + u"/P/P.csproj"_s, content);
        RewriteProject({samples.toStdString(), copy.toStdString(), "P/P.csproj"}, localProjectFiles, copyWrapper);
        return readFile(copy + u"/P/P.csproj"_s).replace(root.filePath(u"sdk"_s).toUtf8(), "%1");
    }
};

} // namespace

class TestDotnet : public QObject
{
    Q_OBJECT

private slots:
    void rewritesAProject_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");

        const auto group = [](const char* name, const char* before, const char* after) {
            QTest::newRow(name) << "<Project>\n  " + QByteArray(before) + "\n</Project>"
                                << "<Project>\n  " + QByteArray(after) + "\n</Project>";
        };
        group("Debug output",
              "<PropertyGroup Condition=\" '$(Configuration)|$(Platform)' == 'Debug|AnyCPU' "
              "\"><OutputPath Condition='x'>bin</OutputPath></PropertyGroup>",
              "<PropertyGroup Condition=\" '$(Configuration)|$(Platform)' == 'Debug|AnyCPU' "
              "\"><OutputPath>..\\bin\\Debug</OutputPath></PropertyGroup>");
        group("Release output wins over Debug, an empty one opens",
              "<PropertyGroup Condition='Debug or Release'><OutputPath/></PropertyGroup>",
              "<PropertyGroup Condition='Debug or "
              "Release'><OutputPath>..\\bin\\Release</OutputPath></PropertyGroup>");
        group("output of no or another configuration",
              "<PropertyGroup><OutputPath>x</OutputPath></PropertyGroup><PropertyGroup "
              "Condition='Profile'><OutputPath>x</OutputPath></PropertyGroup>",
              "<PropertyGroup><OutputPath>..\\bin</OutputPath></PropertyGroup><PropertyGroup "
              "Condition='Profile'><OutputPath>..\\bin</OutputPath></PropertyGroup>");
        group("one output a group, intermediate output none, others stay",
              "<PropertyGroup>\n    <BaseIntermediateOutputPath>a</BaseIntermediateOutputPath>\n   "
              " <OutputPath>1</OutputPath>\n    <!-- c -->\n    <OutputPath>2</OutputPath>\n    "
              "<BaseIntermediateOutputPath/>\n    <Optimize />\n  </PropertyGroup>",
              "<PropertyGroup>\n    <OutputPath>..\\bin</OutputPath>\n    <!-- c -->\n    "
              "<Optimize />\n  </PropertyGroup>");
        group("no output is added", "<PropertyGroup><A/></PropertyGroup><OutputPath>x</OutputPath>",
              "<PropertyGroup><A/></PropertyGroup><OutputPath>x</OutputPath>");
        group("other items stay",
              "<ItemGroup><Content Include='..\\x' /><compile Include='..\\x' /><Compile "
              "Remove='..\\x' /></ItemGroup><Compile Include='..\\x' />",
              "<ItemGroup><Content Include='..\\x' /><compile Include='..\\x' /><Compile "
              "Remove='..\\x' /></ItemGroup><Compile Include='..\\x' />");
        group("copy steps of the first target only",
              "<Target Name='A'><Copy SourceFiles='..\\..\\dotnet\\a' /><Copy /><Exec "
              "SourceFiles='x' /></Target>\n<Target><Copy SourceFiles='x' /></Target>",
              "<Target Name='A'><Copy SourceFiles='%1/dotnet/a' /><Copy /><Exec SourceFiles='x' "
              "/></Target>\n<Target><Copy SourceFiles='x' /></Target>");
        QTest::newRow("nothing to change keeps the bytes")
            << QByteArray("\xef\xbb\xbf<Project >\r\n\t<ItemGroup></ItemGroup >\n<!-- \xc3\xa9 "
                          "-->\r\n</Project>\r\n\n")
            << QByteArray("\xef\xbb\xbf<Project >\r\n\t<ItemGroup></ItemGroup >\n<!-- \xc3\xa9 "
                          "-->\r\n</Project>\r\n\n");
        QTest::newRow("a malformed project is not written") << QByteArray("<Project><OutputPath>") << QByteArray("(unreadable)");
    }

    void rewritesAProject()
    {
        QFETCH(QByteArray, before);
        QTEST(Sdk().rewritten(before, true, false), "after");
    }

    void rewritesCopyStepsForACopiedWrapper()
    {
        QCOMPARE(Sdk().rewritten("<P><Target><Copy SourceFiles='..\\..\\dotnet\\a' /></Target></P>", true, true),
                 QByteArray("<P><Target><Copy SourceFiles='../dotnet/a' /></Target></P>"));
    }

    // Each row of the placement tables; the item kinds take turns.
    void placesAnItem_data()
    {
        QTest::addColumn<bool>("localProjectFiles");
        QTest::addColumn<bool>("copyWrapper");
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");

        const auto row = [](const char* name, bool local, bool wrapper, const char* before, const char* after) {
            QTest::newRow(name) << local << wrapper << QByteArray(before) << QByteArray(after);
        };
        row("inside, copied", true, false, "<Compile Include=\"Sub\\.\\A.cs\" />", "<Compile Include=\"Sub/A.cs\" />");
        row("inside, copied, with the wrapper: link dropped", true, true,
            "<None Include='A.cs'>\n  <Link>L</Link>\n  <DependentUpon>x</DependentUpon>\n</None>",
            "<None Include='A.cs'>\n  <DependentUpon>x</DependentUpon>\n</None>");
        row("inside, left in the SDK: link created", false, true, "<Compile Include=\"Sub\\A.cs\" />",
            "<Compile Include=\"%1/samples/P/Sub/A.cs\"><Link>Sub/A.cs</Link></Compile>");
        row("inside, left in the SDK: link kept", false, false, "<None Include='A.cs'><Link>old</Link></None>",
            "<None Include='%1/samples/P/A.cs'><Link>A.cs</Link></None>");
        row("outside, left in the SDK: link created", true, false, "<Compile Include=\"..\\..\\dotnet\\w\\A.cs\" />",
            "<Compile Include=\"%1/dotnet/w/A.cs\"><Link>A.cs</Link></Compile>");
        row("outside, left in the SDK: link kept", false, false, "<None Include='..\\Q\\A.cs'><Link>old</Link></None>",
            "<None Include='%1/samples/Q/A.cs'><Link>A.cs</Link></None>");
        row("outside, copied: link created", true, true, "<Compile Include=\"..\\..\\dotnet\\w\\A.cs\" />",
            "<Compile Include=\"../dotnet/w/A.cs\"><Link>A.cs</Link></Compile>");
        row("outside, copied: link kept", false, true, "<None Include='../../dotnet/A&amp;B.cs'><Link>old</Link></None>",
            "<None Include='../dotnet/A&amp;B.cs'><Link>A&amp;B.cs</Link></None>");
        row("outside, copied, in the samples: inside the project's folder by name", true, true,
            "<Compile Include='..\\Q\\A.cs'><Link>L</Link></Compile>", "<Compile Include='Q/A.cs'></Compile>");
        row("outside the SDK, copied: absolute", true, true, "<Compile Include='../../../x/A.cs' />",
            "<Compile Include='%2/x/A.cs'><Link>A.cs</Link></Compile>");
    }

    void placesAnItem()
    {
        QFETCH(bool, localProjectFiles);
        QFETCH(bool, copyWrapper);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        const Sdk sdk;
        const QByteArray head = "<Project><ItemGroup>";
        const QByteArray tail = "</ItemGroup></Project>";
        // Expanded from the copy's folder, a file beside the SDK's folder lies beside the copy's.
        after.replace("%2", sdk.root.path().toUtf8());
        QCOMPARE(sdk.rewritten(head + before + tail, localProjectFiles, copyWrapper), head + after + tail);
    }

    void writesTheSolution_data()
    {
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<QByteArray>("after");

        QTest::newRow("LF and CR LF become CR LF, also at the end")
            << QByteArray("\xef\xbb\xbf\na\r\n\r\nb") << QByteArray("\xef\xbb\xbf\r\na\r\n\r\nb\r\n");
        QTest::newRow("empty") << QByteArray() << QByteArray();
        const QByteArray line(5000, 'x');
        QTest::newRow("a long line comes in pieces")
            << line + "\nend" << line.left(2047) + "\r\n" + line.left(2047) + "\r\n" + line.left(906) + "\r\nend\r\n";
    }

    void writesTheSolution()
    {
        QFETCH(QByteArray, before);
        const Sdk sdk;
        writeFile(sdk.samples + u"/dotnet.sln"_s, before);
        QVERIFY(FilterSln(sdk.samples + u"/dotnet.sln"_s, sdk.copy, true, false));
        QTEST(readFile(sdk.copy + u"/dotnet.sln"_s), "after");
    }

    void rewritesTheProjectsOfASolution()
    {
        const Sdk sdk;
        const QByteArray before = "<P><PropertyGroup><OutputPath>x</OutputPath></PropertyGroup></P>";
        const QByteArray after = QByteArray(before).replace("x<", "..\\bin<");
        QByteArray solution;
        const auto list = [&](const QString& path, const QByteArray& end = ", \"{1}\"\n") {
            writeFile(sdk.samples + u'/' + path, before);
            solution += "Project(\"{t}\") = \"N\", \"" + path.toUtf8().replace('/', '\\') + '"' + end;
        };
        list(u"Missing folder/M.csproj"_s);
        list(u"P/Bad.csproj"_s);
        writeFile(sdk.samples + u"/P/Bad.csproj"_s, "<P");
        list(u"P/P.csproj"_s);
        list(u"P/NoId.csproj"_s, "\n");
        list(u"../out/O.csproj"_s);
        list(u"P/É 2.csproj"_s);
        solution += "Project(\"{t}\") = \"P\", \"P\", \"{2}\"\nProject(\"{t}\") = \"A\", \"" +
                    sdk.root.filePath(u"sdk/out/O.csproj"_s).toUtf8() + "\", \"{3}\"\n";
        writeFile(sdk.samples + u"/dotnet.sln"_s, solution);
        const Tree sdkBefore = readTree(sdk.root.filePath(u"sdk"_s));
        writeTree(sdk.root.path(), {{u"a côpy/P/Bad.csproj"_s, "<P"}, {u"out/"_s, {}}});

        QVERIFY(FilterSln(sdk.samples + u"/dotnet.sln"_s, sdk.copy, true, false));
        QCOMPARE(readTree(sdk.copy), (Tree{{u"dotnet.sln"_s, solution.replace("\n", "\r\n")},
                                           {u"P/"_s, {}},
                                           {u"P/Bad.csproj"_s, "<P"},
                                           {u"P/P.csproj"_s, after},
                                           {u"P/É 2.csproj"_s, after}}));
        QVERIFY(readTree(sdk.root.filePath(u"out"_s)).isEmpty());
        QCOMPARE(readTree(sdk.root.filePath(u"sdk"_s)), sdkBefore);
    }

    void leavesProjectsAloneWithoutASolution()
    {
        const Sdk sdk;
        writeFile(sdk.samples + u"/P/P.csproj"_s, "<P/>");
        QVERIFY(!FilterSln(sdk.samples + u"/other.sln"_s, sdk.copy, true, false));
        QVERIFY(readTree(sdk.copy + u"/P"_s).isEmpty());
        // Its place is taken by a folder.
        QDir().mkpath(sdk.copy + u"/dotnet.sln/x"_s);
        QVERIFY(!FilterSln(sdk.samples + u"/dotnet.sln"_s, sdk.copy, true, false));
        QVERIFY(readTree(sdk.copy + u"/P"_s).isEmpty());
    }

    void collectsTheRuntime_data()
    {
        QTest::addColumn<const ImportNames*>("names");
        QTest::addColumn<QString>("dylib");
        QTest::addColumn<QString>("exe");
        QTest::newRow("macOS") << &macImportNames << u"lib%1.dylib"_s << u"%1"_s;
        QTest::newRow("Linux") << &linuxImportNames << u"lib%1.so"_s << u"%1"_s;
        QTest::newRow("Windows") << &windowsImportNames << u"%1.dll"_s << u"%1.exe"_s;
    }

    void collectsTheRuntime()
    {
        QFETCH(const ImportNames*, names);
        QFETCH(QString, dylib);
        QFETCH(QString, exe);
        const QTemporaryDir sdk;
        const auto add = [&](const QString& path) { writeFile(sdk.filePath(path), "x"); };
        for (const QString& name :
             {u"kvo"_s, u"mtq"_s, u"pakr1"_s, u"kvoui"_s, u"wio-2.3.1"_s, u"PIXNOVA"_s, u"mtq.12"_s, u"wio-2.3x1"_s, u"other"_s})
            add(u"lib/"_s + dylib.arg(name));
        // Folders: by bare name whole, by file name empty, by neither not at all.
        add(u"lib/oep/d/x"_s);
        add(u"lib/"_s + dylib.arg(u"vrk"_s) + u"/x"_s);
        add(u"lib/OptoApix/x"_s);
        add(u"bin/"_s + exe.arg(u"qmav"_s));
        add(u"bin/"_s + exe.arg(u"mtq"_s));

        QList<CopyFileEntry> entries = {{{}, {}, u"kept"_s}};
        GetSdkImports(entries, sdk.filePath(u"samples"_s), u"/dst"_s, *names);

        Names expected = {u"kept"_s, u"/bin"_s, u"/bin/Debug"_s, u"/bin/Release"_s};
        const Names targets = {u"bin/Debug/"_s, u"bin/Release/"_s};
        for (const QString& target : targets)
            expected += target + exe.arg(u"qmav"_s);
        for (const QString& target : targets) {
            for (const QString& name : {u"pakr1"_s, u"mtq"_s, u"vrk"_s, u"kvo"_s, u"kvoui"_s})
                expected += target + dylib.arg(name);
            for (const QString& name : {u"oep"_s, u"oep/d"_s, u"oep/d/x"_s})
                expected += target + name;
            expected += target + dylib.arg(u"wio-2.3.1"_s);
        }
        Names found;
        for (const CopyFileEntry& entry : std::as_const(entries))
            found += entry.relativePath;
        // Within the row of kvo* the order is the file system's.
        for (int i = 1; i < found.size(); ++i) {
            if (found[i - 1].contains(u"kvoui"_s) && found[i].contains(u"kvo"_s))
                std::swap(found[i - 1], found[i]);
        }
        QCOMPARE(found, expected);
        QCOMPARE(entries[1].sourcePath, sdk.filePath(u"bin"_s));
        QCOMPARE(entries[3].destinationPath, u"/dst/bin/Release"_s);
        QCOMPARE(entries.last().sourcePath, sdk.filePath(u"lib/"_s + dylib.arg(u"wio-2.3.1"_s)));
        QCOMPARE(entries.last().destinationPath, u"/dst/"_s + entries.last().relativePath);
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
