#include "backend/backend.h"

#include "tests/table.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QUrl>

using Arguments = QByteArrayList;

namespace {

// An application with a command line of its own, and with a home folder that holds an SDK's samples
// and a search path.
struct Application
{
    QTemporaryDir home;
    QByteArrayList arguments;
    int argc;
    QList<char*> argv;
    std::unique_ptr<QGuiApplication> application;

    explicit Application(const Arguments& given, int files = 2)
        : arguments(Arguments{"prjdup"} + given)
    {
        for (int i = 0; i < files; ++i)
            writeFile(samples() + u"/d/%1"_s.arg(i), "x");
        setHome(home.path());
        qputenv("PATH", home.filePath(u"path"_s).toUtf8());
        for (QByteArray& argument : arguments)
            argv.append(argument.replace("%1", samples().toUtf8()).data());
        argc = int(argv.size());
        application = std::make_unique<QGuiApplication>(argc, argv.data());
    }
    QString samples() const { return home.filePath(u"sdk/samples"_s); }
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
        const auto row = table<Arguments, QString, bool, bool>("arguments", "destination", "dotnet", "valid");
        row("nothing", {}, u""_s, false, false);
        row("a source only", {"/s"}, u""_s, false, false);
        row("source and name", {"/s", "My Copy"}, u"/My Copy"_s, false, true);
        row("the switch first", {"--dotnet", "/s", "x"}, u"/x"_s, true, true);
        row("the switch last and repeated", {"/s", "--dotnet", "x", "--dotnet"}, u"/x"_s, true, true);
        row("another case is a name", {"/s", "--DOTNET"}, u"/--DOTNET"_s, false, true);
        row("three names", {"/s", "x", "y"}, u"/x"_s, false, false);
        row("an absolute name", {"/s", "/tmp/x"}, u"/tmp/x"_s, false, true);
        row("a name that leads out, to be cleaned", {"/s", "..//x/"}, u"/../x"_s, false, true);
    }

    void readsTheCommandLine()
    {
        QFETCH(Arguments, arguments);
        QFETCH(QString, destination);
        const Application application(arguments);
        const Backend backend;
        QCOMPARE(backend.destination(), QDir::cleanPath(application.documents() + destination));
        QTEST(backend.dotnet(), "dotnet");
        QTEST(backend.valid(), "valid");
        QCOMPARE(backend.status(), Backend::STATUS_NOT_STARTED);
        QVERIFY(backend.runCMake() && backend.openSolution() && !backend.copyWrapper());
    }

    void keepsTheOrderOfItsMetaObject()
    {
        const QMetaObject& meta = Backend::staticMetaObject;
        QByteArrayList members;
        for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
            const QMetaProperty property = meta.property(i);
            members += QByteArray(property.typeName()) + ' ' + property.name() + (property.isWritable() ? "=" : "") + ' ' +
                       (property.isConstant() ? "constant" : property.notifySignal().name());
        }
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            members += meta.method(i).methodSignature();
        for (int i = 0; i < 6; ++i)
            members += meta.enumerator(meta.indexOfEnumerator("ESTATUS")).valueToKey(i);
        QCOMPARE(
            members.join(", "),
            QByteArray("QString destinationUrl= destinationChanged, QString destination= destinationChanged, "
                       "bool copyWrapper= copyWrapperChanged, bool destinationExists destinationChanged, "
                       "double copyProgress copyProgressChanged, QString copyFile copyFileChanged, bool copying copyingChanged, "
                       "bool valid constant, bool dotnet constant, bool runCMake= runCMakeChanged, "
                       "bool openSolution= openSolutionChanged, Backend::ESTATUS status statusChanged, bool isWindows constant, "
                       "destinationChanged(), copyWrapperChanged(), copyProgressChanged(), copyFileChanged(), copyingChanged(), "
                       "copyDone(), runCMakeChanged(), openSolutionChanged(), statusChanged(), finishedCopyWorker(), abort(), start(), "
                       "STATUS_NOT_STARTED, STATUS_COPY_DONE, STATUS_CMAKE_RUNNING, STATUS_CMAKE_RUN_FAILED, "
                       "STATUS_SOLUTION_OPENED, STATUS_SOLUTION_OPEN_FAILED"));
    }

    void notifiesOnceOfAChange_data()
    {
        const auto row = table<QByteArray, QVariant, QString>("property", "value", "destination");
        row("the URL of a file", "destinationUrl", u"file:///tmp/a%20b%2525é"_s, u"/tmp/a b%25é"_s);
        row("a URL typed with blanks", "destinationUrl", u"file:///tmp/a b"_s, u"/tmp/a b"_s);
        row("no URL", "destinationUrl", u"/tmp/x"_s, u""_s);
        row("another scheme", "destinationUrl", u"http://host/x"_s, u""_s);
        row("destination", "destination", u"/x"_s, u"/x"_s);
        for (const char* name : {"copyWrapper", "runCMake", "openSolution"})
            row(name, name, {}, u"%1/x"_s);
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
        QSignalSpy changed(&backend, backend.metaObject()->property(backend.metaObject()->indexOfProperty(property)).notifySignal());
        QVERIFY(backend.setProperty(property, value) && backend.setProperty(property, value));
        QCOMPARE(changed.size(), 1);
        if (property != "destinationUrl")
            QCOMPARE(backend.property(property), value);
        QCOMPARE(backend.destination(), destination.replace(u"%1"_s, application.documents()));
    }

    void givesTheDestinationAsUrlAndLooksForIt()
    {
        const Application application({"/s", "a #?%é"});
        Backend backend;
        const QString destination = backend.destination(), url = backend.destinationUrl();
        QVERIFY(url.startsWith(u"file:///"_s));
        backend.setDestination({});
        backend.setDestinationUrl(url);
        QCOMPARE(backend.destination(), destination);
        QVERIFY(!backend.destinationExists());
        writeFile(destination, "a file counts");
        QVERIFY(backend.destinationExists());
    }

    void followsUpOnACopy_data()
    {
        const auto row = table<bool, bool, bool, Backend::ESTATUS>("dotnet", "wanted", "available", "status");
        row("CMake, not wanted", false, false, true, Backend::STATUS_COPY_DONE);
        row("CMake, found", false, true, true, Backend::STATUS_CMAKE_RUNNING);
        row("CMake, not found", false, true, false, Backend::STATUS_CMAKE_RUN_FAILED);
        row(".NET, not wanted", true, false, true, Backend::STATUS_COPY_DONE);
        row(".NET, opened", true, true, true, Backend::STATUS_SOLUTION_OPENED);
        row(".NET, no handler", true, true, false, Backend::STATUS_SOLUTION_OPEN_FAILED);
    }

    void followsUpOnACopy()
    {
        QFETCH(bool, dotnet);
        QFETCH(bool, wanted);
        QFETCH(bool, available);
        const Application application({"%1", "x", dotnet ? "--dotnet" : "third"});
        if (available)
            application.addCMakeGui();
        const auto desktop = available ? std::make_unique<Desktop>() : nullptr;
        Backend backend;
        QSignalSpy statusChanged(&backend, &Backend::statusChanged);
        // The follow-up goes by the settings at the end of the copy, the copy by those at its start.
        const QString destination = application.home.filePath(u"an other/.."_s);
        connect(&backend, &Backend::copyProgressChanged, &backend, [&] {
            backend.setDestination(destination);
            backend.setRunCMake(wanted);
            backend.setOpenSolution(wanted);
        });
        QVERIFY(copy(backend));
        QVERIFY(QFileInfo(application.documents() + u"/x"_s).isDir());
        QTEST(backend.status(), "status");
        if (backend.status() == Backend::STATUS_CMAKE_RUNNING) {
            const QByteArray build = application.home.filePath(u"build"_s).toUtf8();
            QTRY_COMPARE(application.cmakeGuiArguments(), "-S\n" + destination.toUtf8() + "\n-B\n" + build + '\n');
        } else {
            QCOMPARE(application.cmakeGuiArguments(), QByteArray("(unreadable)"));
        }
        const QList<QUrl> solution = {QUrl::fromLocalFile(application.home.filePath(u"dotnet.sln"_s))};
        if (desktop)
            QCOMPARE(desktop->opened, dotnet && wanted ? solution : QList<QUrl>());

        backend.setDestination(application.documents() + u"/x"_s);
        QVERIFY(copy(backend));
        QCOMPARE(statusChanged.size(), 1);
    }

    void runsOneCopyAtATime()
    {
        const Application application({"%1", "x"});
        Backend backend;
        backend.abort();
        QByteArrayList events;
        connect(&backend, &Backend::copyingChanged, [&] { events += backend.copying() ? "copying" : "idle"; });
        connect(&backend, &Backend::statusChanged, [&] { events += "status"; });
        connect(&backend, &Backend::copyDone, [&] {
            events += "done";
            // Once more, now that it may.
            if (events.size() == 4)
                backend.start();
        });
        backend.start();
        backend.start();
        QTRY_COMPARE(events.join(' '), QByteArray("copying status idle done copying idle done"));
    }

    void keepsItsReportsUntilTheNextCopy()
    {
        const Application application({"%1", "x"});
        Backend backend;
        QStringList files;
        QList<double> progress;
        connect(&backend, &Backend::copyFileChanged, [&] { files += backend.copyFile(); });
        connect(&backend, &Backend::copyProgressChanged, [&] { progress += backend.copyProgress(); });
        QVERIFY(copy(backend));
        const QStringList first = files;
        QCOMPARE(first.size(), 3);
        QCOMPARE(progress, (QList<double>{1 / 3., 2 / 3., 1}));
        QVERIFY(copy(backend));
        QCOMPARE(files, first + QStringList{QString()} + first);
        QCOMPARE(progress.mid(3), (QList<double>{0, 1 / 3., 2 / 3., 1}));
        QCOMPARE(backend.copyFile(), first.last());
    }

    void followsUpOnAnAbortedCopyToo()
    {
        const Application application({"%1", "x"}, 2000);
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
        const Application application({"%1", "x"}, 500);
        Backend().start();
        QCOMPARE(readTree(application.documents() + u"/x"_s), readTree(application.samples()));
    }
};

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    TestBackend test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_backend.moc"
