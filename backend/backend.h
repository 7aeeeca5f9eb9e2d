#pragma once

#include <QDeadlineTimer>
#include <QObject>

class CopyWorker;

// What the window binds to: the mode and paths from the command line, the user's settings, and
// the state of a copy. Lives on the GUI thread. Every writer notifies only on a change.
class Backend : public QObject
{
    Q_OBJECT
    // The destination as the text of a local-file URL. Writing anything but the URL of a local file
    // makes the destination empty.
    Q_PROPERTY(QString destinationUrl READ destinationUrl WRITE setDestinationUrl NOTIFY
                   destinationChanged)
    Q_PROPERTY(QString destination READ destination WRITE setDestination NOTIFY destinationChanged)
    Q_PROPERTY(bool copyWrapper READ copyWrapper WRITE setCopyWrapper NOTIFY copyWrapperChanged)
    // Asks the file system at each read; changes there are not signaled.
    Q_PROPERTY(bool destinationExists READ destinationExists NOTIFY destinationChanged)
    // How much of the current or last copy is done, from 0 to 1.
    Q_PROPERTY(double copyProgress READ copyProgress NOTIFY copyProgressChanged)
    // The latest entry of the current or last copy, relative to the destination; empty at first.
    Q_PROPERTY(QString copyFile READ copyFile NOTIFY copyFileChanged)
    Q_PROPERTY(bool copying READ copying NOTIFY copyingChanged)
    // Whether the command line named just a source and a destination.
    Q_PROPERTY(bool valid READ valid CONSTANT)
    Q_PROPERTY(bool dotnet READ dotnet CONSTANT)
    Q_PROPERTY(bool runCMake READ runCMake WRITE setRunCMake NOTIFY runCMakeChanged)
    Q_PROPERTY(bool openSolution READ openSolution WRITE setOpenSolution NOTIFY openSolutionChanged)
    Q_PROPERTY(ESTATUS status READ status NOTIFY statusChanged)
    Q_PROPERTY(bool isWindows READ isWindows CONSTANT)

public:
    // The outcome of the last copy that ended.
    enum ESTATUS {
        STATUS_NOT_STARTED,
        STATUS_COPY_DONE,
        STATUS_CMAKE_RUNNING,
        STATUS_CMAKE_RUN_FAILED,
        STATUS_SOLUTION_OPENED,
        STATUS_SOLUTION_OPEN_FAILED,
    };
    Q_ENUM(ESTATUS)

    // Reads the application's arguments: "--dotnet" anywhere, the samples folder, and the
    // destination, relative to the user's documents folder even if it begins with "/".
    explicit Backend(QObject* parent = nullptr);
    // Waits for a copy that is still running, without aborting it.
    ~Backend() override;

    QString destinationUrl() const;
    void setDestinationUrl(QString url);
    QString destination() const { return m_destination; }
    void setDestination(QString path) { assign(m_destination, path, &Backend::destinationChanged); }
    bool destinationExists() const;
    bool copyWrapper() const { return m_copyWrapper; }
    void setCopyWrapper(bool on) { assign(m_copyWrapper, on, &Backend::copyWrapperChanged); }
    double copyProgress() const { return m_copyProgress; }
    void setCopyProgress(double to) { assign(m_copyProgress, to, &Backend::copyProgressChanged); }
    QString copyFile() const { return m_copyFile; }
    void setCopyFile(QString file) { assign(m_copyFile, file, &Backend::copyFileChanged); }
    bool copying() const { return m_copying; }
    void setCopying(bool on) { assign(m_copying, on, &Backend::copyingChanged); }
    bool valid() const { return m_valid; }
    bool dotnet() const { return m_dotnet; }
    bool runCMake() const { return m_runCMake; }
    void setRunCMake(bool on) { assign(m_runCMake, on, &Backend::runCMakeChanged); }
    bool openSolution() const { return m_openSolution; }
    void setOpenSolution(bool on) { assign(m_openSolution, on, &Backend::openSolutionChanged); }
    ESTATUS status() const { return m_status; }
    void setStatus(ESTATUS status) { assign(m_status, status, &Backend::statusChanged); }
    bool isWindows() const;

    // Stops a running copy before its next entry. Returns at once.
    Q_INVOKABLE void abort();
    // Starts a copy with the current settings; ignored while one runs. What is started afterwards
    // depends on `destination`, `runCMake` and `openSolution` at the end of the copy.
    Q_INVOKABLE void start();
    // Waits for the thread of a running copy. Returns false if it still runs at the deadline.
    bool waitForCopy(QDeadlineTimer deadline);

signals:
    void destinationChanged();
    void copyWrapperChanged();
    void copyProgressChanged();
    void copyFileChanged();
    void copyingChanged();
    // Once per copy, however it ended, and after the follow-up, if any, was started.
    void copyDone();
    void runCMakeChanged();
    void openSolutionChanged();
    void statusChanged();

private slots:
    void finishedCopyWorker();

private:
    void readArguments();
    ESTATUS followUp() const;

    template <typename T>
    void assign(T& field, T value, void (Backend::*changed)())
    {
        if (field == value)
            return;
        field = std::move(value);
        emit(this->*changed)();
    }

    QString m_copyFile;
    QString m_source;
    QString m_destination;
    double m_copyProgress = 0;
    bool m_copying = false;
    bool m_copyWrapper = false;
    bool m_dotnet = false;
    bool m_valid = false;
    bool m_runCMake = true;
    bool m_openSolution = true;
    CopyWorker* m_worker = nullptr; // a Qt child; null when no copy runs
    ESTATUS m_status = STATUS_NOT_STARTED;
};
