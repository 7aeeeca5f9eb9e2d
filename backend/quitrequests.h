#pragma once

#include <QObject>

class Backend;

// Ends the program on SIGHUP, SIGINT or SIGTERM, at the end of the session, and on the desktop's
// Quit. A running copy is ended as by `abort`, nothing is started after it, and the event loop
// returns 0. A second signal ends the program at once, as a copy may hang in one file. Signals that
// were ignored when the program started stay ignored. When the window is closed, a copy goes on,
// but nothing is started after it.
//
// Also makes a write beyond the file size limit fail instead of ending the program (SIGXFSZ).
//
// Create one on the GUI thread before the event loop runs, and destroy it afterwards.
class QuitRequests : public QObject
{
public:
    // `backend` must outlive it.
    explicit QuitRequests(Backend& backend);
    // Waits for a copy that goes on after its window was closed. A signal still aborts it.
    ~QuitRequests() override;

private:
    bool eventFilter(QObject* watched, QEvent* event) override;

    Backend& m_backend;
};
