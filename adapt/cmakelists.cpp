#include "adapt/cmakelists.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

bool FilterCMakeLists(QString file, QString sdkDir)
{
    sdkDir = QDir::fromNativeSeparators(QDir::cleanPath(sdkDir) + u'/');

    QFile cmakeLists(file);
    const QFileInfo info(cmakeLists);
    // Opening a pipe could wait for ever, and a link could lead into the SDK. Unbuffered, so that a
    // failed write is seen at once.
    if (!info.isFile() || info.isSymLink() ||
        !cmakeLists.open(QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return false;
    const QByteArray original = cmakeLists.readAll();
    QByteArray content = original;
    content.replace("#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")",
                    "set(ZUVYSDKDIR \"" + sdkDir.toUtf8() + "\")");
    const auto overwrite = [&](const QByteArray& bytes) {
        cmakeLists.seek(0);
        cmakeLists.resize(bytes.size());
        return cmakeLists.write(bytes) == bytes.size();
    };
    // Rather as it was than half-written, as on a full disk.
    if (!overwrite(content))
        overwrite(original);
    return true;
}
