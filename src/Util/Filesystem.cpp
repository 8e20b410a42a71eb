#include "Filesystem.h"

#include <Util/Detail/FileWalk.h>
#include <Util/Detail/FilesystemInternals.h>
#include <Util/Dialog/Dialog.h>
#include <Util/Dialog/MissingFilesDialog/MissingFilesDialog.h>
#include <Util/Interfaces/Core.h>
#include <Util/Interfaces/DQtUtil.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QDataStream>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QSaveFile>
#include <QUuid>
#include <QtEndian>

#include <glog/logging.h>

#include <algorithm>

namespace Filesystem {

namespace Detail {

NameMatcher::NameMatcher(const QStringList& nameFilters)
{
    static const QRegularExpression plainSuffix(QStringLiteral("^\\*\\.([^*?\\[\\]]+)$"));
    for (const QString& filter : nameFilters) {
        const QString f = filter.trimmed();
        if (f.isEmpty())
            continue;
        if (f == QLatin1String("*") || f == QLatin1String("*.*")) {
            m_everything = true;
            continue;
        }
        const QRegularExpressionMatch match = plainSuffix.match(f);
        if (match.hasMatch())
            m_suffixes.insert(match.captured(1).toLower());
        else
            m_patterns << f;
    }
}

NameMatcher NameMatcher::forSuffixes(const QSet<QString>& lowerCaseSuffixes)
{
    NameMatcher matcher;
    matcher.m_suffixes = lowerCaseSuffixes;
    return matcher;
}

bool NameMatcher::matches(const QString& fileName) const
{
    if (m_everything)
        return true;
    const int dot = fileName.lastIndexOf(QLatin1Char('.'));
    if (dot >= 0 && !m_suffixes.isEmpty() && m_suffixes.contains(fileName.mid(dot + 1).toLower()))
        return true;
    return !m_patterns.isEmpty() && QDir::match(m_patterns, fileName);
}

} // namespace Detail

namespace Detail {

QString tr(const char* text) { return QCoreApplication::translate("Filesystem", text); }

QWidget* parentWindow() { return Dravik::Util::SpontaneousDialog::findParent(); }

QStringList groupExtensions(int group)
{
    return QString::fromStdString(Dravik::Conf::GetSupportedFormatExtensions(group))
        .toLower()
        .split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

QSet<QString> groupExtensionSet(int group)
{
    const QStringList list = groupExtensions(group);
    return QSet<QString>(list.begin(), list.end());
}

QStringList groupPatterns(int group)
{
    const QStringList extensions = groupExtensions(group);
    if (extensions == QStringList{QStringLiteral("*")})
        return {QStringLiteral("*")};
    return extensionsToFileFilters(extensions);
}

QString groupFilterLine(int group)
{
    const QString tip = QCoreApplication::translate("core", Dravik::Conf::GetFormatExtentionTip(group).c_str());
    return tip + QStringLiteral(" (") + groupPatterns(group).join(QLatin1Char(' ')) + QLatin1Char(')');
}

void ensureFolder(const QString& folder)
{
    if (!folder.isEmpty() && !QFileInfo(folder).isDir() && !QDir().mkpath(folder))
        LOG(ERROR) << "Filesystem: cannot create the folder " << folder.toStdString();
}

QString suffixOf(const QString& path) { return QFileInfo(path).suffix().toLower(); }

} // namespace Detail

using namespace Detail;

// Lists and locations.

QString moviesLocation() { return Dravik::Util::GetStandardPath(QStandardPaths::MoviesLocation); }
QString musicLocation() { return Dravik::Util::GetStandardPath(QStandardPaths::MusicLocation); }
QString picturesLocation() { return Dravik::Util::GetStandardPath(QStandardPaths::PicturesLocation); }

QStringList videoExtensions() { return groupExtensions(IFormatFile::GROUP_ALL_VIDEO); }
QStringList musicExtensions() { return groupExtensions(IFormatFile::GROUP_ALL_AUDIO); }
QStringList pictureExtensions() { return groupExtensions(IFormatFile::GROUP_ALL_IMAGES); }

QStringList supportedClipFileExtensions() { return videoExtensions() + musicExtensions() + pictureExtensions(); }

QStringList extensionsToFileFilters(const QStringList& extensions)
{
    QStringList filters;
    filters.reserve(extensions.size());
    for (const QString& extension : extensions)
        filters << QStringLiteral("*.%1").arg(extension);
    return filters;
}

// Paths.

QString cleanPath(QString path)
{
    // Trimming can leave a path that cleans further ("a/../ ./b" gives " ./b", then "./b"),
    // so both repeat until nothing changes: cleaning a cleaned path keeps it.
    QString cleaned = path.trimmed();
    for (QString next; !cleaned.isEmpty(); cleaned = next) {
        next = QDir::cleanPath(cleaned).trimmed();
        if (next == cleaned)
            break;
    }
    return QDir::toNativeSeparators(cleaned);
}

QStringList cleanPath(QStringList paths)
{
    for (QString& path : paths)
        path = cleanPath(path);
    return paths;
}

QString closestPath(QString path)
{
    const QString cleaned = cleanPath(path);
    if (cleaned.isEmpty() || QDir::isRelativePath(cleaned)) {
        LOG(ERROR) << "Filesystem::closestPath: not an absolute path: \"" << path.toStdString() << "\"";
        return {};
    }
    QString current = cleaned;
    while (!QFileInfo(current).isDir()) {
        const QString parent = QFileInfo(current).path();
        if (parent == current)
            return {};
        current = parent;
    }
    return cleanPath(current);
}

bool isPathValid(QString path, QString* error)
{
    static const QRegularExpression forbidden(QStringLiteral("[:*?\"<>|]"));
    const QString cleaned = cleanPath(path);
    const QStringList parts = cleaned.split(QDir::separator(), Qt::SkipEmptyParts);
    for (const QString& part : parts) {
        if (!part.contains(forbidden))
            continue;
        // Only a drive designator at the very front may hold one of these characters.
        if (cleaned.startsWith(part) && cleaned.indexOf(part, 1) < 0)
            continue;
        if (error)
            *error = tr("Unsupported symbols");
        return false;
    }
    return true;
}

bool isPathReadable(QString path) { return QFileInfo(cleanPath(path)).isReadable(); }

bool isPathWritable(QString path) { return QFileInfo(cleanPath(path)).isWritable(); }

} // namespace Filesystem
