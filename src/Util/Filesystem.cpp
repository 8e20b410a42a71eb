#include "Filesystem.h"

#include <Util/Detail/FileWalk.h>
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

namespace {

using Dravik::Conf::IFormatFile;

QString tr(const char* text) { return QCoreApplication::translate("Filesystem", text); }

const QFileDialog::Options kDialogOptions = QFileDialog::HideNameFilterDetails;

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

// "Video Files (*.mp4 *.mov ...)", the description translated in the engine's "core" domain.
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

QStringList readStringList(const std::string& serialized, const char* expectedName)
{
    if (serialized.empty())
        return {};
    Dravik::Core::DataInputString input(serialized);
    Dravik::Core::Property list;
    if (!Dravik::Core::PropertySerializer::Deserialize(list, input))
        return {};
    if (list.GetName() != expectedName)
        LOG(ERROR) << "Filesystem: stored list is named \"" << list.GetName() << "\" instead of \"" << expectedName
                   << "\"";
    QStringList result;
    for (const auto& child : list.GetChildren())
        if (child.GetType() == Dravik::Core::Property::Type::String)
            result << QString::fromStdString(child.GetString());
    return result;
}

std::string writeStringList(const QStringList& paths, const char* name)
{
    Dravik::Core::Property list(name, Dravik::Core::Property::Type::Array);
    for (const QString& path : paths)
        list.Append(Dravik::Core::Property::MakeString(std::string(), path.toStdString()));
    Dravik::Core::DataOutputString output;
    Dravik::Core::PropertySerializer::Serialize(list, output);
    return output.GetString();
}

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

// Lists and locations.

QStringList recentProjects() { return readStringList(Settings::recentProjects(), "recent"); }

void saveRecentProjects(QStringList projects)
{
    Settings::setRecentProjects(writeStringList(cleanPath(std::move(projects)), "recent"));
}

QStringList lastUsedOutputDirectories() { return cleanPath(readStringList(Settings::targetHistory(), "targets")); }

void saveLastUsedOutputDirectories(QStringList directories)
{
    Settings::setTargetHistory(writeStringList(cleanPath(std::move(directories)), "targets"));
}

namespace {
constexpr quint32 kPreviewsMagic = 0x45555250; // "EURP"
constexpr quint32 kPreviewsVersion = 1;

// Bytes of the PNG stream starting at `from` (signature, chunks up to IEND), or 0.
int pngLength(const QByteArray& data, int from)
{
    if (data.mid(from, 8) != QByteArrayLiteral("\x89PNG\r\n\x1a\n"))
        return 0;
    qint64 at = from + 8;
    while (at + 12 <= data.size()) {
        const quint32 length = qFromBigEndian<quint32>(data.constData() + at);
        const bool last = data.mid(int(at) + 4, 4) == QByteArrayLiteral("IEND");
        at += 12 + qint64(length);
        if (last)
            return at <= data.size() ? int(at - from) : 0;
    }
    return 0;
}

// The picture decoded no larger than a preview, judged by its header first; null when it is
// not a PNG or announces more than previewStoredMaxSide pixels a side.
QImage readPreview(const QByteArray& png)
{
    QBuffer buffer;
    buffer.setData(png);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > previewStoredMaxSide || size.height() > previewStoredMaxSide)
        return {};
    if (size.width() > previewSide || size.height() > previewSide)
        reader.setScaledSize(size.scaled(previewSide, previewSide, Qt::KeepAspectRatio));
    return reader.read();
}
} // namespace

// Read entry by entry as QDataStream writes a QMap<QString, QPixmap> (count, then key, null
// marker and PNG per entry), so no picture is decoded before its size is known.
QMap<QString, QPixmap> recentProjectPreviews()
{
    const QByteArray data = Settings::recentProjectPreviews();
    if (data.isEmpty())
        return {};
    QDataStream in(data);
    in.setVersion(QDataStream::Qt_5_15);
    quint32 magic = 0;
    quint32 version = 0;
    quint32 count = 0;
    in >> magic >> version >> count;
    QMap<QString, QPixmap> previews;
    bool readable = in.status() == QDataStream::Ok && magic == kPreviewsMagic && version == kPreviewsVersion;
    for (quint32 i = 0; readable && i < count; ++i) {
        QString key;
        qint32 hasPicture = 0;
        in >> key >> hasPicture;
        const int at = int(in.device()->pos());
        const int length = hasPicture ? pngLength(data, at) : 0;
        readable = in.status() == QDataStream::Ok && (!hasPicture || length > 0);
        if (!readable)
            break;
        in.skipRawData(length);
        const QImage picture = hasPicture ? readPreview(data.mid(at, length)) : QImage();
        if (hasPicture && picture.isNull())
            LOG(ERROR) << "Filesystem::recentProjectPreviews: the preview of " << key.toStdString()
                       << " is not a PNG of at most " << previewStoredMaxSide << " pixels a side; left out";
        else
            previews.insert(key, QPixmap::fromImage(picture));
    }
    if (!readable) {
        LOG(ERROR) << "Filesystem::recentProjectPreviews: stored previews are unreadable";
        return {};
    }
    return previews;
}

void saveRecentProjectPreviews(const QMap<QString, QPixmap>& previews)
{
    QMap<QString, QPixmap> cleaned;
    for (auto it = previews.cbegin(); it != previews.cend(); ++it)
        cleaned.insert(cleanPath(it.key()), it.value());
    QByteArray data;
    QDataStream out(&data, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_15);
    out << kPreviewsMagic << kPreviewsVersion << cleaned;
    Settings::setRecentProjectPreviews(data);
}

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
