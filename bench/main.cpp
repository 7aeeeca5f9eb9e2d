// Does one thing and prints its milliseconds, or just ends; scripts/bench compares them.

#include "adapt/solution.h"
#include "app/startup.h"
#include "backend/backend.h"
#include "copy/copyworker.h"
#include "copy/list/walk.h"
#include "kvo/xmlfile.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QTimer>

#include <filesystem>
#include <map>

#include <dirent.h>
#include <malloc.h>
#include <unistd.h>

using Qt::StringLiterals::operator""_s;

namespace {

double milliseconds(const std::function<void()>& work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.nsecsElapsed() / 1e6;
}

int readFolder(const std::string& folder)
{
    DIR* const stream = opendir(folder.c_str());
    int count = 0;
    while (const dirent* entry = readdir(stream)) {
        if (entry->d_name[0] != '.')
            count += 1 + (entry->d_type == DT_DIR ? readFolder(folder + '/' + entry->d_name) : 0);
    }
    closedir(stream);
    return count;
}

// Also prints the bytes on the heap that the finished list takes.
double copyByWorker(CopyWorker& worker)
{
    const auto used = [] { return mallinfo2().uordblks + mallinfo2().hblkhd; };
    QObject::connect(
        &worker, &CopyWorker::fileChanged, &worker,
        [before = used(), used] { std::printf("%zu ", used() - before); },
        Qt::ConnectionType(Qt::DirectConnection | Qt::SingleShotConnection));
    return milliseconds([&] { worker.start(), worker.wait(); });
}

// What the worker cannot do without. Listing the entries takes no system call for each.
double copyAlone(const QString& source, const QString& target)
{
    QList<std::tuple<QString, QString, bool>> steps = {{source, target, true}};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(source.toStdString())) {
        const QString path = QString::fromStdString(entry.path());
        steps.append({path, target + path.sliced(source.size()), entry.is_directory()});
    }
    return milliseconds([&] {
        for (const auto& [from, to, isFolder] : std::as_const(steps))
            isFolder ? QDir(to).mkpath(u"."_s) : QFile::copy(from, to);
    });
}

// Also prints the longest turn of the event loop.
double copyThroughWindow(const QString& target)
{
    QQmlApplicationEngine engine;
    Backend* const backend = loadWindow(engine);
    backend->setDestination(target);
    backend->setRunCMake(false);
    QCoreApplication::processEvents();

    QElapsedTimer timer;
    QTimer turns;
    double lastTurn = 0, longestTurn = 0;
    const auto now = [&] { return timer.nsecsElapsed() / 1e6; };
    turns.callOnTimeout(
        [&] { longestTurn = std::max(longestTurn, now() - std::exchange(lastTurn, now())); });
    QObject::connect(backend, &Backend::copyDone, qApp, &QCoreApplication::quit);
    turns.start(1);
    timer.start();
    backend->start();
    QCoreApplication::exec();
    std::printf("%f ", longestTurn);
    return now();
}

// Ends the process with the document's first frame.
double showFirstFrame(const QString& document)
{
    const QQmlApplicationEngine engine((QUrl(document)));
    const auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
    QObject::connect(window, &QQuickWindow::frameSwapped, [] { ::_exit(0); });
    return QCoreApplication::exec();
}

// Loads a project file, changes its first output path, and saves it.
void editXml(const std::string& path)
{
    kvo::CXMLFile file;
    file.Load(path);
    file.GetCurr()->FindChild("PropertyGroup")->FindChild("OutputPath")->value = "..\\bin";
    file.Save(path + ".out");
}

} // namespace

// Takes what to do and two arguments, which are the window's too.
int main(int argc, char* argv[])
{
    QApplication application(--argc, ++argv);
    const QIcon icon = prepareApplication();
    const QString first = QString::fromLocal8Bit(argv[1]), second = QString::fromLocal8Bit(argv[2]);
    const auto repeat = [&](const auto& work) {
        return milliseconds([&] {
            for (int i = 0; i < second.toInt(); ++i)
                work(first.toStdString());
        });
    };
    const QString solution = first + u"/dotnet.sln"_s, copy = first + u"/copy"_s;
    QList<QString> items;
    CopyWorker worker(nullptr, first, second, false, false);
    const std::map<std::string, std::function<double()>> tasks = {
        {"walk", [&] { return repeat([&](auto) { Walk(items, {}, first, {}, {}); }); }},
        {"readdir", [&] { return repeat(readFolder); }},
        {"worker", [&] { return copyByWorker(worker); }},
        {"copy", [&] { return copyAlone(first, second); }},
        {"window", [&] { return copyThroughWindow(second); }},
        {"frame", [&] { return showFirstFrame(first); }},
        {"xml", [&] { return repeat(editXml); }},
        {"solution",
         [&] { return repeat([&](auto) { FilterSln(solution, copy, true, false); }); }}};
    std::printf("%f\n", tasks.at(argv[0])());
}
