#include "Filesystem.h"

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

// Where a dialog opens: the remembered folder, or the nearest folder above it when it has
// been deleted since (a folder the user removed is not made again); the standard folder,
// created when missing, when nothing usable is remembered.
QString startFolder(const QString& remembered, const QString& standard)
{
    if (!remembered.isEmpty() && !QDir::isRelativePath(remembered)) {
        const QString existing = closestPath(remembered);
        if (!existing.isEmpty())
            return existing;
    }
    ensureFolder(standard);
    return standard;
}

// Kind-dependent parts of the media dialog.
QString lastFolderOfKind(int kind)
{
    switch (kind) {
    case Video:
        return Settings::lastAddVideoPath();
    case Audio:
        return Settings::lastAddAudioPath();
    case Image:
        return Settings::lastAddImagePath();
    default:
        return Settings::lastAddMediaPath();
    }
}

void storeLastFolderOfKind(int kind, const QString& folder)
{
    switch (kind) {
    case Video:
        Settings::setLastAddVideoPath(folder);
        break;
    case Audio:
        Settings::setLastAddAudioPath(folder);
        break;
    case Image:
        Settings::setLastAddImagePath(folder);
        break;
    default:
        Settings::setLastAddMediaPath(folder);
        break;
    }
}

QString standardFolderOfKind(int kind)
{
    switch (kind) {
    case Audio:
        return musicLocation();
    case Image:
        return picturesLocation();
    default:
        return moviesLocation();
    }
}

QString titleOfKind(int kind)
{
    switch (kind) {
    case Video:
        return tr("Open Video Files");
    case Audio:
        return tr("Open Audio Files");
    case Image:
        return tr("Open Image Files");
    default:
        return tr("Open Media Files");
    }
}

QString exampleOfKind(int kind)
{
    switch (kind) {
    case Video | Audio:
        return QStringLiteral(" (*.mp4;*.avi;*.mp3;...)");
    case Video | Image:
        return QStringLiteral(" (*.mp4;*.avi;*.jpeg;...)");
    case Audio | Image:
        return QStringLiteral(" (*.jpeg;*.png;*.mp3;...)");
    case Video | Audio | Image:
    case Video | Audio | Image | Project:
        return QStringLiteral(" (*.mp4;*.jpeg;*.mp3;...)");
    default:
        return QString();
    }
}

QString mediaFilter(int kind, const QList<int>& groups)
{
    QStringList patterns;
    for (int group : groups)
        if (group != IFormatFile::GROUP_ALL_FILES)
            patterns << groupPatterns(group);
    const QString projectPattern = QStringLiteral(" *.") + Settings::projectFileExtension();

    QString filter;
    if (kind == (Video | Audio | Image | Project)) {
        const QStringList projectExtensions = Settings::supportedProjectFileExtensions();
        filter += tr("All Supported Files") + QStringLiteral(" ( *. ")
                  + (projectExtensions.isEmpty() ? Settings::projectFileExtension() : projectExtensions.first())
                  + QStringLiteral(";*.jpeg;*.png;*.mp3;...)");
        filter += QLatin1Char('(') + patterns.join(QLatin1Char(' ')) + projectPattern + QLatin1Char(' ')
                  + Settings::projectFileOpenFilter() + QStringLiteral(");;");
    }
    filter += tr("Media Files") + exampleOfKind(kind);
    if (!patterns.isEmpty())
        filter += QLatin1Char('(') + patterns.join(QLatin1Char(' '))
                  + (kind == (Video | Audio | Image) ? projectPattern : QString()) + QStringLiteral(");;");
    QStringList lines;
    for (int group : groups)
        lines << groupFilterLine(group);
    return filter + lines.join(QStringLiteral(";;"));
}

QString folderOf(const QString& path) { return QFileInfo(path).absolutePath(); }

} // namespace

// Dialogs.

QStringList openFiles(int kinds)
{
    const int kind = kinds & ~AllFilesFilter;
    QList<int> groups;
    if (kinds & Video)
        groups << IFormatFile::GROUP_ALL_VIDEO;
    if (kinds & Image)
        groups << IFormatFile::GROUP_ALL_IMAGES;
    if (kinds & Audio)
        groups << IFormatFile::GROUP_ALL_AUDIO;
    if (kinds & AllFilesFilter)
        groups << IFormatFile::GROUP_ALL_FILES;

    const QString folder =
        startFolder(Settings::rememberLastFolders() ? lastFolderOfKind(kind) : QString(), standardFolderOfKind(kind));

    QStringList files = QFileDialog::getOpenFileNames(parentWindow(), titleOfKind(kind), folder,
                                                      mediaFilter(kind, groups), nullptr, kDialogOptions);

    const QSet<QString> dvd = groupExtensionSet(IFormatFile::GROUP_DVD);
    QStringList refused;
    const auto dvdEnd =
        std::stable_partition(files.begin(), files.end(), [&](const QString& f) { return !dvd.contains(suffixOf(f)); });
    for (auto it = dvdEnd; it != files.end(); ++it)
        refused << QFileInfo(*it).fileName();
    files.erase(dvdEnd, files.end());
    if (!refused.isEmpty())
        Dialog::showWarning(tr("Failed to open files"), tr("Cannot open files: ") + refused.join(QStringLiteral(", ")));

    const QString projectSuffix = Settings::projectFileExtension();
    const auto packagesBegin = std::stable_partition(files.begin(), files.end(),
                                                     [&](const QString& f) { return suffixOf(f) != projectSuffix; });
    const QStringList packages(packagesBegin, files.end());
    files.erase(packagesBegin, files.end());
    for (const QString& package : packages) {
        const QDir folderOfRecordings(package);
        for (const QString& name : folderOfRecordings.entryList({QStringLiteral("*.drec")}, QDir::Files, QDir::Name))
            files << folderOfRecordings.filePath(name);
    }

    files = cleanPath(files);
    if (!files.isEmpty())
        storeLastFolderOfKind(kind, cleanPath(folderOf(files.first())));
    return files;
}

QString openProject(QString dir)
{
    if (dir.isEmpty()) {
        dir = Settings::projectPath();
        ensureFolder(dir);
    }
    return cleanPath(QFileDialog::getOpenFileName(parentWindow(), tr("Open Project"), dir,
                                                  tr("Project files (%1)").arg(Settings::projectFileOpenFilter()),
                                                  nullptr, kDialogOptions));
}

QStringList openDirectory()
{
    const QString start = startFolder(Settings::lastAddDirectoryPath(), moviesLocation());
    const QString chosen = QFileDialog::getExistingDirectory(parentWindow(), tr("Open Folder"), start,
                                                             QFileDialog::ShowDirsOnly | kDialogOptions);
    if (chosen.isEmpty())
        return {};
    Settings::setLastAddDirectoryPath(cleanPath(folderOf(chosen)));
    return parseDirectory(chosen, true);
}

QStringList openDirectoryAllImages()
{
    const QString start = picturesLocation();
    ensureFolder(start);
    const QString chosen = QFileDialog::getExistingDirectory(parentWindow(), tr("Open Folder"), start,
                                                             QFileDialog::ShowDirsOnly | kDialogOptions);
    if (chosen.isEmpty())
        return {};
    return parseDirectory(chosen, extensionsToFileFilters(pictureExtensions()), false);
}

QStringList openStockedAudioFiles(QString dir)
{
    const QString filter = groupFilterLine(IFormatFile::GROUP_ALL_AUDIO) + QStringLiteral(";;")
                           + groupFilterLine(IFormatFile::GROUP_ALL_FILES);
    return cleanPath(
        QFileDialog::getOpenFileNames(parentWindow(), tr("Open Audio Files"), dir, filter, nullptr, kDialogOptions));
}

QString browseDirectory(QString dir)
{
    return cleanPath(QFileDialog::getExistingDirectory(parentWindow(), tr("Select Folder"), dir,
                                                       QFileDialog::ShowDirsOnly | kDialogOptions));
}

void showFile(QString path) { Dravik::Util::ExploreSingleFile(cleanPath(path)); }

// Save paths.

QString savingProjectPath(QString suggested)
{
    const QString filter = tr("Project files (%1)").arg(Settings::projectFileSaveFilter());
    const QString folder = Settings::projectPath();
    ensureFolder(folder);
    const QString proposal =
        cleanPath(suggested.isEmpty() ? QStringLiteral("%1%2%3.%4")
                                            .arg(folder, QDir::separator(), Settings::projectNameDefault(),
                                                 Settings::projectFileExtension())
                                      : suggested);
    return cleanPath(
        QFileDialog::getSaveFileName(parentWindow(), tr("Save Project"), proposal, filter, nullptr, kDialogOptions));
}

QString savingProjectPortablePath()
{
    const QString suffix = Settings::packageExtenstion();
    const QString folder = Settings::projectPath();
    ensureFolder(folder);
    const QString proposal =
        cleanPath(QStringLiteral("%1%2%3.%4").arg(folder, QDir::separator(), Settings::projectNameDefault(), suffix));
    QString chosen =
        cleanPath(QFileDialog::getSaveFileName(parentWindow(), tr("Save Project"), proposal,
                                               tr("Project package (*.%1)").arg(suffix), nullptr, kDialogOptions));
    if (chosen.isEmpty())
        return {};
    if (QFileInfo(chosen).suffix().compare(suffix, Qt::CaseInsensitive) != 0)
        chosen += QLatin1Char('.') + suffix;
    const QFileInfo info(chosen);
    if (!isPathValid(chosen) || info.isDir() || !isPathWritable(info.absolutePath())) {
        Dialog::showWarning(tr("Save Project"), tr("Can not save project file"));
        return {};
    }
    return chosen;
}

QString savingSnapshotPath()
{
    const QString filter = tr("Snapshot files (%1%2)").arg(QStringLiteral("*."), QStringLiteral("png"));
    const QString folder = Settings::snapshotPath();
    ensureFolder(folder);
    const QString proposal =
        cleanPath(QStringLiteral("%1%2%3.%4").arg(folder, QDir::separator(), tr("snapshot"), QStringLiteral("png")));
    const QString chosen = cleanPath(
        QFileDialog::getSaveFileName(parentWindow(), tr("Save Snapshot"), proposal, filter, nullptr, kDialogOptions));
    if (!chosen.isEmpty()) {
        const QString chosenFolder = cleanPath(folderOf(chosen));
        if (chosenFolder != cleanPath(folder))
            Settings::setSnapshotPath(chosenFolder);
    }
    return chosen;
}

} // namespace Filesystem
