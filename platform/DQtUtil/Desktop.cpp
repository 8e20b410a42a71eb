#include "Desktop.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QUrl>

#include <glog/logging.h>

namespace Dravik {
namespace Util {

QString GetStandardPath(QStandardPaths::StandardLocation location)
{
    const QString path = QStandardPaths::writableLocation(location);
    return QDir::cleanPath(path.isEmpty() ? QDir::homePath() : path);
}

bool ExploreSingleFile(const QString& path)
{
    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists()) {
        LOG(ERROR) << "ExploreSingleFile: no such file: " << path.toStdString();
        return false;
    }
    const QString folder = info.isDir() ? info.absoluteFilePath() : info.absolutePath();
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(folder))) {
        LOG(ERROR) << "ExploreSingleFile: could not open the folder " << folder.toStdString();
        return false;
    }
    return true;
}

} // namespace Util
} // namespace Dravik
