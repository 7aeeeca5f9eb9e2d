#include "backend/backend.h"
#include "kvoui/kvoui.h"

#include "tests/table.h"

#include <QApplication>
#include <QFileDialog>
#include <QMetaEnum>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
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
    QSignalSpy quit{&engine, &QQmlEngine::quit};
    QQuickWindow* window = nullptr;

    explicit Program(bool dotnet = false, int files = 1, bool withName = true)
    {
        setHome(root.path());
        for (int i = 0; i < files; ++i)
            writeFile(root.filePath(u"sdk/samples/d/file %1"_s.arg(i)), "x");
        argumentCount = 1;
        for (QByteArray* argument : {&m_samples, &m_name, &m_switch})
            argumentVector[argumentCount++] = argument->data();
        argumentCount -= !withName ? 2 : !dotnet;
        engine.load(QUrl(u"qrc:/prjdup.qml"_s));
        window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
        window->requestActivate();
        static_cast<void>(QTest::qWaitForWindowActive(window));
    }

    Backend& backend() const { return *window->property("backend").value<Backend*>(); }
    QString destination() const { return root.filePath(u"Documents/My Copy"_s); }
    QObject* object(const QString& name) const { return window->findChild<QObject*>(name); }
    void call(const QString& name, const char* method) const { QMetaObject::invokeMethod(object(name), method); }
    bool isOpen(const QString& dialog) const { return object(dialog)->property("visible").toBool(); }

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
        const QQuickItem* found = item(name);
        return found ? found->mapRectToScene({QPointF(), found->size()}) : QRectF();
    }
    QString text(const QString& name) const { return item(name)->property("text").toString(); }
    QString focused() const
    {
        const QQuickItem* focus = window->activeFocusItem();
        if (!focus)
            return {};
        return focus->objectName().isEmpty() ? focus->property("text").toString().remove(u'&') : focus->objectName();
    }
    void click(const QString& name) const { QTest::mouseClick(window, Qt::LeftButton, {}, place(name).center().toPoint()); }

private:
    QByteArray m_samples = root.filePath(u"sdk/samples"_s).toUtf8();
    QByteArray m_name = "My Copy";
    QByteArray m_switch = "--dotnet";
};

QFileDialog* fileDialog()
{
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QFileDialog*>(widget); dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
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
        const QList<int> sizes = {16, 24, 32, 48, 64, 128, 256, 512};
        QStringList names = {u"prjdup.qml"_s, u"qtquickcontrols2.conf"_s};
        for (const int size : sizes) {
            names += u"icon/ZUVY_%1x%1.png"_s.arg(size);
            const QImage icon(u":/"_s + names.last());
            QCOMPARE(icon.size(), QSize(size, size));
            QCOMPARE(icon.format(), size == 64 ? QImage::Format_Indexed8 : QImage::Format_ARGB32);
        }
        QStringList found =
            QDir(u":/"_s).entryList(QDir::Files) + QDir(u":/icon"_s).entryList(QDir::Files).replaceInStrings(u"ZUVY"_s, u"icon/ZUVY"_s);
        for (const QString& name : std::as_const(found))
            QCOMPARE(QResource(u":/"_s + name).compressionAlgorithm(), QResource::NoCompression);
        names.sort();
        found.sort();
        QCOMPARE(found, names);
        QCOMPARE(readFile(u":/qtquickcontrols2.conf"_s).size(), 212);
    }

    void showsTheControlsOfItsMode()
    {
        const QStringList names = {u"copyWrapperBox"_s, u"openSolutionBox"_s, u"runCMakeBox"_s};
        const QStringList texts = {u"Copy .NET wrapper so it can also be modified."_s, u"Open the solution after copying."_s,
                                   u"Run CMake-GUI after copying to generate buildable projects."_s};
        const QString explanation = u"Before the project can be opened it must be copied to a folder you can write to. "
                                    "Please select a destination folder below."_s;
        const QString note = u"<b>Note:</b> You need to generate a 64-bit project.<br/>When generating Visual Studio projects you need to "
                             "set the platform to x64,<br/>otherwise CMake may default to Win32 and fail to generate the project."_s;
        for (const bool dotnet : {false, true}) {
            const Program program(dotnet);
            QVERIFY(program.quit.isEmpty());
            QCOMPARE(program.window->title(), u"Copy Project"_s);
            QVERIFY(program.window->minimumWidth() >= 640);
            QCOMPARE(program.window->minimumHeight(), program.window->maximumHeight());
            QVERIFY(program.item(explanation) && program.item(u"Destination Folder:"_s) && !program.item(u"windowsNote"_s));
            QCOMPARE(program.text(u"destinationField"_s), program.destination());
            QVERIFY(program.item(u"destinationField"_s)->property("readOnly").toBool());
            QCOMPARE(program.place(u"chooseButton"_s).size(), QSizeF(40, 40));
            QCOMPARE(program.object(u"windowsNote"_s)->property("text").toString(), note);
            for (int i = 0; i < 3; ++i)
                QCOMPARE(program.item(names[i]), (i < 2) == dotnet ? program.item(texts[i]) : nullptr);

            // In reading order, from Copy, which has the focus at first, once around.
            QStringList order;
            do {
                order += program.focused();
                QTest::keyClick(program.window, Qt::Key_Tab);
            } while (program.focused() != order.first() && order.size() < 10);
            const QStringList row = {u"destinationField"_s, u"chooseButton"_s, u"closeButton"_s};
            QCOMPARE(order, QStringList{u"copyButton"_s} + (dotnet ? names.mid(0, 2) : names.mid(2)) + row);
        }
    }

    void bindsTheBoxesBothWays()
    {
        for (const bool dotnet : {false, true}) {
            const Program program(dotnet);
            for (const char* property : {"copyWrapper", "openSolution", "runCMake"}) {
                QQuickItem* box = program.item(QString::fromLatin1(property) + u"Box"_s);
                if (!box)
                    continue;
                const auto value = [&] { return program.backend().property(property).toBool(); };
                const bool before = value();
                program.click(box->objectName());
                QCOMPARE(value(), !before);
                box->forceActiveFocus();
                QTest::keyClick(program.window, Qt::Key_Return);
                QCOMPARE(value(), before);
                QTest::keyClick(program.window, Qt::Key_Space);
                QCOMPARE(value(), !before);
                program.backend().setProperty(property, before);
                QCOMPARE(box->property("checked").toBool(), before);
            }
        }
    }

    void copiesAndSaysSo()
    {
        const Program program(false, 500);
        program.backend().setRunCMake(false);
        QStringList captions;
        bool asItShouldBe = false;
        const auto enabled = [&](const QString& name) { return program.item(name)->isEnabled(); };
        QObject::connect(&program.backend(), &Backend::copyingChanged, program.window, [&] {
            if (program.backend().copying())
                captions += program.text(u"fileCaption"_s);
        });
        QObject::connect(&program.backend(), &Backend::copyFileChanged, program.window, [&] {
            captions += program.text(u"fileCaption"_s) + u' ' + program.text(u"fileLabel"_s);
            asItShouldBe = program.isOpen(u"copyDlg"_s) && program.item(u"Copy Progress"_s) && program.focused() == u"abortButton"_s &&
                           !enabled(u"closeButton"_s) && !enabled(u"copyButton"_s) && enabled(u"runCMakeBox"_s) &&
                           enabled(u"chooseButton"_s);
        });
        QSignalSpy done(&program.backend(), &Backend::copyDone);
        QTest::keyClick(program.window, Qt::Key_Return);
        QVERIFY(done.count() || done.wait(60000));
        QVERIFY(asItShouldBe);
        QCOMPARE(captions.mid(0, 2), (QStringList{u"Starting..."_s, u"File: /d"_s}));
        QCOMPARE(captions.size(), 502);
        QCOMPARE(readTree(program.destination()).size(), 501);
        QCOMPARE(program.object(u"progressBar"_s)->property("value").toDouble(), 1.0);
        QVERIFY(!program.isOpen(u"copyDlg"_s) && program.isOpen(u"doneDlg"_s) && enabled(u"copyButton"_s));
        QTRY_COMPARE(program.focused(), u"OK"_s);
        QTest::keyClick(program.window, Qt::Key_Space);
        QTRY_VERIFY(!program.window->isVisible());
    }

    void asksBeforeItRemovesAFolder()
    {
        const Program program;
        program.backend().setRunCMake(false);
        writeFile(program.destination() + u"/old"_s, "old");
        for (const bool again : {false, true}) {
            program.click(u"copyButton"_s);
            QVERIFY(program.item(u"Warning"_s));
            QCOMPARE(program.text(u"message"_s),
                     u"The folder %1 already exists. If you continue it will be removed, are you sure you want to continue."_s.arg(
                         program.destination()));
            QTRY_COMPARE(program.focused(), u"No"_s);
            const QQuickItem* overlay = program.object(u"overwriteDlg"_s)->property("parent").value<QQuickItem*>();
            const QObject* dialog = program.object(u"overwriteDlg"_s);
            QVERIFY(dialog->property("x").toDouble() == 8 && dialog->property("width").toDouble() == overlay->width() - 16);
            QTest::keyClick(program.window, again ? Qt::Key_Escape : Qt::Key_Return);
            QTRY_VERIFY(!program.isOpen(u"overwriteDlg"_s));
        }
        QVERIFY(!program.backend().copying());
        QCOMPARE(readFile(program.destination() + u"/old"_s), QByteArray("old"));

        QSignalSpy done(&program.backend(), &Backend::copyDone);
        program.click(u"copyButton"_s);
        QTRY_VERIFY(program.item(u"Yes"_s));
        bool abortable = false;
        QObject::connect(&program.backend(), &Backend::copyFileChanged, program.window,
                         [&] { abortable = program.focused() == u"abortButton"_s; });
        program.click(u"Yes"_s);
        QVERIFY(done.count() || done.wait());
        QVERIFY(abortable);
        QCOMPARE(readTree(program.destination()).keys(), QStringList({u"d/"_s, u"d/file 0"_s}));
    }

    void aborts()
    {
        const Program program(false, 1000);
        program.backend().setRunCMake(false);
        QSignalSpy done(&program.backend(), &Backend::copyDone);
        program.click(u"copyButton"_s);
        QCOMPARE(program.text(u"abortButton"_s), u"Abort"_s);
        QTRY_VERIFY(program.backend().copyProgress() > 0);
        // Closing the dialog leaves the copy alone.
        QTest::keyClick(program.window, Qt::Key_Escape);
        QVERIFY(!program.isOpen(u"copyDlg"_s) && program.backend().copying());
        QVERIFY(done.wait(60000));
        QCOMPARE(program.backend().copyProgress(), 1.0);
        program.call(u"doneDlg"_s, "close");
        program.click(u"copyButton"_s);
        QTest::keyClick(program.window, Qt::Key_Tab, Qt::ShiftModifier);
        QTest::keyClick(program.window, Qt::Key_Return);
        QTRY_VERIFY(program.backend().copying() && program.backend().copyProgress() > 0);
        program.click(u"abortButton"_s);
        QVERIFY(done.wait(60000));
        QVERIFY(program.backend().copyProgress() < 1);
        QVERIFY(program.isOpen(u"doneDlg"_s));
    }

    void quitsWithoutAValidCommandLine()
    {
        const Program program(false, 0, false);
        QVERIFY(program.window->isVisible());
        QTRY_COMPARE(program.quit.size(), 1);
    }

    void tellsTheOutcome_data() { addCases(QFINDTESTDATA("data/outcomes.txt"), {"status", "text"}); }

    // In each mode, with a short and a long path and in a large font: nothing is cut off.
    void tellsTheOutcome()
    {
        QFETCH(QByteArray, status);
        QFETCH(QByteArray, text);
        const QFont normal, large(normal.family(), 20);
        for (const bool dotnet : {false, true}) {
            for (const QFont& font : {large, normal}) {
                QGuiApplication::setFont(font);
                const Program program(dotnet);
                for (const QString& path : {u"/a <b>&amp; é"_s, kLongPath, kLongPath.repeated(4)}) {
                    program.backend().setDestination(path);
                    program.backend().setStatus(Backend::ESTATUS(QMetaEnum::fromType<Backend::ESTATUS>().keyToValue(status)));
                    emit program.backend().copyDone();
                    QVERIFY(program.item(u"Copy Done"_s));
                    QCOMPARE(program.text(u"message"_s), QString::fromUtf8(text).arg(path));
                    QTRY_VERIFY(program.focused() == u"OK"_s && messageFits(program));
                    program.call(u"doneDlg"_s, "close");
                    program.call(u"overwriteDlg"_s, "open");
                    QTRY_VERIFY(program.focused() == u"No"_s && messageFits(program));
                    program.call(u"overwriteDlg"_s, "close");
                }
            }
        }
    }

    void keepsItsSizeWhateverANameHolds()
    {
        const Program program;
        program.backend().setCopying(true);
        QSignalSpy frame(program.window, &QQuickWindow::frameSwapped);
        const auto places = [&] {
            program.window->update();
            static_cast<void>(frame.wait());
            QList<QRectF> result = {QRectF(QPointF(), program.window->size())};
            for (const QString& name : {u"progressBar"_s, u"abortButton"_s, u"Copy Progress"_s})
                result += program.place(name);
            return result;
        };
        program.backend().setCopyFile(u"/x"_s);
        const auto before = places();
        for (const QString& name : {kLongPath, u"/two\nlines"_s, u"/מסמכים/العربية"_s, u"/文件/ไฟล์"_s, u"/A <h1>B"_s}) {
            program.backend().setCopyFile(name);
            QCOMPARE(places(), before);
            QVERIFY(QRectF(QPointF(), program.window->size()).contains(program.place(u"fileLabel"_s)));
        }
    }

    void showsTheWholeDestinationInItsToolTip()
    {
        const Program program;
        for (const QString& path : {u"/A <h1>B"_s, kLongPath}) {
            program.backend().setDestination(path);
            QTest::mouseMove(program.window, program.place(u"destinationField"_s).center().toPoint());
            QTRY_VERIFY(program.isOpen(u"destinationToolTip"_s) && program.item(u"toolTipText"_s));
            const QQuickItem* label = program.item(u"toolTipText"_s);
            QVERIFY(label->property("text").toString() == path && !label->property("truncated").toBool());
            QTRY_VERIFY(QRectF(QPointF(), program.window->size()).contains(program.place(u"toolTipText"_s)));
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
            QTRY_VERIFY(!fileDialog());
            QCOMPARE(program.text(u"destinationField"_s), accept ? chosen : before);
        }
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
    // Whether the message of the open dialog shows whole, above the buttons, within the window.
    static bool messageFits(const Program& program)
    {
        const QQuickItem* message = program.item(u"message"_s);
        const double height = std::max(message->height(), message->property("contentHeight").toDouble());
        const QRectF text(message->mapToScene({}), QSizeF(message->property("contentWidth").toDouble(), height));
        const QQuickItem* focus = program.window->activeFocusItem();
        const QRectF button = focus->mapRectToScene({QPointF(), focus->size()});
        const QRectF window(QPointF(), program.window->size());
        return !message->property("truncated").toBool() && text.bottom() <= button.top() && window.contains(text) &&
               window.contains(button);
    }
};

int main(int argc, char* argv[])
{
    argumentVector[0] = argv[0];
    QApplication application(argumentCount, argumentVector);
    // The platform's own chooser cannot be driven from here.
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication::setQuitOnLastWindowClosed(false);
    QQuickStyle::setStyle(u"Basic"_s);
    kvouiInitPlugin();
    qmlRegisterType<Backend>("com.zuvy", 1, 0, "Backend");
    TestWindow test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_window.moc"
