#include "app/startup.h"
#include "backend/backend.h"

#include "tests/tree.h"

#include <QApplication>
#include <QFileDialog>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
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

    // As by a key or an assistive tool.
    QFileDialog* openChooser()
    {
        QMetaObject::invokeMethod(item("chooseButton"), "clicked");
        return qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    }

private slots:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        load();
    }

    void carriesTheIconInEightSizes() { QCOMPARE(window->icon().availableSizes().size(), 8); }

    void hasTheBasicStyle() { QCOMPARE(QQuickStyle::name(), u"Basic"_s); }

    void leavesMarginsAroundItsContent()
    {
        QCOMPARE(window->minimumHeight(), window->maximumHeight());
        QCOMPARE(place("closeButton").top() - place("chooseButton").bottom(), 16.0);
    }

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
                press(Qt::Key_Tab);
            } while (focused() != "copyButton" && order.size() < 200);
            QCOMPARE(order, QByteArray("copyButton ") +
                                (dotnet ? "copyWrapperBox openSolutionBox" : "runCMakeBox") +
                                " destinationField chooseButton closeButton ");
        }
    }

    void togglesABoxOnceForAKeyHeldDown()
    {
        load(true);
        item("copyWrapperBox")->forceActiveFocus();
        for (const bool now : {true, false, true}) {
            pressAndHold(now ? Qt::Key_Return : Qt::Key_Space);
            QCOMPARE(backend->copyWrapper(), now);
        }
    }

    void pressesOnceForAKeyHeldDown()
    {
        for (const Qt::Key key : kKeys) {
            load();
            pressAndHold(key);
            pressAndHold(key);
            QCOMPARE(backend->calls, "start ");
            QVERIFY(!item("copyButton")->isEnabled() && !item("closeButton")->isEnabled());
            press(Qt::Key_Tab);
            pressAndHold(key);
            QCOMPARE(backend->calls, "start abort ");
            backend->finish();
            QCOMPARE(focused(), "OK");
            press(key);
            QVERIFY(!window->isVisible());
        }
    }

    void pressesNothingWithAModifier()
    {
        QTest::keyClick(window, Qt::Key_Return, Qt::ControlModifier);
        QCOMPARE(backend->calls, "");
    }

    void showsItsProgressAsLongAsItCopies()
    {
        load(true);
        for (const bool copyWrapper : {true, false}) {
            backend->setCopying(true);
            press(Qt::Key_Tab);
            QCOMPARE(focused(), "abortButton");
            press(Qt::Key_Escape);
            click("copyWrapperBox");
            QTRY_VERIFY(window->activeFocusItem()->inherits("QQuickPopupItem"));
            press(Qt::Key_Space);
            QCOMPARE(backend->copyWrapper(), copyWrapper);
            QVERIFY(item("abortButton"));
            QCOMPARE(backend->calls, "");
            backend->setCopying(false);
            QVERIFY(!item("abortButton"));
        }
    }

    void copiesOverAFolderOnlyOnYes()
    {
        backend->setDestination(home.path());
        // "No" has the focus at first. Tab stays within the dialog.
        for (const int tabs : {0, 2, 1}) {
            QCOMPARE(backend->calls, "");
            click("copyButton");
            QVERIFY(item("No"));
            QVERIFY(text("message").startsWith(u"The folder %1 already"_s.arg(home.path())));
            for (int i = 0; i < tabs; ++i)
                press(Qt::Key_Tab);
            QCOMPARE(focused(), tabs == 1 ? "Yes" : "No");
            press(Qt::Key_Return);
        }
        QCOMPARE(backend->calls, "start ");
    }

    void tellsTheOutcome()
    {
        backend->setDestination(kPath);
        int status = Backend::STATUS_COPY_DONE;
        for (const auto& [outcome, lines] : {std::pair(u"can now open"_s, 1),
                                             {u"finish generating"_s, 3},
                                             {u"could not find cmake-gui"_s, 3},
                                             {u"opening the solution"_s, 2},
                                             {u"failed to open the solution"_s, 3}}) {
            backend->setStatus(Backend::ESTATUS(status++));
            backend->finish();
            QVERIFY(text("message").contains(outcome) && text("message").contains(kPath));
            QCOMPARE(text("message").split(u'\n').size(), lines);
            QCOMPARE(number("message", "textFormat"), qreal(Qt::PlainText));
        }
    }

    void fitsItsMessageIntoTheWindow()
    {
        backend->setDestination(kLongPath.repeated(4));
        backend->finish();
        window->grabWindow();
        QVERIFY(isInside("OK") && isInside("message"));
        QVERIFY(number("message", "contentHeight") <= place("message").height());
        QVERIFY(place("message").bottom() <= place("OK").top());
    }

    void showsItsProgress()
    {
        backend->setCopying(true);
        QCOMPARE(text("fileCaption"), u"Starting..."_s);
        backend->setCopyProgress(0.25);
        QCOMPARE(number("progressBar", "position"), 0.25);
        for (const QString& name : {kLongPath, u"/a\nb"_s, kPath}) {
            backend->setCopyFile(name);
            QTRY_COMPARE(text("fileLabel"), name);
            window->grabWindow();
            QCOMPARE(number("fileLabel", "textFormat"), qreal(Qt::PlainText));
            QCOMPARE(number("fileLabel", "lineCount"), 1);
            QVERIFY(number("fileLabel", "contentWidth") < window->width());
        }
        QCOMPARE(text("fileCaption"), u"File:"_s);
    }

    void showsTheWholeDestinationInItsToolTip()
    {
        QTest::mouseMove(window, place("destinationField").center().toPoint());
        QTRY_VERIFY(item("toolTipText"));
        backend->setDestination(kLongPath);
        QCOMPARE(text("toolTipText"), kLongPath);
        QTRY_VERIFY(isInside("toolTipText"));
    }

    void choosesTheDestination()
    {
        const QString folder = home.filePath(u"a b%25 é"_s), chosen = folder + u"/c"_s;
        QDir().mkpath(chosen);
        backend->setDestination(folder + u"/new/x"_s);
        QFileDialog* const dialog = openChooser();
        QVERIFY(dialog);
        // The nearest folder that exists.
        QCOMPARE(dialog->directory(), QDir(folder));
        QVERIFY(dialog->testOption(QFileDialog::ShowDirsOnly));
        dialog->setDirectory(chosen);
        QMetaObject::invokeMethod(dialog, "accept");
        QCOMPARE(backend->destination(), chosen);
    }

    void keepsOneChooserAboveItselfUntilItIsCanceled()
    {
        const QPointer<QFileDialog> dialog = openChooser();
        QVERIFY(dialog);
        QCOMPARE(dialog->windowHandle()->transientParent(), window);
        QCOMPARE(openChooser(), dialog);
        backend->finish();
        QVERIFY(item("OK") && dialog->isVisible());
        const QString before = backend->destination();
        dialog->reject();
        QCOMPARE(backend->destination(), before);
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
