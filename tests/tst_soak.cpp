#include "backend/backend.h"

#include "tests/tree.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include <malloc.h>

class TestSoak : public QObject
{
    Q_OBJECT

    // Bytes on the heap, open files, threads.
    static std::array<qsizetype, 3> usage()
    {
        return {qsizetype(mallinfo2().uordblks),
                QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size(),
                QDir(u"/proc/self/task"_s).entryList(QDir::Dirs).size()};
    }

private slots:
    // By turns in both modes, with and without the wrapper.
    void doesNotGrowInAThousandCopies()
    {
        const QTemporaryDir home;
        setHome(home.path());
        QByteArrayList arguments = {"prjdup", PRJDUP_SAMPLES, "Copy", "--dotnet"};
        char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(),
                        arguments[3].data()};
        int argc = 4;
        const QCoreApplication application(argc, argv);
        Backend dotnet;
        argc = 3;
        Backend cmake;
        dotnet.setOpenSolution(false);
        cmake.setRunCMake(false);
        std::array<qsizetype, 3> warm{};
        for (int i = 0; i < 1000; ++i) {
            if (i == 100)
                warm = usage();
            Backend& backend = i % 2 ? dotnet : cmake;
            backend.setCopyWrapper(i % 4 == 1);
            QSignalSpy done(&backend, &Backend::copyDone);
            backend.start();
            QVERIFY(done.wait() && backend.copyProgress() == 1);
        }
        // What threads keep at hand varies by some 60 kB, and the last one may still be ending.
        QTRY_VERIFY(usage()[0] < warm[0] + 100'000);
        QTRY_VERIFY(usage()[1] <= warm[1] && usage()[2] <= warm[2]);
    }
};

QTEST_APPLESS_MAIN(TestSoak)
#include "tst_soak.moc"
