#pragma once

#include <QFileDialog>
#include <QUrl>

#include <memory>

// A file or folder chooser for QML: the platform's own dialog where there is one, else Qt's.
// Offers local files only. Properties take effect at the next `open`. If a QML document whose root
// is a window creates the object, the dialog stays above that window.
class WidgetFileDialog : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title MEMBER m_title)
    Q_PROPERTY(bool selectFolder MEMBER m_selectFolder)
    Q_PROPERTY(bool selectMultiple MEMBER m_selectMultiple) // only false is supported
    // Where the dialog starts. If the folder does not exist, it starts in the nearest parent that
    // does; without one, in the home folder.
    Q_PROPERTY(QUrl folder MEMBER m_folder)
    // The chosen file or folder; set before `accepted`.
    Q_PROPERTY(QUrl fileUrl MEMBER m_fileUrl)

public:
    // Shows the dialog, or brings it to the front if it is open already; returns at once.
    Q_INVOKABLE void open();

signals:
    void accepted();

private:
    void finish(int result);

    QString m_title;
    QUrl m_folder;
    QUrl m_fileUrl;
    bool m_selectFolder = false;
    bool m_selectMultiple = false;
    std::unique_ptr<QFileDialog> m_dialog; // null when none is open
};

// Makes the QML module "com.zuvy.kvoui" 1.0 importable, with the folder chooser WidgetFileDialog.
// Call once, after the application object exists and before an engine loads a document.
void kvouiInitPlugin();
