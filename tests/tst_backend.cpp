#include "backend/backend.h"
#include "backend/quitrequests.h"

#include "tests/table.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTimer>
#include <QUrl>

using Arguments = QByteArrayList;

namespace {

// The command line that the application object refers to; each test sets its own.
int argumentCount = 0;
char* argumentVector[8];

// A command line, and a home folder that holds an SDK's samples and a search path.
struct Setup
{
    QTemporaryDir home;
    const QString samples = home.filePath(u"sdk/samples"_s),
                  documents = home.filePath(u"Documents"_s);
    Arguments arguments;

    explicit Setup(const Arguments& given, int files = 1)
        : arguments(Arguments{"prjdup"} + given)
    {
        setHome(home.path());
        qputenv("PATH", home.filePath(u"path"_s).toUtf8());
        for (int i = 0; i < files; ++i)
            writeFile(samples + u"/d/%1"_s.arg(i), "x");
        argumentCount = 0;
        for (QByteArray& argument : arguments)
            argumentVector[argumentCount++] = argument.replace("%1", samples.toUtf8()).data();
    }
};

} // namespace

class TestBackend : public QObject
{
    Q_OBJECT

public slots:
    // The desktop's handler of files, where a test sets it.
    void open(const QUrl& url) { m_opened.append(url); }

private:
    QList<QUrl> m_opened;

private slots:
    void readsTheCommandLine_data()
    {
        addCases(QFINDTESTDATA("data/commandlines.txt"), {"arguments", "destination", "result"});
    }

    void readsTheCommandLine()
    {
        QFETCH(QByteArray, arguments);
        QFETCH(QByteArray, destination);
        const Setup setup(arguments.split('\n'));
        const Backend backend;
        QCOMPARE(backend.destination(),
                 QDir::cleanPath(setup.documents + QString::fromUtf8(destination)));
        QTEST((backend.valid() ? "valid" : "invalid") + QByteArray(backend.dotnet() ? " .NET" : ""),
              "result");
        QCOMPARE(backend.status(), Backend::STATUS_NOT_STARTED);
        QVERIFY(backend.runCMake() && backend.openSolution() && !backend.copyWrapper());
        QVERIFY(!backend.destinationExists());
        writeFile(backend.destination(), "a file counts");
        QVERIFY(backend.destinationExists());
    }

    void keepsTheOrderOfItsMetaObject()
    {
        const QMetaObject& meta = Backend::staticMetaObject;
        QByteArrayList members;
        for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
            const QMetaProperty property = meta.property(i);
            members +=
                QByteArrayList{property.typeName(), property.name(), property.notifySignal().name()}
                    .join(' ')
                    .trimmed();
        }
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            members += meta.method(i).methodSignature();
        for (int i = 0; i < 6; ++i)
            members += meta.enumerator(meta.indexOfEnumerator("ESTATUS")).valueToKey(i);
        QCOMPARE(members.join('\n') + '\n', readFile(QFINDTESTDATA("data/metaobject.txt")));
    }

    void takesADestination_data()
    {
        addCases(QFINDTESTDATA("data/urls.txt"), {"written", "url", "destination"});
    }

    void takesADestination()
    {
        QFETCH(QByteArray, written);
        const Setup setup({"/s", "x"});
        Backend backend;
        QSignalSpy changed(&backend, &Backend::destinationChanged);
        backend.setDestinationUrl(QString::fromUtf8(written));
        backend.setDestinationUrl(QString::fromUtf8(written));
        QCOMPARE(changed.size(), 1);
        QTEST(backend.destinationUrl().toUtf8(), "url");
        QTEST(backend.destination().toUtf8(), "destination");
    }

    void followsUpOnACopy_data()
    {
        addCases(QFINDTESTDATA("data/followups.txt"), {"given", "status"});
    }

    void followsUpOnACopy()
    {
        QFETCH(QByteArray, given);
        const bool dotnet = given.contains(".NET"), wanted = given.contains("wanted"),
                   available = given.contains("available"), aborted = given.contains("aborted");
        const Setup setup({"%1", "x", dotnet ? "--dotnet" : "third"}, aborted ? 2000 : 1);
        // A program on the search path that leaves its arguments, one a line, beside itself.
        const QString program = setup.home.filePath(u"path/cmake-gui"_s);
        const QByteArray shell = available ? "#!/bin/sh\n" : "#!/missing\n";
        writeFile(program,
                  shell + "printf '%s\\n' \"$@\" > \"$0.new\"\n/bin/mv \"$0.new\" \"$0.args\"\n");
        QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner));
        m_opened.clear();
        QDesktopServices::setUrlHandler(u"file"_s, available ? this : nullptr, "open");
        Backend backend;
        QSignalSpy done(&backend, &Backend::copyDone);
        // The follow-up goes by the settings at the end of the copy, the copy by those at its
        // start.
        const QString destination = setup.home.filePath(u"an other/.."_s);
        connect(&backend, &Backend::copyProgressChanged, &backend, [&] {
            backend.setDestination(destination);
            backend.setRunCMake(wanted);
            backend.setOpenSolution(wanted);
            if (aborted)
                backend.abort();
        });
        backend.start();
        QVERIFY(done.wait());
        QVERIFY(QFileInfo(setup.documents + u"/x"_s).isDir());
        QCOMPARE(backend.copyProgress() < 1, aborted);
        QTEST(QByteArray(QMetaEnum::fromType<Backend::ESTATUS>().valueToKey(backend.status())),
              "status");
        if (backend.status() == Backend::STATUS_CMAKE_RUNNING) {
            const QByteArray build = setup.home.filePath(u"build"_s).toUtf8();
            QTRY_COMPARE(readFile(program + u".args"_s),
                         "-S\n" + destination.toUtf8() + "\n-B\n" + build + '\n');
        }
        const QList<QUrl> solution = {QUrl::fromLocalFile(setup.home.filePath(u"dotnet.sln"_s))};
        QCOMPARE(m_opened,
                 backend.status() == Backend::STATUS_SOLUTION_OPENED ? solution : QList<QUrl>());
    }

    void endsWhenAsked_data()
    {
        QTest::addColumn<int>("signal");
        QTest::newRow("the terminal is closed") << SIGHUP;
        QTest::newRow("interrupted") << SIGINT;
        QTest::newRow("terminated") << SIGTERM;
        QTest::newRow("the session ends") << 0;
    }

    void endsWhenAsked()
    {
        QFETCH(int, signal);
        const Setup setup({"%1", "x"}, 1000);
        Backend backend;
        const QuitRequests requests(backend);
        connect(&backend, &Backend::copyFileChanged, [&] {
            if (signal)
                std::raise(signal);
            else // with an argument that nobody reads
                emit qGuiApp->commitDataRequest(reinterpret_cast<QSessionManager&>(*qGuiApp));
        });
        QTimer::singleShot(5000, &backend, [] { QCoreApplication::exit(1); });
        backend.start();
        QCOMPARE(QCoreApplication::exec(), 0);
        QTRY_VERIFY(!backend.copying());
        QVERIFY(backend.copyProgress() < 1);
        QCOMPARE(backend.status(), Backend::STATUS_COPY_DONE);
    }

    void completesACopyBehindAClosedWindow()
    {
        for (const bool terminated : {false, true}) {
            const int count = terminated ? 1000 : 20;
            const Setup setup({"%1", "x"}, count);
            Backend backend;
            {
                const QuitRequests requests(backend);
                QTimer::singleShot(
                    0, [] { QCoreApplication::postEvent(qGuiApp, new QEvent(QEvent::Quit)); });
                QCOMPARE(QCoreApplication::exec(), 0);
                backend.start();
                if (terminated)
                    std::raise(SIGTERM);
            }
            QCOMPARE(readTree(backend.destination()).size() <= count, terminated);
            QVERIFY(backend.runCMake());
        }
    }

    // As a program that is started inherits what is ignored, but no handler.
    void ignoresTheSignalsThatWereIgnored()
    {
        const Setup setup({});
        Backend backend;
        std::signal(SIGHUP, SIG_IGN);
        const QuitRequests requests(backend);
        QVERIFY(std::signal(SIGHUP, SIG_DFL) == SIG_IGN);
        const auto handler = std::signal(SIGXFSZ, SIG_DFL);
        QVERIFY(handler != SIG_DFL && handler != SIG_IGN);
    }

#ifdef __linux__
    // As no stack of that size can be had.
    void endsACopyThatGetsNoThread()
    {
        const Setup setup({"%1", "x"});
        Backend backend;
        backend.setRunCMake(false);
        QSignalSpy done(&backend, &Backend::copyDone);
        pthread_attr_t normal, huge;
        pthread_getattr_default_np(&normal);
        pthread_getattr_default_np(&huge);
        pthread_attr_setstacksize(&huge, SIZE_MAX / 2);
        pthread_setattr_default_np(&huge);
        backend.start();
        pthread_setattr_default_np(&normal);
        QVERIFY(backend.copying() && done.wait());
        QVERIFY(!backend.copying() && !backend.destinationExists());
        backend.start();
        QVERIFY(done.wait() && backend.destinationExists());
    }
#endif

    void reportsOneCopyAtATime()
    {
        const Setup setup({"%1", "x"});
        Backend backend;
        backend.setRunCMake(false);
        backend.abort();
        QStringList log;
        connect(&backend, &Backend::copyFileChanged,
                [&] { log += u"file "_s + backend.copyFile(); });
        connect(&backend, &Backend::copyProgressChanged,
                [&] { log += QString::number(backend.copyProgress()); });
        connect(&backend, &Backend::copyingChanged,
                [&] { log += backend.copying() ? u"copying"_s : u"idle"_s; });
        connect(&backend, &Backend::statusChanged, [&] { log += u"status"_s; });
        connect(&backend, &Backend::copyDone, [&] {
            log += u"done"_s;
            // Once more, now that it may.
            if (log.count(u"done"_s) == 1)
                backend.start();
        });
        backend.start();
        backend.start();
        QTRY_COMPARE(log.count(u"done"_s), 2);
        QCOMPARE(log.join(u", "_s), u"copying, file /d, 0.5, file /d/0, 1, status, idle, done, "
                                    "file , 0, copying, file /d, 0.5, file /d/0, 1, idle, done"_s);
    }
};

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const Setup setup({});
    const QGuiApplication application(argumentCount, argumentVector);
    TestBackend test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_backend.moc"
