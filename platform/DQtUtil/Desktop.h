#pragma once

#include <QStandardPaths>
#include <QString>

namespace Dravik {
namespace Util {

// The user's folder of the given kind (movies, music, pictures...), cleaned; the home folder
// when the system names none.
QString GetStandardPath(QStandardPaths::StandardLocation location);

// Shows the file in the system's file browser by opening its folder (a folder is opened
// itself) through QDesktopServices, so an application may route it with setUrlHandler("file").
// Returns false, with an error in the log, when the file does not exist or nothing could
// open the folder.
bool ExploreSingleFile(const QString& path);

} // namespace Util
} // namespace Dravik
