#include "app/startup.h"

#include <QApplication>
#include <QQmlApplicationEngine>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QIcon icon = prepareApplication();
    QQmlApplicationEngine engine;
    if (!loadWindow(engine))
        return -1;
    return QApplication::exec();
}
