#include "copy/walk.h"

#include "tests/tree.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using Names = QList<QString>;
using Qt::StringLiterals::operator""_s;

class TestWalk : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatIsToBeCopied_data()
    {
        QTest::addColumn<Names>("include");
        QTest::addColumn<Names>("exclude");
        QTest::addColumn<Names>("expected");

        const Names deep = {u"/Foo"_s, u"/Foo/doc"_s, u"/Foo/doc/x"_s};
        const Names doc = {u"/doc"_s, u"/doc/é ü"_s};
        QTest::newRow("everything, whatever its depth") << Names() << Names() << deep + doc + Names{u"/Doc"_s, u"/a&b"_s};
        QTest::newRow("included names at the top only, whole and case-sensitive")
            << Names{u"Foo"_s, u"doC"_s, u"a"_s, u"x"_s} << Names() << deep;
        QTest::newRow("excluded names at the top only, whole and case-sensitive")
            << Names() << Names{u"doc"_s, u"a"_s} << deep + Names{u"/Doc"_s, u"/a&b"_s};
        QTest::newRow("exclusion wins") << Names{u"doc"_s, u"Doc"_s} << Names{u"doc"_s} << Names{u"/Doc"_s};
    }

    void listsWhatIsToBeCopied()
    {
        QFETCH(Names, include);
        QFETCH(Names, exclude);
        QFETCH(Names, expected);
        const QTemporaryDir folder;
        writeTree(
            folder.path(),
            {{u"Foo/doc/x"_s, {}}, {u"doc/é ü"_s, {}}, {u"Doc/"_s, {}}, {u"a&b"_s, {}}, {u".hidden/x"_s, {}}, {u"Foo/.gitignore"_s, {}}});

        Names items = {u"kept"_s};
        Walk(items, {}, folder.path(), include, exclude);
        QCOMPARE(items.takeFirst(), u"kept"_s);
        items.sort();
        expected.sort();
        QCOMPARE(items, expected);
    }

    void putsFoldersDirectlyBeforeTheirContents()
    {
        const QTemporaryDir folder;
        writeTree(folder.path(), {{u"a"_s, {}}, {u"d/x"_s, {}}, {u"d/e/f/y"_s, {}}, {u"z/w"_s, {}}});
        Names items;
        Walk(items, u"/p"_s, folder.path(), {}, {});
        QCOMPARE(items.size(), 8);
        for (int i = 0; i < items.size(); ++i) {
            QVERIFY(items[i].startsWith(u"/p/"_s));
            const QString parent = items[i].section(u'/', 0, -2);
            QVERIFY(parent == u"/p"_s || items[i - 1].startsWith(parent));
        }
    }

    void followsLinksAndPassesOverSpecialFiles()
    {
        const QTemporaryDir folder;
        writeTree(folder.path(), {{u"real/x"_s, {}}});
        const auto path = [&](const QString& name) { return folder.filePath(name); };
        QVERIFY(QFile::link(u"real"_s, path(u"folderLink"_s)));
        QVERIFY(QFile::link(u"real/x"_s, path(u"fileLink"_s)));
        QVERIFY(QFile::link(u"nowhere"_s, path(u"broken"_s)));
        QCOMPARE(mkfifo(qPrintable(path(u"pipe"_s)), 0600), 0);
        // Names that are not UTF-8 have no QString; they are passed over whole.
        QCOMPARE(::mkdir((folder.path().toUtf8() + "/\xff").constData(), 0700), 0);

        Names items;
        Walk(items, {}, folder.path(), {}, {});
        items.sort();
        const Names expected = {u"/fileLink"_s, u"/folderLink"_s, u"/folderLink/x"_s, u"/real"_s, u"/real/x"_s};
        QCOMPARE(items, expected);

        Walk(items, {}, path(u"missing"_s), {}, {});
        QCOMPARE(items, expected);
    }
};

QTEST_APPLESS_MAIN(TestWalk)
#include "tst_walk.moc"
