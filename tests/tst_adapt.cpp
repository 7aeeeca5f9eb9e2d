#include "adapt/cmakelists.h"
#include "adapt/solution.h"
#include "adapt/strtok_quo.h"

#include "tests/table.h"

class TestAdapt : public QObject
{
    Q_OBJECT

private slots:
    void pointsCMakeListsAtTheSdk_data() { addCases(QFINDTESTDATA("data/cmakelists.txt"), {"sdk", "before", "after"}); }

    void pointsCMakeListsAtTheSdk()
    {
        QFETCH(QByteArray, sdk);
        QFETCH(QByteArray, before);
        QFETCH(QByteArray, after);
        const QTemporaryDir folder;
        writeFile(folder.filePath(u"file"_s), "\xff\r\n" + before);
        QVERIFY(FilterCMakeLists(folder.filePath(u"file"_s), QString::fromUtf8(sdk)));
        QCOMPARE(readFile(folder.filePath(u"file"_s)), "\xff\r\n" + after);
    }

    void restoresCMakeListsThatCannotGrow()
    {
        const QTemporaryDir folder;
        const QByteArray content = "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")" + QByteArray(99'950, '#');
        writeFile(folder.filePath(u"file"_s), content);
        writeWithLimit([&] { FilterCMakeLists(folder.filePath(u"file"_s), u"/sdk"_s.repeated(50)); });
        QVERIFY(readFile(folder.filePath(u"file"_s)) == content);
    }

    void splitsOutsideQuotes_data()
    {
        const auto row = table<QByteArray, QByteArray, QByteArrayList>("text", "delimiters", "tokens");
        row("empty text", "", " ", {});
        row("quoted delimiters", "'My Sample', 'a b\\c.csproj'", ", ", {"My Sample", "a b\\c.csproj"});
        row("a leading delimiter gives an empty token", "  a", " ", {"", "a"});
        row("runs and a trailing delimiter are skipped", "a, ,b, ", ", ", {"a", "b"});
        row("one quote only, at either end", "'a b' c' d", " ", {"a b", "c' d"});
        row("an unclosed quote takes the rest", "a 'b c", " ", {"a", "b c"});
        row("quotes inside stay", "a'b c'd e", " ", {"a'b c'd", "e"});
        row("a lone quote", "'", " ", {""});
        row("empty quotes", "'',''", ",", {"", ""});
        row("a line end keeps the closing quote", "'{id}'\r\n", ", ", {"{id}'\r\n"});
    }

    void splitsOutsideQuotes()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, delimiters);
        text.replace('\'', '"');
        char* position = nullptr;
        QByteArrayList tokens;
        for (char* token = strtok_quo(text.data(), delimiters, &position); token; token = strtok_quo(nullptr, delimiters, &position))
            tokens.append(QByteArray(token).replace('"', '\''));
        QTEST(tokens, "tokens");
        QVERIFY(!strtok_quo(text.data(), delimiters, nullptr));
    }

    void readsProjectNames_data()
    {
        // "@" begins a project line, and single quotes stand for double ones.
        const auto row = table<QByteArray, Names>("solution", "names");
        row("CR LF, LF, and no line end", "@'A', 'A\\A.csproj', '{1}'\r\nEndProject\r\n@'My B', 'x', '{2}'\n@'É', 'x', '{3}'",
            {u"A"_s, u"My B"_s, u"É"_s});
        row("a name twice, and a solution folder", "@'A', 'A', '{1}'\n@'A', 'A', '{1}'\n", {u"A"_s, u"A"_s});
        row("two fields only", "@'A', 'x'\n", {});
        row("indented, another word, or not at the start",
            "\t@'A', 'x', 'y'\n @'A', 'x', 'y'\nproject('') = 'A', 'x', 'y'\nProjects('') = 'A', 'x', 'y'\n# @'A', 'x', 'y'\n", {});
        row("a long line's rest is a line of its own", QByteArray(2047, '#') + "@'A', 'x', '{1}'\n", {u"A"_s});
        row("a long line's rest is no project", QByteArray(2040, '#') + "@'A', 'x', '{1}'\n", {});
        row("NUL bytes end a line early", QByteArrayLiteral("\0\n@'A', 'x'\0, '{1}'\n@'B', 'x', '{2}'\n"), {u"B"_s});
    }

    void readsProjectNames()
    {
        QFETCH(QByteArray, solution);
        QFETCH(Names, names);
        const QTemporaryDir folder;
        writeFile(folder.filePath(u"dotnet.sln"_s), solution.replace("@", "Project('{t}') = ").replace('\'', '"'));
        Names found = {u"kept"_s};
        GetDotnetDirs(found, folder.path());
        QCOMPARE(found, Names{u"kept"_s} + names);
    }

    void doesNothingWithoutAFile()
    {
        const QTemporaryDir folder;
        const QString solution = folder.filePath(u"dotnet.sln"_s);
        Names found;
        GetDotnetDirs(found, folder.path());
        QVERIFY(!FilterCMakeLists(solution, u"/sdk"_s));
        QVERIFY(readTree(folder.path()).isEmpty());
        makePipe(solution);
        GetDotnetDirs(found, folder.path());
        QVERIFY(found.isEmpty());
    }
};

QTEST_APPLESS_MAIN(TestAdapt)
#include "tst_adapt.moc"
