#include "adapt/cmakelists.h"

#include <QDir>
#include <QFile>

bool FilterCMakeLists(QString file, QString sdkDir)
{
    sdkDir = QDir::fromNativeSeparators(QDir::cleanPath(sdkDir) + u'/');

    QFile cmakeLists(file);
    if (!cmakeLists.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        return false;
    QByteArray content = cmakeLists.readAll();
    content.replace("#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")",
                    "set(ZUVYSDKDIR \"" + sdkDir.toUtf8() + "\")");
    cmakeLists.seek(0);
    cmakeLists.resize(content.size());
    cmakeLists.write(content);
    return true;
}
