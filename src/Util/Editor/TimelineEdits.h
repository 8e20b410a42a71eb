#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

class QUndoStack;

// The edits a person makes to clips on a timeline. Each is one edit of the timeline (one
// announcement) and, given an undo stack, one command of it (a ClipPlacementCommand named
// "Move clip", "Delete clip", "Split clip", "Trim clip") whose undo puts every clip it touched back. The clips
// tied to a clip (its native sound, a title on it) go along. An edit that cannot be made (a clip
// not on the timeline, a cut outside the clip) changes nothing, logs why and returns false or
// null.
//
//   TimelineEdits::moveClip(timeline, clip, track, 3 * Types::TimeUnitsPerSecond, &undoStack);
//   const Timeline::Clip* rest = TimelineEdits::splitClip(timeline, clip, playhead, &undoStack);
namespace TimelineEdits {

// Puts `clip` on `track` at `position`; the clips tied to it keep their place against it (none
// before the timeline's start).
EDITORUTIL_EXPORT bool moveClip(const Timeline::Object* timeline, const Timeline::Clip* clip,
                                const Timeline::Track* track, Types::Time position, QUndoStack* undo = nullptr);

// Takes `clip` off the timeline with the clips tied to it.
EDITORUTIL_EXPORT bool removeClip(const Timeline::Object* timeline, const Timeline::Clip* clip,
                                  QUndoStack* undo = nullptr);

// Cuts `clip` at `at` (a time strictly inside it) in two: the clip keeps what comes before, a
// new clip (a copy of it, with its effects and motion) what comes after, showing at every point
// the same frame as before (forward, reversed, at any speed). Its native sound is cut at the
// same point and its second half tied to the new clip; the clips tied to it that begin at or
// after the cut go with the new clip. The new clip, or null.
EDITORUTIL_EXPORT const Timeline::Clip* splitClip(const Timeline::Object* timeline, const Timeline::Clip* clip,
                                                  Types::Time at, QUndoStack* undo = nullptr);

// The shortest a trimmed clip becomes: a tenth of a second.
constexpr Types::Time minimumClipLength = Types::TimeUnitsPerSecond / 10;

enum class Edge
{
    Start,
    End
};

// Moves the start or the end of `clip` to `to`, the other end staying where it is: the clip shows
// less of its media, or more as far as its media goes (a video or sound clip no further than its
// file's length, no clip before the start of its media or of the timeline), and never becomes
// shorter than minimumClipLength; a reversed clip gives or takes from the other end of its media.
// Its native sound is trimmed alike; the other clips tied to it keep their place.
EDITORUTIL_EXPORT bool trimClip(const Timeline::Object* timeline, const Timeline::Clip* clip, Edge edge, Types::Time to,
                                QUndoStack* undo = nullptr);

} // namespace TimelineEdits
