#include "kvo/file.h"
#include "kvo/path.h"

#include "tests/table.h"

class TestKvoFile : public QObject
{
    Q_OBJECT

    const QTemporaryDir m_dir;

    QString path(const char* name) const { return m_dir.filePath(QString::fromUtf8(name)); }

    static std::unique_ptr<kvo::IFile> open(const QString& path, int mode)
    {
        return kvo::fileSystem()->Open(path.toStdString(), mode);
    }

private slots:
    void takesPathsApartAndJoinsThem_data()
    {
        addCases(QFINDTESTDATA("data/paths.txt"), {"call", "result"});
    }

    void takesPathsApartAndJoinsThem()
    {
        using namespace kvo::path;
        QFETCH(QByteArray, call);
        const QByteArrayList lines = call.split('\n');
        const char separator = lines[0].back();
        const std::string first = lines[1].toStdString();
        const std::string second = lines.last().toStdString();
        const QMap<QByteArray, std::string> results = {
            {"GetFilename", GetFilename(first)},
            {"GetDirectory", GetDirectory(first)},
            {"MakePath", MakePath(first, second, separator)},
            {"ConvertSlashes", ConvertSlashes(first, separator)},
            {"ExpandRelativePath", ExpandRelativePath(first, second, separator)},
            {"RelativePath", RelativePath(first, second, separator)},
            {"IsChildOfDirectory", IsChildOfDirectory(first, second) ? "inside" : "outside"},
        };
        QTEST(QByteArray::fromStdString(results[lines[0].split(' ').first()]), "result");
    }

    void readsLines_data() { addCases(QFINDTESTDATA("data/lines.txt"), {"bytes", "lines"}); }

    void readsLines()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, lines);
        writeFile(path("lines"), bytes.replace("␍", "\r").replace("␀", QByteArray(1, '\0')));
        const auto file = open(path("lines"), 0x12);
        QByteArray found;
        for (char buffer[8]; file->GetLine(buffer, sizeof buffer);)
            found += QByteArray("[") + buffer + ']';
        QCOMPARE(found, lines.replace("␍", "\r"));
    }

    void opensRegularFilesOnly()
    {
        makePipe(path("pipe"));
        QVERIFY(QFile::link(path("none"), path("link")));
        for (const QString& name : {QString(), m_dir.path(), path("none"), u"/dev/zero"_s,
                                    u"/proc/self/mem"_s, path("pipe")})
            QVERIFY2(!open(name, 0x12), qPrintable(name));
        for (const QString& name :
             {QString(), m_dir.path(), path("none/x"), path("pipe"), path("link")})
            QVERIFY2(!open(name, 0x28), qPrintable(name));
    }

    void writesNewFilesAndOverOldOnes()
    {
        writeFile(path("ä b"), "something longer");
        for (const char* name : {"ä b", "new"}) {
            open(path(name), 0x28)->WriteBytes("one\0two", 7);
            QCOMPARE(readFile(path(name)), QByteArray("one\0two", 7));
        }
    }

    void keepsTheOldFileWhenAWriteIsShort()
    {
        writeFile(path("kept"), "old");
        writeWithLimit([&] {
            const auto file = open(path("kept"), 0x28);
            file->WriteBytes(QByteArray(99'998, 'x').constData(), 99'998);
            file->WriteString("more");
        });
        QCOMPARE(readFile(path("kept")), "old");
    }
};

QTEST_APPLESS_MAIN(TestKvoFile)
#include "tst_kvofile.moc"
