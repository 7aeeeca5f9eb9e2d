#include "kvo/file.h"
#include "kvo/path.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

using namespace kvo::path;

class tst_KvoFile : public QObject
{
    Q_OBJECT

private slots:
    void results_data();
    void results();
    void relativeAndExpandedAgree();
    void lines_data();
    void lines();
    void longLines();
    void open_data();
    void open();
    void writing();
    void failedWrite();

private:
    std::string path(const char* name) const { return m_dir.filePath(QString::fromUtf8(name)).toStdString(); }
    void store(const char* name, const QByteArray& bytes) const;
    QByteArray stored(const char* name) const;

    QTemporaryDir m_dir;
};

namespace {

QByteArrayList AllLines(kvo::IFile& file, int size)
{
    QByteArrayList lines;
    for (std::string buffer(size, '#'); file.GetLine(buffer.data(), size);)
        lines += QByteArray(buffer.c_str());
    return lines;
}

} // namespace

void tst_KvoFile::store(const char* name, const QByteArray& bytes) const
{
    QFile file(m_dir.filePath(QString::fromUtf8(name)));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
}

QByteArray tst_KvoFile::stored(const char* name) const
{
    QFile file(m_dir.filePath(QString::fromUtf8(name)));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

void tst_KvoFile::results_data()
{
    QTest::addColumn<std::string>("actual");
    QTest::addColumn<std::string>("expected");
    const auto row = [](const char* name, std::string actual, std::string expected) { QTest::newRow(name) << actual << expected; };
    row("file name of a path", GetFilename("/sdk/sämples/dotnet.sln"), "dotnet.sln");
    row("file name without a folder", GetFilename("dotnet.sln"), "dotnet.sln");
    row("file name after a backslash", GetFilename("A\\A.csproj"), "A.csproj");
    row("no file name after a separator", GetFilename("/a/"), "");
    row("folder of a file", GetDirectory("/a/b.sln"), "/a");
    row("folder before a doubled slash", GetDirectory("/a//b.sln"), "/a");
    row("folder of a file in the root", GetDirectory("/b.sln"), "/");
    row("no folder", GetDirectory("b.sln"), "");
    row("folder of nothing", GetDirectory(""), "");
    row("joined", MakePath("/a b", "c/d.csproj", '/'), "/a b/c/d.csproj");
    row("joined with one separator", MakePath("/a//", "/b", '/'), "/a/b");
    row("joined to the root", MakePath("/", "b", '/'), "/b");
    row("joined to nothing", MakePath("", "b", '/'), "b");
    row("joined with a backslash", MakePath("a", "b", '\\'), "a\\b");
    row("slashes", ConvertSlashes("a\\b/c\\", '/'), "a/b/c/");
    row("backslashes", ConvertSlashes("a\\b/c/", '\\'), "a\\b\\c\\");
    row("expanded", ExpandRelativePath("/s/a", "..\\Common\\File.cs", '/'), "/s/Common/File.cs");
    row("expanded to backslashes", ExpandRelativePath("/s", "a/b", '\\'), "\\s\\a\\b");
    row("expanded an absolute path", ExpandRelativePath("/s", "/x/./y//../z/", '/'), "/x/z");
    row("expanded above the root", ExpandRelativePath("/s", "../../../x", '/'), "/x");
    row("expanded nothing", ExpandRelativePath("/s/", "", '/'), "/s");
    row("relative in the folder", RelativePath("/s/a", "/s/a/f.cs", '/'), "f.cs");
    row("relative to a sibling", RelativePath("/s/a/", "/s/ab/f.cs", '/'), "../ab/f.cs");
    row("relative with backslashes", RelativePath("/s/a", "/s/b/f", '\\'), "..\\b\\f");
    row("relative to itself", RelativePath("/s", "/s/", '/'), ".");

    const auto child = [row](const char* name, const char* folder, const char* path, bool expected) {
        row(name, IsChildOfDirectory(folder, path) ? "inside" : "", expected ? "inside" : "");
    };
    child("a file in the folder", "/a/b", "/a/b/f.cs", true);
    child("a file deep in it", "/a/b//", "/a/b/c/d/f.cs", true);
    child("a name that begins with dots", "/a/b", "/a/b/..f", true);
    child("anything is in the root", "/", "/a", true);
    child("the folder itself", "/a/b", "/a/b/", false);
    child("a sibling with the same beginning", "/a/b", "/a/bc", false);
    child("out through ..", "/a/b", "/a/b/../f.cs", false);
    child("in through ..", "/a/b/../c", "/a\\c\\f.cs", true);
    child("the parent", "/a/b", "/a", false);
}

void tst_KvoFile::results()
{
    QFETCH(std::string, actual);
    QFETCH(std::string, expected);
    QCOMPARE(actual, expected);
}

void tst_KvoFile::relativeAndExpandedAgree()
{
    const std::string paths[] = {"/",   "/a",         "/a/",       "/a/b",    "/a//bc", "/ab",  "/a/../c",
                                 "/..", "/a/./b/c/d", "\\a\\b\\e", "/ü /..x", "/a/...", "C:/x", ""};
    for (const std::string& base : paths) {
        for (const std::string& target : paths) {
            const std::string absolute = ExpandRelativePath("", target, '/');
            for (const char separator : {'/', '\\'}) {
                const std::string relative = RelativePath(base, target, separator);
                QCOMPARE(ExpandRelativePath(base, relative, '/'), absolute);
            }
        }
    }
}

void tst_KvoFile::lines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArrayList>("lines");
    QTest::newRow("an empty file") << QByteArray() << QByteArrayList();
    QTest::newRow("CR LF, LF and no line end") << QByteArray("a\r\nb\nc") << QByteArrayList{"a", "b", "c"};
    QTest::newRow("no line after the last end") << QByteArray("a\r\n") << QByteArrayList{"a"};
    QTest::newRow("empty lines") << QByteArray("\n\r\n\n") << QByteArrayList{"", "", ""};
    QTest::newRow("a CR alone is no line end") << QByteArray("a\rb\r\r\n\r") << QByteArrayList{"a\rb\r", "\r"};
    QTest::newRow("NUL bytes are left out") << QByteArray("a\0b\0\n\0", 6) << QByteArrayList{"ab"};
    QTest::newRow("a full buffer") << QByteArray("abcdefg\r\nh") << QByteArrayList{"abcdefg", "h"};
    QTest::newRow("one byte too many") << QByteArray("abcdefgh\r\n") << QByteArrayList{"abcdefg", "h"};
    QTest::newRow("a CR at the edge") << QByteArray("abcdefg\rh") << QByteArrayList{"abcdefg", "\rh"};
}

void tst_KvoFile::lines()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArrayList, lines);
    store("lines", bytes);
    const auto file = kvo::fileSystem()->Open(path("lines"), 0x12);
    QVERIFY(file);
    QCOMPARE(AllLines(*file, 8), lines);
    const auto memory = kvo::CMemFile::Create();
    memory->WriteBytes(bytes.constData(), bytes.size());
    QCOMPARE(AllLines(*memory, 8), lines);
    char nothing = '#';
    QVERIFY(!memory->GetLine(&nothing, 1) && nothing == '#');
}

void tst_KvoFile::longLines()
{
    // Also around the sizes in which a file is read ahead.
    for (const int middle : {2048, 2 * 2047, 64 * 1024, 128 * 1024}) {
        for (int length = middle - 4; length < middle + 4; ++length) {
            for (const char* lineEnd : {"\n", "\r\n"}) {
                const QByteArray line = QByteArray("0123456789abc").repeated(length / 13 + 1).left(length);
                const auto file = kvo::CMemFile::Create();
                file->WriteString((line + lineEnd + "next" + lineEnd + line).constData());
                const QByteArrayList pieces = AllLines(*file, 2048);
                const int count = (length + 2046) / 2047;
                QCOMPARE(pieces.size(), 2 * count + 1);
                QCOMPARE(pieces.mid(0, count).join(), line);
                QCOMPARE(pieces.at(count), "next");
                QCOMPARE(pieces.mid(count + 1).join(), line);
            }
        }
    }
}

void tst_KvoFile::open_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("mode");
    QTest::newRow("read what is missing") << m_dir.filePath(QStringLiteral("none")) << 0x12;
    QTest::newRow("read a folder") << m_dir.path() << 0x12;
    QTest::newRow("read a pipe") << m_dir.filePath(QStringLiteral("pipe")) << 0x12;
    QTest::newRow("read a device") << QStringLiteral("/dev/zero") << 0x12;
    QTest::newRow("read an empty path") << QString() << 0x12;
    QTest::newRow("write a folder") << m_dir.path() << 0x28;
    QTest::newRow("write a pipe") << m_dir.filePath(QStringLiteral("pipe")) << 0x28;
    QTest::newRow("write an empty path") << QString() << 0x28;
    QTest::newRow("write into what is missing") << m_dir.filePath(QStringLiteral("none/x")) << 0x28;
    QTest::newRow("another mode") << m_dir.filePath(QStringLiteral("file")) << 0x02;
}

void tst_KvoFile::open()
{
    QFETCH(QString, name);
    QFETCH(int, mode);
    mkfifo(path("pipe").c_str(), 0600);
    store("file", "x");
    QVERIFY(!kvo::fileSystem()->Open(name.toStdString(), mode));
}

void tst_KvoFile::writing()
{
    const auto memory = kvo::CMemFile::Create();
    QVERIFY(memory->data() && memory->size() == 0);
    memory->WriteString("one\r\n");
    memory->WriteBytes("\0two", 4);
    store("ä b", "something longer");
    for (const char* name : {"ä b", "new"}) {
        const auto file = kvo::fileSystem()->Open(path(name), 0x28);
        QVERIFY(file);
        file->WriteBytes(memory->data(), memory->size());
        file->WriteString("end");
    }
    QCOMPARE(stored("ä b"), QByteArray("one\r\n\0twoend", 12));
    QCOMPARE(stored("new"), stored("ä b"));
}

void tst_KvoFile::failedWrite()
{
    store("kept", "old");
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small{100'000, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    auto file = kvo::fileSystem()->Open(path("kept"), 0x28);
    file->WriteBytes(std::string(1'000'000, 'x').data(), 1'000'000);
    file->WriteString("end");
    file.reset();
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, handler);
    QCOMPARE(stored("kept"), "old");
}

QTEST_APPLESS_MAIN(tst_KvoFile)
#include "tst_kvofile.moc"
