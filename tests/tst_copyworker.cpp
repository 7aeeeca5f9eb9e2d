#include "copy/copyworker.h"

#include "tests/table.h"

class TestCopyWorker : public QObject
{
    Q_OBJECT

    // An SDK and a destination beside it, which holds something already.
    struct Sdk
    {
        const QTemporaryDir root;
        QString samples = root.filePath(u"sdk/samples"_s);
        QString destination = root.filePath(u"my côpy"_s);
        const QByteArray cmakeLists =
            "set(ZUVYSDKDIR \"" + root.filePath(u"sdk/"_s).toUtf8() + "\")\n";

        Sdk()
        {
            for (const char* name : {"samples/a/b/c.txt", "samples/Net/x.cs", "bin/other",
                                     "dotnet/w/doc/x.cs", "dotnet/doc/manual"})
                writeFile(root.filePath(u"sdk/"_s + QLatin1String(name)), "text");
            writeFile(samples + u"/CMakeLists.txt"_s, "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")\n");
            writeFile(samples + u"/dotnet.sln"_s,
                      "Project(\"{t}\") = \"Net\", \"Net\\Net.csproj\", \"{1}\"");
            writeFile(destination + u"/old/file"_s);
        }
    };

    // The files that a run reports, each with the progress that follows it.
    using Report = QList<std::pair<QString, double>>;

    // Runs a worker on this thread; with `abortAt`, aborts it at that report of a file (0: before
    // it starts).
    static Report run(const Sdk& sdk, bool dotnet = false, bool copyWrapper = false,
                      int abortAt = -1)
    {
        struct Worker : CopyWorker
        {
            using CopyWorker::CopyWorker, CopyWorker::run;
        } worker(nullptr, sdk.samples, sdk.destination, dotnet, copyWrapper);
        Report report;
        const auto abort = [&] {
            if (report.size() == abortAt)
                worker.abort();
        };
        connect(&worker, &CopyWorker::fileChanged, [&](const QString& file) {
            report.append({file, 0});
        });
        connect(&worker, &CopyWorker::fileChanged, abort);
        connect(&worker, &CopyWorker::progressChanged,
                [&](double progress) { report.last().second += progress; });
        abort();
        worker.run();
        return report;
    }

private slots:
    void copiesWhatTheModeAsksFor_data()
    {
        addCases(QFINDTESTDATA("data/modes.txt"), {"options", "first", "copied"});
    }

    void copiesWhatTheModeAsksFor()
    {
        QFETCH(QByteArray, options);
        QFETCH(QByteArray, first);
        const bool dotnet = options.contains("dotnet"), copyWrapper = options.contains("wrapper");
        const Sdk sdk;
        const Report report = run(sdk, dotnet, copyWrapper);
        const Tree copy = readTree(sdk.destination);
        QTEST(Names(copy.keys()).join(u'\n').toUtf8(), "copied");
        // As adapted; it had no line end.
        QVERIFY(!dotnet || copy[u"dotnet.sln"_s].endsWith("\r\n"));
        Names files;
        for (const auto& [file, progress] : report) {
            files += file;
            QCOMPARE(progress, double(files.size()) / double(copy.size()));
        }
        QCOMPARE(files.size(), copy.size());
        QVERIFY(files.join(u'\n').toUtf8().startsWith(first));
    }

    void stopsWhereItIsAborted()
    {
        for (int entries = 0; entries <= 4; ++entries) {
            const Sdk sdk;
            QCOMPARE(run(sdk, false, false, entries).size(), entries);
            const Tree copied = readTree(sdk.destination);
            QCOMPARE(copied.size(), entries);
            // What was copied is adapted all the same.
            QCOMPARE(copied.value(u"CMakeLists.txt"_s, sdk.cmakeLists), sdk.cmakeLists);
        }
    }

    void copiesWhatItCan()
    {
        Sdk sdk;
        sdk.destination += QChar(0xd800); // no Unicode
        QVERIFY(QFile::link(u"/dev/zero"_s, sdk.samples + u"/a/zero"_s));
        const Report report = run(sdk);
        QCOMPARE(report.size(), 5);
        QCOMPARE(report.last().second, 1.0);
        QCOMPARE(readTree(sdk.destination).size(), 4);
    }

    void leavesADestinationAloneThatHoldsASource()
    {
        Sdk sdk;
        QVERIFY(QFile::link(sdk.root.filePath(u"sdk"_s), sdk.root.filePath(u"link"_s)));
        const Tree before = readTree(sdk.root.path());
        for (const char* name : {"sdk/bin", "sdk/samples/a", "sdk/samples",
                                 "sdk/samples/../../sdk/", ".", "link", "link/../sdk", ""}) {
            sdk.destination = *name ? sdk.root.filePath(QLatin1String(name)) : QString();
            QVERIFY2(run(sdk).isEmpty(), name);
            QCOMPARE(readTree(sdk.root.path()), before);
        }
    }
};

QTEST_APPLESS_MAIN(TestCopyWorker)
#include "tst_copyworker.moc"
