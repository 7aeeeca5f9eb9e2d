#pragma once

#include <QString>

// Points the CMakeLists.txt at `file` to the SDK folder `sdkDir`: replaces every
//     #set(ZUVYSDKDIR "@PRJDUP_ZUVYSDKDIR@")
// by an active set() of that folder, in UTF-8 and with a closing "/". All other bytes stay.
//
// Rewrites in place; a file without that line keeps its content. Returns false, and touches
// nothing, if it is not a regular file (none, a link, a pipe) or cannot be opened for reading and
// writing.
bool FilterCMakeLists(QString file, QString sdkDir);
