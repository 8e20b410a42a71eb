#pragma once

#include <EditorModel/Media.h>
#include <EditorModel/Timeline.h>

#include <QStringList>

#include <vector>

// Adding media files to a timeline: each path becomes a media file record of the model (which
// starts opening it) and a clip placed on the timeline, all clips in one edit of the timeline.
// The timeline hears Timeline::FileAddingNotification for each file before any of them can
// finish, and Timeline::AllFilesProcessedNotification once every file of the call has opened or
// failed.
namespace FileAdder {

// Where the files come from.
enum Asrc : int
{
    Unknown = 0,
    DragAndDrop = 1,
    ImportPanel = 2,
    CommandLine = 3,
    Recording = 4,
    Clipboard = 5,
};

// The timeline the files go to, and where on it.
class Context
{
public:
    // `position` -1 appends after the last clip of the track; any other position inserts there
    // and moves the clips at or after it on that track right. A null `track` lets each file's
    // kind choose: the primary video track, or an audio track for sound files.
    explicit Context(const Timeline::Object* timeline, Types::Time position = -1,
                     const Timeline::Track* track = nullptr)
        : timeline(timeline), position(position), track(track)
    {}

    const Timeline::Object* timeline;
    Types::Time position;
    const Timeline::Track* track;
};

struct AddedResult
{
    // The new file records and their clips, in the order of the paths.
    std::vector<const Media::File*> files;
    std::vector<const Timeline::Clip*> clips;
    // Paths that were not added (empty ones).
    QStringList refused;

    bool empty() const noexcept { return files.empty(); }
};

// Length a clip gets until its file has opened (and keeps for still images); once the file
// opens, the clip takes the file's own length and what follows it on its track moves with it.
constexpr Types::Time DefaultClipLength = 5 * Types::TimeUnitsPerSecond;

// The clip kind a path suggests before the file is opened: Image for suffixes Qt reads as
// pictures, Audio for sound files, Video otherwise.
Timeline::Clip::Type guessClipType(const QString& path);

// Needs a live Model::Host; without one, or without a timeline, nothing is added and an error
// is logged.
AddedResult addMediaFiles(const QStringList& paths, Asrc origin, const Context& context);

} // namespace FileAdder
