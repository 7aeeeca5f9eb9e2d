#include "adapt/cmakelists.h"
#include "adapt/strtok_quo.h"

#include "tests/table.h"

#include <vector>

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
        const QString path = folder.filePath(u"file"_s);
        QVERIFY(!FilterCMakeLists(path, QString::fromUtf8(sdk)) && !QFile::exists(path));
        writeFile(path, "\xff\r\n" + before);
        QVERIFY(FilterCMakeLists(path, QString::fromUtf8(sdk)));
        QCOMPARE(readFile(path), "\xff\r\n" + after);
    }

    void restoresCMakeListsThatCannotGrow()
    {
        const QTemporaryDir folder;
        const QByteArray content = "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")" + QByteArray(99'950, '#');
        writeFile(folder.filePath(u"file"_s), content);
        writeWithLimit([&] { FilterCMakeLists(folder.filePath(u"file"_s), u"/sdk"_s.repeated(50)); });
        QVERIFY(readFile(folder.filePath(u"file"_s)) == content);
    }

    void splitsOutsideQuotes_data() { addCases(QFINDTESTDATA("data/tokens.txt"), {"text", "delimiters", "tokens"}); }

    void splitsOutsideQuotes()
    {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, delimiters);
        text.replace("␠", " ");
        delimiters.replace("␠", " ");
        // Of its exact size, so that the address sanitizer sees access past either end.
        std::vector<char> bytes(text.cbegin(), text.cend() + 1);
        char* position = nullptr;
        QByteArray tokens;
        for (char* token = strtok_quo(bytes.data(), delimiters, &position); token; token = strtok_quo(nullptr, delimiters, &position))
            tokens += QByteArray("[") + token + ']';
        QTEST(tokens, "tokens");
        QVERIFY(!strtok_quo(bytes.data(), delimiters, nullptr));
    }
};

QTEST_APPLESS_MAIN(TestAdapt)
#include "tst_adapt.moc"
