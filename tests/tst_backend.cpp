#include "backend/backend.h"
#include "backend/quitrequests.h"
#include "copy/copyworker.h"

#include "tests/tree.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <csignal>

namespace {

// The application's command line, which Setup sets.
int argumentCount = 0;
char* argumentVector[8];

// Sets a command line, in which %1 is the samples folder, and a home folder that contains it.
class Setup : public QTemporaryDir
{
    QByteArrayList m_line;

public:
    explicit Setup(QByteArray line = "%1/none/..|x", int files = 1)
    {
        setHome(path());
        qputenv("PATH", path().toUtf8());
        for (int i = 0; i < files; ++i) {
            writeFile(filePath(u"sdk/samples/d/%1"_s.arg(i)));
            writeFile(filePath(u"sdk/dotnet/%1"_s.arg(i)));
        }
        m_line = ("|" + line.replace("%1", path().toUtf8() + "/sdk/samples")).split('|');
        argumentCount = 0;
        for (QByteArray& argument : m_line)
            argumentVector[argumentCount++] = argument.data();
    }

    ~Setup() { argumentCount = 0; }
};

// Where the command line leads from the documents folder, and its mode.
QByteArray read(const QByteArray& line)
{
    const Setup setup(line);
    const Backend backend;
    return QDir(setup.filePath(u"Documents"_s)).relativeFilePath(backend.destination()).toUtf8() +
           (backend.valid() ? "" : ", invalid") + (backend.dotnet() ? ", .NET" : "");
}

} // namespace

class TestBackend : public QObject
{
    Q_OBJECT

    QByteArray m_started;

    // The status after a copy and what was started, with settings made during the copy.
    QByteArray followUp(const char* line, bool wanted, bool available)
    {
        const Setup setup(line);
        const QString program = setup.filePath(u"cmake-gui"_s), output = program + u".out"_s;
        writeFile(program, available ? "#!/bin/sh\nprintf ' %s' \"$@\" >$0.out" : "#!/none");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
        QDesktopServices::setUrlHandler(u"file"_s, available ? this : nullptr, "open");
        m_started.clear();
        Backend backend;
        connect(&backend, &Backend::copyFileChanged, [&] {
            backend.setDestination(setup.filePath(u"a #%25//b/.."_s));
            backend.setRunCMake(wanted);
            backend.setOpenSolution(wanted);
        });
        QSignalSpy done(&backend, &Backend::copyDone);
        backend.start();
        done.wait();
        if (backend.status() == Backend::STATUS_CMAKE_RUNNING &&
            QTest::qWaitFor([&] { return QFileInfo(output).size() > 0; }))
            m_started = readFile(output);
        return QVariant::fromValue(backend.status()).toByteArray() +
               m_started.replace(setup.path().toUtf8(), "~");
    }

public slots:
    void open(const QUrl& url) { m_started = ' ' + url.toLocalFile().toUtf8(); }

private slots:
    void readsTheCommandLine()
    {
        QCOMPARE(read("/s"), "., invalid");
        QCOMPARE(read("/s|/tmp/My Copy"), "tmp/My Copy");
        QCOMPARE(read("/s|..//x/"), "../x");
        QCOMPARE(read("/s|--DOTNET"), "--DOTNET");
        QCOMPARE(read("--dotnet|/s|--dotnet|x"), "x, .NET");
        QCOMPARE(read("/s|x|y"), "x, invalid");
    }

    void takesTheUrlOfAFile()
    {
        Backend backend;
        backend.setDestinationUrl(u"file:///a b%20%23%2525é"_s);
        QCOMPARE(backend.destination(), u"/a b #%25é"_s);
        QCOMPARE(backend.destinationUrl(), u"file:///a b %23%2525é"_s);
        backend.setDestinationUrl(u"/a"_s);
        QCOMPARE(backend.destination(), QString());
    }

    void followsUpOnACopy()
    {
        QCOMPARE(followUp("%1|x", false, true), "STATUS_COPY_DONE");
        QCOMPARE(followUp("%1|x", true, true),
                 "STATUS_CMAKE_RUNNING -S ~/a #%25//b/.. -B ~/a #%25/build");
        QCOMPARE(followUp("%1|x", true, false), "STATUS_CMAKE_RUN_FAILED");
        QCOMPARE(followUp("%1|x|--dotnet", false, true), "STATUS_COPY_DONE");
        QCOMPARE(followUp("%1|x|--dotnet", true, true),
                 "STATUS_SOLUTION_OPENED ~/a #%25/dotnet.sln");
        QCOMPARE(followUp("%1|x|--dotnet", true, false), "STATUS_SOLUTION_OPEN_FAILED");
    }

    void reportsOneCopyAtATime()
    {
        const Setup setup;
        Backend backend;
        writeFile(backend.destination());
        QVERIFY(backend.destinationExists());
        backend.abort();
        QString log;
        connect(&backend, &Backend::copyFileChanged, [&] { log += backend.copyFile() + u' '; });
        connect(&backend, &Backend::copyProgressChanged,
                [&] { log += QString::number(backend.copyProgress()) + u' '; });
        connect(&backend, &Backend::copyingChanged, [&] { log += u"copying "; });
        connect(&backend, &Backend::statusChanged, [&] { log += u"status "; });
        connect(&backend, &Backend::copyDone, [&] { log += u"done "; });
        for (int i = 1; i < 3; ++i) {
            backend.start();
            backend.start();
            QTRY_COMPARE(log.count(u"done"), i);
        }
        QCOMPARE(log, u"copying /d 0.5 /d/0 1 status copying done "
                      " 0 copying /d 0.5 /d/0 1 copying done "_s);
    }

    void abortsItsCopyAndStartsNothingWhenTheSessionEnds()
    {
        for (const char* line : {"%1|x", "%1|x|--dotnet"}) {
            const Setup setup(line, 1000);
            QDesktopServices::setUrlHandler(u"file"_s, this, "open");
            Backend backend;
            backend.setCopyWrapper(true);
            const QuitRequests requests(backend);
            QTimer::singleShot(0, [&] {
                backend.start();
                // Nobody reads the argument.
                emit qGuiApp->commitDataRequest(reinterpret_cast<QSessionManager&>(*qGuiApp));
            });
            QCoreApplication::exec();
            QTRY_COMPARE(backend.status(), Backend::STATUS_COPY_DONE);
            QVERIFY(backend.copyProgress() < 1);
        }
    }

    void isTerminatedBehindItsClosedWindow()
    {
        const Setup setup("%1|x", 3000);
        Backend backend;
        {
            const QuitRequests requests(backend);
            backend.start();
            connect(
                backend.findChild<CopyWorker*>(), &CopyWorker::progressChanged, &backend,
                [] { std::raise(SIGTERM); },
                Qt::ConnectionType(Qt::DirectConnection | Qt::SingleShotConnection));
        }
        QTRY_VERIFY(!backend.copying());
        QVERIFY(backend.copyProgress() < 1);
        backend.start(); // the destructor waits
    }

    void leavesASecondSignalItsDefaultAction()
    {
        Backend backend;
        const QuitRequests requests(backend);
        std::raise(SIGINT);
        for (const int number : {SIGHUP, SIGINT, SIGTERM})
            QVERIFY(std::signal(number, SIG_DFL) == SIG_DFL);
    }
};

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const Setup setup;
    const QGuiApplication application(argumentCount, argumentVector);
    TestBackend test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_backend.moc"
