#include "copy/copyworker.h"
#include "copy/destination.h"
#include "copy/list/sdklayout.h"

#include "tests/tree.h"

#include <QStandardPaths>
#include <QTest>

class TestCopyWorker : public QObject
{
    Q_OBJECT

    using Modes = QFile::Permissions;

    // An SDK, and a destination that holds something already.
    struct Sdk
    {
        const QTemporaryDir root;
        const QString samples = path("sdk/samples"), file = path("sdk/samples/a/b/c");
        QString destination = path("my côpy");

        Sdk()
        {
            writeTree(
                root.path(),
                {{u"sdk/samples/CMakeLists.txt"_s, "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")"},
                 {u"sdk/samples/dotnet.sln"_s, "Project(\"\") = \"N\", \"N\\N.csproj\", \"\""},
                 {u"sdk/samples/N/N.csproj"_s,
                  "<P><ItemGroup><None Include='x'/><None Include='../../dotnet/w'/>"
                  "</ItemGroup></P>"},
                 {u"sdk/samples/a/b/c"_s, {}},
                 {u"sdk/bin/x"_s, {}},
                 {u"sdk/dotnet/w/doc/x"_s, {}},
                 {u"sdk/dotnet/doc/x"_s, {}},
                 {u"my côpy/old/file"_s, {}}});
            QFile::setPermissions(file, Modes(0x5055));
            QFile::link(samples, path("my côpy/link"));
            setHome(path("u/home"));
        }

        QString path(const char* name) const
        {
            return QDir(root.path()).filePath(QString::fromUtf8(name));
        }
        Tree copy() const { return readTree(destination); }
    };

    // Runs a worker here; aborts it at that file, or at 0 before. Returns each file with the
    // progress that follows it.
    static Names run(const Sdk& sdk, bool dotnet = false, bool wrapper = false, int abortAt = -1)
    {
        struct Worker : CopyWorker
        {
            using CopyWorker::CopyWorker, CopyWorker::run;
        } worker(nullptr, sdk.samples, sdk.destination, dotnet, wrapper);
        Names report;
        const auto abort = [&] {
            if (report.size() == abortAt)
                worker.abort();
        };
        connect(&worker, &CopyWorker::fileChanged, [&](QString file) { report += file, abort(); });
        connect(&worker, &CopyWorker::progressChanged,
                [&](double progress) { report.last() += u" %1"_s.arg(progress); });
        abort();
        worker.run();
        return report;
    }

private slots:
    void initTestCase() { obeyModes(); }

    void copiesWhatTheModeAsksFor_data()
    {
        QTest::addColumn<Names>("first");
        QTest::addColumn<QString>("copied");
        const Names bin = {u"/bin"_s, u"/bin/Debug"_s, u"/bin/Release"_s};
        const QString net = u"N/ N/N.csproj bin/ bin/Debug/ bin/Release/ dotnet.sln"_s;
        QTest::newRow("CMake") << Names() << u"CMakeLists.txt a/ a/b/ a/b/c"_s;
        QTest::newRow(".NET") << bin << net;
        QTest::newRow("wrapper") << bin + Names{u"/dotnet"_s}
                                 << net + u" dotnet/ dotnet/w/ dotnet/w/doc/ dotnet/w/doc/x"_s;
    }

    void copiesWhatTheModeAsksFor()
    {
        QFETCH(Names, first);
        const bool dotnet = !first.isEmpty(), wrapper = first.size() > 3;
        const Sdk sdk;
        const Names report = run(sdk, dotnet, wrapper || !dotnet);
        const Tree copy = sdk.copy();
        QTEST(Names(copy.keys()).join(u' '), "copied");
        QCOMPARE(report.size(), copy.size());
        for (int i = 0; i < report.size(); ++i) {
            const QString file = first.value(i, report[i].section(u' ', 0, 0));
            QCOMPARE(report[i], file + u" %1"_s.arg((i + 1.0) / copy.size()));
        }
        const QByteArray project = copy[u"N/N.csproj"_s];
        QCOMPARE(project.contains("'x'"), dotnet);
        QCOMPARE(project.contains("'../dotnet/w'"), wrapper);
    }

    void adaptsWhatItCopiedBeforeAnAbort()
    {
        for (int files = 0; files <= 4; ++files) {
            const Sdk sdk;
            QCOMPARE(run(sdk, false, false, files).size(), files);
            QCOMPARE(sdk.copy().size(), files);
            const QByteArray adapted = "set(ZUVYSDKDIR \"" + sdk.path("sdk/").toUtf8() + "\")";
            QCOMPARE(sdk.copy().value(u"CMakeLists.txt"_s, adapted), adapted);
            QVERIFY(run(sdk, true, false, 0).isEmpty());
            QVERIFY(sdk.copy()[u"dotnet.sln"_s].endsWith("\r\n"));
        }
    }

    void copiesWhatItCan()
    {
        const Sdk sdk;
        QVERIFY(QFile::link(u"/dev/zero"_s, sdk.path("sdk/samples/zero")));
        QCOMPARE(run(sdk).size(), 5);
        QCOMPARE(sdk.copy().size(), 4);
    }

    void makesTheCopyOfAReadOnlyFileWritable()
    {
        const Sdk sdk;
        run(sdk);
        QCOMPARE(QFile::permissions(sdk.path("my côpy/a/b/c")) & Modes(0x7077), Modes(0x7055));
    }

    void leavesAloneWhatIsNoCopy()
    {
        Sdk sdk;
        writeFile(sdk.path("links/"));
        QVERIFY(QFile::link(u"../sdk"_s, sdk.path("links/sdk")));
        QVERIFY(QFile::link(u"../sdk/samples/a/b"_s, sdk.path("links/b")));
        QVERIFY(QFile::link(u"loop"_s, sdk.path("loop")));
        const SdkLayout layout{sdk.path("links/sdk/samples")};
        const QString movies = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
        for (const QString& path : {QString(), sdk.samples + QChar(0xd800)}) // no Unicode
            QVERIFY(IsLeftAlone(path, layout));
        for (const QString& path :
             {u"."_s, u"sdk/samples/a"_s, u"sdk/bin"_s, u"sdk/lib"_s, u"sdk/dotnet"_s,
              u"sdk/include"_s, u"links"_s, u"links/b"_s, u"/dev"_s, u"u"_s, u"u/home/Desktop"_s,
              u"u/home/Documents"_s, u"u/home/Downloads"_s, u"u/home/Music"_s, u"u/home/Pictures"_s,
              movies}) {
            const QString folder = QDir(sdk.root.path()).filePath(path);
            QDir().mkpath(folder);
            QVERIFY2(IsLeftAlone(folder, layout), qPrintable(path));
        }
        QVERIFY(IsLeftAlone(sdk.path("loop"), layout));
        QVERIFY(!IsLeftAlone(sdk.destination, layout));
        // With a home folder that cannot be looked at.
        QFile::setPermissions(sdk.path("u"), {});
        QVERIFY(IsLeftAlone(sdk.destination, layout));
        for (const char* path : {"new", "sdk/samples/new"})
            QVERIFY2(!IsLeftAlone(sdk.path(path), layout), path);
        QFile::setPermissions(sdk.path("u"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        sdk.destination = sdk.samples;
        const Tree before = sdk.copy();
        QVERIFY(run(sdk).isEmpty());
        QCOMPARE(sdk.copy(), before);
    }

    void copiesNothingWhereALinkStays()
    {
        for (const QByteArray stays : {"file", "link", "hard link", "unreadable folder"}) {
            const Sdk sdk;
            const QString old = sdk.path("my côpy/old"), link = old + u"/link"_s;
            const auto setModes = [&](Modes locked) {
                for (int i = 0; i < 8; ++i)
                    QFile::setPermissions(sdk.destination + u"/%1"_s.arg(i),
                                          i % 2 ? locked : Modes(0x7000));
            };
            for (int i = 0; i < 8; ++i)
                writeFile(sdk.destination + u"/%1/file"_s.arg(i));
            setModes(Modes(0x5000));
            QVERIFY(stays != "link" || QFile::link(sdk.file, link));
            QVERIFY(stays != "hard link" || ::link(qPrintable(sdk.file), qPrintable(link)) == 0);
            QFile::setPermissions(old, Modes(stays[0] == 'u' ? 0 : 0x5000));
            QCOMPARE(run(sdk).isEmpty(), stays != "file");
            QCOMPARE(QFile::permissions(sdk.file) & Modes(0x7077), Modes(0x5055));
            // What can be removed is gone, whatever stays beside it.
            const Names left = QDir(sdk.destination).entryList({u"[0-9]"_s});
            QCOMPARE(left.join(u' '), u"1 3 5 7"_s);
            setModes(Modes(0x7000));
            QFile::setPermissions(old, Modes(0x7000));
        }
    }
};

QTEST_APPLESS_MAIN(TestCopyWorker)
#include "tst_copyworker.moc"
