#pragma once

#include <Util/EditorUtilExport.h>

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <vector>

namespace Timeline {
class Object;
class Clip;
} // namespace Timeline
namespace Media {
class File;
}

// Project files ("dscproj"): what a timeline and its media bin hold, written as a small
// versioned document, the list of recent projects and autosave copies. Writing goes to a
// temporary file renamed over the target at the end, so a failed save leaves the previous
// file as it was.
namespace Project {

// The version this library writes; files of a later version are refused.
constexpr int FormatVersion = 1;

// An effect of a clip (a colour filter, a transition, ...): its collection, id and parameters.
struct EffectEntry
{
    QString collection;
    QString id;
    QMap<QString, double> parameters;
};
EDITORUTIL_EXPORT bool operator==(const EffectEntry& a, const EffectEntry& b);

// A clip of the timeline: its media (file path and stream), its track (index into the
// document's tracks), its timing and, for a slave clip, the index of its master.
struct ClipEntry
{
    QString file;
    int stream = -1;
    int type = 0; // Timeline::Clip::Type
    QString name;
    int track = 0;
    qint64 position = 0;
    qint64 length = 0;
    qint64 offset = 0;
    double speed = 1.0;
    bool reversed = false;
    int master = -1; // index of the master clip, -1 for none
    qint64 linkOffset = 0;
    // What the clip shows besides its media: its effects in the order they apply, and its
    // animation, title or callout and quiz, each as the document its drags carry (empty: none).
    QList<EffectEntry> effects;
    QJsonObject animation;
    QJsonObject overlay;
    QJsonObject quiz;
};
EDITORUTIL_EXPORT bool operator==(const ClipEntry& a, const ClipEntry& b);

struct Document
{
    QString name;
    QStringList media;     // the bin's files in bin order, cleaned paths
    QList<int> trackKinds; // Timeline::Track::Kind of each track, in the timeline's order
    QList<ClipEntry> clips;
};
EDITORUTIL_EXPORT bool operator==(const Document& a, const Document& b);

enum class Status
{
    Ok,
    Unreadable,   // missing or not readable
    Corrupted,    // not a project document, damaged or cut short
    NewerVersion, // written by a later version
    WriteFailed   // the disk refused the file (full, read-only, gone)
};

struct Result
{
    Status status = Status::Ok;
    Document document; // what was read (load only)
    QString message;   // the user text of a failure, empty on success
    bool ok() const { return status == Status::Ok; }
};

// The document of `timeline` and the bin's `media`, in the timeline's order.
EDITORUTIL_EXPORT Document capture(const Timeline::Object* timeline, const std::vector<const Media::File*>& media,
                                   const QString& name);
// The clip record of an entry, showing `file`: its type, stream, name, effects, animation,
// title and quiz. Its place on the timeline is the entry's timing and link.
EDITORUTIL_EXPORT Timeline::Clip restoreClip(const ClipEntry& entry, const Media::File* file);
// Project files are small; a file larger than this is no project of ours and is refused as
// damaged without being read whole.
constexpr qint64 MaxFileBytes = 64 * 1024 * 1024;

// The document of the project file at `path`. Only a regular file is read: a folder, a pipe
// or a device is unreadable.
EDITORUTIL_EXPORT Result load(const QString& path);
// The document of a project file's `bytes`, as load reads the file at `path` (named in the
// messages). A document that repeats a key inside an object is damaged.
EDITORUTIL_EXPORT Result read(const QByteArray& bytes, const QString& path);
EDITORUTIL_EXPORT Result save(const QString& path, const Document& document);
// As load / save, with a failure shown through Dialog::showWarning.
EDITORUTIL_EXPORT Result loadOrWarn(const QString& path);
EDITORUTIL_EXPORT Result saveOrWarn(const QString& path, const Document& document);

// Media paths of the document (bin and clips) that do not exist, each once, in order.
EDITORUTIL_EXPORT QStringList missingFiles(const Document& document);
// Replaces every path of the document found in `found` (old -> new); the number of paths
// changed.
EDITORUTIL_EXPORT int relink(Document& document, const QMap<QString, QString>& found);

// Recent projects, newest first; a project that cannot be reached is kept and marked.
struct RecentEntry
{
    QString path;
    bool reachable = true;
};
EDITORUTIL_EXPORT QList<RecentEntry> recentProjects();
// Puts `path` first in the recent list (at most `limit` entries are kept).
EDITORUTIL_EXPORT void rememberProject(const QString& path, int limit = 10);

// Writes an autosave copy of the document into the "Autosave" folder of the projects folder
// (Settings::projectPath), named after the project and the time; the newest `keep` copies
// stay. The path written, or empty when it could not be written.
EDITORUTIL_EXPORT QString autosave(const Document& document, int keep = 5);
EDITORUTIL_EXPORT QString autosaveFolder();

} // namespace Project
