#include "TimelineShadowChange.h"

#include "DeferredCall.h"

#include <Util/Interfaces/EditorSerialization.h>

#include <glog/logging.h>

#include <algorithm>
#include <functional>

// Follows the files added to the shadow until each has opened or failed.
class TimelineShadowChange::FileWatch : public Media::View<Media::File>
{
public:
    explicit FileWatch(std::function<void()> finished) : m_finished(std::move(finished)) {}
    // False when the file is followed already.
    bool follow(const Media::File* file) { return observe(file); }

private:
    void fileOpened(const Media::File* file) override { finish(file); }
    void fileFailed(const Media::File* file) override { finish(file); }
    void finish(const Media::File* file)
    {
        forget(file);
        m_finished();
    }

    std::function<void()> m_finished;
};

TimelineShadowChange::TimelineShadowChange(const Timeline::Object* source, Timeline::Object::Scope scope,
                                           QObject* parent)
    : QObject(parent),
      m_source(source),
      m_scope(scope),
      m_deferredReadyCheck(std::make_unique<DeferredCall>(this, &TimelineShadowChange::readyCheck)),
      m_fileWatch(std::make_unique<FileWatch>([this] { Q_EMIT filesProgress(++m_filesFinished, m_filesAdded); }))
{
    std::unique_ptr<Timeline::Object> shadow;
    if (source) {
        Serialize::ObjectStorage storage;
        Serialize::Cloner cloner(storage);
        cloner.clone(*source);
        shadow = storage.takeRoot();
        const Serialize::ObjectStorage::Released released = storage.releaseToModel();
        m_clonedClips = released.clips;
        m_clonedTimelines = released.timelines;
    } else {
        LOG(ERROR) << "TimelineShadowChange: no source timeline; the shadow starts empty";
        shadow = std::make_unique<Timeline::Object>();
    }
    m_shadow = Timeline::Details::ObjectViewBase::own(std::move(shadow));
    subscribe(m_shadow);
}

TimelineShadowChange::~TimelineShadowChange()
{
    unsubscribe(m_shadow);
    // Copies of the source's clips that no other timeline took over go with the change.
    const std::set<const Timeline::Object*> timelines = Model::Registry::objectsOf<Timeline::Object>();
    for (const Timeline::Clip* clip : m_clonedClips) {
        const bool used = std::any_of(timelines.begin(), timelines.end(), [this, clip](const Timeline::Object* t) {
            return t != m_shadow && t->contains(clip);
        });
        if (!used)
            Timeline::Details::ClipViewBase::remove(clip);
    }
}

void TimelineShadowChange::addFiles(const QStringList& paths, FileAdder::Asrc origin, Types::Time position,
                                    const Timeline::Track* track)
{
    const FileAdder::AddedResult added =
        FileAdder::addMediaFiles(paths, origin, FileAdder::Context(m_shadow, position, track));
    if (added.empty()) {
        // Nothing is opening, so nothing will report back.
        m_deferredReadyCheck->trigger();
        return;
    }
    ++m_batchesPending;
}

void TimelineShadowChange::addImport(const Types::String& path)
{
    const int announcedBefore = m_filesAnnounced;
    RequestPublisher::publish(Timeline::FileAddRequest(m_shadow, {path}, -1, nullptr));
    if (m_filesAnnounced > announcedBefore) {
        ++m_batchesPending;
        return;
    }
    // No file is opening for the request, so nothing will report back.
    LOG(ERROR) << "TimelineShadowChange::addImport: no file was added for " << path;
    m_deferredReadyCheck->trigger();
}

void TimelineShadowChange::fileAdding(const Timeline::FileAddingNotification& notification)
{
    ++m_filesAnnounced;
    const Media::File* file = notification.file;
    if (!file)
        return;
    if (file->isFinished()) {
        ++m_filesAdded;
        ++m_filesFinished;
    } else if (m_fileWatch->follow(file)) {
        ++m_filesAdded;
    }
}

void TimelineShadowChange::addIntro(const Types::String& first, const Types::String& second)
{
    RequestPublisher::publish(Timeline::TimelineFileAddRequest(m_shadow, first, second));
    m_deferredReadyCheck->trigger();
}

void TimelineShadowChange::addOverlay(std::unique_ptr<Overlay::Preset> preset)
{
    if (!preset) {
        LOG(ERROR) << "TimelineShadowChange::addOverlay: null preset";
        m_deferredReadyCheck->trigger();
        return;
    }
    const Timeline::Track* track = m_shadow->titleTrack() ? m_shadow->titleTrack() : m_shadow->primaryTrack();
    // Over the first clip of the primary track; with none, the subscriber places it after the
    // last overlay of the track.
    const std::vector<const Timeline::Clip*> primary = m_shadow->clipsOnTrack(m_shadow->primaryTrack());
    const Timeline::Clip* target = primary.empty() ? nullptr : primary.front();
    RequestPublisher::publish(Timeline::OverlayAddRequest(m_shadow, std::move(preset), track, target, -1));
    m_deferredReadyCheck->trigger();
}

void TimelineShadowChange::addQuiz(std::unique_ptr<Quiz::Preset> preset)
{
    if (!preset) {
        LOG(ERROR) << "TimelineShadowChange::addQuiz: null preset";
        m_deferredReadyCheck->trigger();
        return;
    }
    RequestPublisher::publish(Timeline::QuizAddRequest(m_shadow, std::move(preset), {-1, 0}));
    m_deferredReadyCheck->trigger();
}

const Timeline::Object* TimelineShadowChange::shadowTimeline() const { return m_shadow; }

const Timeline::Object* TimelineShadowChange::sourceTimeline() const { return m_source; }

Timeline::Object::Scope TimelineShadowChange::scope() const { return m_scope; }

bool TimelineShadowChange::filesPending() const { return m_batchesPending > 0; }

int TimelineShadowChange::filesAdded() const { return m_filesAdded; }

int TimelineShadowChange::filesFinished() const { return m_filesFinished; }

void TimelineShadowChange::allFilesProcessed(const Timeline::AllFilesProcessedNotification&)
{
    // Each file addition is one batch of the model, announced once.
    m_batchesPending = std::max(0, m_batchesPending - 1);
    m_deferredReadyCheck->trigger();
}

void TimelineShadowChange::readyCheck()
{
    if (!filesPending())
        Q_EMIT shadowReady();
}

// --- replaceNestedTimeline ------------------------------------------------------------------------

namespace {

Types::String markedName(const Types::String& name)
{
    const QString text = name.toQString();
    if (text.startsWith(QLatin1Char('*')))
        return name;
    return Types::String(QStringLiteral("* ") + text);
}

} // namespace

int replaceNestedTimeline(const Timeline::Object* container, const Timeline::Object* nested,
                          const Timeline::Object* replacement)
{
    if (!container || !nested || !replacement) {
        LOG(ERROR) << "replaceNestedTimeline: container, nested and replacement timelines are all needed";
        return 0;
    }
    std::vector<const Timeline::Clip*> targets;
    for (const Timeline::Clip* clip : container->clips()) {
        if (clip->type() == Timeline::Clip::Nested && clip->nestedTimeline() == nested)
            targets.push_back(clip);
    }
    if (targets.empty())
        return 0;

    // The copy of the replacement, with its clips and nested timelines, becomes part of the model.
    Serialize::ObjectStorage storage;
    Serialize::Cloner cloner(storage);
    cloner.clone(*replacement);
    const Types::Time duration = storage.root()->duration();
    const Types::Time length = duration < 1 ? Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION : duration;
    storage.releaseToModel();
    const Timeline::Object* copy = Model::requestAdd(storage.takeRoot());
    if (!copy) {
        LOG(ERROR) << "replaceNestedTimeline: the model took no copy of the replacement";
        return 0;
    }

    Model::View<Timeline::Object> timelines;
    Model::Edit<Timeline::Object> edit(&timelines, container);
    Timeline::Object& target = *edit;
    int replaced = 0;
    for (const Timeline::Clip* old : targets) {
        auto fresh = std::make_unique<Timeline::Clip>(*old);
        fresh->setNestedTimeline(copy).setName(markedName(old->name()));
        const Timeline::Clip* clip = Model::requestAdd(std::move(fresh));
        if (!clip)
            continue;

        // What ties the old clip to others, read before it leaves the timeline.
        Timeline::ClipTiming timing = target.clipTiming(old);
        timing.length = std::max<Types::Time>(1, Types::Time(double(length) / timing.speed + 0.5));
        const Timeline::Link* ownLink = target.linkOf(old);
        const Timeline::Clip* master = ownLink ? ownLink->master : nullptr;
        const Types::Time masterOffset = ownLink ? ownLink->offset : 0;
        const Timeline::Clip* nativeAudio = target.findNativeAudio(old);
        std::vector<std::pair<const Timeline::Clip*, Types::Time>> slaves;
        for (const Timeline::Clip* slave : target.findSlaves(old)) {
            if (slave != nativeAudio && target.isSlave(slave))
                slaves.emplace_back(slave, target.linkOf(slave)->offset);
        }
        std::optional<std::pair<Timeline::ClipTiming, Types::Time>> audio;
        if (nativeAudio)
            audio.emplace(target.clipTiming(nativeAudio), target.linkOf(nativeAudio)->offset);

        target.removeClip(old).addClip(clip, timing);
        if (nativeAudio) {
            target.removeClip(nativeAudio);
            auto sound = std::make_unique<Timeline::Clip>(*nativeAudio);
            if (sound->nestedTimeline() == nested)
                sound->setNestedTimeline(copy);
            if (const Timeline::Clip* soundClip = Model::requestAdd(std::move(sound))) {
                Timeline::ClipTiming soundTiming = audio->first;
                soundTiming.track = target.nativeAudioTrack();
                soundTiming.length = timing.length;
                target.addClip(soundClip, soundTiming).addLink(clip, soundClip, audio->second);
            }
        }
        for (const auto& slave : slaves)
            target.addLink(clip, slave.first, slave.second);
        if (master && target.contains(master))
            target.addLink(master, clip, masterOffset);
        ++replaced;
    }
    if (!edit.commit()) {
        LOG(ERROR) << "replaceNestedTimeline: the container's owner did not apply the replacement";
        return 0;
    }
    return replaced;
}
