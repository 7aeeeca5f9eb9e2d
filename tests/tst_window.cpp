#include "app/startup.h"
#include "backend/backend.h"

#include "tests/table.h"

#include <QApplication>
#include <QFileDialog>
#include <QMetaEnum>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QRegularExpression>
#include <QResource>
#include <QSignalSpy>

namespace {

// The command line that the application object refers to; each test sets its own.
int argumentCount = 1;
char* argumentVector[8];

// The real window on an SDK of its own, with a home folder that is otherwise empty.
class Program
{
public:
    QTemporaryDir root;
    QQmlApplicationEngine engine;
    QQuickWindow* window = nullptr;

    explicit Program(bool dotnet = false, int files = 1)
    {
        setHome(root.path());
        for (int i = 0; i < files; ++i)
            writeFile(root.filePath(u"sdk/samples/d/file %1"_s.arg(i)), "x");
        argumentCount = dotnet ? 4 : 3;
        std::transform(m_arguments.begin(), m_arguments.end(), argumentVector + 1,
                       [](QByteArray& text) { return text.data(); });
        loadWindow(engine);
        window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
        window->requestActivate();
        static_cast<void>(QTest::qWaitForWindowActive(window));
    }

    Backend& backend() const { return *window->property("backend").value<Backend*>(); }
    QString destination() const { return root.filePath(u"Documents/My Copy"_s); }
    QRectF area() const { return {QPointF(), window->size()}; }
    QObject* object(const QString& name) const { return window->findChild<QObject*>(name); }
    void call(const QString& name, const char* method) const
    {
        QMetaObject::invokeMethod(object(name), method);
    }
    bool isOpen(const QString& dialog) const
    {
        return object(dialog)->property("visible").toBool();
    }

    // The visible item with this object name or, mnemonics aside, this text.
    QQuickItem* item(const QString& name) const
    {
        QList<QQuickItem*> items = {window->contentItem()};
        for (int i = 0; i < items.size(); ++i) {
            const QString text = items[i]->property("text").toString().remove(u'&');
            if (items[i]->isVisible() && (items[i]->objectName() == name || text == name))
                return items[i];
            items += items[i]->childItems();
        }
        return nullptr;
    }
    QRectF place(const QString& name) const
    {
        return item(name)->mapRectToScene({QPointF(), item(name)->size()});
    }
    QString text(const QString& name) const { return item(name)->property("text").toString(); }
    QString focused() const
    {
        const QObject* focus = window->activeFocusItem();
        return focus->objectName().isEmpty() ? focus->property("text").toString().remove(u'&')
                                             : focus->objectName();
    }
    void drawFrame() const
    {
        QSignalSpy frame(window, &QQuickWindow::frameSwapped);
        window->update();
        QVERIFY(frame.wait());
    }
    void click(const QString& name) const
    {
        QTest::mouseClick(window, Qt::LeftButton, {}, place(name).center().toPoint());
    }

private:
    QByteArrayList m_arguments = {root.filePath(u"sdk/samples"_s).toUtf8(), "My Copy", "--dotnet"};
};

QFileDialog* fileDialog()
{
    const QWidgetList widgets = QApplication::topLevelWidgets();
    const auto shown = std::find_if(widgets.begin(), widgets.end(),
                                    [](auto* widget) { return widget->isVisible(); });
    return shown == widgets.end() ? nullptr : qobject_cast<QFileDialog*>(*shown);
}

const QString kLongPath = QString(u"/a-folder-with-a-long-name"_s).repeated(20).left(500);

} // namespace

class TestWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { QTest::failOnWarning(QRegularExpression(u"."_s)); }

    void holdsItsResourcesUncompressed()
    {
        QStringList found;
        for (const QFileInfo& file : QDir(u":/"_s).entryInfoList(QDir::Files) +
                                         QDir(u":/icon"_s).entryInfoList(QDir::Files)) {
            const QImage icon(file.filePath());
            QDebug(&found.emplaceBack()).nospace()
                << qPrintable(file.filePath()) << ' ' << icon.format() << ' ' << icon.width();
            QCOMPARE(QResource(file.filePath()).compressionAlgorithm(), QResource::NoCompression);
        }
        found.sort();
        QCOMPARE(found.join(u'\n').toUtf8(),
                 readFile(QFINDTESTDATA("data/resources.txt")).trimmed());
        QCOMPARE(QFileInfo(u":/qtquickcontrols2.conf"_s).size(), 212);
    }

    void showsTheControlsOfItsMode_data()
    {
        addCases(QFINDTESTDATA("data/controls.txt"), {"modes", "text"});
    }

    void showsTheControlsOfItsMode()
    {
        QFETCH(QByteArray, modes);
        QFETCH(QByteArray, text);
        for (const bool dotnet : {false, true}) {
            const Program program(dotnet);
            QCOMPARE(program.item(QString::fromUtf8(text)) != nullptr,
                     modes.contains(dotnet ? ".NET" : "CMake"));
            if (const QObject* control =
                    program.object(QString::fromLatin1(QTest::currentDataTag())))
                QCOMPARE(control->property("text").toByteArray(), text);
        }
    }

    // From Copy, which has the focus at first, once around.
    void isUsedInReadingOrder()
    {
        for (const bool dotnet : {false, true}) {
            const Program program(dotnet);
            QCOMPARE(program.window->title(), u"Copy Project"_s);
            QVERIFY(program.window->minimumWidth() >= 640);
            QCOMPARE(program.window->minimumHeight(), program.window->maximumHeight());
            QCOMPARE(program.text(u"destinationField"_s), program.destination());
            QVERIFY(program.item(u"destinationField"_s)->property("readOnly").toBool());
            QCOMPARE(program.place(u"chooseButton"_s).size(), QSizeF(40, 40));
            QStringList order;
            do {
                order += program.focused();
                if (const QString property = order.last().section(u"Box"_s, 0, -2);
                    !property.isEmpty())
                    flip(program, property.toLatin1());
                QTest::keyClick(program.window, Qt::Key_Tab);
            } while (program.focused() != order.first() && order.size() < 10);
            QCOMPARE(order.join(u' '),
                     u"copyButton "_s +
                         (dotnet ? u"copyWrapperBox openSolutionBox"_s : u"runCMakeBox"_s) +
                         u" destinationField chooseButton closeButton"_s);
        }
    }

    void copiesAndSaysSo()
    {
        const Program program(false, 500);
        program.backend().setRunCMake(false);
        QStringList states;
        const auto noteState = [&] {
            states += program.text(u"fileCaption"_s) + program.text(u"fileLabel"_s) + u' ' +
                      program.focused();
            for (const QString& name :
                 {u"closeButton"_s, u"copyButton"_s, u"chooseButton"_s, u"runCMakeBox"_s})
                states.last() += program.item(name)->isEnabled() ? u' ' + name : QString();
        };
        QObject::connect(&program.backend(), &Backend::copyFileChanged, program.window, noteState);
        QSignalSpy done(&program.backend(), &Backend::copyDone);
        QTest::keyClick(program.window, Qt::Key_Return);
        // A key still held down presses nothing in the dialogs.
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space})
                QCoreApplication::postEvent(program.window, new QKeyEvent(type, key, {}, {}, true));
        }
        QVERIFY(done.count() || done.wait(60000));
        QCOMPARE(states.value(0), u"File:/d abortButton chooseButton runCMakeBox"_s);
        QCOMPARE(states.size(), 501);
        QCOMPARE(readTree(program.destination()).size(), 501);
        QCOMPARE(program.object(u"progressBar"_s)->property("percent").toInt(), 100);
        QVERIFY(!program.isOpen(u"copyDlg"_s) && program.isOpen(u"doneDlg"_s) &&
                program.item(u"copyButton"_s)->isEnabled());
        QTRY_COMPARE(program.focused(), u"OK"_s);
        QTest::keyClick(program.window, Qt::Key_Space);
        QTRY_VERIFY(!program.window->isVisible());
    }

    void asksBeforeItRemovesAFolder()
    {
        const Program program(false, 1000);
        program.backend().setRunCMake(false);
        QSignalSpy done(&program.backend(), &Backend::copyDone);
        writeFile(program.destination() + u"/old"_s);
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
            program.click(u"copyButton"_s);
            QTRY_COMPARE(program.focused(), u"No"_s);
            QTest::keyClick(program.window, key);
            QTRY_VERIFY(!program.isOpen(u"overwriteDlg"_s));
        }
        QVERIFY(!program.backend().copying());
        QCOMPARE(readTree(program.destination()).keys(), QStringList{u"old"_s});

        program.click(u"copyButton"_s);
        QTest::keyClick(program.window, Qt::Key_Tab, Qt::ShiftModifier);
        QTest::keyClick(program.window, Qt::Key_Return);
        QVERIFY(program.item(u"Starting..."_s) && program.item(u"Abort"_s) &&
                program.item(u"Copy Progress"_s));
        QTRY_VERIFY(program.backend().copyProgress() > 0);
        QCOMPARE(program.focused(), u"abortButton"_s);
        QVERIFY(done.wait(60000));
        QCOMPARE(readTree(program.destination()).size(), 1001);
    }

    void tellsTheOutcome_data()
    {
        addCases(QFINDTESTDATA("data/outcomes.txt"), {"status", "text"});
    }

    // In each mode, with a short and a long path and in a large font: nothing is cut off.
    void tellsTheOutcome()
    {
        QFETCH(QByteArray, status);
        QFETCH(QByteArray, text);
        const QString warning =
            u"The folder %1 already exists. If you continue it will be removed, are you sure you want to continue."_s;
        for (const bool dotnet : {false, true}) {
            for (const int size : {20, QFont().pointSize()}) {
                QGuiApplication::setFont(QFont(QFont().family(), size));
                const Program program(dotnet);
                for (const QString& path : {u"/a <b>&amp; é"_s, kLongPath, kLongPath.repeated(4)}) {
                    program.backend().setDestination(path);
                    program.backend().setStatus(Backend::ESTATUS(
                        QMetaEnum::fromType<Backend::ESTATUS>().keyToValue(status)));
                    emit program.backend().copyDone();
                    QVERIFY(program.item(u"Copy Done"_s));
                    QCOMPARE(program.text(u"message"_s), QString::fromUtf8(text).arg(path));
                    QVERIFY(messageFits(program, u"OK"_s));
                    program.call(u"doneDlg"_s, "close");
                    program.call(u"overwriteDlg"_s, "open");
                    QVERIFY(program.item(u"Warning"_s));
                    QCOMPARE(program.text(u"message"_s), warning.arg(path));
                    QVERIFY(messageFits(program, u"No"_s));
                    program.call(u"overwriteDlg"_s, "close");
                }
            }
        }
    }

    // A press outside of the dialog is for what is there.
    void showsItsProgressAsLongAsItCopies()
    {
        const Program program(true);
        for (const bool copyWrapper : {true, false}) {
            program.backend().setCopying(true);
            QTest::keyClick(program.window, Qt::Key_Escape);
            QCOMPARE(program.focused(), u"abortButton"_s);
            QTest::mouseClick(program.window, Qt::LeftButton, {}, QPoint(2, 2));
            QCOMPARE(program.focused(), u"abortButton"_s);
            program.click(u"copyWrapperBox"_s);
            QCOMPARE(program.backend().copyWrapper(), copyWrapper);
            QVERIFY(program.isOpen(u"copyDlg"_s));
            program.backend().setCopying(false);
            QVERIFY(!program.isOpen(u"copyDlg"_s));
            QCOMPARE(program.focused(), u"copyButton"_s);
        }
    }

    void keepsItsSizeWhateverANameHolds()
    {
        const Program program;
        program.backend().setCopying(true);
        const auto places = [&] {
            program.drawFrame();
            return QList{program.area(), program.place(u"progressBar"_s),
                         program.place(u"abortButton"_s), program.place(u"Copy Progress"_s)};
        };
        program.backend().setCopyFile(u"/x"_s);
        const auto before = places();
        const QObject* dialog = program.object(u"copyDlg"_s);
        QVERIFY(dialog->property("x").toReal() == 8 &&
                dialog->property("width").toReal() == program.area().width() - 16);
        for (const QString& name :
             {kLongPath, u"/two\nlines"_s, u"/מסמכים/العربية"_s, u"/文件/ไฟล์"_s, u"/A <h1>B"_s}) {
            program.backend().setCopyFile(name);
            QCOMPARE(places(), before);
            QCOMPARE(program.text(u"fileLabel"_s), name);
            QVERIFY(program.area().contains(program.place(u"fileLabel"_s)));
        }
    }

    void showsTheWholeDestinationInItsToolTip()
    {
        const Program program;
        for (const QString& path : {u"/A <h1>B"_s, kLongPath}) {
            program.backend().setDestination(path);
            QTest::mouseMove(program.window,
                             program.place(u"destinationField"_s).center().toPoint());
            QTRY_VERIFY(program.isOpen(u"destinationToolTip"_s) && program.item(u"toolTipText"_s));
            const QQuickItem* label = program.item(u"toolTipText"_s);
            QVERIFY(label->property("text").toString() == path &&
                    !label->property("truncated").toBool());
            QTRY_VERIFY(program.area().contains(program.place(u"toolTipText"_s)));
            QTest::mouseMove(program.window, QPoint(1, 1));
            QTRY_VERIFY(!program.isOpen(u"destinationToolTip"_s));
        }
    }

    void choosesTheDestination()
    {
        const Program program;
        const QString chosen = program.root.filePath(u"a b%25 é"_s);
        QDir().mkpath(chosen);
        const QString before = program.backend().destination();
        // The nearest folder that exists is the home folder: there are no documents yet.
        for (const bool accept : {false, true}) {
            program.click(u"chooseButton"_s);
            QTRY_VERIFY(fileDialog());
            const QPointer<QFileDialog> dialog = fileDialog();
            QCOMPARE(dialog->windowTitle(), u"Destination Folder"_s);
            QCOMPARE(dialog->windowHandle()->transientParent(), program.window);
            QCOMPARE(dialog->directory(), QDir(program.root.path()));
            program.call(u"destDirDlg"_s, "open");
            QCOMPARE(fileDialog(), dialog.data());
            dialog->setDirectory(chosen);
            if (accept)
                static_cast<QDialog*>(dialog)->accept();
            else
                dialog->reject();
            QTRY_VERIFY(!dialog);
            QCOMPARE(program.text(u"destinationField"_s), accept ? chosen : before);
        }
        program.click(u"chooseButton"_s);
        QTRY_VERIFY(fileDialog());
        QCOMPARE(fileDialog()->directory(), QDir(chosen));
        fileDialog()->reject();
        // Also while a copy runs and ends.
        program.backend().setRunCMake(false);
        program.backend().setDestination(program.destination());
        program.click(u"chooseButton"_s);
        QTRY_VERIFY(fileDialog());
        program.backend().start();
        QTRY_VERIFY(program.isOpen(u"doneDlg"_s));
        QCOMPARE(fileDialog()->directory(), QDir(program.root.path()));
    }

private:
    // Flips the box that has the focus, and then its property.
    static void flip(const Program& program, const char* property)
    {
        const bool before = program.backend().property(property).toBool();
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
            QTest::keyClick(program.window, key);
            QCOMPARE(program.backend().property(property).toBool(),
                     (key == Qt::Key_Space) == before);
        }
        program.backend().setProperty(property, !before);
        QCOMPARE(program.window->activeFocusItem()->property("checked").toBool(), !before);
    }

    // Whether the message of the open dialog shows whole, above the button with the focus, within
    // the window.
    static bool messageFits(const Program& program, const QString& button)
    {
        if (!QTest::qWaitFor([&] { return program.focused() == button; }))
            return false;
        program.drawFrame();
        const QQuickItem* message = program.item(u"message"_s);
        const QSizeF size(message->property("contentWidth").toDouble(),
                          message->property("contentHeight").toDouble());
        const QRectF text(message->mapToScene({}), size);
        return text.bottom() <= program.place(button).top() &&
               program.area().contains(text | program.place(button));
    }
};

int main(int argc, char* argv[])
{
    argumentVector[0] = argv[0];
    QApplication application(argumentCount, argumentVector);
    // The platform's own chooser cannot be driven from here.
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    const QIcon icon = prepareApplication();
    TestWindow test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window.moc"
