#pragma once

#include <QObject>

class Backend;

// Ends the program on SIGHUP, SIGINT or SIGTERM, at the end of the session, and on the desktop's
// Quit. A copy that runs is ended as by `abort`, nothing is started after it, and the event loop
// returns 0. Signals that were ignored at the start stay ignored. A window that is closed is no
// such request: a copy goes on.
//
// Also makes a write beyond the limit on file sizes fail, which would otherwise end the program.
//
// Make one, on the GUI thread, and keep it from before the event loop until the program ends.
class QuitRequests : public QObject
{
public:
    // `backend` must outlive it.
    explicit QuitRequests(Backend& backend);
    // Waits for a copy that still runs, which a signal can then abort.
    ~QuitRequests() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Backend& m_backend;
};
