#include "copy/walk.h"

#include "tests/table.h"

class TestWalk : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatIsToBeCopied_data()
    {
        const auto row = table<QString, QString, QString>("include", "exclude", "expected");
        const QString foo = u"/Foo|/Foo/doc|/Foo/doc/x|/Foo/to z|/Foo/to z/d|/Foo/to z/d/y|/Foo/z|/Foo/z/d|/Foo/z/d/y"_s;
        const QString others = u"/Doc|"_s + foo + u"|/a&b"_s;
        row("everything, whatever its depth", {}, {}, others + u"|/doc|/doc/é ü|/to x"_s);
        row("included names at the top only, whole and case-sensitive", u"Foo|doC|a|x"_s, {}, foo);
        row("excluded names at the top only, whole and case-sensitive", {}, u"doc|a|to x"_s, others);
        row("exclusion wins", u"doc|Doc"_s, u"doc"_s, u"/Doc"_s);
    }

    void listsWhatIsToBeCopied()
    {
        QFETCH(QString, include);
        QFETCH(QString, exclude);
        const QTemporaryDir folder;
        for (const QString& path : {u"Foo/doc/x"_s, u"Foo/z/d/y"_s, u"doc/é ü"_s, u"Doc/"_s, u"a&b"_s, u".hidden/x"_s, u"Foo/.gitignore"_s})
            writeFile(folder.filePath(path));
        for (const auto& [link, target] : {std::pair(u"to x"_s, u"Foo/doc/x"_s), {u"Foo/to z"_s, u"z"_s}, {u"broken"_s, u"none"_s}})
            QVERIFY(QFile::link(target, folder.filePath(link)));
        makePipe(folder.filePath(u"pipe"_s));

        Names items;
        const auto names = [](const QString& text) { return text.split(u'|', Qt::SkipEmptyParts); };
        Walk(items, {}, folder.filePath(u"missing"_s), names(include), names(exclude));
        Walk(items, {}, folder.path(), names(include), names(exclude));
        // A folder comes directly before its contents.
        for (int i = 1; i < items.size(); ++i)
            QVERIFY(items[i - 1].startsWith(items[i].section(u'/', 0, -2)));
        items.sort();
        QTEST(items.join(u'|'), "expected");
    }
};

QTEST_APPLESS_MAIN(TestWalk)
#include "tst_walk.moc"
