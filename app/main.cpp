#include "backend/backend.h"
#include "kvoui/kvoui.h"

#include <QAccessible>
#include <QApplication>
#include <QIcon>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QUrl>

using Qt::StringLiterals::operator""_s;

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    QQuickStyle::setStyle(u"Basic"_s);

    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256, 512})
        icon.addFile(u":/icon/ZUVY_%1x%1.png"_s.arg(size), {size, size}, QIcon::Normal, QIcon::Off);
    QGuiApplication::setWindowIcon(icon);

    // Both before the document, which uses their types.
    kvouiInitPlugin();
    qmlRegisterType<Backend>("com.zuvy", 1, 0, "Backend");

    QQmlApplicationEngine engine;
    engine.load(QUrl(u"qrc:/prjdup.qml"_s));
    if (engine.rootObjects().isEmpty())
        return -1;
    const int status = QApplication::exec();
    // A screen reader that still listens would be told of items while they are destroyed.
    QAccessible::installUpdateHandler([](QAccessibleEvent*) {});
    return status;
}
