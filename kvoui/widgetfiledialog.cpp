#include "kvoui/widgetfiledialog.h"

#include <QDir>
#include <QFileInfo>
#include <QQmlContext>
#include <QWindow>
#include <qqml.h>

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

} // namespace

void kvouiInitPlugin()
{
    qmlRegisterType<WidgetFileDialog>("com.zuvy.kvoui", 1, 0, "WidgetFileDialog");
}

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
    m_dialog->setFileMode(m_selectFolder ? QFileDialog::Directory : QFileDialog::ExistingFile);
    m_dialog->setOption(QFileDialog::ShowDirsOnly, m_selectFolder);
    connect(m_dialog.get(), &QFileDialog::finished, this, &WidgetFileDialog::finish);

    // A widget cannot have a Quick window as its parent, but its window can stay above it.
    m_dialog->winId();
    const QQmlContext* const context = qmlContext(this);
    m_dialog->windowHandle()->setTransientParent(
        context ? qobject_cast<QWindow*>(context->contextObject()) : nullptr);
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
