#include "app/startup.h"
#include "backend/quitrequests.h"

#include <QApplication>
#include <QQmlApplicationEngine>

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QIcon icon = prepareApplication();
    QQmlApplicationEngine engine;
    Backend* const backend = loadWindow(engine);
    if (!backend)
        return -1;
    const QuitRequests quitRequests(*backend);
    return QApplication::exec();
}
