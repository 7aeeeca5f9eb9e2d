#include "adapt/cmakelists.h"
#include "adapt/solution.h"
#include "adapt/strtok_quo.h"

#include "tests/tree.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using Names = QList<QString>;
using Qt::StringLiterals::operator""_s;

class TestAdapt : public QObject
{
    Q_OBJECT

private slots:
    void pointsCMakeListsAtTheSdk_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("sdk");
        QTest::addColumn<QByteArray>("expected");

        const QByteArray line = "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")";
        const QString opt = u"/opt/sdk"_s;
        QTest::newRow("a shorter line leaves no stale bytes")
            << "a\r\n" + line + "\r\nb" << u"/s"_s << QByteArray("a\r\nset(ZUVYSDKDIR \"/s/\")\r\nb");
        QTest::newRow("a longer line grows the file")
            << line << u"/opt/vendor/camera sdk/é"_s << QByteArray("set(ZUVYSDKDIR \"/opt/vendor/camera sdk/\xc3\xa9/\")");
        QTest::newRow("every occurrence, wherever it stands") << line + line + "\n  " + line << opt
                                                              << QByteArray("set(ZUVYSDKDIR \"/opt/sdk/\")set(ZUVYSDKDIR \"/opt/sdk/\")\n"
                                                                            "  set(ZUVYSDKDIR \"/opt/sdk/\")");
        QTest::newRow("a closing slash and dots are cleaned")
            << line << u"/opt/x/../sdk//"_s << QByteArray("set(ZUVYSDKDIR \"/opt/sdk/\")");
        QTest::newRow("the root folder has two slashes") << line << u"/"_s << QByteArray("set(ZUVYSDKDIR \"//\")");
        for (const char* other :
             {"#set( ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")", "#set(zuvysdkdir \"@PRJDUP_ZUVYSDKDIR@\")", "\xff\xfe\0x", ""})
            QTest::addRow("other content stays: '%s'", other) << QByteArray(other) << opt << QByteArray(other);
    }

    void pointsCMakeListsAtTheSdk()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, sdk);
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"CMakeLists.txt"_s);
        writeFile(file, content);
        QVERIFY(FilterCMakeLists(file, sdk));
        QTEST(readFile(file), "expected");
    }

    void makesNoCMakeLists()
    {
        const QTemporaryDir folder;
        QVERIFY(!FilterCMakeLists(folder.filePath(u"CMakeLists.txt"_s), u"/sdk"_s));
        QVERIFY(readTree(folder.path()).isEmpty());
    }

    void splitsOutsideQuotes_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("delimiters");
        QTest::addColumn<QByteArrayList>("tokens");

        using L = QByteArrayList;
        QTest::newRow("empty text") << QByteArray("") << QByteArray(" ") << L{};
        QTest::newRow("quoted delimiters") << QByteArray("\"My Sample\", \"a b\\c.csproj\"") << QByteArray(", ")
                                           << L{"My Sample", "a b\\c.csproj"};
        QTest::newRow("a leading delimiter gives an empty token") << QByteArray("  a") << QByteArray(" ") << L{"", "a"};
        QTest::newRow("runs and a trailing delimiter are skipped") << QByteArray("a, ,b, ") << QByteArray(", ") << L{"a", "b"};
        QTest::newRow("no delimiters at all") << QByteArray("\"a b\"") << QByteArray("") << L{"a b"};
        QTest::newRow("one quote only, at either end") << QByteArray("\"a b\" c\" d") << QByteArray(" ") << L{"a b", "c\" d"};
        QTest::newRow("an unclosed quote takes the rest") << QByteArray("a \"b c") << QByteArray(" ") << L{"a", "b c"};
        QTest::newRow("quotes inside stay") << QByteArray("a\"b c\"d e") << QByteArray(" ") << L{"a\"b c\"d", "e"};
        QTest::newRow("a lone quote") << QByteArray("\"") << QByteArray(" ") << L{""};
        QTest::newRow("empty quotes") << QByteArray("\"\",\"\"") << QByteArray(",") << L{"", ""};
        QTest::newRow("a line end keeps the closing quote") << QByteArray("\"{id}\"\r\n") << QByteArray(", ") << L{"{id}\"\r\n"};
    }

    void splitsOutsideQuotes()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, delimiters);
        char* position = nullptr;
        QByteArrayList tokens;
        for (char* token = strtok_quo(text.data(), delimiters, &position); token; token = strtok_quo(nullptr, delimiters, &position))
            tokens.append(token);
        QTEST(tokens, "tokens");
        QVERIFY(!strtok_quo(text.data(), delimiters, nullptr));
    }

    void readsProjectNames_data()
    {
        QTest::addColumn<QByteArray>("solution");
        QTest::addColumn<Names>("names");

        const QByteArray head = "Project(\"{t}\") = ";
        QTest::newRow("CR LF, LF, and no line end") << head + "\"A\", \"A\\A.csproj\", \"{1}\"\r\nEndProject\r\n" + head +
                                                           "\"My B\", \"x\", \"{2}\"\n" + head + "\"\xc3\x89\", \"x\", \"{3}\""
                                                    << Names{u"A"_s, u"My B"_s, u"É"_s};
        QTest::newRow("a name twice, and a solution folder") << head + "\"A\", \"A\", \"{1}\"\n" + head + "\"A\", \"A\", \"{1}\"\n"
                                                             << Names{u"A"_s, u"A"_s};
        QTest::newRow("two fields only") << head + "\"A\", \"x\"\n" << Names();
        QTest::newRow("indented, lower case, or not at the start") << "\t" + head + "\"A\", \"x\", \"{1}\"\n " + head +
                                                                          "\"A\", \"x\", \"{1}\"\nproject(\"\") = \"A\", \"x\", \"y\"\n"
                                                                          "# " +
                                                                          head + "\"A\", \"x\", \"{1}\"\n"
                                                                   << Names();
        QTest::newRow("a long line's rest is a line of its own") << QByteArray(2047, '#') + head + "\"A\", \"x\", \"{1}\"\n"
                                                                 << Names{u"A"_s};
        QTest::newRow("a long line's rest is no project") << QByteArray(2040, '#') + head + "\"A\", \"x\", \"{1}\"\n" << Names();
        QTest::newRow("NUL bytes end a line early")
            << QByteArray("\0\n", 2) + head + "\"A\", \"x\"" + QByteArray("\0, \"{1}\"\n", 9) + head + "\"B\", \"x\", \"{2}\"\n"
            << Names{u"B"_s};
        QTest::newRow("empty") << QByteArray() << Names();
    }

    void readsProjectNames()
    {
        QFETCH(QByteArray, solution);
        QFETCH(Names, names);
        const QTemporaryDir folder;
        writeFile(folder.filePath(u"dotnet.sln"_s), solution);
        Names found = {u"kept"_s};
        GetDotnetDirs(found, folder.path());
        QCOMPARE(found, Names{u"kept"_s} + names);
    }

    void readsNothingFromWhatIsNoFile()
    {
        const QTemporaryDir folder;
        Names found;
        GetDotnetDirs(found, folder.path());
        QCOMPARE(mkfifo(qPrintable(folder.filePath(u"dotnet.sln"_s)), 0600), 0);
        GetDotnetDirs(found, folder.path());
        QVERIFY(found.isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestAdapt)
#include "tst_adapt.moc"
