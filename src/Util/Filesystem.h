#pragma once

#include <Util/EditorUtilExport.h>

#include <QMap>
#include <QPixmap>
#include <QSet>
#include <QString>
#include <QStringList>

#include <boost/intrusive_ptr.hpp>

namespace Dravik {
namespace Core {
class IProgressController;
}
} // namespace Dravik

// File and folder dialogs, save paths, recent lists, path checks and folder operations.
// Every dialog is modal, parented to Dravik::Util::SpontaneousDialog::findParent() and
// opened with QFileDialog::HideNameFilterDetails; cancelling one returns an empty result and
// stores nothing. Returned and stored paths are cleaned (cleanPath). GUI thread only.
namespace Filesystem {

// Media kind flags of openFiles(); the dialog kind is the flags without AllFilesFilter.
enum MediaKind : int
{
    Video = 1,
    Audio = 2,
    Image = 4,
    Project = 8,
    AllFilesFilter = 16
};

// Dialogs.
// Multi-file dialog for media of the given kinds; project package folders (suffix
// "dscproj") are replaced by their "*.drec" recordings, DVD-structure files are refused
// with a warning. Remembers the folder of the first file per kind. A remembered folder that
// has been deleted since is not made again: the dialog opens on the nearest folder above it.
EDITORUTIL_EXPORT QStringList openFiles(int kinds);
// Single project file; `dir` empty opens the project folder (created when missing).
EDITORUTIL_EXPORT QString openProject(QString dir);
// A folder's media files, recursively ("Open Folder"); remembers the folder above it.
EDITORUTIL_EXPORT QStringList openDirectory();
// The image files directly inside a chosen folder ("Open Folder").
EDITORUTIL_EXPORT QStringList openDirectoryAllImages();
// Audio files of a stock folder ("Open Audio Files").
EDITORUTIL_EXPORT QStringList openStockedAudioFiles(QString dir);
// A folder ("Select Folder"), or empty.
EDITORUTIL_EXPORT QString browseDirectory(QString dir);
// Reveals the file in the system file browser.
EDITORUTIL_EXPORT void showFile(QString path);

// Save paths.
EDITORUTIL_EXPORT QString savingProjectPath(QString suggested);
// Path of a portable project package (suffix Settings::packageExtenstion() added when
// missing); a path that cannot be written is refused with "Can not save project file".
EDITORUTIL_EXPORT QString savingProjectPortablePath();
// Path of a frame snapshot (png); remembers a newly chosen folder.
EDITORUTIL_EXPORT QString savingSnapshotPath();

// Recent lists, newest first as the caller orders them.
EDITORUTIL_EXPORT QStringList recentProjects();
EDITORUTIL_EXPORT void saveRecentProjects(QStringList projects);
EDITORUTIL_EXPORT QStringList lastUsedOutputDirectories();
EDITORUTIL_EXPORT void saveLastUsedOutputDirectories(QStringList directories);
// Preview pictures of recent projects keyed by (cleaned) project path, kept in the settings
// store as PNG. Read back at most previewSide pixels a side (larger ones scaled down, aspect
// kept); a stored picture announcing more than previewStoredMaxSide a side is left out, with a
// logged error, without being decoded.
constexpr int previewSide = 512;
constexpr int previewStoredMaxSide = 4096;
EDITORUTIL_EXPORT QMap<QString, QPixmap> recentProjectPreviews();
EDITORUTIL_EXPORT void saveRecentProjectPreviews(const QMap<QString, QPixmap>& previews);

// Standard folders.
EDITORUTIL_EXPORT QString moviesLocation();
EDITORUTIL_EXPORT QString musicLocation();
EDITORUTIL_EXPORT QString picturesLocation();

// Supported extensions, lower case, without dots.
EDITORUTIL_EXPORT QStringList videoExtensions();
EDITORUTIL_EXPORT QStringList musicExtensions();
EDITORUTIL_EXPORT QStringList pictureExtensions();
// Video, audio and image extensions together.
EDITORUTIL_EXPORT QStringList supportedClipFileExtensions();
// {"mp4", "avi"} -> {"*.mp4", "*.avi"}.
EDITORUTIL_EXPORT QStringList extensionsToFileFilters(const QStringList& extensions);

// Paths.
// Native separators, no redundant separators or dots, no surrounding blanks.
EDITORUTIL_EXPORT QString cleanPath(QString path);
EDITORUTIL_EXPORT QStringList cleanPath(QStringList paths);
// The nearest existing folder at or above the path; empty (with a logged error) for an
// empty or relative path.
EDITORUTIL_EXPORT QString closestPath(QString path);
// False, with "Unsupported symbols" in `error`, when a part of the path holds one of
// : * ? " < > | other than a drive designator at the very front.
EDITORUTIL_EXPORT bool isPathValid(QString path, QString* error = nullptr);
EDITORUTIL_EXPORT bool isPathReadable(QString path);
EDITORUTIL_EXPORT bool isPathWritable(QString path);

// Folder and file operations.
// Files under `dir` with a supported media extension, in the order the file system lists
// them. Pending interface events are processed while walking (at least every 10 ms).
// A missing folder gives an empty list and a logged error.
EDITORUTIL_EXPORT QStringList parseDirectory(QString dir, bool recursive);
// Files under `dir` whose names match the wildcard filters (case-insensitive).
EDITORUTIL_EXPORT QStringList parseDirectory(QString dir, QStringList nameFilters, bool recursive);
// Copies every source to its target (folders of targets are created). The progress range
// is the total size in bytes. Stops at the first file that cannot be copied (unreadable
// source, existing target, unwritable folder) or when cancelled, and returns false: the
// target of that file is not left half-written, sources are never touched. Files copied
// before stay. `progress` may be null.
EDITORUTIL_EXPORT bool copyFiles(const QMap<QString, QString>& sourceToTarget,
                                 const boost::intrusive_ptr<Dravik::Core::IProgressController>& progress);
// Copies the tree of `from` into `to` (created when missing), skipping entries whose names
// match a wildcard of `exclude`. An existing target file is replaced when `overwrite`,
// else the copy stops there and returns false. A link to a folder is copied as a link to the
// same folder. Copying a folder into itself is refused.
EDITORUTIL_EXPORT bool copyRecursively(const QString& from, const QString& to, const QStringList& exclude,
                                       bool overwrite);
// Removes a folder tree: renamed aside first so that its name is free at once, then
// deleted; on failure it is renamed back and false returned. A missing folder returns true
// (with a logged error); an empty, relative or root path is refused.
EDITORUTIL_EXPORT bool removeDirectory(const QString& path);
// Asks the user where a moved media file is now; empty when cancelled, for DVD files and
// for files that are not media.
EDITORUTIL_EXPORT QString findMissingFile(QString path);
// Lets the user re-locate many lost files at once; `found` maps every missing path to its
// replacement, or to itself when none was found. Always true.
EDITORUTIL_EXPORT bool findMissingFiles(QStringList missing, QMap<QString, QString>& found);
// The entries of `paths` that are project files / project packages / files with one of the
// given suffixes (case-insensitive), in order.
EDITORUTIL_EXPORT QStringList extractProjectFiles(QStringList paths);
EDITORUTIL_EXPORT QStringList extractPackageFiles(QStringList paths);
EDITORUTIL_EXPORT QStringList extractFiles(const QStringList& paths, const QSet<QString>& extensions);

} // namespace Filesystem
