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

        const QMap<QString, Names> tree = {{u"Foo"_s, {u"/Foo"_s, u"/Foo/doc"_s, u"/Foo/doc/é"_s}},
                                           {u"doc"_s, {u"/doc"_s, u"/doc/x"_s}},
                                           {u"Doc"_s, {u"/Doc"_s}},
                                           {u"link"_s, {u"/link"_s, u"/link/x"_s}}};
        const auto check = [&](const Names& include, const Names& exclude, const Names& listed) {
            Names items, expected;
            Walk(items, {}, folder.filePath(u"missing"_s), include, exclude);
            Walk(items, {}, folder.path(), include, exclude);
            // This keeps the order of the file system.
            for (QDirIterator entries(folder.path()); entries.hasNext();)
                if (entries.next(); listed.contains(entries.fileName()))
                    expected += tree[entries.fileName()];
            QCOMPARE(items, expected);
        };
        check({}, {}, tree.keys());
        check({}, {u"doc"_s, u"lin"_s, u"é"_s}, {u"Foo"_s, u"Doc"_s, u"link"_s});
        check({u"Foo"_s, u"doC"_s, u"link2"_s, u"doc"_s}, {u"doc"_s}, {u"Foo"_s});
    }
};

QTEST_APPLESS_MAIN(TestWalk)
#include "tst_walk.moc"
