#include "kvo/file.h"
#include "kvo/path.h"

#include "tests/table.h"

class TestKvoFile : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_dir;

    QString path(const char* name) const { return m_dir.filePath(QString::fromUtf8(name)); }

    static std::unique_ptr<kvo::IFile> open(const QString& path, int mode) { return kvo::fileSystem()->Open(path.toStdString(), mode); }

    static QByteArrayList allLines(kvo::IFile& file, int size)
    {
        QByteArrayList lines;
        for (std::string buffer(size, '#'); file.GetLine(buffer.data(), size);)
            lines += QByteArray(buffer.c_str());
        return lines;
    }

private slots:
    void takesPathsApartAndJoinsThem_data()
    {
        using namespace kvo::path;
        const auto row = table<std::string, std::string>("actual", "expected");
        row("file name without a folder", GetFilename("dotnet.sln"), "dotnet.sln");
        row("file name of a path", GetFilename("sämples\\A.csproj"), "A.csproj");
        row("no file name after a separator", GetFilename("/a/"), "");
        row("folder of a file", GetDirectory("/a/b.sln"), "/a");
        row("folder before a doubled slash", GetDirectory("/a//b.sln"), "/a");
        row("folder of a file in the root", GetDirectory("/b.sln"), "/");
        row("no folder", GetDirectory("b.sln"), "");
        row("joined with a separator", MakePath("/a b", "c/d.csproj", '\\'), "/a b\\c/d.csproj");
        row("joined with no second separator", MakePath("/a//", "/b", '/'), "/a/b");
        row("joined to the root", MakePath("/", "b", '/'), "/b");
        row("joined to nothing", MakePath("", "b", '/'), "b");
        row("backslashes", ConvertSlashes("a\\b/c/", '\\'), "a\\b\\c\\");
        row("expanded", ExpandRelativePath("/s/a", "..\\Common\\File.cs", '/'), "/s/Common/File.cs");
        row("expanded to backslashes", ExpandRelativePath("/s", "a/b", '\\'), "\\s\\a\\b");
        row("expanded an absolute path", ExpandRelativePath("/s", "/x/./y//../z/", '/'), "/x/z");
        row("expanded nothing", ExpandRelativePath("/s/", "", '/'), "/s");
        row("relative in the folder", RelativePath("/s/a", "/s/a/f.cs", '/'), "f.cs");
        row("relative to a sibling", RelativePath("/s/a/", "/s/ab/f.cs", '/'), "../ab/f.cs");
        row("relative with backslashes", RelativePath("/s/a", "/s/b/f", '\\'), "..\\b\\f");
        row("relative to a name with a backslash", RelativePath("/s", "/s/a\\b", '/'), "/s/a\\b");
        row("relative to itself", RelativePath("/s", "/s/", '/'), ".");
        const auto place = [](const char* folder, const char* path) { return IsChildOfDirectory(folder, path) ? "inside" : "outside"; };
        row("deep inside a folder", place("/a/b//", "/a/b/c/d/f.cs"), "inside");
        row("inside through ..", place("/a/b/../c", "/a/c/f.cs"), "inside");
        row("a backslash in a name", place("/a\\b", ExpandRelativePath("/a\\b", "c\\d", '/').data()), "inside");
        row("a name that begins with dots is inside", place("/a/b", "/a/b/..f"), "inside");
        row("the folder itself is outside", place("/a/b", "/a/b/"), "outside");
        row("a longer name is outside", place("/a/b", "/a/bc"), "outside");
        row("outside through ..", place("/a/b", "/a/b/../f.cs"), "outside");
    }

    void takesPathsApartAndJoinsThem()
    {
        QFETCH(std::string, actual);
        QTEST(actual, "expected");
    }

    void expandsARelativePathToItsTarget()
    {
        using namespace kvo::path;
        const char* const paths[] = {"/",   "//",         "/a",        "/a/",     "/a/b",   "/a//bc", "/ab", "/a/../c",
                                     "/..", "/a/./b/c/d", "\\a\\b\\e", "/ü /..x", "/a/...", "C:/x",   ""};
        for (const char* base : paths)
            for (const char* target : paths)
                for (const char separator : {'/', '\\'})
                    QCOMPARE(ExpandRelativePath(base, RelativePath(base, target, separator), '/'), ExpandRelativePath("", target, '/'));
    }

    void readsLines_data()
    {
        const auto row = table<QByteArray, QByteArrayList>("bytes", "lines");
        row("an empty file", "", {});
        row("CR LF, LF and no line end", "a\r\nb\nc", {"a", "b", "c"});
        row("no line after the last end", "a\r\n", {"a"});
        row("empty lines", "\n\r\n\n", {"", "", ""});
        row("a CR alone is no line end", "a\rb\r\r\n\r", {"a\rb\r", "\r"});
        row("NUL bytes are left out", QByteArray("a\0b\0\n\0", 6), {"ab", ""});
        row("a full buffer", "abcdefg\r\nh", {"abcdefg", "h"});
        row("one byte too many", "abcdefgh\r\n", {"abcdefg", "h"});
        row("a CR at the edge", "abcdefg\rh", {"abcdefg", "\rh"});
    }

    void readsLines()
    {
        QFETCH(QByteArray, bytes);
        writeFile(path("lines"), bytes);
        const auto file = open(path("lines"), 0x12);
        QVERIFY(file);
        QTEST(allLines(*file, 8), "lines");
        const auto memory = kvo::CMemFile::Create();
        memory->WriteBytes(bytes.constData(), bytes.size());
        char nothing = '#';
        QVERIFY(!memory->GetLine(&nothing, 1) && nothing == '#');
        QTEST(allLines(*memory, 8), "lines");
    }

    void readsLongLinesInPieces()
    {
        for (const int middle : {2048, 2 * 2047}) {
            for (int length = middle - 4; length < middle + 4; ++length) {
                const QByteArray line = QByteArray("0123456789abc").repeated(length / 13 + 1).first(length);
                QByteArrayList pieces;
                for (int begin = 0; begin < length; begin += 2047)
                    pieces += line.mid(begin, 2047);
                for (const char* lineEnd : {"\n", "\r\n"}) {
                    const auto file = kvo::CMemFile::Create();
                    file->WriteString((line + lineEnd + line).constData());
                    QCOMPARE(allLines(*file, 2048), pieces + pieces);
                }
            }
        }
    }

    void opensRegularFilesOnly()
    {
        makePipe(path("pipe"));
        writeFile(path("file"));
        for (const QString& name : {QString(), m_dir.path(), path("none"), u"/dev/zero"_s, u"/proc/self/mem"_s, path("pipe")})
            QVERIFY2(!open(name, 0x12), qPrintable(name));
        for (const QString& name : {QString(), m_dir.path(), path("none/x"), path("pipe")})
            QVERIFY2(!open(name, 0x28), qPrintable(name));
        QVERIFY(!open(path("file"), 0x02));
    }

    void writesNewFilesAndOverOldOnes()
    {
        const auto memory = kvo::CMemFile::Create();
        QVERIFY(memory->data() && memory->size() == 0);
        memory->WriteString("one\r\n");
        memory->WriteBytes("\0two", 4);
        writeFile(path("ä b"), "something longer");
        for (const char* name : {"ä b", "new"}) {
            const auto file = open(path(name), 0x28);
            file->WriteBytes(memory->data(), memory->size());
            file->WriteString("end");
        }
        QCOMPARE(readFile(path("ä b")), QByteArray("one\r\n\0twoend", 12));
        QCOMPARE(readFile(path("new")), readFile(path("ä b")));
    }

    void keepsTheOldFileWhenAWriteFails()
    {
        writeFile(path("kept"), "old");
        writeWithLimit([&] {
            const auto file = open(path("kept"), 0x28);
            file->WriteBytes(QByteArray(1'000'000, 'x').constData(), 1'000'000);
            file->WriteString("end");
        });
        QCOMPARE(readFile(path("kept")), "old");
    }
};

QTEST_APPLESS_MAIN(TestKvoFile)
#include "tst_kvofile.moc"
