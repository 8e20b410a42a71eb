#include "TimelineEdits.h"

#include <Util/Editor/ClipPlacementCommand.h>

#include <QCoreApplication>
#include <QUndoStack>

#include <glog/logging.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace TimelineEdits {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("TimelineEdits", text); }

bool onTimeline(const Timeline::Object* timeline, const Timeline::Clip* clip, const char* operation)
{
    if (timeline && timeline->contains(clip))
        return true;
    LOG(ERROR) << "TimelineEdits::" << operation << ": the clip is not on the timeline";
    return false;
}

std::vector<const Timeline::Clip*> withTied(const Timeline::Object* timeline, const Timeline::Clip* clip)
{
    std::vector<const Timeline::Clip*> clips{clip};
    for (const Timeline::Clip* slave : timeline->findSlaves(clip))
        clips.push_back(slave);
    return clips;
}

// Pushes what the edit changed, given where its clips stood before.
void record(QUndoStack* undo, const char* text, const Timeline::Object* timeline,
            ClipPlacementCommand::Placements before)
{
    if (undo)
        undo->push(new ClipPlacementCommand(tr(text), timeline, std::move(before)));
}

// The halves of a timing cut at `at`, each showing at every point the media the whole showed.
std::pair<Timeline::ClipTiming, Timeline::ClipTiming> cut(const Timeline::ClipTiming& whole, Types::Time at)
{
    Timeline::ClipTiming first = whole;
    Timeline::ClipTiming second = whole;
    first.length = at - whole.position;
    second.position = at;
    second.length = whole.end() - at;
    // The later part of the media starts where the earlier one ends; reversed, the span plays
    // from its end, so the first half shows the later part.
    Timeline::ClipTiming& later = whole.reversed ? first : second;
    const Types::Time earlierLength = whole.reversed ? second.length : first.length;
    later.offset = whole.offset + Types::Time(std::llround(double(earlierLength) * whole.speed));
    return {first, second};
}

} // namespace

bool moveClip(const Timeline::Object* timeline, const Timeline::Clip* clip, const Timeline::Track* track,
              Types::Time position, QUndoStack* undo)
{
    if (!onTimeline(timeline, clip, "moveClip"))
        return false;
    Timeline::ClipTiming timing = timeline->clipTiming(clip);
    const Types::Time delta = std::max<Types::Time>(0, position) - timing.position;
    if (delta == 0 && (!track || track == timing.track))
        return true;
    const std::vector<const Timeline::Clip*> clips = withTied(timeline, clip);
    ClipPlacementCommand::Placements before = ClipPlacementCommand::placementsOf(timeline, clips);
    Model::View<Timeline::Object> view;
    auto edit = view.edit(timeline);
    timing.position += delta;
    if (track)
        timing.track = track;
    edit->moveClip(clip, timing);
    for (size_t i = 1; i < clips.size(); ++i) {
        Timeline::ClipTiming tied = timeline->clipTiming(clips[i]);
        tied.position = std::max<Types::Time>(0, tied.position + delta);
        edit->moveClip(clips[i], tied);
    }
    if (!edit.commit())
        return false;
    record(undo, "Move clip", timeline, std::move(before));
    return true;
}

bool removeClip(const Timeline::Object* timeline, const Timeline::Clip* clip, QUndoStack* undo)
{
    if (!onTimeline(timeline, clip, "removeClip"))
        return false;
    const std::vector<const Timeline::Clip*> clips = withTied(timeline, clip);
    ClipPlacementCommand::Placements before = ClipPlacementCommand::placementsOf(timeline, clips);
    Model::View<Timeline::Object> view;
    auto edit = view.edit(timeline);
    for (const Timeline::Clip* c : clips)
        edit->removeClip(c);
    if (!edit.commit())
        return false;
    record(undo, "Delete clip", timeline, std::move(before));
    return true;
}

const Timeline::Clip* splitClip(const Timeline::Object* timeline, const Timeline::Clip* clip, Types::Time at,
                                QUndoStack* undo)
{
    if (!onTimeline(timeline, clip, "splitClip"))
        return nullptr;
    const Timeline::ClipTiming whole = timeline->clipTiming(clip);
    if (at <= whole.start() || at >= whole.end()) {
        LOG(ERROR) << "TimelineEdits::splitClip: " << at << " is not inside the clip (" << whole.start() << " to "
                   << whole.end() << ")";
        return nullptr;
    }
    const Timeline::Clip* sound = timeline->findNativeAudio(clip);
    const bool cutSound = sound && timeline->clipTiming(sound).start() < at && timeline->clipTiming(sound).end() > at;
    const Timeline::Clip* rest = Model::requestAdd(std::make_unique<Timeline::Clip>(*clip));
    const Timeline::Clip* restSound = cutSound ? Model::requestAdd(std::make_unique<Timeline::Clip>(*sound)) : nullptr;
    if (!rest || (cutSound && !restSound))
        return nullptr;
    std::vector<const Timeline::Clip*> touched = withTied(timeline, clip);
    ClipPlacementCommand::Placements before = ClipPlacementCommand::placementsOf(timeline, touched);
    for (const Timeline::Clip* added : {rest, restSound})
        if (added)
            before.push_back({added, std::nullopt, std::nullopt});

    Model::View<Timeline::Object> view;
    auto edit = view.edit(timeline);
    const auto [first, second] = cut(whole, at);
    edit->moveClip(clip, first).addClip(rest, second);
    if (const Timeline::Link* link = timeline->linkOf(clip))
        edit->addLink(link->master, rest, link->offset + (at - whole.position));
    for (size_t i = 1; i < touched.size(); ++i) {
        const Timeline::Clip* tied = touched[i];
        const Timeline::ClipTiming timing = timeline->clipTiming(tied);
        if (tied == sound && cutSound) {
            const auto [soundFirst, soundSecond] = cut(timing, at);
            edit->moveClip(sound, soundFirst).addClip(restSound, soundSecond);
            edit->addLink(rest, restSound, soundSecond.position - second.position);
        } else if (timing.position >= at) {
            edit->addLink(rest, tied, timing.position - second.position);
        }
    }
    if (!edit.commit())
        return nullptr;
    record(undo, "Split clip", timeline, std::move(before));
    return rest;
}

bool trimClip(const Timeline::Object* timeline, const Timeline::Clip* clip, Edge edge, Types::Time to, QUndoStack* undo)
{
    if (!onTimeline(timeline, clip, "trimClip"))
        return false;
    const Timeline::ClipTiming was = timeline->clipTiming(clip);
    const bool start = edge == Edge::Start;
    // The span [a, b] of its media the clip shows: forward the start edge holds a, reversed b.
    const double a = double(was.offset);
    const double b = a + double(was.length) * was.speed;
    const Media::File* file = clip->file();
    const bool bounded = (clip->type() == Timeline::Clip::Video || clip->type() == Timeline::Clip::Audio) && file
                         && file->duration() > 0;
    const double end = bounded ? double(file->duration()) : std::numeric_limits<double>::infinity();
    // How far the edge may move (later is positive).
    const double low = start ? std::max(-double(was.position), was.reversed ? (b - end) / was.speed : -a / was.speed)
                             : double(minimumClipLength - was.length);
    const double high =
        start ? double(was.length - minimumClipLength) : (was.reversed ? a / was.speed : (end - b) / was.speed);
    const double wanted = double(to - (start ? was.start() : was.end()));
    const Types::Time by = Types::Time(std::max(low, std::min(high, wanted)));
    if (by == 0)
        return true;

    const auto trimmed = [&](Timeline::ClipTiming t) {
        const Types::Time media = Types::Time(std::llround(double(by) * t.speed));
        if (start) {
            t.position += by;
            t.length -= by;
            t.offset += t.reversed ? 0 : media;
        } else {
            t.length += by;
            t.offset -= t.reversed ? media : 0;
        }
        return t;
    };
    const std::vector<const Timeline::Clip*> clips = withTied(timeline, clip);
    const Timeline::Clip* sound = timeline->findNativeAudio(clip);
    ClipPlacementCommand::Placements before = ClipPlacementCommand::placementsOf(timeline, clips);
    Model::View<Timeline::Object> view;
    auto edit = view.edit(timeline);
    edit->moveClip(clip, trimmed(was));
    for (size_t i = 1; i < clips.size(); ++i) {
        if (clips[i] == sound)
            edit->moveClip(sound, trimmed(timeline->clipTiming(sound)));
        else if (start)
            edit->addLink(clip, clips[i], timeline->linkOf(clips[i])->offset - by);
    }
    if (!edit.commit())
        return false;
    record(undo, "Trim clip", timeline, std::move(before));
    return true;
}

} // namespace TimelineEdits
