#include "ClipAdjustmentsProvider.h"

#include <Util/Editor/ClipContentCommand.h>
#include <Util/Editor/ClipPlacementCommand.h>

#include <QPointer>
#include <QUndoStack>

#include <glog/logging.h>

#include <cmath>
#include <functional>

const std::string ClipAdjustmentsProvider::normalizationEffect = "normalization";
const std::string ClipAdjustmentsProvider::stabilizationEffect = "stabilization";

// Follows the clip, its timeline and its media file; edits go through it to their owner.
class ClipAdjustmentsProvider::Watch : public Timeline::Details::ObjectViewBase,
                                       public Timeline::Details::ClipViewBase,
                                       public Media::View<Media::File>
{
public:
    std::function<void()> changed;
    std::function<void()> gone;

    void follow(const Timeline::Object* timeline, const Timeline::Clip* clip)
    {
        for (const Timeline::Object* t : ObjectViewBase::records())
            ObjectViewBase::forget(t);
        for (const Timeline::Clip* c : ClipViewBase::records())
            ClipViewBase::forget(c);
        for (const Media::File* f : Media::View<Media::File>::records())
            Media::View<Media::File>::forget(f);
        if (timeline)
            ObjectViewBase::observe(timeline);
        if (clip)
            ClipViewBase::observe(clip);
        if (clip && clip->file())
            Media::View<Media::File>::observe(clip->file());
    }

private:
    void timelineChanged(const Timeline::Object*, const Timeline::Object*) override { changed(); }
    void timelineRemoved(const Timeline::Object*) override { gone(); }
    void clipChanged(const Timeline::Clip*, const Timeline::Clip*) override { changed(); }
    void clipRemoved(const Timeline::Clip*) override { gone(); }
    void fileChanged(const Media::File*, const Media::File*) override { changed(); }
    void fileRemoved(const Media::File*) override { changed(); }
};

namespace {

const Effect::Object* colourFilter(const Timeline::Clip* clip)
{
    for (const Effect::Object* effect : clip->effects()) {
        if (effect->collectionId() == EditorCollection::CollectionID::FILTERS_COLOR)
            return effect;
    }
    return nullptr;
}

bool hasSound(const Timeline::Object* timeline, const Timeline::Clip* clip)
{
    const Media::File* file = clip->file();
    return clip->type() == Timeline::Clip::Audio || (file && !file->audios().empty())
           || timeline->findNativeAudio(clip) != nullptr;
}

} // namespace

ClipAdjustmentsProvider::ClipAdjustmentsProvider(QObject* parent) : QObject(parent), m_watch(std::make_unique<Watch>())
{
    qRegisterMetaType<Adjustment::Kind>();
    m_watch->changed = [this] {
        // A clip taken off its timeline is no longer shown.
        if (m_clip && !m_timeline->contains(m_clip))
            setClip(nullptr, nullptr);
        else
            Q_EMIT adjustmentsChanged();
    };
    m_watch->gone = [this] { setClip(nullptr, nullptr); };
}

ClipAdjustmentsProvider::~ClipAdjustmentsProvider() = default;

void ClipAdjustmentsProvider::setClip(const Timeline::Object* timeline, const Timeline::Clip* clip)
{
    if (clip && (!timeline || !timeline->contains(clip))) {
        LOG(ERROR) << "ClipAdjustmentsProvider::setClip: the clip is not on the timeline";
        timeline = nullptr;
        clip = nullptr;
    }
    if (timeline == m_timeline && clip == m_clip)
        return;
    m_timeline = timeline;
    m_clip = clip;
    m_watch->follow(timeline, clip);
    Q_EMIT adjustmentsChanged();
}

const Timeline::Object* ClipAdjustmentsProvider::timeline() const { return m_timeline; }

const Timeline::Clip* ClipAdjustmentsProvider::clip() const { return m_clip; }

QList<Adjustment> ClipAdjustmentsProvider::adjustments() const
{
    QList<Adjustment> result;
    for (Adjustment::Kind kind : {Adjustment::Normalization, Adjustment::Reverse, Adjustment::Speed,
                                  Adjustment::Stabilization, Adjustment::Filter})
        result.append(adjustment(kind));
    return result;
}

Adjustment ClipAdjustmentsProvider::adjustment(Adjustment::Kind kind) const
{
    Adjustment entry;
    entry.kind = kind;
    const Timeline::ClipTiming timing = m_clip ? m_timeline->clipTiming(m_clip) : Timeline::ClipTiming();
    switch (kind) {
    case Adjustment::Normalization:
        entry.title = tr("Normalize audio");
        entry.value = m_clip && m_clip->findEffect(normalizationEffect) != nullptr;
        break;
    case Adjustment::Reverse:
        entry.title = tr("Reverse");
        entry.value = timing.reversed;
        break;
    case Adjustment::Speed:
        entry.title = tr("Speed");
        entry.value = timing.speed;
        break;
    case Adjustment::Stabilization:
        entry.title = tr("Stabilize video");
        entry.value = m_clip && m_clip->findEffect(stabilizationEffect) != nullptr;
        break;
    case Adjustment::Filter: {
        entry.title = tr("Filter");
        const Effect::Object* filter = m_clip ? colourFilter(m_clip) : nullptr;
        entry.value = filter ? QString::fromStdString(filter->id()) : QString();
        break;
    }
    }
    entry.reason = unavailableReason(kind);
    entry.available = entry.reason.isEmpty();
    return entry;
}

QString ClipAdjustmentsProvider::unavailableReason(Adjustment::Kind kind) const
{
    if (!m_clip)
        return tr("No clip is selected.");
    if (m_clip->isBroken())
        return tr("The clip's media is missing.");
    const Timeline::Clip::Type type = m_clip->type();
    const Media::File* file = m_clip->file();
    const bool opening = file && !file->isFinished();
    switch (kind) {
    case Adjustment::Normalization:
        if (hasSound(m_timeline, m_clip))
            return {};
        return opening && type == Timeline::Clip::Video ? tr("The clip's media is still opening.")
                                                        : tr("The clip has no sound.");
    case Adjustment::Reverse:
    case Adjustment::Speed:
        if (type == Timeline::Clip::Video || type == Timeline::Clip::Audio)
            return {};
        return type == Timeline::Clip::Image ? tr("A still picture does not play over time.")
                                             : tr("Only video and sound clips play at a speed or backward.");
    case Adjustment::Stabilization:
        return type == Timeline::Clip::Video ? QString() : tr("Only video clips can be stabilized.");
    case Adjustment::Filter:
        return type == Timeline::Clip::Video || type == Timeline::Clip::Image || type == Timeline::Clip::Nested
                   ? QString()
                   : tr("Only pictures and video take a colour filter.");
    }
    return {};
}

void ClipAdjustmentsProvider::setUndoStack(QUndoStack* stack) { m_undoStack = stack; }

QUndoStack* ClipAdjustmentsProvider::undoStack() const { return m_undoStack; }

bool ClipAdjustmentsProvider::checkAvailable(Adjustment::Kind kind, const char* operation)
{
    const QString reason = unavailableReason(kind);
    if (!reason.isEmpty()) {
        LOG(ERROR) << "ClipAdjustmentsProvider::" << operation << ": " << reason.toStdString();
        Q_EMIT changeRefused(kind, reason);
    }
    return reason.isEmpty();
}

bool ClipAdjustmentsProvider::editTiming(Adjustment::Kind kind,
                                         const std::function<void(Timeline::Object&, const Timeline::Clip*)>& change)
{
    std::vector<const Timeline::Clip*> clips{m_clip};
    // The clip's own sound plays backward or faster with it.
    if (const Timeline::Clip* sound = m_timeline->findNativeAudio(m_clip))
        clips.push_back(sound);
    const Timeline::Object* timeline = m_timeline;
    ClipPlacementCommand::Placements before = ClipPlacementCommand::placementsOf(timeline, clips);
    auto edit = m_watch->ObjectViewBase::edit(timeline);
    for (const Timeline::Clip* clip : clips)
        change(*edit, clip);
    if (!edit.commit())
        return false;
    if (m_undoStack)
        m_undoStack->push(new ClipPlacementCommand(adjustment(kind).title, timeline, std::move(before)));
    return true;
}

bool ClipAdjustmentsProvider::editEffects(const QString& text, const std::function<void(Timeline::Clip&)>& change)
{
    const Timeline::Clip* clip = m_clip;
    Timeline::Clip before = *clip;
    auto edit = m_watch->ClipViewBase::edit(clip);
    change(*edit);
    if (!edit.commit())
        return false;
    if (m_undoStack)
        m_undoStack->push(new ClipContentCommand(text, clip, std::move(before), *clip));
    return true;
}

bool ClipAdjustmentsProvider::removeEffect(const QString& effectId)
{
    const std::string id = effectId.toStdString();
    if (!m_clip || !m_clip->findEffect(id)) {
        LOG(ERROR) << "ClipAdjustmentsProvider::removeEffect: the clip shown has no effect \"" << id << '"';
        return false;
    }
    return editEffects(tr("Remove %1").arg(effectTitle(effectId)),
                       [&id](Timeline::Clip& clip) { clip.removeEffect(id); });
}

bool ClipAdjustmentsProvider::removeMotion()
{
    if (!m_clip || !m_clip->animation()) {
        LOG(ERROR) << "ClipAdjustmentsProvider::removeMotion: the clip shown has no motion";
        return false;
    }
    return editEffects(tr("Remove motion"), [](Timeline::Clip& clip) { clip.setAnimation(nullptr); });
}

QStringList ClipAdjustmentsProvider::contentNames(const Timeline::Clip* clip)
{
    QStringList names;
    if (!clip)
        return names;
    for (const Effect::Object* effect : clip->effects())
        names << effectTitle(QString::fromStdString(effect->id()));
    if (const Animation::TransformationItem* motion = clip->animation())
        names << (motion->name.empty() ? tr("Motion") : motion->name.toQString());
    return names;
}

QString ClipAdjustmentsProvider::effectTitle(const QString& effectId)
{
    return effectId.left(1).toUpper() + effectId.mid(1);
}

bool ClipAdjustmentsProvider::setNormalized(bool on)
{
    return checkAvailable(Adjustment::Normalization, "setNormalized")
           && setEffect(Adjustment::Normalization, EditorCollection::CollectionID::EFFECTS_AUDIO, normalizationEffect,
                        on);
}

bool ClipAdjustmentsProvider::setStabilized(bool on)
{
    return checkAvailable(Adjustment::Stabilization, "setStabilized")
           && setEffect(Adjustment::Stabilization, EditorCollection::CollectionID::EFFECTS_VIDEO, stabilizationEffect,
                        on);
}

bool ClipAdjustmentsProvider::setFilter(const QString& filterId)
{
    if (!checkAvailable(Adjustment::Filter, "setFilter"))
        return false;
    const Effect::Object* current = colourFilter(m_clip);
    const std::string id = filterId.toStdString();
    if (current ? current->id() == id : id.empty())
        return true;
    const std::string currentId = current ? current->id() : std::string();
    return editEffects(adjustment(Adjustment::Filter).title, [&](Timeline::Clip& clip) {
        if (!currentId.empty())
            clip.removeEffect(currentId);
        if (!id.empty()) {
            const Effect::Object filter(EditorCollection::CollectionID::FILTERS_COLOR, id);
            clip.replaceEffect(&filter);
        }
    });
}

bool ClipAdjustmentsProvider::setEffect(Adjustment::Kind kind, const std::string& collection, const std::string& id,
                                        bool on)
{
    if (adjustment(kind).value.toBool() == on)
        return true;
    return editEffects(adjustment(kind).title, [&](Timeline::Clip& clip) {
        if (on) {
            const Effect::Object effect(collection, id);
            clip.replaceEffect(&effect);
        } else {
            clip.removeEffect(id);
        }
    });
}

bool ClipAdjustmentsProvider::setReversed(bool on)
{
    if (!checkAvailable(Adjustment::Reverse, "setReversed"))
        return false;
    if (m_timeline->clipTiming(m_clip).reversed == on)
        return true;
    return editTiming(Adjustment::Reverse,
                      [](Timeline::Object& t, const Timeline::Clip* clip) { t.reverseClip(clip); });
}

bool ClipAdjustmentsProvider::setSpeed(double speed)
{
    if (!(speed >= minSpeed && speed <= maxSpeed)) {
        LOG(ERROR) << "ClipAdjustmentsProvider::setSpeed: the speed must lie from " << minSpeed << " to " << maxSpeed
                   << ", not " << speed;
        Q_EMIT changeRefused(Adjustment::Speed, tr("The speed must lie from %1x to %2x.").arg(minSpeed).arg(maxSpeed));
        return false;
    }
    if (!checkAvailable(Adjustment::Speed, "setSpeed"))
        return false;
    if (m_timeline->clipTiming(m_clip).speed == speed)
        return true;
    return editTiming(Adjustment::Speed,
                      [speed](Timeline::Object& t, const Timeline::Clip* clip) { t.setClipSpeed(clip, speed); });
}
