#pragma once

#include <EditorModel/Messages.h>
#include <EditorModel/Timeline.h>

#include <PubSub/MessageBase.h>

#include <memory>
#include <set>
#include <utility>
#include <vector>

// Requests addressed to a timeline (by drag and drop, by a shadow change) and the notifications a
// timeline publishes while files are added to it. Every request is addressed to the timeline's
// bus object; `timeline` is the same record, typed.
namespace Timeline {

class Request : public PubSub::Details::MessageBase
{
public:
    explicit Request(const Object* timeline) : MessageBase(timeline), timeline(timeline) {}
    const Object* timeline;
};

// Add media files at `position` (-1 appends) on `track` (null: the track their kind goes to).
class FileAddRequest : public Request
{
public:
    FileAddRequest(const Object* timeline, std::vector<Types::String> paths, Types::Time position = -1,
                   const Track* track = nullptr)
        : Request(timeline), paths(std::move(paths)), position(position), track(track)
    {}
    std::vector<Types::String> paths;
    Types::Time position;
    const Track* track;
    int origin = 0; // where the files come from (a drop, the import panel...), by the adder's codes
};

// Add a timeline made from two files (an intro: the meaning of each string is the handler's).
class TimelineFileAddRequest : public Request
{
public:
    TimelineFileAddRequest(const Object* timeline, Types::String first, Types::String second)
        : Request(timeline), first(std::move(first)), second(std::move(second))
    {}
    Types::String first;
    Types::String second;
};

// Add a title or callout; the handler takes the preset over (preset.take()).
class OverlayAddRequest : public Request
{
public:
    OverlayAddRequest(const Object* timeline, std::unique_ptr<Overlay::Preset> preset, const Track* track,
                      const Clip* target, Types::Time position = -1)
        : Request(timeline), preset(std::move(preset)), track(track), target(target), position(position)
    {}
    Model::Handover<Overlay::Preset> preset;
    const Track* track;
    const Clip* target; // the clip the overlay goes over, or null
    Types::Time position;
};

// Add a quiz at a position pair (timeline position, offset in the target); (-1, 0) appends.
class QuizAddRequest : public Request
{
public:
    QuizAddRequest(const Object* timeline, std::unique_ptr<Quiz::Preset> preset,
                   std::pair<Types::Time, Types::Time> position = {-1, 0})
        : Request(timeline), preset(std::move(preset)), position(position)
    {}
    Model::Handover<Quiz::Preset> preset;
    std::pair<Types::Time, Types::Time> position;
};

// Split clips at a position (all clips under it when `clips` is empty).
class SplitRequest : public Request
{
public:
    SplitRequest(const Object* timeline, Types::Time position, std::set<const Clip*> clips = {})
        : Request(timeline), position(position), clips(std::move(clips))
    {}
    Types::Time position;
    std::set<const Clip*> clips;
};

// Put a transition at the start of `clip` (or between it and the clip before).
class TransitionAddRequest : public Request
{
public:
    TransitionAddRequest(const Object* timeline, Transition::Object transition, const Clip* clip)
        : Request(timeline), transition(std::move(transition)), clip(clip)
    {}
    Transition::Object transition;
    const Clip* clip;
};

// Add a clip the handler takes over, at a timing.
class ClipAddRequest : public Request
{
public:
    ClipAddRequest(const Object* timeline, std::unique_ptr<Clip> clip, const ClipTiming& timing)
        : Request(timeline), clip(std::move(clip)), timing(timing)
    {}
    Model::Handover<Clip> clip;
    ClipTiming timing;
};

// Insert a still frame of `clip` taken at `position` (timeline time) for `duration`.
class FreezeFrameRequest : public Request
{
public:
    FreezeFrameRequest(const Object* timeline, const Clip* clip, Types::Time position, Types::Time duration)
        : Request(timeline), clip(clip), position(position), duration(duration)
    {}
    const Clip* clip;
    Types::Time position;
    Types::Time duration;
};

// Give `clip` an animation preset, starting at `position` within the clip.
class AnimationAddRequest : public Request
{
public:
    AnimationAddRequest(const Object* timeline, const Clip* clip, Animation::TransformationItem item,
                        Types::Time position = 0)
        : Request(timeline), clip(clip), item(std::move(item)), position(position)
    {}
    const Clip* clip;
    Animation::TransformationItem item;
    Types::Time position;
};

// Give `clip` a pan-and-zoom preset over its whole length.
class PanAndZoomAddRequest : public Request
{
public:
    PanAndZoomAddRequest(const Object* timeline, const Clip* clip, Animation::TransformationItem item)
        : Request(timeline), clip(clip), item(std::move(item))
    {}
    const Clip* clip;
    Animation::TransformationItem item;
};

// A file is being added to the timeline (published on the timeline before the file is opened).
class FileAddingNotification : public PubSub::Details::MessageBase
{
public:
    FileAddingNotification(const Object* timeline, const Media::File* file)
        : MessageBase(timeline), timeline(timeline), file(file)
    {}
    const Object* timeline;
    const Media::File* file;
};

// Every file added to the timeline in a batch has finished opening, opened or failed.
class AllFilesProcessedNotification : public PubSub::Details::MessageBase
{
public:
    explicit AllFilesProcessedNotification(const Object* timeline) : MessageBase(timeline), timeline(timeline) {}
    const Object* timeline;
};

} // namespace Timeline
