#include "kvoui/widgetfiledialog.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QWindow>

using Qt::StringLiterals::operator""_s;

namespace {

// Given a folder that does not exist, the dialog would start in the working folder.
QString nearestFolder(QString path)
{
    while (!QFileInfo(path).isDir()) {
        const QString parent = QFileInfo(path).path();
        if (path.isEmpty() || parent == path)
            return QDir::homePath();
        path = parent;
    }
    return path;
}

QWindow* windowAround(QObject* object)
{
    while (object && !object->isWindowType())
        object = object->parent();
    return static_cast<QWindow*>(object);
}

} // namespace

WidgetFileDialog::WidgetFileDialog(QObject* parent)
    : QObject(parent)
{}

WidgetFileDialog::~WidgetFileDialog() = default;

void WidgetFileDialog::open()
{
    if (m_dialog) {
        m_dialog->raise();
        m_dialog->activateWindow();
        return;
    }
    m_dialog =
        std::make_unique<QFileDialog>(nullptr, m_title, nearestFolder(m_folder.toLocalFile()));
    m_dialog->setSupportedSchemes({u"file"_s});
    m_dialog->setFileMode(m_selectFolder     ? QFileDialog::Directory
                          : m_selectMultiple ? QFileDialog::ExistingFiles
                                             : QFileDialog::ExistingFile);
    m_dialog->setOption(QFileDialog::ShowDirsOnly, m_selectFolder);
    connect(m_dialog.get(), &QFileDialog::finished, this, &WidgetFileDialog::finish);

    // A widget cannot have a Quick window as its parent, but its window can stay above it.
    m_dialog->winId();
    m_dialog->windowHandle()->setTransientParent(windowAround(parent()));
    m_dialog->open();
}

void WidgetFileDialog::finish(int result)
{
    QFileDialog* const dialog = m_dialog.release();
    dialog->deleteLater(); // it is still emitting its signal
    const QList<QUrl> urls = dialog->selectedUrls();
    if (result != QDialog::Accepted || urls.isEmpty() || !urls.first().isLocalFile())
        return;
    m_fileUrl = urls.first();
    emit accepted();
}
