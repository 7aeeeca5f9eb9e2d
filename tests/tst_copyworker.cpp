#include "copy/copyworker.h"

#include "tests/table.h"

#include <semaphore>

class TestCopyWorker : public QObject
{
    Q_OBJECT

    // An SDK and a destination beside it, which holds something already.
    struct Sdk
    {
        const QTemporaryDir root;
        QString samples = root.filePath(u"sdk/samples"_s);
        QString destination = root.filePath(u"my côpy"_s);
        const QByteArray cmakeLists = "set(ZUVYSDKDIR \"" + root.filePath(u"sdk/"_s).toUtf8() + "\")\n";

        static QByteArray project(const QString& wrapper)
        {
            return "<P><ItemGroup><None Include='x' /></ItemGroup><Target><Copy SourceFiles='" + wrapper.toUtf8() + "' /></Target></P>";
        }

        Sdk()
        {
            for (const char* name : {"samples/a/b/c.txt", "bin/other", "dotnet/w/doc/x.cs", "dotnet/doc/manual"})
                writeFile(root.filePath(u"sdk/"_s + QLatin1String(name)), "text");
            writeFile(samples + u"/Net/Net.csproj"_s, project(u"../../dotnet/w"_s));
            writeFile(samples + u"/CMakeLists.txt"_s, "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")\n");
            writeFile(samples + u"/dotnet.sln"_s, "Project(\"{t}\") = \"Net\", \"Net\\Net.csproj\", \"{1}\"");
            writeFile(destination + u"/old/file"_s);
        }
    };

    // The files that a worker reports, each with the progress that follows it.
    using Report = QList<std::pair<QString, double>>;

    // Runs a worker to its end; with `abortAt`, aborts it at that report of a file (0: before it starts).
    static Report run(const Sdk& sdk, bool dotnet, bool copyWrapper, int abortAt = -1)
    {
        CopyWorker worker(nullptr, sdk.samples, sdk.destination, dotnet, copyWrapper);
        Report report;
        const auto addFile = [&](const QString& file) {
            report.append({file, 0});
            if (report.size() == abortAt)
                worker.abort();
        };
        const auto addProgress = [&](double progress) { report.last().second += progress; };
        connect(&worker, &CopyWorker::fileChanged, &worker, addFile, Qt::DirectConnection);
        connect(&worker, &CopyWorker::progressChanged, &worker, addProgress, Qt::DirectConnection);
        if (abortAt == 0)
            worker.abort();
        // As Qt is built without thread sanitizer, that does not see what wait() waits for.
        std::binary_semaphore finished(0);
        connect(
            &worker, &QThread::finished, &worker, [&] { finished.release(); }, Qt::DirectConnection);
        worker.start();
        finished.acquire();
        worker.wait();
        return report;
    }

private slots:
    void copiesWhatTheModeAsksFor_data()
    {
        const auto row = table<bool, bool, QString, QString>("dotnet", "copyWrapper", "expected", "first");
        row("CMake: all but the .NET projects and the solution", false, true, u"CMakeLists.txt a/ a/b/ a/b/c.txt"_s, {});
        row(".NET: runtime folders, projects, solution", true, false, u"Net/ Net/Net.csproj bin/ bin/Debug/ bin/Release/ dotnet.sln"_s,
            u"/bin /bin/Debug /bin/Release"_s);
        row(".NET with wrapper: without its top-level doc", true, true,
            u"Net/ Net/Net.csproj bin/ bin/Debug/ bin/Release/ dotnet.sln dotnet/ dotnet/w/ dotnet/w/doc/ dotnet/w/doc/x.cs"_s,
            u"/bin /bin/Debug /bin/Release /dotnet /dotnet/w"_s);
    }

    void copiesWhatTheModeAsksFor()
    {
        QFETCH(bool, dotnet);
        QFETCH(bool, copyWrapper);
        QFETCH(QString, first);
        const Sdk sdk;
        const Tree before = readTree(sdk.root.filePath(u"sdk"_s));
        const Report report = run(sdk, dotnet, copyWrapper);
        const Tree copy = readTree(sdk.destination);
        QTEST(Names(copy.keys()).join(u' '), "expected");
        QCOMPARE(copy.value(u"CMakeLists.txt"_s, sdk.cmakeLists), sdk.cmakeLists);
        QVERIFY(!dotnet || copy[u"dotnet.sln"_s].endsWith("\r\n"));
        for (const QString& name : {u"a/b/c.txt"_s, u"dotnet/w/doc/x.cs"_s})
            QCOMPARE(copy.value(name, "text"), "text");
        const QByteArray project = Sdk::project(copyWrapper ? u"../dotnet/w"_s : sdk.root.filePath(u"sdk/dotnet/w"_s));
        QCOMPARE(copy.value(u"Net/Net.csproj"_s, project), project);
        QCOMPARE(readTree(sdk.root.filePath(u"sdk"_s)), before);

        Names files;
        for (const auto& [file, progress] : report) {
            files += file;
            QCOMPARE(progress, double(files.size()) / double(copy.size()));
        }
        QCOMPARE(files.size(), copy.size());
        QVERIFY(files.join(u' ').startsWith(first));
    }

    void stopsWhereItIsAborted()
    {
        for (int entries = 0; entries <= 4; ++entries) {
            const Sdk sdk;
            const Report report = run(sdk, false, false, entries);
            QCOMPARE(report.size(), entries);
            QVERIFY(report.isEmpty() || report.last().second == entries / 4.0);
            const Tree copied = readTree(sdk.destination);
            QCOMPARE(copied.size(), entries);
            // What was copied is adapted all the same.
            QCOMPARE(copied.value(u"CMakeLists.txt"_s, sdk.cmakeLists), sdk.cmakeLists);
        }
    }

    void replacesTheDestinationEvenWithNothing()
    {
        Sdk sdk;
        sdk.samples = sdk.root.filePath(u"missing"_s);
        QVERIFY(run(sdk, false, false).isEmpty());
        QVERIFY(QFileInfo(sdk.destination).isDir());
        QVERIFY(readTree(sdk.destination).isEmpty());
    }

    void copiesToANameThatIsNoUnicode()
    {
        Sdk sdk;
        sdk.destination += QChar(0xd800);
        QCOMPARE(run(sdk, false, false).size(), 4);
        QCOMPARE(readTree(sdk.destination).size(), 4);
    }

    void passesOverWhatCannotBeCopied()
    {
        const Sdk sdk;
        makePipe(sdk.root.filePath(u"pipe"_s));
        QVERIFY(QFile::link(sdk.root.filePath(u"pipe"_s), sdk.samples + u"/a/pipe"_s));
        QVERIFY(QFile::link(u"/dev/zero"_s, sdk.samples + u"/a/zero"_s));
        const Report report = run(sdk, false, false);
        QCOMPARE(report.size(), 6);
        QCOMPARE(report.last().second, 1.0);
        QCOMPARE(readTree(sdk.destination).size(), 4);
    }

    void givesAWritableCopyOfAReadOnlySdk()
    {
        const Sdk sdk;
        QVERIFY(QFile::setPermissions(sdk.samples + u"/CMakeLists.txt"_s, QFile::ReadOwner | QFile::ExeOwner));
        run(sdk, false, false);
        const auto copied = QFile::permissions(sdk.destination + u"/CMakeLists.txt"_s);
        QVERIFY(copied.testFlags(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QCOMPARE(readFile(sdk.destination + u"/CMakeLists.txt"_s), sdk.cmakeLists);
    }

    void leavesADestinationAloneThatHoldsTheSamples()
    {
        Sdk sdk;
        QVERIFY(QFile::link(sdk.root.filePath(u"sdk"_s), sdk.root.filePath(u"link"_s)));
        const Tree before = readTree(sdk.root.path());
        const Tree workingFolder = readTree(QDir::currentPath());
        for (const QString& samples : {sdk.samples, sdk.samples + u"/missing"_s}) {
            sdk.samples = samples;
            for (const char* name : {"sdk/samples", "sdk/samples/../../sdk/", ".", "link", "link/../sdk", ""}) {
                sdk.destination = *name ? sdk.root.filePath(QLatin1String(name)) : QString();
                QVERIFY2(run(sdk, false, false).isEmpty(), name);
                QCOMPARE(readTree(sdk.root.path()), before);
                QCOMPARE(readTree(QDir::currentPath()), workingFolder);
            }
        }
    }
};

QTEST_APPLESS_MAIN(TestCopyWorker)
#include "tst_copyworker.moc"
