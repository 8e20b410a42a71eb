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

using namespace Detail;

namespace {

void logNotCopied(const QString& source, const QString& target, const QString& reason)
{
    LOG(ERROR) << "The file " << source.toStdString() << " was not copied to " << target.toStdString() << " ("
               << reason.toStdString() << ")";
}

// Copies one file through a QSaveFile, so that a failed or cancelled copy leaves no target.
bool copyOneFile(const QString& source, const QString& target, bool overwrite, qint64& done,
                 const boost::intrusive_ptr<Dravik::Core::IProgressController>& progress)
{
    QFile in(source);
    if (!QFileInfo(source).isFile() || !in.open(QIODevice::ReadOnly)) {
        logNotCopied(source, target, QStringLiteral("cannot read the source"));
        return false;
    }
    const QFileInfo targetInfo(target);
    if (targetInfo.exists() && (!overwrite || targetInfo.isDir())) {
        logNotCopied(source, target, QStringLiteral("the target exists"));
        return false;
    }
    if (!QDir().mkpath(targetInfo.absolutePath())) {
        logNotCopied(source, target, QStringLiteral("cannot create the target folder"));
        return false;
    }
    QSaveFile out(target);
    if (!out.open(QIODevice::WriteOnly)) {
        logNotCopied(source, target, out.errorString());
        return false;
    }
    static constexpr qint64 kChunk = 1 << 20;
    QByteArray buffer;
    for (;;) {
        if (progress && progress->IsCancelled()) {
            out.cancelWriting();
            logNotCopied(source, target, QStringLiteral("cancelled"));
            return false;
        }
        buffer = in.read(kChunk);
        if (buffer.isEmpty()) {
            if (in.error() != QFileDevice::NoError || !in.atEnd()) {
                out.cancelWriting();
                logNotCopied(source, target, in.errorString());
                return false;
            }
            break;
        }
        if (out.write(buffer) != buffer.size()) {
            out.cancelWriting();
            logNotCopied(source, target, out.errorString());
            return false;
        }
        done += buffer.size();
        if (progress)
            progress->SetProgress(done);
    }
    if (!out.commit()) {
        logNotCopied(source, target, out.errorString());
        return false;
    }
    QFile::setPermissions(target, in.permissions());
    return true;
}

// A link to a folder is copied as a link to the same folder: what it points to belongs to
// someone else and may be large, or hold the tree itself.
bool copyFolderLink(const QFileInfo& link, const QString& target, bool overwrite)
{
    const QString source = link.absoluteFilePath();
    const QFileInfo existing(target);
    if (existing.exists() || existing.isSymLink()) {
        // Only a link is replaced: a real folder or file there stays as it is.
        if (!overwrite || !existing.isSymLink() || !QFile::remove(target)) {
            logNotCopied(source, target, QStringLiteral("the target exists"));
            return false;
        }
    }
    if (!QFile::link(link.symLinkTarget(), target)) {
        logNotCopied(source, target, QStringLiteral("cannot create the link"));
        return false;
    }
    return true;
}

} // namespace

// Folder and file operations.

namespace {

// Walks on the GUI thread and lets it breathe at least every 10 ms.
QStringList collectFiles(const QString& dir, const Detail::NameMatcher& matcher, bool recursive)
{
    const QString root = cleanPath(dir);
    if (root.isEmpty() || !QFileInfo(root).isDir()) {
        LOG(ERROR) << "Specified directory doesn't exist: \"" << dir.toStdString() << "\"";
        return {};
    }
    QStringList files;
    QElapsedTimer sinceEvents;
    sinceEvents.start();
    Detail::walkFiles(root, recursive, [&](const QString& filePath, const QString& fileName) {
        if (matcher.matches(fileName))
            files << cleanPath(filePath);
        if (sinceEvents.elapsed() >= 10) {
            QCoreApplication::processEvents();
            sinceEvents.restart();
        }
        return true;
    });
    return files;
}

} // namespace

QStringList parseDirectory(QString dir, bool recursive)
{
    const QStringList extensions = supportedClipFileExtensions();
    return collectFiles(dir, Detail::NameMatcher::forSuffixes(QSet<QString>(extensions.begin(), extensions.end())),
                        recursive);
}

QStringList parseDirectory(QString dir, QStringList nameFilters, bool recursive)
{
    return collectFiles(dir, Detail::NameMatcher(nameFilters), recursive);
}

bool copyFiles(const QMap<QString, QString>& sourceToTarget,
               const boost::intrusive_ptr<Dravik::Core::IProgressController>& progress)
{
    qint64 total = 0;
    for (auto it = sourceToTarget.cbegin(); it != sourceToTarget.cend(); ++it)
        total += std::max<qint64>(QFileInfo(it.key()).size(), 0);
    if (progress) {
        progress->SetRange(total);
        progress->SetProgress(0);
    }
    qint64 done = 0;
    for (auto it = sourceToTarget.cbegin(); it != sourceToTarget.cend(); ++it) {
        if (!copyOneFile(it.key(), it.value(), false, done, progress))
            return false;
    }
    return true;
}

bool copyRecursively(const QString& from, const QString& to, const QStringList& exclude, bool overwrite)
{
    const QFileInfo source(from);
    if (from.isEmpty() || to.isEmpty() || !source.isDir()) {
        LOG(ERROR) << "Filesystem::copyRecursively: no folder to copy at \"" << from.toStdString() << "\"";
        return false;
    }
    const QString sourceRoot = QDir::cleanPath(source.absoluteFilePath());
    const QString targetRoot = QDir::cleanPath(QFileInfo(to).absoluteFilePath());
    if (targetRoot == sourceRoot || targetRoot.startsWith(sourceRoot + QLatin1Char('/'))) {
        LOG(ERROR) << "Filesystem::copyRecursively: cannot copy \"" << sourceRoot.toStdString() << "\" into itself";
        return false;
    }
    if (!QDir().mkpath(targetRoot)) {
        LOG(ERROR) << "Filesystem::copyRecursively: cannot create \"" << targetRoot.toStdString() << "\"";
        return false;
    }
    const QDir sourceDir(sourceRoot);
    const QFileInfoList entries = sourceDir.entryInfoList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name | QDir::DirsFirst);
    for (const QFileInfo& entry : entries) {
        if (!exclude.isEmpty() && QDir::match(exclude, entry.fileName()))
            continue;
        const QString target = targetRoot + QLatin1Char('/') + entry.fileName();
        if (entry.isDir() && entry.isSymLink()) {
            if (!copyFolderLink(entry, target, overwrite))
                return false;
            continue;
        }
        if (entry.isDir()) {
            if (!copyRecursively(entry.absoluteFilePath(), target, exclude, overwrite))
                return false;
            continue;
        }
        qint64 unused = 0;
        if (!copyOneFile(entry.absoluteFilePath(), target, overwrite, unused, nullptr))
            return false;
    }
    return true;
}

bool removeDirectory(const QString& path)
{
    const QString cleaned = cleanPath(path);
    if (cleaned.isEmpty() || QDir::isRelativePath(cleaned) || QDir(cleaned).isRoot()) {
        LOG(ERROR) << "Filesystem::removeDirectory: refused to remove \"" << path.toStdString() << "\"";
        return false;
    }
    const QFileInfo info(cleaned);
    if (!info.isDir()) {
        LOG(ERROR) << "Specified directory doesn't exist: \"" << cleaned.toStdString() << "\"";
        return true;
    }
    // A link to a folder goes alone: what it points to belongs to someone else.
    if (info.isSymLink())
        return QFile::remove(cleaned);
    const QString aside = cleaned + QUuid::createUuid().toString();
    if (!QDir().rename(cleaned, aside)) {
        LOG(ERROR) << "Filesystem::removeDirectory: cannot rename \"" << cleaned.toStdString() << "\"";
        return false;
    }
    if (!QDir(aside).removeRecursively()) {
        LOG(ERROR) << "Filesystem::removeDirectory: cannot remove \"" << cleaned.toStdString() << "\"";
        if (!QDir().rename(aside, cleaned))
            LOG(ERROR) << "Filesystem::removeDirectory: what is left stays in \"" << aside.toStdString() << "\"";
        return false;
    }
    return true;
}

QString findMissingFile(QString path)
{
    const QSet<QString> video = groupExtensionSet(IFormatFile::GROUP_ALL_VIDEO);
    const QSet<QString> images = groupExtensionSet(IFormatFile::GROUP_ALL_IMAGES);
    const QSet<QString> audio = groupExtensionSet(IFormatFile::GROUP_ALL_AUDIO);
    const QSet<QString> dvd = groupExtensionSet(IFormatFile::GROUP_DVD);

    const QFileInfo info(cleanPath(path));
    const QString suffix = info.suffix().toLower();
    QString folder = info.absolutePath();
    if (!QFileInfo(folder).isDir()) {
        if (video.contains(suffix))
            folder = moviesLocation();
        if (images.contains(suffix))
            folder = picturesLocation();
        if (audio.contains(suffix))
            folder = musicLocation();
    }
    if (dvd.contains(suffix))
        return {};

    QStringList lines;
    if (video.contains(suffix))
        lines << groupFilterLine(IFormatFile::GROUP_ALL_VIDEO);
    if (images.contains(suffix))
        lines << groupFilterLine(IFormatFile::GROUP_ALL_IMAGES);
    if (audio.contains(suffix))
        lines << groupFilterLine(IFormatFile::GROUP_ALL_AUDIO);
    if (lines.isEmpty())
        return {};
    lines << groupFilterLine(IFormatFile::GROUP_ALL_FILES);
    ensureFolder(folder);

    return cleanPath(QFileDialog::getOpenFileName(parentWindow(), tr("Find missing file: ") + info.fileName(), folder,
                                                  lines.join(QStringLiteral(";;")), nullptr, kDialogOptions));
}

bool findMissingFiles(QStringList missing, QMap<QString, QString>& found)
{
    QMap<QString, QString> chosen;
    if (!missing.isEmpty() && Dialog::isInteractive()) {
        MissingFilesDialog dialog(missing, parentWindow());
        dialog.exec();
        chosen = dialog.foundFiles();
    }
    for (const QString& path : missing)
        found[path] = chosen.value(cleanPath(path), path);
    return true;
}

QStringList extractFiles(const QStringList& paths, const QSet<QString>& extensions)
{
    QSet<QString> lower;
    for (const QString& extension : extensions)
        lower.insert(extension.toLower());
    QStringList result;
    for (const QString& path : paths)
        if (!path.trimmed().isEmpty() && lower.contains(suffixOf(path.trimmed())))
            result << path;
    return result;
}

QStringList extractProjectFiles(QStringList paths)
{
    const QStringList extensions = Settings::supportedProjectFileExtensions();
    return extractFiles(paths, QSet<QString>(extensions.begin(), extensions.end()));
}

QStringList extractPackageFiles(QStringList paths) { return extractFiles(paths, {Settings::packageExtenstion()}); }

} // namespace Filesystem
