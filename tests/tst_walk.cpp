#include "copy/list/walk.h"

#include "tests/tree.h"

#include <QTest>

class TestWalk : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatIsToBeCopied()
    {
        const QTemporaryDir folder;
        for (const char* path : {"Foo/doc/é", "doc/x", "Doc/", ".hidden/x", "Foo/.git"})
            writeFile(folder.filePath(QString::fromUtf8(path)));
        QVERIFY(QFile::link(u"doc"_s, folder.filePath(u"link"_s)));
        QVERIFY(QFile::link(u"none"_s, folder.filePath(u"broken"_s)));
        makePipe(folder.filePath(u"pipe"_s));
        const auto listed = [&](const Names& include, const Names& exclude) {
            Names items;
            Walk(items, {}, folder.filePath(u"missing"_s), include, exclude);
            Walk(items, {}, folder.path(), include, exclude);
            items.sort();
            return items.join(u' ');
        };
        const QString foo = u"/Foo /Foo/doc /Foo/doc/é"_s;
        QCOMPARE(listed({}, {}), u"/Doc "_s + foo + u" /doc /doc/x /link /link/x"_s);
        QCOMPARE(listed({}, {u"doc"_s, u"lin"_s, u"é"_s}), u"/Doc "_s + foo + u" /link /link/x"_s);
        QCOMPARE(listed({u"Foo"_s, u"doC"_s, u"link2"_s, u"doc"_s}, {u"doc"_s}), foo);
    }

    void keepsTheOrderOfTheFileSystem()
    {
        const QTemporaryDir folder;
        for (const QChar name : u"hcabegfd"_s)
            writeFile(folder.filePath(name));
        Names items, expected;
        Walk(items, {}, folder.path(), {}, {});
        for (QDirIterator entries(folder.path(), QDir::Files); entries.hasNext();)
            expected += entries.next().sliced(folder.path().size());
        QCOMPARE(items, expected);
    }
};

QTEST_APPLESS_MAIN(TestWalk)
#include "tst_walk.moc"
