#include "copy/list/walk.h"

#include "tests/table.h"

class TestWalk : public QObject
{
    Q_OBJECT

private slots:
    void listsWhatIsToBeCopied_data()
    {
        addCases(QFINDTESTDATA("data/walks.txt"), {"include", "exclude", "listed"});
    }

    void listsWhatIsToBeCopied()
    {
        QFETCH(QByteArray, include);
        QFETCH(QByteArray, exclude);
        const QTemporaryDir folder;
        for (const QString& path : {u"Foo/doc/x"_s, u"Foo/z/d/y"_s, u"doc/é ü"_s, u"Doc/"_s,
                                    u"a&b"_s, u".hidden/x"_s, u"Foo/.gitignore"_s})
            writeFile(folder.filePath(path));
        for (const auto& [link, target] : {std::pair(u"to x"_s, u"Foo/doc/x"_s),
                                           {u"Foo/to z"_s, u"z"_s},
                                           {u"broken"_s, u"none"_s}})
            QVERIFY(QFile::link(target, folder.filePath(link)));
        makePipe(folder.filePath(u"pipe"_s));

        Names items;
        const auto names = [](const QByteArray& text) {
            return QString::fromUtf8(text).split(u'\n', Qt::SkipEmptyParts);
        };
        Walk(items, {}, folder.filePath(u"missing"_s), names(include), names(exclude));
        Walk(items, {}, folder.path(), names(include), names(exclude));
        // A folder comes directly before its contents.
        for (int i = 1; i < items.size(); ++i)
            QVERIFY(items[i - 1].startsWith(items[i].section(u'/', 0, -2)));
        items.sort();
        QTEST(items.join(u'\n').toUtf8(), "listed");
    }
};

QTEST_APPLESS_MAIN(TestWalk)
#include "tst_walk.moc"
