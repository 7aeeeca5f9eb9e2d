#include "copy/copyworker.h"

#include "tests/tree.h"

#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using Names = QList<QString>;
using Qt::StringLiterals::operator""_s;

namespace {

const QByteArray kPlaceholder = "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")\n";
const QByteArray kSolution = "Project(\"{t}\") = \"Net\", \"Net\\Net.csproj\", \"{1}\"\n";
const QByteArray kProject = "<Project>\n</Project>\n";

// An SDK and a destination beside it, which holds something already.
struct Sdk
{
    QTemporaryDir root;
    QString samples = root.filePath(u"sdk/samples"_s);
    QString destination = root.filePath(u"my côpy"_s);

    Sdk()
    {
        writeTree(root.path(), {{u"sdk/samples/CMakeLists.txt"_s, kPlaceholder},
                                {u"sdk/samples/a/b/c.txt"_s, "c"},
                                {u"sdk/samples/dotnet.sln"_s, kSolution},
                                {u"sdk/samples/Net/Net.csproj"_s, kProject},
                                {u"sdk/bin/other"_s, "o"},
                                {u"sdk/dotnet/w/doc/x.cs"_s, "x"},
                                {u"sdk/dotnet/doc/manual"_s, "m"},
                                {u"my côpy/old/file"_s, "old"}});
    }
    QByteArray cmakeLists() const { return "set(ZUVYSDKDIR \"" + root.filePath(u"sdk/"_s).toUtf8() + "\")\n"; }
};

struct Report
{
    Names files;
    QList<double> progress;
};

// Runs a worker to its end; with `abortAt`, aborts it at that report of a file (0: before it
// starts).
Report run(const Sdk& sdk, bool dotnet, bool copyWrapper, int abortAt = -1)
{
    CopyWorker worker(nullptr, sdk.samples, sdk.destination, dotnet, copyWrapper);
    Report report;
    QObject::connect(
        &worker, &CopyWorker::fileChanged, &worker,
        [&](const QString& file) {
            report.files.append(file);
            if (report.files.size() == abortAt)
                worker.abort();
        },
        Qt::DirectConnection);
    QObject::connect(
        &worker, &CopyWorker::progressChanged, &worker,
        [&](double value) {
            report.progress.append(value);
            // Each entry is announced before its progress.
            if (report.files.size() != report.progress.size())
                report.progress.append(-1);
        },
        Qt::DirectConnection);
    if (abortAt == 0)
        worker.abort();
    worker.start();
    worker.wait();
    return report;
}

} // namespace

class TestCopyWorker : public QObject
{
    Q_OBJECT

private slots:
    void copiesWhatTheModeAsksFor_data()
    {
        QTest::addColumn<bool>("dotnet");
        QTest::addColumn<bool>("copyWrapper");
        QTest::addColumn<Tree>("expected");
        QTest::addColumn<Names>("first");

        const Tree net = {{u"bin/"_s, {}}, {u"bin/Debug/"_s, {}},           {u"bin/Release/"_s, {}},
                          {u"Net/"_s, {}}, {u"Net/Net.csproj"_s, kProject}, {u"dotnet.sln"_s, kSolution.chopped(1) + "\r\n"}};
        Tree wrapper = net;
        wrapper.insert({{u"dotnet/"_s, {}}, {u"dotnet/w/"_s, {}}, {u"dotnet/w/doc/"_s, {}}, {u"dotnet/w/doc/x.cs"_s, "x"}});
        const Names folders = {u"/bin"_s, u"/bin/Debug"_s, u"/bin/Release"_s};
        QTest::newRow("CMake: all but the .NET projects and the solution")
            << false << true << Tree{{u"CMakeLists.txt"_s, "sdk"}, {u"a/"_s, {}}, {u"a/b/"_s, {}}, {u"a/b/c.txt"_s, "c"}} << Names();
        QTest::newRow(".NET: runtime folders, projects, solution") << true << false << net << folders;
        QTest::newRow(".NET with wrapper: without its top-level doc")
            << true << true << wrapper << folders + Names{u"/dotnet"_s, u"/dotnet/w"_s};
    }

    void copiesWhatTheModeAsksFor()
    {
        QFETCH(bool, dotnet);
        QFETCH(bool, copyWrapper);
        QFETCH(Tree, expected);
        QFETCH(Names, first);
        const Sdk sdk;
        const Tree before = readTree(sdk.root.filePath(u"sdk"_s));
        const Report report = run(sdk, dotnet, copyWrapper);
        if (expected.contains(u"CMakeLists.txt"_s))
            expected[u"CMakeLists.txt"_s] = sdk.cmakeLists();
        QCOMPARE(readTree(sdk.destination), expected);
        QCOMPARE(readTree(sdk.root.filePath(u"sdk"_s)), before);

        QCOMPARE(report.files.size(), expected.size());
        QCOMPARE(report.files.mid(0, first.size()), first);
        for (int i = 0; i < expected.size(); ++i)
            QCOMPARE(report.progress[i], double(i + 1) / double(expected.size()));
    }

    void stopsWhereItIsAborted()
    {
        for (int entries = 0; entries <= 4; ++entries) {
            const Sdk sdk;
            const Report report = run(sdk, false, false, entries);
            QCOMPARE(report.files.size(), entries);
            QCOMPARE(report.progress.size(), entries);
            const Tree copied = readTree(sdk.destination);
            QCOMPARE(copied.size(), entries);
            // What was copied is adapted all the same.
            if (copied.contains(u"CMakeLists.txt"_s))
                QCOMPARE(copied[u"CMakeLists.txt"_s], sdk.cmakeLists());
        }
    }

    void replacesTheDestinationEvenWithNothing()
    {
        Sdk sdk;
        sdk.samples = sdk.root.filePath(u"missing"_s);
        const Report report = run(sdk, false, false);
        QVERIFY(report.files.isEmpty() && report.progress.isEmpty());
        QVERIFY(QFileInfo(sdk.destination).isDir());
        QVERIFY(readTree(sdk.destination).isEmpty());
    }

    void passesOverWhatCannotBeCopied()
    {
        const Sdk sdk;
        const QString pipe = sdk.root.filePath(u"pipe"_s);
        QCOMPARE(mkfifo(qPrintable(pipe), 0600), 0);
        QVERIFY(QFile::link(pipe, sdk.samples + u"/a/pipe"_s));
        QVERIFY(QFile::link(u"/dev/zero"_s, sdk.samples + u"/a/zero"_s));
        const Report report = run(sdk, false, false);
        QCOMPARE(report.files.size(), 6);
        QCOMPARE(report.progress.last(), 1.0);
        QCOMPARE(readTree(sdk.destination).size(), 4);
    }

    void givesAWritableCopyOfAReadOnlySdk()
    {
        const Sdk sdk;
        for (const QString& name : {u"/CMakeLists.txt"_s, u"/a/b/c.txt"_s, u"/a/b"_s, u"/a"_s})
            QVERIFY(QFile::setPermissions(sdk.samples + name, QFile::ReadOwner | QFile::ExeOwner));
        run(sdk, false, false);
        struct stat status;
        QCOMPARE(::stat(qPrintable(sdk.destination + u"/a/b/c.txt"_s), &status), 0);
        QCOMPARE(status.st_mode & 0777u, 0700u);
        QCOMPARE(::stat(qPrintable(sdk.destination + u"/a/b"_s), &status), 0);
        QVERIFY(status.st_mode & S_IWUSR);
        QCOMPARE(readFile(sdk.destination + u"/CMakeLists.txt"_s), sdk.cmakeLists());
        // So that the temporary folder can be removed.
        for (const QString& name : {u"/a"_s, u"/a/b"_s})
            QVERIFY(QFile::setPermissions(sdk.samples + name, QFile::Permissions(0x7000)));
    }

    void leavesADestinationAloneThatHoldsTheSamples_data()
    {
        QTest::addColumn<QString>("destination");
        QTest::newRow("empty, with the working folder") << QString();
        QTest::newRow("the samples folder") << u"%1/sdk/samples"_s;
        QTest::newRow("the SDK folder, spelled in another way") << u"%1/sdk/samples/../../sdk/"_s;
        QTest::newRow("a folder above") << u"%1"_s;
        QTest::newRow("a link to the SDK folder") << u"%1/link"_s;
        QTest::newRow("the SDK folder through a link") << u"%1/link/../sdk"_s;
    }

    void leavesADestinationAloneThatHoldsTheSamples()
    {
        QFETCH(QString, destination);
        Sdk sdk;
        QVERIFY(QFile::link(sdk.root.filePath(u"sdk"_s), sdk.root.filePath(u"link"_s)));
        sdk.destination = destination.replace(u"%1"_s, sdk.root.path());
        const Tree before = readTree(sdk.root.path());
        const Tree workingFolder = readTree(QDir::currentPath());
        const Report report = run(sdk, false, false);
        QVERIFY(report.files.isEmpty() && report.progress.isEmpty());
        QCOMPARE(readTree(sdk.root.path()), before);
        QCOMPARE(readTree(QDir::currentPath()), workingFolder);
    }
};

QTEST_APPLESS_MAIN(TestCopyWorker)
#include "tst_copyworker.moc"
