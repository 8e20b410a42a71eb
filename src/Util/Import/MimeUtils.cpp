#include "MimeUtils.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeData>

#include <Util/Interfaces/EditorSerialization.h>
#include <Util/Interfaces/EditorSettings.h>

#include <glog/logging.h>

namespace MimeUtils {

namespace {

QString lowerSuffix(const QString& path) { return QFileInfo(path).suffix().toLower(); }

// The local path of a dropped URL; empty for one that is not a local file or whose path holds
// a NUL ("%00"), which no file name can and which file functions would cut short.
QString droppedPath(const QUrl& url)
{
    QString path = url.toLocalFile();
    if (path.contains(QChar::Null)) {
        LOG(ERROR) << "MimeUtils: dropped URL " << url.toString().toStdString() << " holds a NUL in its path; refused";
        path.clear();
    }
    return path;
}

// "*.dscproj" and "dscproj" both name the suffix "dscproj".
QSet<QString> suffixSet(const QStringList& patterns)
{
    QSet<QString> suffixes;
    for (QString pattern : patterns) {
        pattern = pattern.trimmed();
        if (pattern.startsWith(QLatin1String("*.")))
            pattern.remove(0, 2);
        else if (pattern.startsWith(QLatin1Char('.')))
            pattern.remove(0, 1);
        if (!pattern.isEmpty())
            suffixes.insert(pattern.toLower());
    }
    return suffixes;
}

// The whole content of a dropped SVG file, or nothing (with a log line) when it cannot be
// read or is too large to be an overlay.
bool readDroppedSvg(const QString& path, QByteArray& content)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        LOG(ERROR) << "MimeUtils::makeOverlayPresetList: cannot read dropped file " << path.toStdString();
        return false;
    }
    if (file.size() > maxDroppedSvgBytes) {
        LOG(ERROR) << "MimeUtils::makeOverlayPresetList: dropped file " << path.toStdString() << " has " << file.size()
                   << " bytes, more than the " << maxDroppedSvgBytes << " an overlay may have";
        return false;
    }
    content = file.read(maxDroppedSvgBytes + 1);
    if (content.size() > maxDroppedSvgBytes) { // grew while being read
        LOG(ERROR) << "MimeUtils::makeOverlayPresetList: dropped file " << path.toStdString() << " is too large";
        return false;
    }
    return true;
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

bool hasUrls(const QMimeData* data) { return data && data->hasUrls(); }

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
        const QString path = droppedPath(url);
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
        const QString path = droppedPath(url);
        if (path.isEmpty())
            continue;
        if (suffixes.contains(lowerSuffix(path)))
            files.append(QFileInfo(path).absoluteFilePath());
    }
    return files;
}

bool isMimeDataContainsPackageFiles(const QMimeData* data)
{
    return isMimeDataContainsSupportedFile(data, suffixSet({Settings::packageExtenstion()}), false);
}

bool isMimeDataContainsProjectFiles(const QMimeData* data)
{
    const QStringList patterns = Settings::projectFileOpenFilter().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    return isMimeDataContainsSupportedFile(data, suffixSet(patterns), false);
}

QStringList extractProjectFiles(const QMimeData* data)
{
    return extractFiles(data, suffixSet(Settings::supportedProjectFileExtensions()));
}

bool isOverlayPresetCompatible(const QMimeData* data)
{
    return data && Overlay::Preset::mimeType && data->hasFormat(Overlay::Preset::mimeType->toQString());
}

std::vector<std::unique_ptr<Overlay::Preset>> makeOverlayPresetList(const QMimeData* data)
{
    std::vector<std::unique_ptr<Overlay::Preset>> presets;
    if (!data)
        return presets;
    if (isOverlayPresetCompatible(data))
        return Serialize::readOverlayPresets(data->data(Overlay::Preset::mimeType->toQString()));
    if (!data->hasUrls())
        return presets;
    const QList<QUrl> dropped = data->urls();
    for (const QUrl& url : dropped) {
        const QString path = droppedPath(url);
        if (path.isEmpty() || !overlaySuffixes().contains(lowerSuffix(path)))
            continue;
        QByteArray content;
        if (!readDroppedSvg(path, content))
            continue;
        auto preset = std::make_unique<Overlay::Preset>();
        preset->setTag("DroppedSVG");
        preset->appendItem(Overlay::Item().setText(content.toStdString()));
        presets.push_back(std::move(preset));
    }
    return presets;
}

void packOverlayPresets(QMimeData* data, const std::vector<const Overlay::Preset*>& presets)
{
    if (!data || !Overlay::Preset::mimeType) {
        LOG(ERROR) << "MimeUtils::packOverlayPresets: no mime data given";
        return;
    }
    data->setData(Overlay::Preset::mimeType->toQString(), Serialize::writeOverlayPresets(presets));
}

} // namespace MimeUtils
