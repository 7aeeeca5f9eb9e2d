#pragma once

#include <QThread>

#include <atomic>

struct CopyFileEntry;
struct SdkLayout;

// Copies the samples of one SDK to one destination and adapts the copy, once, on a thread of its
// own. The owner starts it, and deletes it after `finished`; the destructor does not wait.
//
// A destination folder is removed with all its contents. If it must be left alone, or keeps
// something that might lead out of it (see copy/destination.h), nothing is copied or adapted.
//
// Failures are not reported: an entry that cannot be copied is skipped.
class CopyWorker : public QThread
{
    Q_OBJECT

public:
    // `source` is the SDK's samples folder (see copy/list/sdklayout.h). Both paths have "/" as
    // separator; relative ones start at the working folder.
    CopyWorker(QObject* parent, QString source, QString destination, bool dotnet, bool copyWrapper);

    // Stops the copy before its next entry; what was copied is still adapted. From any thread.
    void abort();

signals:
    // Before each entry: its path relative to the destination.
    void fileChanged(QString file);
    // After each entry: the fraction done, in (0, 1].
    void progressChanged(double value);

protected:
    void run() override;

private:
    QList<CopyFileEntry> copyList(const SdkLayout& sdk) const;
    void copyEntries(const QList<CopyFileEntry>& entries);

    const QString m_source;
    const QString m_destination;
    std::atomic<bool> m_abortRequested = false;
    const bool m_dotnet;
    const bool m_copyWrapper;
};
