#include "adapt/cmakelists.h"

#include "kvo/regularfile.h"

#include <QDir>
#include <QFile>

bool FilterCMakeLists(QString file, QString sdkDir)
{
    sdkDir = QDir::fromNativeSeparators(QDir::cleanPath(sdkDir) + u'/');

    QFile cmakeLists(file);
    // Unbuffered, so that a failed write is seen at once.
    if (!kvo::OpenRegular(cmakeLists,
                          QIODevice::ReadWrite | QIODevice::ExistingOnly | QIODevice::Unbuffered))
        return false;
    const QByteArray original = cmakeLists.readAll();
    if (original.size() != cmakeLists.size())
        return true;
    QByteArray content = original;
    content.replace("#set(ZUVYSDKDIR \"@PRJDUP_ZUVYSDKDIR@\")",
                    "set(ZUVYSDKDIR \"" + sdkDir.toUtf8() + "\")");
    // The size is checked too, as some file systems only pretend to resize.
    const auto overwrite = [&](const QByteArray& bytes) {
        return cmakeLists.seek(0) && cmakeLists.resize(bytes.size()) &&
               cmakeLists.write(bytes) == bytes.size() && cmakeLists.size() == bytes.size();
    };
    if (!overwrite(content))
        overwrite(original);
    return true;
}
