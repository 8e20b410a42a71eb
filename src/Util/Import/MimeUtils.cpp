#include "MimeUtils.h"

#include <QFileInfo>
#include <QMimeData>

#include <glog/logging.h>

namespace MimeUtils {

namespace {

QString lowerSuffix(const QString& path)
{
    return QFileInfo(path).suffix().toLower();
}

} // namespace

const QString& dragAsrcFormat()
{
    static const QString format = QStringLiteral("application/x-dragAndDropAsrc");
    return format;
}

const QString& filesUrlsFormat()
{
    static const QString format = QStringLiteral("application/x-filesUrls");
    return format;
}

const QSet<QString>& overlaySuffixes()
{
    static const QSet<QString> suffixes{QStringLiteral("svg")};
    return suffixes;
}

bool hasUrls(const QMimeData* data)
{
    return data && data->hasUrls();
}

QList<QUrl> urls(const QList<QString>& paths)
{
    QList<QUrl> result;
    result.reserve(paths.size());
    for (const QString& path : paths)
        result.append(QUrl::fromLocalFile(path));
    return result;
}

void packFiles(QMimeData* data, const QList<QString>& paths)
{
    if (!data) {
        LOG(ERROR) << "MimeUtils::packFiles: no mime data given";
        return;
    }
    data->setUrls(urls(paths));
}

void setMimeDragAsrc(QMimeData* data, const QString& asrc)
{
    if (!data) {
        LOG(ERROR) << "MimeUtils::setMimeDragAsrc: no mime data given";
        return;
    }
    data->setData(dragAsrcFormat(), asrc.toUtf8());
}

QString mimeDragAsrc(const QMimeData* data)
{
    if (!data || !data->hasFormat(dragAsrcFormat()))
        return {};
    return QString::fromUtf8(data->data(dragAsrcFormat()));
}

bool isUrlListContainsSupportedFile(const QList<QUrl>& urls, const QSet<QString>& suffixes, bool acceptDirectories)
{
    for (const QUrl& url : urls) {
        const QString path = url.toLocalFile();
        if (path.isEmpty())
            continue;
        if (suffixes.contains(lowerSuffix(path)))
            return true;
        if (acceptDirectories && QFileInfo(path).isDir())
            return true;
    }
    return false;
}

bool isMimeDataContainsSupportedFile(const QMimeData* data, const QSet<QString>& suffixes, bool acceptDirectories)
{
    if (!hasUrls(data))
        return false;
    return isUrlListContainsSupportedFile(data->urls(), suffixes, acceptDirectories);
}

QStringList extractFiles(const QMimeData* data, const QSet<QString>& suffixes)
{
    QStringList files;
    if (!hasUrls(data))
        return files;
    const QList<QUrl> dropped = data->urls();
    for (const QUrl& url : dropped) {
        const QString path = url.toLocalFile();
        if (path.isEmpty())
            continue;
        if (suffixes.contains(lowerSuffix(path)))
            files.append(QFileInfo(path).absoluteFilePath());
    }
    return files;
}

} // namespace MimeUtils
