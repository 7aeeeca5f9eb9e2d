#include "app/startup.h"
#include "backend/backend.h"

#include "tests/tree.h"

#include <QApplication>
#include <QFileDialog>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QStyleHints>
#include <QTest>

// Takes the place of Backend in the window: notes what it is asked to do, and copies nothing.
class Recorder : public Backend
{
    Q_OBJECT
    Q_PROPERTY(bool dotnet MEMBER dotnet CONSTANT)
    Q_PROPERTY(bool isWindows MEMBER windows CONSTANT)
    Q_PROPERTY(bool valid MEMBER valid CONSTANT)

public:
    static inline bool dotnet, windows;
    const bool valid = true;
    QByteArray calls;

    Q_INVOKABLE void abort() { calls += "abort "; }
    Q_INVOKABLE void start()
    {
        calls += "start ";
        setCopying(true);
    }
    void finish()
    {
        setCopying(false);
        emit copyDone();
    }
};

namespace {

const auto kKeys = {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space};
const QString kPath = u"/A <h1>B &amp; é"_s;
const QString kLongPath = QString(500, u'x');

QByteArray nameOf(const QObject* item)
{
    const QString text = item->property("text").toString().remove(u'&');
    return (item->objectName().isEmpty() ? text : item->objectName()).toUtf8();
}

} // namespace

class TestWindow : public QObject
{
    Q_OBJECT

public:
    QTemporaryDir home;
    std::unique_ptr<QQmlApplicationEngine> engine;
    Recorder* backend;
    QQuickWindow* window;

    void load(bool dotnet = false, bool windows = false)
    {
        engine = std::make_unique<QQmlApplicationEngine>();
        setHome(home.path());
        Recorder::dotnet = dotnet;
        Recorder::windows = windows;
        backend = qobject_cast<Recorder*>(loadWindow(*engine));
        window = qobject_cast<QQuickWindow*>(engine->rootObjects().value(0));
        window->requestActivate();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }

    // The visible item with this object name or else, mnemonics aside, this text.
    QQuickItem* item(const QByteArray& name) const
    {
        for (QQuickItem* item : window->findChildren<QQuickItem*>()) {
            if (item->isVisible() && nameOf(item) == name)
                return item;
        }
        return nullptr;
    }
    // What has the focus, and shows it.
    QByteArray focused() const
    {
        const QQuickItem* focus = window->activeFocusItem();
        return focus->property("visualFocus") == QVariant(false) ? "" : nameOf(focus);
    }
    bool isEnabled(const char* name) const { return item(name)->isEnabled(); }
    QString text(const char* name) const { return item(name)->property("text").toString(); }
    qreal number(const char* name, const char* property) const
    {
        return item(name)->property(property).toReal();
    }
    QRectF place(const char* name) const
    {
        return item(name)->mapRectToScene(item(name)->boundingRect());
    }
    bool isInside(const char* name) const
    {
        return QRect({}, window->size()).contains(place(name).toAlignedRect());
    }

    void click(const char* name)
    {
        QTest::mouseClick(window, Qt::LeftButton, {}, place(name).center().toPoint());
    }
    void press(Qt::Key key)
    {
        QTest::keyClick(window, key, key == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier);
    }
    void pressAndHold(Qt::Key key)
    {
        press(key);
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent repeat(type, key, {}, {}, true);
            QCoreApplication::sendEvent(window, &repeat);
        }
    }

    void flipFocused(const QByteArray& property)
    {
        bool now = backend->property(property).toBool();
        for (const Qt::Key key : kKeys) {
            pressAndHold(key);
            QCOMPARE(backend->property(property).toBool(), now = !now);
        }
        backend->setProperty(property, !now);
        QCOMPARE(window->activeFocusItem()->property("checked").toBool(), !now);
    }

private slots:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        load();
    }

    void carriesTheIconInEightSizes() { QCOMPARE(window->icon().availableSizes().size(), 8); }

    void notesWhatWindowsNeedsInCMakeModeOnly()
    {
        for (const int mode : {0, 1, 2, 3}) {
            load(mode % 2, mode / 2);
            QCOMPARE(item("windowsNote") != nullptr, mode == 2);
        }
    }

    // From Copy, which has the focus at first, once around.
    void isUsedInReadingOrder()
    {
        for (const bool dotnet : {false, true}) {
            load(dotnet);
            QByteArray order;
            do {
                order += focused() + ' ';
                if (focused().endsWith("Box"))
                    flipFocused(focused().chopped(3));
                press(Qt::Key_Tab);
            } while (focused() != "copyButton" && order.size() < 200);
            QCOMPARE(order, QByteArray("copyButton ") +
                                (dotnet ? "copyWrapperBox openSolutionBox" : "runCMakeBox") +
                                " destinationField chooseButton closeButton ");
        }
    }

    void isAsWideAsItsContentAndAtLeast640()
    {
        QCOMPARE(window->minimumHeight(), window->maximumHeight());
        QCOMPARE(window->width(), qCeil(item("runCMakeBox")->parentItem()->implicitWidth()) + 16);
        window->setProperty("font", QFont(QString(), 5));
        QTRY_COMPARE(window->width(), 640);
    }

    void pressesOnceForAKeyHeldDown()
    {
        QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(backend->calls, "");
        for (const Qt::Key key : kKeys) {
            load();
            pressAndHold(key);
            pressAndHold(key);
            QCOMPARE(backend->calls, "start ");
            QVERIFY(!isEnabled("copyButton") && !isEnabled("closeButton"));
            QVERIFY(isEnabled("runCMakeBox"));
            press(Qt::Key_Tab);
            QCOMPARE(focused(), "abortButton");
            pressAndHold(key);
            QCOMPARE(backend->calls, "start abort ");
            backend->finish();
            QCOMPARE(focused(), "OK");
            press(key);
            QVERIFY(!window->isVisible());
        }
    }

    void showsItsProgressAsLongAsItCopies()
    {
        load(true);
        for (const bool copyWrapper : {true, false}) {
            backend->setCopying(true);
            press(Qt::Key_Tab);
            QCOMPARE(focused(), "abortButton");
            press(Qt::Key_Escape);
            press(Qt::Key_Return);
            click("copyWrapperBox");
            QCOMPARE(backend->copyWrapper(), copyWrapper);
            QVERIFY(isEnabled("openSolutionBox"));
            press(Qt::Key_Space);
            QCOMPARE(backend->copyWrapper(), copyWrapper);
            QCOMPARE(backend->calls, "");
            backend->setCopying(false);
            QVERIFY(!item("abortButton"));
        }
    }

    void asksBeforeItRemovesAFolder()
    {
        load(true);
        backend->setDestination(home.path());
        // No has the focus at first, also when Yes had it last.
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Backtab, Qt::Key_Escape}) {
            click("copyButton");
            QCOMPARE(focused(), "No");
            for (const char* next : {"Yes", "No"}) {
                press(Qt::Key_Tab);
                QCOMPARE(focused(), next);
            }
            press(key);
        }
        QCOMPARE(focused(), "copyButton");
        click("copyButton");
        QVERIFY(text("message").contains(home.path()));
        click("copyWrapperBox");
        QVERIFY(backend->copyWrapper() && !item("No"));
        QCOMPARE(backend->calls, "");
        click("copyButton");
        press(Qt::Key_Backtab);
        press(Qt::Key_Return);
        QCOMPARE(backend->calls, "start ");
    }

    void tellsTheOutcome()
    {
        backend->setDestination(kPath);
        int status = Backend::STATUS_COPY_DONE;
        for (const QString& outcome :
             {u"can now open"_s, u"finish generating"_s, u"could not find cmake-gui"_s,
              u"opening the solution"_s, u"failed to open the solution"_s}) {
            backend->setStatus(Backend::ESTATUS(status++));
            backend->finish();
            QVERIFY(text("message").contains(outcome) && text("message").contains(kPath));
            QCOMPARE(number("message", "textFormat"), qreal(Qt::PlainText));
        }
        press(Qt::Key_Escape);
        QCOMPARE(focused(), "copyButton");
    }

    void fitsItsMessageIntoTheWindow()
    {
        backend->setStatus(Backend::STATUS_SOLUTION_OPEN_FAILED);
        backend->finish();
        QTRY_COMPARE(number("message", "contentHeight"),
                     number("message", "lineCount") * place("Destination Folder:").height());
        backend->setDestination(kLongPath.repeated(4));
        window->grabWindow();
        const qreal height = number("message", "contentHeight");
        QVERIFY(height > place("OK").height() && height <= place("message").height());
        QVERIFY(isInside("OK") && isInside("message"));
        QVERIFY(place("message").bottom() <= place("OK").top());
    }

    void showsAnyNameInOneLineOfItsProgress()
    {
        backend->setCopying(true);
        QCOMPARE(text("fileCaption"), u"Starting..."_s);
        backend->setCopyProgress(0.25);
        QCOMPARE(number("progressBar", "position"), 0.25);
        for (const QString& name : {kPath, kLongPath, u"/a\nb"_s, kPath}) {
            backend->setCopyFile(name);
            QTRY_COMPARE(text("fileLabel"), name);
            QCOMPARE(number("fileLabel", "textFormat"), qreal(Qt::PlainText));
            QCOMPARE(number("fileLabel", "lineCount"), 1);
            window->grabWindow();
            QVERIFY(number("fileLabel", "contentWidth") < window->width());
        }
        // As for a script whose font is taller.
        const QRectF before = place("abortButton");
        item("fileLabel")->setProperty("font", QFont(QString(), 40));
        window->grabWindow();
        QCOMPARE(place("abortButton"), before);
        QCOMPARE(text("fileCaption"), u"File:"_s);
    }

    void showsTheWholeDestinationInItsToolTip()
    {
        QVERIFY(number("destinationField", "readOnly"));
        QTest::mouseMove(window, place("destinationField").center().toPoint());
        QTRY_VERIFY(item("toolTipText"));
        for (const QString& path : {kPath, kLongPath}) {
            backend->setDestination(path);
            QCOMPARE(text("destinationField"), path);
            QCOMPARE(text("toolTipText"), path);
            QTRY_VERIFY(isInside("toolTipText"));
        }
        QTest::mouseMove(window, QPoint(1, 1));
        QTRY_VERIFY(!item("toolTipText"));
    }

    void choosesTheDestination()
    {
        const QString folder = home.filePath(u"a b%25 é"_s), chosen = folder + u"/c"_s;
        QDir().mkpath(chosen);
        QPointer<QFileDialog> dialog;
        const auto choose = [&](const QString& start) {
            click("chooseButton");
            dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            QCOMPARE(dialog->directory(), QDir(start));
        };
        choose(home.path());
        QCOMPARE(dialog->windowHandle()->transientParent(), window);
        QVERIFY(dialog->testOption(QFileDialog::ShowDirsOnly));
        dialog->reject();
        QTRY_VERIFY(!dialog);
        QVERIFY(backend->destination() != home.path());

        backend->setDestination(folder + u"/d/e"_s);
        choose(folder);
        QMetaObject::invokeMethod(item("chooseButton"), "clicked");
        QVERIFY(dialog);
        dialog->setDirectory(chosen);
        QMetaObject::invokeMethod(dialog, "accept");
        QCOMPARE(backend->destination(), chosen);
        QTRY_VERIFY(!dialog);

        choose(chosen);
        backend->finish();
        QVERIFY(item("OK") && dialog->isVisible());
    }
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    // The platform's own chooser cannot be driven from here.
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    // On macOS, Tab stops only at text and lists unless a user wants otherwise.
    QApplication::styleHints()->setTabFocusBehavior(Qt::TabFocusAllControls);
    const QIcon icon = prepareApplication();
    qmlRegisterType<Recorder>("com.zuvy", 1, 0, "Backend");
    TestWindow test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window.moc"
