#include "backend/backend.h"

#include "tests/tree.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

#include <malloc.h>

class TestSoak : public QObject
{
    Q_OBJECT

    struct Usage
    {
        std::size_t memory = mallinfo2().uordblks;
        qsizetype files = QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
        qsizetype threads = QDir(u"/proc/self/task"_s).entryList(QDir::Dirs).size();
    };

private slots:
    // Alternately in both modes, with and without the wrapper.
    void doesNotGrowInAThousandCopies()
    {
        const QTemporaryDir home;
        setHome(home.path());
        writeTree(home.path(), {{u"sdk/samples/CMakeLists.txt"_s, "#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")\n"},
                                {u"sdk/samples/dotnet.sln"_s, "Project(\"{t}\") = \"P\", \"P\\P.csproj\", \"{1}\"\n"},
                                {u"sdk/samples/P/P.csproj"_s, "<P><PropertyGroup><OutputPath>x</OutputPath></PropertyGroup></P>"},
                                {u"sdk/bin/qmav"_s, "e"},
                                {u"sdk/dotnet/w.cs"_s, "w"}});
        QByteArrayList arguments = {"prjdup", home.filePath(u"sdk/samples"_s).toUtf8(), "Copy", "--dotnet"};
        char* argv[] = {arguments[0].data(), arguments[1].data(), arguments[2].data(), arguments[3].data()};
        std::optional<Usage> warm;
        for (int i = 0; i < 1000; ++i) {
            if (i == 100)
                warm.emplace();
            int argc = 3 + i % 2;
            const QCoreApplication application(argc, argv);
            Backend backend;
            backend.setRunCMake(false);
            backend.setOpenSolution(false);
            backend.setCopyWrapper(i % 4 > 1);
            QSignalSpy done(&backend, &Backend::copyDone);
            backend.start();
            QVERIFY(done.wait());
        }
        QVERIFY(Usage().memory < warm->memory + 50'000);
        QVERIFY(Usage().files <= warm->files);
        QTRY_VERIFY(Usage().threads <= warm->threads);
    }
};

QTEST_APPLESS_MAIN(TestSoak)
#include "tst_soak.moc"
