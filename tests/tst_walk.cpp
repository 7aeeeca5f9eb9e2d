#include "copy/walk.h"

#include "tests/table.h"

#include <unistd.h>

class TestWalk : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatIsToBeCopied_data()
    {
        const auto row = table<Names, Names, Names>("include", "exclude", "expected");
        const Names foo = {u"/Foo"_s, u"/Foo/doc"_s, u"/Foo/doc/x"_s, u"/Foo/z"_s, u"/Foo/z/d"_s, u"/Foo/z/d/y"_s};
        const Names others = Names{u"/Doc"_s} + foo + Names{u"/a&b"_s};
        row("everything, whatever its depth", {}, {}, others + Names{u"/doc"_s, u"/doc/é ü"_s});
        row("included names at the top only, whole and case-sensitive", {u"Foo"_s, u"doC"_s, u"a"_s, u"x"_s}, {}, foo);
        row("excluded names at the top only, whole and case-sensitive", {}, {u"doc"_s, u"a"_s}, others);
        row("exclusion wins", {u"doc"_s, u"Doc"_s}, {u"doc"_s}, {u"/Doc"_s});
    }

    void listsWhatIsToBeCopied()
    {
        QFETCH(Names, include);
        QFETCH(Names, exclude);
        QFETCH(Names, expected);
        const QTemporaryDir folder;
        for (const QString& path : {u"Foo/doc/x"_s, u"Foo/z/d/y"_s, u"doc/é ü"_s, u"Doc/"_s, u"a&b"_s, u".hidden/x"_s, u"Foo/.gitignore"_s})
            writeFile(folder.filePath(path));

        Names items = {u"kept"_s};
        Walk(items, {}, folder.path(), include, exclude);
        // A folder comes directly before its contents.
        for (int i = 1; i < items.size(); ++i)
            QVERIFY(items[i - 1].startsWith(items[i].section(u'/', 0, -2)));
        items.sort();
        QCOMPARE(items, expected + Names{u"kept"_s});
    }

    void followsLinksAndPassesOverSpecialFiles()
    {
        const QTemporaryDir folder;
        writeFile(folder.filePath(u"real/x"_s));
        for (const QString& target : {u"real"_s, u"real/x"_s, u"nowhere"_s})
            QVERIFY(QFile::link(target, folder.filePath(u"to "_s + target.section(u'/', -1))));
        makePipe(folder.filePath(u"pipe"_s));
        // Names that are not UTF-8 have no QString; they are passed over whole.
        const QByteArray unnamed = folder.path().toUtf8() + "/\xff";
        QCOMPARE(::mkdir(unnamed, 0700), 0);

        Names items;
        Walk(items, u"/p"_s, folder.path(), {}, {});
        Walk(items, {}, folder.filePath(u"missing"_s), {}, {});
        QCOMPARE(::rmdir(unnamed), 0); // or the folder could not be removed
        items.sort();
        QCOMPARE(items, (Names{u"/p/real"_s, u"/p/real/x"_s, u"/p/to real"_s, u"/p/to real/x"_s, u"/p/to x"_s}));
    }
};

QTEST_APPLESS_MAIN(TestWalk)
#include "tst_walk.moc"
