#include "backend/backend.h"

#include "copy/copyworker.h"
#include "copy/list/sdklayout.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QOperatingSystemVersion>
#include <QProcess>
#include <QStandardPaths>
#include <QUrl>

using Qt::StringLiterals::operator""_s;

namespace {

QString findCMakeGui()
{
    const QString name = u"cmake-gui"_s;
    QString program = QStandardPaths::findExecutable(name);
    // Where CMake itself installs it; not every desktop session's PATH has this folder.
    if (program.isEmpty())
        program = QStandardPaths::findExecutable(name, {u"/usr/local/bin"_s});
    return program.isEmpty() ? name : program;
}

Backend::ESTATUS runCMakeGui(const QString& folder)
{
    const QStringList arguments = {u"-S"_s, folder, u"-B"_s, QDir::cleanPath(folder + u"/build"_s)};
    return QProcess::startDetached(findCMakeGui(), arguments) ? Backend::STATUS_CMAKE_RUNNING
                                                              : Backend::STATUS_CMAKE_RUN_FAILED;
}

Backend::ESTATUS openSolutionIn(const QString& folder)
{
    const QString solution = QDir::cleanPath(folder + u'/' + solutionName);
    return QDesktopServices::openUrl(QUrl::fromLocalFile(solution))
               ? Backend::STATUS_SOLUTION_OPENED
               : Backend::STATUS_SOLUTION_OPEN_FAILED;
}

} // namespace

Backend::Backend(QObject* parent)
    : QObject(parent)
    , m_destination(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
{
    readArguments();
}

Backend::~Backend()
{
    waitForCopy(QDeadlineTimer::Forever);
}

void Backend::readArguments()
{
    QStringList arguments = QCoreApplication::arguments().mid(1);
    m_dotnet = arguments.removeAll(u"--dotnet"_s) > 0;
    m_source = QDir::cleanPath(arguments.value(0));
    if (arguments.size() > 1)
        m_destination = QDir::cleanPath(m_destination + u'/' + arguments.at(1));
    m_valid = arguments.size() == 2;
}

QString Backend::destinationUrl() const
{
    return QUrl::fromLocalFile(m_destination).toString();
}

void Backend::setDestinationUrl(QString url)
{
    setDestination(QUrl(url).toLocalFile());
}

bool Backend::destinationExists() const
{
    return QFileInfo::exists(m_destination);
}

bool Backend::isWindows() const
{
    return QOperatingSystemVersion::currentType() == QOperatingSystemVersion::Windows;
}

void Backend::abort()
{
    if (m_worker)
        m_worker->abort();
}

void Backend::start()
{
    if (m_worker)
        return;
    setCopyFile({});
    setCopyProgress(0);
    setCopying(true);

    m_worker = new CopyWorker(this, m_source, m_destination, m_dotnet, m_copyWrapper);
    connect(m_worker, &CopyWorker::progressChanged, this, &Backend::setCopyProgress);
    connect(m_worker, &CopyWorker::fileChanged, this, &Backend::setCopyFile);
    connect(m_worker, &CopyWorker::finished, this, &Backend::finishedCopyWorker);
    m_worker->start();
    // A thread that could not be created emits no `finished`. (On Windows it looks like one that
    // has ended.)
    if (!m_worker->isRunning() && !m_worker->isFinished())
        QMetaObject::invokeMethod(this, &Backend::finishedCopyWorker, Qt::QueuedConnection);
}

bool Backend::waitForCopy(QDeadlineTimer deadline)
{
    return !m_worker || m_worker->wait(deadline);
}

void Backend::finishedCopyWorker()
{
    m_worker->deleteLater();
    m_worker = nullptr;
    setStatus(followUp());
    setCopying(false);
    emit copyDone();
}

Backend::ESTATUS Backend::followUp() const
{
    if (m_dotnet)
        return m_openSolution ? openSolutionIn(m_destination) : STATUS_COPY_DONE;
    return m_runCMake ? runCMakeGui(m_destination) : STATUS_COPY_DONE;
}
