#include "app/startup.h"

#include "backend/backend.h"
#include "kvoui/widgetfiledialog.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QUrl>

using Qt::StringLiterals::operator""_s;

QIcon prepareApplication()
{
    QQuickStyle::setStyle(u"Basic"_s);

    QIcon icon;
    for (const int size : {16, 24, 32, 48, 64, 128, 256, 512})
        icon.addFile(u":/icon/ZUVY_%1x%1.png"_s.arg(size), {size, size}, QIcon::Normal, QIcon::Off);
    QGuiApplication::setWindowIcon(icon);

    kvouiInitPlugin();
    qmlRegisterType<Backend>("com.zuvy", 1, 0, "Backend");

    // Otherwise a screen reader would be told about items while they are destroyed.
    QObject::connect(qApp, &QCoreApplication::aboutToQuit,
                     [] { QAccessible::installUpdateHandler([](QAccessibleEvent*) {}); });
    return icon;
}

Backend* loadWindow(QQmlApplicationEngine& engine)
{
    engine.load(QUrl(u"qrc:/prjdup.qml"_s));
    const QObject* const window = engine.rootObjects().value(0);
    return window ? window->property("backend").value<Backend*>() : nullptr;
}
