#include "copy/copyworker.h"
#include "copy/destination.h"
#include "copy/list/sdklayout.h"

#include "tests/tree.h"

#include <QStandardPaths>
#include <QStorageInfo>
#include <QTest>

namespace {

constexpr auto kReadOnly = QFile::ReadOwner | QFile::ExeOwner;
constexpr auto kWritable = kReadOnly | QFile::WriteOwner;

// An SDK, and a destination that holds something already.
struct Sdk
{
    const QTemporaryDir root;
    const QString samples = path("sdk/samples");
    const QString file = path("sdk/samples/a/N/c");
    QString destination = path("my côpy");

    Sdk()
    {
        for (const char* name : {"sdk/samples/CMakeLists.txt", "sdk/samples/a/N/c",
                                 "sdk/samples/.hidden/x", "sdk/bin/x", "sdk/lib/x", "sdk/include/x",
                                 "sdk/dotnet/w/doc/x", "sdk/dotnet/doc/x", "my côpy/old/file"})
            writeFile(path(name));
        writeFile(samples + u"/dotnet.sln"_s, "Project(\"\") = \"N\", \"N\\N.csproj\", \"\"");
        writeFile(samples + u"/N/N.csproj"_s,
                  "<P><ItemGroup><None Include='N.cs'/></ItemGroup></P>");
        QFile::setPermissions(file, kReadOnly);
        QFile::link(u"a/N"_s, path("sdk/samples/link"));
        QFile::link(u"none"_s, path("sdk/samples/broken"));
    }

    QString path(const char* name) const
    {
        return QDir(root.path()).filePath(QString::fromUtf8(name));
    }
    QString copied() const { return listTree(destination).join(u' '); }
};

// Runs a worker on this thread. Returns how many entries it announced.
int run(const Sdk& sdk, bool dotnet = false, bool wrapper = false, bool aborted = false)
{
    struct Worker : CopyWorker
    {
        using CopyWorker::CopyWorker, CopyWorker::run;
    } worker(nullptr, sdk.samples, sdk.destination, dotnet, wrapper);
    int announced = 0;
    QObject::connect(&worker, &CopyWorker::fileChanged, [&](const QString& file) {
        QVERIFY2(!QFile::exists(sdk.destination + file), "not announced before it is copied");
        ++announced;
    });
    if (aborted)
        worker.abort();
    worker.run();
    return announced;
}

} // namespace

class TestCopyWorker : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { obeyModes(); }

    void copiesWhatTheModeAsksFor()
    {
        const QString net = u"N/ N/N.csproj bin/ bin/Debug/ bin/Release/ dotnet.sln"_s;
        const QString wrapper = u" dotnet/ dotnet/w/ dotnet/w/doc/ dotnet/w/doc/x"_s;
        for (const auto& [dotnet, withWrapper, copied] :
             {std::tuple(false, true, u"CMakeLists.txt a/ a/N/ a/N/c link/ link/c"_s),
              {true, false, net},
              {true, true, net + wrapper}}) {
            const Sdk sdk;
            const int announced = run(sdk, dotnet, withWrapper);
            QCOMPARE(sdk.copied(), copied);
            QCOMPARE(announced, listTree(sdk.destination).size());
        }
    }

    void refersToTheFilesItCopied()
    {
        const Sdk sdk;
        run(sdk, true);
        QVERIFY(readFile(sdk.path("my côpy/N/N.csproj")).contains("'N.cs'"));
    }

    void onlyAdaptsTheCopyOnceAborted()
    {
        const Sdk sdk;
        QCOMPARE(run(sdk, true, false, true), 0);
        QVERIFY(readFile(sdk.destination + u"/dotnet.sln"_s).endsWith("\r\n"));
    }

    void makesTheCopyOfAReadOnlyFileWritable()
    {
        const Sdk sdk;
        run(sdk);
        QVERIFY(QFile::permissions(sdk.path("my côpy/a/N/c")).testFlags(kWritable));
    }

    void leavesAloneWhatIsMoreThanACopy()
    {
        const Sdk sdk;
        setHome(sdk.path("u/home"));
        writeFile(sdk.path("links/"));
        QVERIFY(QFile::link(u"../sdk"_s, sdk.path("links/sdk")));
        QVERIFY(QFile::link(u"../sdk/samples/a/N"_s, sdk.path("links/N")));
        const SdkLayout layout{sdk.path("links/sdk/samples")};
        using Paths = QStandardPaths;
        Names folders = {Paths::writableLocation(Paths::MoviesLocation)};
        for (const char* path :
             {".", "sdk/samples/a", "sdk/bin", "sdk/lib", "sdk/dotnet", "sdk/include", "links",
              "links/N", "u", "u/home/Desktop", "u/home/Documents", "u/home/Downloads",
              "u/home/Music", "u/home/Pictures"})
            folders += sdk.path(path);
        for (const QStorageInfo& volume : QStorageInfo::mountedVolumes())
            folders += volume.rootPath();
        for (const QString& folder : std::as_const(folders)) {
            QDir().mkpath(folder);
            QVERIFY2(IsLeftAlone(folder, layout), qPrintable(folder));
        }
        QVERIFY(!IsLeftAlone(sdk.destination, layout));
    }

    void leavesAloneWhatItCannotJudge()
    {
        const Sdk sdk;
        const SdkLayout layout{sdk.samples};
        setHome(sdk.path("u/home"));
        QVERIFY(IsLeftAlone({}, layout));
        QVERIFY(IsLeftAlone(sdk.samples + QChar(0xd800), layout)); // not valid Unicode
        QVERIFY(QFile::link(u"loop"_s, sdk.path("loop")));
        QVERIFY(IsLeftAlone(sdk.path("loop"), layout));
        QVERIFY(IsLeftAlone(sdk.path("sdk/samples/new/.."), layout));
        writeFile(sdk.path("u/"));
        QFile::setPermissions(sdk.path("u"), {});
        QVERIFY(IsLeftAlone(sdk.destination, layout));
        QVERIFY(!IsLeftAlone(sdk.path("sdk/samples/new"), layout));
        QFile::setPermissions(sdk.path("u"), kWritable);
    }

    void copiesNothingOntoTheSdk()
    {
        Sdk sdk;
        sdk.destination = sdk.samples;
        const QString before = sdk.copied();
        QCOMPARE(run(sdk), 0);
        QCOMPARE(sdk.copied(), before);
    }

    void emptiesTheFolderThatALinkLeadsTo()
    {
        Sdk sdk;
        QVERIFY(QFile::link(sdk.destination, sdk.path("link")));
        sdk.destination = sdk.path("link");
        run(sdk);
        QVERIFY(QFileInfo(sdk.destination).isSymLink());
        QVERIFY(!sdk.copied().contains(u"old"_s));
    }

    void copiesNothingBesideALinkThatStays()
    {
        for (const bool isHard : {false, true}) {
            const Sdk sdk;
            const QString old = sdk.path("my côpy/old"), link = sdk.path("my côpy/old/link");
            if (isHard)
                QCOMPARE(::link(qPrintable(sdk.file), qPrintable(link)), 0);
            else
                QVERIFY(QFile::link(sdk.file, link));
            QFile::setPermissions(old, kReadOnly);
            QCOMPARE(run(sdk), 0);
            QVERIFY(!QFileInfo(sdk.file).isWritable());
            QFile::setPermissions(old, kWritable);
        }
    }

    void copiesNothingBesideAFolderThatCannotBeRead()
    {
        const Sdk sdk;
        QFile::setPermissions(sdk.path("my côpy/old"), {});
        QCOMPARE(run(sdk), 0);
        QFile::setPermissions(sdk.path("my côpy/old"), kWritable);
    }
};

QTEST_APPLESS_MAIN(TestCopyWorker)
#include "tst_copyworker.moc"
