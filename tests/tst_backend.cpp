#include "backend/backend.h"

#include "tests/tree.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

using Qt::StringLiterals::operator""_s;

namespace {

// An application with a command line of its own, in a home folder that is otherwise empty.
struct Application
{
    QTemporaryDir home;
    QByteArrayList arguments;
    int argc;
    QList<char*> argv;
    std::unique_ptr<QGuiApplication> application;

    explicit Application(const QByteArrayList& given)
        : arguments(QByteArrayList{"prjdup"} + given)
        , argc(int(arguments.size()))
    {
        qputenv("HOME", home.path().toUtf8());
        qputenv("PATH", home.filePath(u"path"_s).toUtf8());
        for (QByteArray& argument : arguments)
            argv.append(argument.data());
        argv.append(nullptr);
        application = std::make_unique<QGuiApplication>(argc, argv.data());
    }
    QString documents() const { return home.filePath(u"Documents"_s); }

    // A program on the search path that leaves its arguments, one a line, beside itself.
    void addCMakeGui() const
    {
        const QString program = home.filePath(u"path/cmake-gui"_s);
        writeFile(program, "#!/bin/sh\nprintf '%s\\n' \"$@\" > \"$0.new\"\n/bin/mv \"$0.new\" \"$0.args\"\n");
        QFile::setPermissions(program, QFile::ReadOwner | QFile::ExeOwner);
    }
    QByteArray cmakeGuiArguments() const { return readFile(home.filePath(u"path/cmake-gui.args"_s)); }
};

// The desktop's handler of files, as far as it is asked for here.
class Desktop : public QObject
{
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(u"file"_s, this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(u"file"_s); }
    QList<QUrl> opened;

public slots:
    void open(const QUrl& url) { opened.append(url); }
};

bool copy(Backend& backend)
{
    QSignalSpy done(&backend, &Backend::copyDone);
    backend.start();
    return done.wait();
}

} // namespace

class TestBackend : public QObject
{
    Q_OBJECT

private slots:
    void readsTheCommandLine_data()
    {
        QTest::addColumn<QByteArrayList>("arguments");
        QTest::addColumn<QString>("destination");
        QTest::addColumn<bool>("dotnet");
        QTest::addColumn<bool>("valid");

        using L = QByteArrayList;
        const QString documents = u"%1"_s;
        QTest::newRow("nothing") << L{} << documents << false << false;
        QTest::newRow("a source only") << L{"/s"} << documents << false << false;
        QTest::newRow("source and name") << L{"/s", "My Copy"} << u"%1/My Copy"_s << false << true;
        QTest::newRow("the switch first") << L{"--dotnet", "/s", "x"} << u"%1/x"_s << true << true;
        QTest::newRow("the switch last and repeated") << L{"/s", "--dotnet", "x", "--dotnet"} << u"%1/x"_s << true << true;
        QTest::newRow("another case is a name") << L{"/s", "--DOTNET"} << u"%1/--DOTNET"_s << false << true;
        QTest::newRow("three names") << L{"/s", "x", "y"} << u"%1/x"_s << false << false;
        QTest::newRow("an absolute name") << L{"/s", "/tmp/x"} << u"%1/tmp/x"_s << false << true;
        QTest::newRow("a name that leads out") << L{"/s", "../x"} << u"%1/../x"_s << false << true;
        QTest::newRow("a name to be cleaned") << L{"/s", "a//b/"} << u"%1/a/b"_s << false << true;
    }

    void readsTheCommandLine()
    {
        QFETCH(QByteArrayList, arguments);
        QFETCH(QString, destination);
        const Application application(arguments);
        const Backend backend;
        QCOMPARE(backend.destination(), QDir::cleanPath(destination.arg(application.documents())));
        QTEST(backend.dotnet(), "dotnet");
        QTEST(backend.valid(), "valid");
        QCOMPARE(backend.status(), Backend::STATUS_NOT_STARTED);
        QVERIFY(backend.runCMake() && backend.openSolution() && !backend.copyWrapper());
    }

    void keepsTheOrderOfItsMetaObject()
    {
        const QMetaObject& meta = Backend::staticMetaObject;
        QByteArray members;
        for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
            members += QByteArray(meta.property(i).name()) + ' ';
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            members += meta.method(i).methodSignature() + ' ';
        QCOMPARE(members, QByteArray("destinationUrl destination copyWrapper destinationExists "
                                     "copyProgress copyFile copying valid dotnet runCMake "
                                     "openSolution status isWindows destinationChanged() "
                                     "copyWrapperChanged() copyProgressChanged() copyFileChanged() "
                                     "copyingChanged() copyDone() runCMakeChanged() "
                                     "openSolutionChanged() statusChanged() finishedCopyWorker() "
                                     "abort() start() "));
    }

    void notifiesOnceOfAChange_data()
    {
        QTest::addColumn<QByteArray>("property");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("destination");

        QTest::newRow("destination") << QByteArray("destination") << QVariant(u"/x"_s) << u"/x"_s;
        QTest::newRow("the URL of a file") << QByteArray("destinationUrl") << QVariant(u"file:///tmp/a%20b%2525é"_s) << u"/tmp/a b%25é"_s;
        QTest::newRow("a URL typed with blanks") << QByteArray("destinationUrl") << QVariant(u"file:///tmp/a b"_s) << u"/tmp/a b"_s;
        QTest::newRow("no URL") << QByteArray("destinationUrl") << QVariant(u"/tmp/x"_s) << QString();
        QTest::newRow("another scheme") << QByteArray("destinationUrl") << QVariant(u"http://host/x"_s) << QString();
        for (const char* name : {"copyWrapper", "runCMake", "openSolution"})
            QTest::newRow(name) << QByteArray(name) << QVariant() << u"%1/x"_s;
    }

    void notifiesOnceOfAChange()
    {
        QFETCH(QByteArray, property);
        QFETCH(QVariant, value);
        QFETCH(QString, destination);
        const Application application({"/s", "x"});
        Backend backend;
        if (value.isNull())
            value = !backend.property(property).toBool();
        const QMetaProperty meta = backend.metaObject()->property(backend.metaObject()->indexOfProperty(property));
        QSignalSpy changed(&backend, meta.notifySignal());
        QVERIFY(backend.setProperty(property, value));
        QVERIFY(backend.setProperty(property, value));
        QCOMPARE(changed.size(), 1);
        if (property != "destinationUrl")
            QCOMPARE(backend.property(property), value);
        QCOMPARE(backend.destination(), destination.replace(u"%1"_s, application.documents()));
    }

    void givesTheDestinationAsUrlAndLooksForIt()
    {
        const Application application({"/s", "a #?%é"});
        Backend backend;
        const QString destination = backend.destination();
        backend.setDestinationUrl(backend.destinationUrl());
        QCOMPARE(backend.destination(), destination);
        QVERIFY(backend.destinationUrl().startsWith(u"file:///"_s));

        QVERIFY(!backend.destinationExists());
        writeFile(destination, "a file counts");
        QVERIFY(backend.destinationExists());
    }

    void followsUpOnACopy_data()
    {
        QTest::addColumn<bool>("dotnet");
        QTest::addColumn<bool>("wanted");
        QTest::addColumn<bool>("available");
        QTest::addColumn<Backend::ESTATUS>("status");

        QTest::newRow("CMake, not wanted") << false << false << true << Backend::STATUS_COPY_DONE;
        QTest::newRow("CMake, found") << false << true << true << Backend::STATUS_CMAKE_RUNNING;
        QTest::newRow("CMake, not found") << false << true << false << Backend::STATUS_CMAKE_RUN_FAILED;
        QTest::newRow(".NET, not wanted") << true << false << true << Backend::STATUS_COPY_DONE;
        QTest::newRow(".NET, opened") << true << true << true << Backend::STATUS_SOLUTION_OPENED;
        QTest::newRow(".NET, no handler") << true << true << false << Backend::STATUS_SOLUTION_OPEN_FAILED;
    }

    void followsUpOnACopy()
    {
        QFETCH(bool, dotnet);
        QFETCH(bool, wanted);
        QFETCH(bool, available);
        const Application application({"/missing", "my côpy", dotnet ? "--dotnet" : "third"});
        if (available)
            application.addCMakeGui();
        const auto desktop = available ? std::make_unique<Desktop>() : nullptr;
        Backend backend;
        QSignalSpy statusChanged(&backend, &Backend::statusChanged);
        // The follow-up goes by the settings at the end of the copy.
        const QString destination = application.home.filePath(u"an other/.."_s);
        connect(&backend, &Backend::copyingChanged, &backend, [&] {
            backend.setDestination(destination);
            backend.setRunCMake(wanted);
            backend.setOpenSolution(wanted);
        });
        QVERIFY(copy(backend));
        QTEST(backend.status(), "status");
        QVERIFY(!backend.copying());
        if (backend.status() == Backend::STATUS_CMAKE_RUNNING) {
            const QByteArray folder = destination.toUtf8();
            const QByteArray build = QDir::cleanPath(destination + u"/build"_s).toUtf8();
            QTRY_COMPARE(application.cmakeGuiArguments(), "-S\n" + folder + "\n-B\n" + build + '\n');
        } else {
            QCOMPARE(application.cmakeGuiArguments(), QByteArray("(unreadable)"));
        }
        if (desktop && dotnet && wanted)
            QCOMPARE(desktop->opened, {QUrl::fromLocalFile(application.home.filePath(u"dotnet.sln"_s))});
        else if (desktop)
            QVERIFY(desktop->opened.isEmpty());

        QVERIFY(copy(backend));
        QCOMPARE(statusChanged.size(), 1);
    }

    void runsOneCopyAtATime()
    {
        const Application application({"/missing", "x"});
        Backend backend;
        backend.abort();
        QVERIFY(!backend.copying());

        QSignalSpy done(&backend, &Backend::copyDone);
        QSignalSpy copying(&backend, &Backend::copyingChanged);
        backend.start();
        backend.start();
        QVERIFY(backend.copying());
        QVERIFY(done.wait());
        QVERIFY(copy(backend));
        QCOMPARE(done.size(), 2);
        QCOMPARE(copying.size(), 4);
    }

    void keepsItsReportsUntilTheNextCopy()
    {
        const QTemporaryDir sdk;
        writeTree(sdk.path(), {{u"samples/a"_s, "a"}, {u"samples/d/b"_s, "b"}});
        const Application application({sdk.filePath(u"samples"_s).toUtf8(), "x"});
        Backend backend;
        QStringList files;
        QList<double> progress;
        connect(&backend, &Backend::copyFileChanged, [&] { files += backend.copyFile(); });
        connect(&backend, &Backend::copyProgressChanged, [&] { progress += backend.copyProgress(); });
        for (int run = 0; run < 2; ++run) {
            QVERIFY(copy(backend));
            QCOMPARE(files.size(), 3 + run);
            QCOMPARE(files.indexOf(QString()), run ? 0 : -1);
            QCOMPARE(progress.mid(run), (QList<double>{1 / 3., 2 / 3., 1}));
            QCOMPARE(progress.first(), run ? 0 : 1 / 3.);
            QCOMPARE(backend.copyFile(), files.last());
            files.clear();
            progress.clear();
        }
    }

    void followsUpOnAnAbortedCopyToo()
    {
        const QTemporaryDir sdk;
        for (int i = 0; i < 2000; ++i)
            writeFile(sdk.filePath(u"samples/%1"_s.arg(i)), {});
        const Application application({sdk.filePath(u"samples"_s).toUtf8(), "x"});
        application.addCMakeGui();
        Backend backend;
        connect(&backend, &Backend::copyProgressChanged, &backend, &Backend::abort);
        QVERIFY(copy(backend));
        QVERIFY(backend.copyProgress() < 1);
        QCOMPARE(backend.status(), Backend::STATUS_CMAKE_RUNNING);
        QTRY_VERIFY(application.cmakeGuiArguments() != "(unreadable)");
    }

    void waitsForItsCopyWhenDestroyed()
    {
        const QTemporaryDir sdk;
        for (int i = 0; i < 500; ++i)
            writeFile(sdk.filePath(u"samples/%1"_s.arg(i)), "x");
        const Application application({sdk.filePath(u"samples"_s).toUtf8(), "x"});
        {
            Backend backend;
            backend.start();
        }
        QCOMPARE(readTree(application.documents() + u"/x"_s), readTree(sdk.filePath(u"samples"_s)));
    }
};

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    TestBackend test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_backend.moc"
