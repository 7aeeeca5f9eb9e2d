#pragma once

#include <QString>

// Sets the SDK folder `sdkDir` in the CMakeLists.txt at `file`: replaces every
//     #set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")
// by an active set() of that folder, in UTF-8 and with a "/" at its end. All other bytes stay.
//
// Rewrites in place, and puts the old content back if that fails; does not touch a file that cannot
// be read to its end. Returns false only if the file cannot be opened for reading and writing, as
// when it does not exist, is a link, or is not a regular file.
bool FilterCMakeLists(QString file, QString sdkDir);
