#include "adapt/cmakelists.h"
#include "adapt/project.h"
#include "adapt/sdkimports.h"
#include "adapt/solution.h"
#include "adapt/strtok_quo.h"
#include "copy/list/copyfileentry.h"

#include "tests/table.h"

#include <vector>

#ifdef Q_OS_LINUX
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <thread>

// Does what `work` does in a thread that gets the error from each such system call, which does
// nothing; 0 is success.
template <typename Function>
void withoutCall(unsigned call, unsigned error, Function work)
{
    std::thread([&] {
        sock_filter steps[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                               BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1),
                               BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
                               BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
        const sock_fprog filter{std::size(steps), steps};
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) || prctl(PR_SET_SECCOMP, 2, &filter))
            qFatal("no system call can be filtered");
        work();
    }).join();
}
#endif

class TestAdapt : public QObject
{
    Q_OBJECT

    // An SDK, and the folder of a copy.
    struct Sdk
    {
        const QTemporaryDir root;
        const QString samples = root.filePath(u"sdk/samples"_s);
        const QString solution = samples + u"/dotnet.sln"_s;
        const QString copy = root.filePath(u"a côpy"_s);
    };

    // With ' in place of ".
    static QByteArray tokens(QByteArray text, const char* delimiters)
    {
        text.replace('\'', '"');
        // Of its exact size, so that the address sanitizer sees access past either end.
        std::vector<char> bytes(text.constData(), text.constData() + text.size() + 1);
        char* position = nullptr;
        QByteArray found;
        for (char* token = strtok_quo(bytes.data(), delimiters, &position); token;
             token = strtok_quo(nullptr, delimiters, &position))
            found += QByteArray("[") + token + ']';
        return found.replace('"', '\'');
    }

private slots:
    void pointsCMakeListsAtTheSdk()
    {
        const QByteArray line = "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")";
        const QByteArray text = "\xff\r\n" + line + line + "\n#" + line.toLower() + line.chopped(1);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"file"_s);
        const QString link = folder.filePath(u"link"_s);
        QVERIFY(QFile::link(path, link) && !FilterCMakeLists(path, {}) && !QFile::exists(path));
        for (const auto& [sdk, written] : {std::pair(u"/s"_s, "/s/"),
                                           {u"/"_s, "//"},
                                           {u"/opt/x/../camera sdk/é//"_s, "/opt/camera sdk/é/"}}) {
            writeFile(path, text);
            QVERIFY(!FilterCMakeLists(link, sdk) && FilterCMakeLists(path, sdk));
            QCOMPARE(readFile(path), QByteArray(text).replace(
                                         line, "set(ZUVYSDKDIR \"" + QByteArray(written) + "\")"));
        }
    }

#ifdef Q_OS_LINUX
    void keepsCMakeListsWhenACallFails_data()
    {
        QTest::addColumn<int>("call");
        QTest::addColumn<int>("error");
        QTest::addColumn<QString>("sdk");
        QTest::newRow("reading") << __NR_read << EIO << u"/s"_s;
        QTest::newRow("seeking") << __NR_lseek << EIO << u"/s"_s;
        QTest::newRow("shrinking has no effect") << __NR_ftruncate << 0 << u"/s"_s;
        QTest::newRow("writing to a file that grew") << __NR_write << ENOSPC << QString(99, u's');
    }

    void keepsCMakeListsWhenACallFails()
    {
        QFETCH(int, call);
        QFETCH(int, error);
        QFETCH(QString, sdk);
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"file"_s);
        const QByteArray content = "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")\n";
        writeFile(path, content);
        withoutCall(call, error, [&] { FilterCMakeLists(path, sdk); });
        QCOMPARE(readFile(path), content);
    }
#endif

    void splitsOutsideQuotes()
    {
        QCOMPARE(tokens("", " "), "");
        QCOMPARE(tokens("'My Sample', 'a b\\c.csproj'", ", "), "[My Sample][a b\\c.csproj]");
        QCOMPARE(tokens("  a", " "), "[][a]");
        QCOMPARE(tokens("a, ,b, ", ", "), "[a][b]");
        QCOMPARE(tokens("a' b' 'c d", " "), "[a' b][c d]");
        QCOMPARE(tokens("a'b c'd e", " "), "[a'b c'd][e]");
        QCOMPARE(tokens("'", " "), "[]");
        QCOMPARE(tokens("'',''", ","), "[][]");
        QCOMPARE(tokens("'a, b' c'", ""), "[a, b' c]");
        QCOMPARE(tokens("'{id}'\n", ", "), "[{id}'\n]");
        QVERIFY(!strtok_quo(nullptr, " ", nullptr));
    }

    void rewritesAProject_data()
    {
        addCases(QFINDTESTDATA("data/tst_adapt-projects.txt"), {"copied", "project"});
    }

    void rewritesAProject()
    {
        QFETCH(QByteArray, copied);
        QFETCH(QByteArray, project);
        const Sdk sdk;
        auto [before, after] = beforeAndAfter(project);
        writeTree(sdk.root.path(), {{u"sdk/samples/P/P.csproj"_s, before}, {u"a côpy/P/"_s, {}}});
        RewriteProject({sdk.samples.toStdString(), sdk.copy.toStdString(), "P/P.csproj"},
                       copied.contains("project"), copied.contains("wrapper"));
        QCOMPARE(readFile(sdk.copy + u"/P/P.csproj"_s),
                 after.replace("{root}", sdk.root.path().toUtf8()));
    }

    void readsAndCopiesASolution()
    {
        const QByteArray fill(2046, '#');
        const QByteArray project = "Project('{t}') = 'A', 'A\\A.csproj', '{1}'";
        const QByteArray rest = "\n"
                                "EndProject\n"
                                "Project('{t}') = 'A', 'A', '{2}'\n"
                                "Project('{t}') = 'N', 'None\\N.csproj', '{3}'\n"
                                "Project('{t}') = 'Bad', 'Bad\\Bad.csproj', '{4}'\n"
                                "Project('{t}') = 'O', 'A\\..\\..\\out\\O.csproj', '{5}'\n"
                                "Project('{t}')='É B' ,'\\B\\É 2.csproj','{6}'\n"
                                "Project('{t}') = 'no', 'A\\A.csproj'\n"
                                "\tProject('{t}') = 'no', 'A\\A.csproj', '{1}'\n"
                                " Project('{t}') = 'no', 'A\\A.csproj', '{1}'\n"
                                "project('{t}') = 'no', 'A\\A.csproj', '{1}'\n"
                                "Projects('{t}') = 'no', 'A\\A.csproj', '{1}'\n"
                                "#";
        // A line of 2,048 bytes or more goes on in the next one.
        QByteArray solution = fill + '#' + project + '\n' + fill + project + rest;
        QByteArray copy =
            fill + "#\n" + project + '\n' + fill + "P\n" + project.mid(1) + rest + '\n';
        solution.replace('\'', '"');
        copy.replace('\'', '"').replace("\n", "\r\n");
        const Sdk sdk;
        for (const QString& path :
             {u"/A/A.csproj"_s, u"/B/É 2.csproj"_s, u"/../out/O.csproj"_s, u"/Bad/Bad.csproj"_s}) {
            writeFile(sdk.samples + path, path.startsWith(u"/Bad") ? "<P" : "<P></P >");
            writeFile(sdk.copy + path, "copied");
        }
        for (int i = 0; i < 2; ++i) {
            writeFile(sdk.solution, solution);
            Tree expected = readTree(sdk.root.path());
            expected[u"a côpy/dotnet.sln"_s] = copy;
            expected[u"a côpy/A/A.csproj"_s] = expected[u"a côpy/B/É 2.csproj"_s] = "<P></P >";
            QVERIFY(FilterSln(sdk.solution, sdk.copy, true, false));
            QCOMPARE(readTree(sdk.root.path()), expected);
            Names names;
            GetDotnetDirs(names, sdk.samples);
            QCOMPARE(names.join(u' '), u"A A N Bad O É B"_s);
            solution.replace("\n", "\r\n");
        }
    }

    void touchesNothingWithoutASolution()
    {
        const Sdk sdk;
        writeFile(sdk.samples + u"/P.csproj"_s, "<P/>");
        writeFile(sdk.solution, "Project(\"{t}\") = \"P\", \"P.csproj\", \"{1}\"\n");
        // A folder takes the place of the copied solution.
        writeFile(sdk.copy + u"/dotnet.sln/"_s);
        const Tree before = readTree(sdk.copy);
        QVERIFY(!FilterSln(sdk.samples + u"/other.sln"_s, sdk.copy, true, false));
        QVERIFY(!FilterSln(sdk.solution, sdk.copy, true, false));
        QCOMPARE(readTree(sdk.copy), before);

        makePipe(sdk.root.filePath(u"dotnet.sln"_s));
        Names names;
        GetDotnetDirs(names, sdk.root.path());
        QVERIFY(names.isEmpty());
    }

    void collectsTheRuntime()
    {
        const Names names =
            u"pakr1 rowbase3 PixNova mtq arcpack qorSDK LinkStage vrk OptoStdRefCore MirrelWire "
            "AssetGraph OptoApi OptoStd qmav bnx64 zuvy-camx oep oep/x wio-2.3.1"_s.split(u' ');
#if defined(Q_OS_MACOS)
        const QString library = u"/lib%1.dylib"_s;
#else
        const QString library = u"/lib%1.so"_s;
#endif
        const QString program = u"/qmav"_s;
        const QTemporaryDir sdk;
        const QString bin = sdk.filePath(u"bin"_s), lib = sdk.filePath(u"lib"_s);
        // A folder is taken whole by its bare name, but without its contents as a library.
        for (const QString& path :
             {lib + u"/oep/x"_s, lib + library.arg(u"vrk") + u"/x"_s, lib + u"/mtq"_s,
              lib + u"/OptoApix/x"_s, bin + u"/qmav2"_s, bin + program})
            writeFile(path);
        Names libraries, expected, found;
        for (const QString& name : names) {
            libraries += name.startsWith(u"oep") ? u'/' + name : library.arg(name);
            if (!QFile::exists(lib + libraries.last()))
                writeFile(lib + libraries.last());
        }
        // Last, as PIXNOVA is PixNova where case is ignored.
        for (const QString& name :
             u"mtq.12 wio-2.3x1 PIXNOVA kvo kvoui kvoa kvob kvoc kvod"_s.split(u' '))
            writeFile(lib + library.arg(name));
        // What one pattern finds is in the order of the file system.
        qsizetype afterAssetGraph = 11;
        for (QDirIterator entries(lib, QDir::Files); entries.hasNext();) {
            if (entries.next(); entries.fileName().contains(u"kvo"))
                libraries.insert(afterAssetGraph++, u'/' + entries.fileName());
        }

        for (const QString& path : {u"/bin"_s, u"/bin/Debug"_s, u"/bin/Release"_s})
            expected += u"%1 /dst%2 %2"_s.arg(bin, path);
        for (const auto& [folder, files] : {std::pair(bin, Names{program}), {lib, libraries}})
            for (const QString& target : {u"bin/Debug"_s, u"bin/Release"_s})
                for (const QString& file : files)
                    expected += u"%1 /dst/%2 %2"_s.arg(folder + file, target + file);
        QList<CopyFileEntry> entries;
        GetSdkImports(entries, sdk.filePath(u"samples"_s), u"/dst"_s);
        for (const auto& [source, destination, shown] : std::as_const(entries))
            found += source + u' ' + destination + u' ' + shown;
        QCOMPARE(found, expected);
    }
};

QTEST_APPLESS_MAIN(TestAdapt)
#include "tst_adapt.moc"
