#include "kvo/file.h"
#include "kvo/path.h"

#include "tests/table.h"

#include <sys/stat.h>

using namespace kvo::path;

class TestKvoFile : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_dir;

    QString path(const char* name) const { return m_dir.filePath(QString::fromUtf8(name)); }

    static std::unique_ptr<kvo::IFile> open(const QString& path, int mode)
    {
        return kvo::fileSystem()->Open(path.toStdString(), mode);
    }

    // The lines, each in brackets, with a buffer of 8 bytes.
    QByteArray lines(const QByteArray& bytes) const
    {
        writeFile(path("lines"), bytes);
        const auto file = open(path("lines"), 0x12);
        QByteArray found;
        for (char buffer[8]; file->GetLine(buffer, sizeof buffer);)
            found += QByteArray("[") + buffer + ']';
        return found;
    }

private slots:
    void splitsAndJoinsPaths()
    {
        QCOMPARE(GetFilename("sä\\A.cs"), "A.cs");
        QCOMPARE(GetDirectory("/a\\b.sln"), "/a");
        QCOMPARE(GetDirectory("/b.sln"), "/");
        QCOMPARE(ConvertSlashes("a\\b/c/", '\\'), "a\\b\\c\\");
        QCOMPARE(MakePath("/a b", "c/d", '\\'), "/a b\\c/d");
        QCOMPARE(MakePath("/a//", "/b", '/'), "/a/b");
        QCOMPARE(MakePath("", "b", '/'), "b");
    }

    void expandsPaths()
    {
        QCOMPARE(ExpandRelativePath("/s/a", "..\\C\\f.cs", '/'), "/s/C/f.cs");
        QCOMPARE(ExpandRelativePath("/s", "a/b", '\\'), "\\s\\a\\b");
        QCOMPARE(ExpandRelativePath("/s", "/x/./y//../../../z/", '/'), "/z");
        QCOMPARE(ExpandRelativePath("/s", "\ufeff\xe4", '/'), "/s/\ufeff\uFFFD");
        QCOMPARE(ExpandRelativePath("a", "b", '/'), QDir::currentPath().toStdString() + "/a/b");
    }

    void findsRelativePaths()
    {
        QCOMPARE(RelativePath("/s", "/s/f.cs", '/'), "f.cs");
        QCOMPARE(RelativePath("/s/a/", "/s/ab/f.cs", '\\'), "..\\ab\\f.cs");
        QCOMPARE(RelativePath("/s", "/a/../s/", '/'), ".");
    }

    void knowsWhatLiesInAFolder()
    {
        QVERIFY(IsChildOfDirectory("/a", "/a/..b/c"));
        QVERIFY(IsChildOfDirectory("/a/b", "/a\\b\\c"));
        QVERIFY(!IsChildOfDirectory("/a/b", "/a/b/"));
        QVERIFY(!IsChildOfDirectory("/a/b", "/a/bc"));
    }

    void readsLines()
    {
        QCOMPARE(lines("a\r\nb\n\nc"), "[a][b][][c]");
        QCOMPARE(lines(QByteArray("a\0b\0\n\0\n", 7)), "[ab][]");
        QCOMPARE(lines("abcdefg\r\nabcdefgh\no"), "[abcdefg][abcdefg][h][o]");
        QCOMPARE(lines("abcdefg\rh\nabcdef\r"), "[abcdefg][\rh][abcdef\r]");
    }

    void opensRegularFilesOnly()
    {
        QCOMPARE(mkfifo(qPrintable(path("pipe")), 0600), 0);
        QVERIFY(QFile::link(path("none"), path("link")));
        for (const QString& name : {QString(), m_dir.path(), path("none/x"), path("pipe"),
                                    path("link"), u"/proc/self/mem"_s})
            QVERIFY2(!open(name, 0x12) && !open(name, 0x28), qPrintable(name));
    }
};

QTEST_APPLESS_MAIN(TestKvoFile)
#include "tst_kvofile.moc"
