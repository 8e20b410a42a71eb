#include "TimelineRequestService.h"

#include "FileAdder.h"
#include "SignatureOpener.h"

#include <glog/logging.h>

#include <algorithm>

namespace Model {

namespace {

Types::Time trackEnd(const Timeline::Object& timeline, const Timeline::Track* track)
{
    Types::Time end = 0;
    for (const Timeline::Clip* clip : timeline.clipsOnTrack(track))
        end = std::max(end, timeline.clipTiming(clip).end());
    return end;
}

bool checkClip(const Timeline::Object* timeline, const Timeline::Clip* clip, const char* operation)
{
    if (!timeline) {
        LOG(ERROR) << "Model::TimelineRequestService::" << operation << ": the request names no timeline";
        return false;
    }
    if (!clip || !timeline->contains(clip)) {
        LOG(ERROR) << "Model::TimelineRequestService::" << operation << ": the clip is not on the timeline";
        return false;
    }
    return true;
}

} // namespace

TimelineRequestService::TimelineRequestService(Host& host) : m_host(host) {}

TimelineRequestService::~TimelineRequestService() = default;

Types::String TimelineRequestService::introName() { return Translator::translate("Intro"); }

void TimelineRequestService::shiftTrack(Timeline::Object& timeline, const Timeline::Track* track, Types::Time position,
                                        Types::Time by, const Timeline::Clip* except)
{
    for (const Timeline::Clip* clip : timeline.clipsOnTrack(track)) {
        if (clip == except)
            continue;
        Timeline::ClipTiming timing = timeline.clipTiming(clip);
        if (timing.position >= position) {
            timing.position += by;
            timeline.moveClip(clip, timing);
        }
    }
}

const Timeline::Clip* TimelineRequestService::cut(Timeline::Object& timeline, const Timeline::Clip* clip,
                                                  Types::Time position)
{
    const Timeline::ClipTiming timing = timeline.clipTiming(clip);
    if (!(timing.start() < position && position < timing.end()))
        return nullptr;
    const Types::Time firstLength = position - timing.start();
    const Types::Time secondLength = timing.end() - position;
    auto span = [&timing](Types::Time length) { return Types::Time(double(length) * timing.speed + 0.5); };

    Timeline::ClipTiming first = timing;
    first.length = firstLength;
    Timeline::ClipTiming second = timing;
    second.position = position;
    second.length = secondLength;
    if (timing.reversed)
        first.offset = timing.offset + span(secondLength);
    else
        second.offset = timing.offset + span(firstLength);

    const Timeline::Clip* copy = m_host.addClip(*clip);
    timeline.moveClip(clip, first);
    timeline.addClip(copy, second);
    return copy;
}

void TimelineRequestService::fileAdd(const Timeline::FileAddRequest& r)
{
    QStringList paths;
    for (const Types::String& path : r.paths)
        paths.append(path.toQString());
    FileAdder::addMediaFiles(paths, FileAdder::Asrc(r.origin), FileAdder::Context(r.timeline, r.position, r.track));
}

void TimelineRequestService::timelineFileAdd(const Timeline::TimelineFileAddRequest& r)
{
    if (!r.timeline) {
        LOG(ERROR) << "Model::TimelineRequestService::timelineFileAdd: the request names no timeline";
        return;
    }
    const Timeline::Object* nested = m_host.addTimeline(introName());
    auto preset = std::make_shared<Overlay::Preset>();
    preset->setTag("Intro");
    preset->name = introName();
    preset->appendItem(Overlay::Item().setText(r.first.str()));
    preset->appendItem(Overlay::Item().setText(r.second.str()));
    Timeline::Clip title(Timeline::Clip::Title);
    title.setOverlay(preset).setName(r.first);
    const Timeline::Clip* titleClip = m_host.addClip(std::move(title));
    {
        Edit<Timeline::Object> edit(&m_timelines, nested);
        edit->addClip(titleClip,
                      Timeline::ClipTiming(nested->primaryTrack(), 0, Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION));
    }

    Timeline::Clip intro(Timeline::Clip::Nested);
    intro.setNestedTimeline(nested).setName(introName());
    const Timeline::Clip* introClip = m_host.addClip(std::move(intro));
    Edit<Timeline::Object> edit(&m_timelines, r.timeline);
    const Types::Time length = nested->duration();
    shiftTrack(*edit, edit->primaryTrack(), 0, length);
    edit->addClip(introClip, Timeline::ClipTiming(edit->primaryTrack(), 0, length));
}

void TimelineRequestService::overlayAdd(const Timeline::OverlayAddRequest& r)
{
    std::unique_ptr<Overlay::Preset> preset = r.preset.take();
    if (!preset)
        return; // another subscriber took it
    if (!r.timeline) {
        LOG(ERROR) << "Model::TimelineRequestService::overlayAdd: the request names no timeline";
        return;
    }
    const Timeline::Track* track = r.track ? r.track : r.timeline->titleTrack();
    const bool overTarget = r.target && r.timeline->contains(r.target);
    if (r.target && !overTarget)
        LOG(ERROR) << "Model::TimelineRequestService::overlayAdd: the target clip is not on the timeline";
    const Types::Time targetStart = overTarget ? r.timeline->clipTiming(r.target).start() : 0;
    const Types::Time position = r.position >= 0 ? r.position : overTarget ? targetStart : trackEnd(*r.timeline, track);

    Timeline::Clip clip(Timeline::Clip::Title);
    clip.setName(preset->name.empty() ? Types::String(preset->tag()) : preset->name);
    clip.setOverlay(std::shared_ptr<const Overlay::Preset>(std::move(preset)));
    const Timeline::Clip* record = m_host.addClip(std::move(clip));
    Edit<Timeline::Object> edit(&m_timelines, r.timeline);
    edit->addClip(record, Timeline::ClipTiming(track, position, Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION));
    if (overTarget)
        edit->addLink(r.target, record, position - targetStart);
}

void TimelineRequestService::quizAdd(const Timeline::QuizAddRequest& r)
{
    std::unique_ptr<Quiz::Preset> preset = r.preset.take();
    if (!preset)
        return;
    if (!r.timeline) {
        LOG(ERROR) << "Model::TimelineRequestService::quizAdd: the request names no timeline";
        return;
    }
    const Types::Time position = (r.position.first < 0 ? r.timeline->duration() : r.position.first)
                                 + std::max<Types::Time>(0, r.position.second);
    Timeline::Clip clip(Timeline::Clip::Quiz);
    clip.setName(preset->name);
    clip.setQuiz(std::shared_ptr<const Quiz::Preset>(std::move(preset)));
    const Timeline::Clip* record = m_host.addClip(std::move(clip));
    Edit<Timeline::Object> edit(&m_timelines, r.timeline);
    edit->addClip(record,
                  Timeline::ClipTiming(edit->titleTrack(), position, Timeline::Clip::DEFAULT_QUIZ_CLIP_DURATION));
}

void TimelineRequestService::split(const Timeline::SplitRequest& r)
{
    if (!r.timeline) {
        LOG(ERROR) << "Model::TimelineRequestService::split: the request names no timeline";
        return;
    }
    std::vector<const Timeline::Clip*> clips;
    if (r.clips.empty()) {
        clips = r.timeline->clips();
    } else {
        for (const Timeline::Clip* clip : r.clips) {
            if (checkClip(r.timeline, clip, "split"))
                clips.push_back(clip);
        }
    }
    Edit<Timeline::Object> edit(&m_timelines, r.timeline);
    for (const Timeline::Clip* clip : clips)
        cut(*edit, clip, r.position);
}

void TimelineRequestService::transitionAdd(const Timeline::TransitionAddRequest& r)
{
    if (!checkClip(r.timeline, r.clip, "transitionAdd"))
        return;
    Effect::Object effect(EditorCollection::CollectionID::TRANSITIONS, r.transition.id);
    effect.setParameter("duration", double(r.transition.duration) / double(Types::TimeUnitsPerSecond));
    Edit<Timeline::Clip> edit(&m_clips, r.clip);
    // A clip has one transition at a time.
    for (const Effect::Object* old : edit->effects())
        if (old->collectionId() == EditorCollection::CollectionID::TRANSITIONS)
            edit->removeEffect(old->id());
    edit->replaceEffect(&effect);
}

void TimelineRequestService::clipAdd(const Timeline::ClipAddRequest& r)
{
    std::unique_ptr<Timeline::Clip> clip = r.clip.take();
    if (!clip)
        return;
    if (!r.timeline) {
        LOG(ERROR) << "Model::TimelineRequestService::clipAdd: the request names no timeline";
        return;
    }
    Timeline::ClipTiming timing = r.timing;
    if (!timing.track)
        timing.track = r.timeline->primaryTrack();
    const Timeline::Clip* record = m_host.add(std::move(clip));
    Edit<Timeline::Object> edit(&m_timelines, r.timeline);
    edit->addClip(record, timing);
}

void TimelineRequestService::freezeFrame(const Timeline::FreezeFrameRequest& r)
{
    if (!checkClip(r.timeline, r.clip, "freezeFrame"))
        return;
    const Timeline::ClipTiming timing = r.timeline->clipTiming(r.clip);
    if (r.duration <= 0 || r.position < timing.start() || r.position > timing.end()) {
        LOG(ERROR) << "Model::TimelineRequestService::freezeFrame: the position must lie in the clip and the "
                      "duration be above 0";
        return;
    }
    const Types::Time elapsed = r.position - timing.start();
    const Types::Time mediaAt = timing.reversed
                                    ? timing.offset + Types::Time(double(timing.length - elapsed) * timing.speed + 0.5)
                                    : timing.offset + Types::Time(double(elapsed) * timing.speed + 0.5);

    Timeline::Clip still(Timeline::Clip::Image, r.clip->file(), r.clip->streamIndex());
    still.setName(r.clip->name());
    const Timeline::Clip* record = m_host.addClip(std::move(still));
    Edit<Timeline::Object> edit(&m_timelines, r.timeline);
    cut(*edit, r.clip, r.position);
    // A clip cut in two keeps its first half before the still; one frozen at its very start moves
    // right whole.
    shiftTrack(*edit, timing.track, r.position, r.duration, r.position > timing.start() ? r.clip : nullptr);
    edit->addClip(record, Timeline::ClipTiming(timing.track, r.position, r.duration, mediaAt));
}

void TimelineRequestService::animationAdd(const Timeline::AnimationAddRequest& r)
{
    if (!checkClip(r.timeline, r.clip, "animationAdd"))
        return;
    Edit<Timeline::Clip> edit(&m_clips, r.clip);
    edit->setAnimation(std::make_shared<const Animation::TransformationItem>(r.item));
}

void TimelineRequestService::panAndZoomAdd(const Timeline::PanAndZoomAddRequest& r)
{
    if (!checkClip(r.timeline, r.clip, "panAndZoomAdd"))
        return;
    Edit<Timeline::Clip> edit(&m_clips, r.clip);
    edit->setAnimation(std::make_shared<const Animation::TransformationItem>(r.item));
}

void installDefaultServices(Host& host)
{
    if (!host.opener())
        host.setOpener(std::make_shared<Media::SignatureOpener>());
    if (!host.timelineRequestHandler())
        host.setTimelineRequestHandler(std::make_shared<TimelineRequestService>(host));
}

} // namespace Model
