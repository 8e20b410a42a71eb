#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <vector>

class QMimeData;

// Packing file lists and drag origins into QMimeData and reading them back; deciding
// whether dragged data holds files the editor accepts.
namespace MimeUtils {

// "application/x-dragAndDropAsrc": the drag origin written by setMimeDragAsrc.
EDITORUTIL_EXPORT const QString& dragAsrcFormat();
// "application/x-filesUrls": declared beside the origin format for drags that carry files.
EDITORUTIL_EXPORT const QString& filesUrlsFormat();
// Suffixes of files that a drop turns into overlays: {"svg"}.
EDITORUTIL_EXPORT const QSet<QString>& overlaySuffixes();
// A dropped SVG file larger than this is skipped rather than read whole.
constexpr qint64 maxDroppedSvgBytes = 16 * 1024 * 1024;

EDITORUTIL_EXPORT bool hasUrls(const QMimeData* data);
// Each path as QUrl::fromLocalFile, order kept.
EDITORUTIL_EXPORT QList<QUrl> urls(const QList<QString>& paths);
EDITORUTIL_EXPORT void packFiles(QMimeData* data, const QList<QString>& paths);

EDITORUTIL_EXPORT void setMimeDragAsrc(QMimeData* data, const QString& asrc);
// The drag origin, or an empty string when the data carries none.
EDITORUTIL_EXPORT QString mimeDragAsrc(const QMimeData* data);

// True at the first URL whose lower-cased suffix is in `suffixes` (lower case, no dot), or
// which is a directory when `acceptDirectories` is set.
EDITORUTIL_EXPORT bool isUrlListContainsSupportedFile(const QList<QUrl>& urls, const QSet<QString>& suffixes,
                                                      bool acceptDirectories);
EDITORUTIL_EXPORT bool isMimeDataContainsSupportedFile(const QMimeData* data, const QSet<QString>& suffixes,
                                                       bool acceptDirectories);

// Absolute paths of the dropped files whose lower-cased suffix is in `suffixes`, in URL
// order. Dropped directories are not descended into.
EDITORUTIL_EXPORT QStringList extractFiles(const QMimeData* data, const QSet<QString>& suffixes);

// Drops holding a package file (suffix Settings::packageExtenstion()) or a project file
// (a suffix of Settings::projectFileOpenFilter()); directories do not count.
EDITORUTIL_EXPORT bool isMimeDataContainsPackageFiles(const QMimeData* data);
EDITORUTIL_EXPORT bool isMimeDataContainsProjectFiles(const QMimeData* data);
// The dropped files with a suffix of Settings::supportedProjectFileExtensions().
EDITORUTIL_EXPORT QStringList extractProjectFiles(const QMimeData* data);

// Whether the data carries serialized overlay presets (the format Overlay::Preset::mimeType).
EDITORUTIL_EXPORT bool isOverlayPresetCompatible(const QMimeData* data);
// The overlay presets a drop holds: those serialized under Overlay::Preset::mimeType (none when
// that data is malformed), else one preset tagged "DroppedSVG" per dropped SVG file, whose single
// item holds the file's content. Unreadable SVG files and those over maxDroppedSvgBytes are
// skipped with a log line.
EDITORUTIL_EXPORT std::vector<std::unique_ptr<Overlay::Preset>> makeOverlayPresetList(const QMimeData* data);
// Puts presets into mime data under Overlay::Preset::mimeType (the counterpart of the above).
EDITORUTIL_EXPORT void packOverlayPresets(QMimeData* data, const std::vector<const Overlay::Preset*>& presets);

} // namespace MimeUtils
