#include "backend/quitrequests.h"

#include "backend/backend.h"

#include <QEvent>
#include <QGuiApplication>

#include <atomic>
#include <chrono>

#ifdef Q_OS_UNIX
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

std::atomic<bool> signalled = false;

#ifdef Q_OS_UNIX
int pipeEnds[2]; // never closed, because a signal may arrive at any time

void handleSignals(void (*handler)(int))
{
    for (const int number : {SIGHUP, SIGINT, SIGTERM}) {
        const bool wasIgnored = std::signal(number, handler) == SIG_IGN;
        if (wasIgnored)
            std::signal(number, SIG_IGN);
    }
}

void noteSignal(int /*number*/)
{
    const int error = errno;
    handleSignals(SIG_DFL);
    signalled = true;
    [[maybe_unused]] const auto written = ::write(pipeEnds[1], "", 1);
    errno = error;
}

void failWritesBeyondTheSizeLimit()
{
    // Not SIG_IGN, which cmake-gui would inherit.
    std::signal(SIGXFSZ, [](int) {});
}

void quitOnSignals(QObject* context)
{
    signalled = false;
    if (::pipe(pipeEnds) != 0)
        return;
    for (const int end : pipeEnds)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    auto* const notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, context);
    QObject::connect(notifier, &QSocketNotifier::activated, context, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    handleSignals(noteSignal);
}

#else
void failWritesBeyondTheSizeLimit() {}
void quitOnSignals(QObject* /*context*/) {}
#endif

} // namespace

QuitRequests::QuitRequests(Backend& backend)
    : m_backend(backend)
{
    qGuiApp->installEventFilter(this);
    // The user may still cancel the logout, but a copy would have no time left later.
    connect(qGuiApp, &QGuiApplication::commitDataRequest, this, [this] {
        if (m_backend.copying())
            QCoreApplication::quit();
    });
    failWritesBeyondTheSizeLimit();
    quitOnSignals(this);
}

QuitRequests::~QuitRequests()
{
    do {
        if (signalled)
            m_backend.abort();
    } while (!m_backend.waitForCopy(std::chrono::milliseconds(20)));
}

// The event is spontaneous if the desktop or QCoreApplication::quit() asks to quit, and not if the
// last window was closed.
bool QuitRequests::eventFilter(QObject* /*watched*/, QEvent* event)
{
    if (event->type() == QEvent::Quit && event->spontaneous()) {
        m_backend.setRunCMake(false);
        m_backend.setOpenSolution(false);
        m_backend.abort();
    }
    return false;
}
