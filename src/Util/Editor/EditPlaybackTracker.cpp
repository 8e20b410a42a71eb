#include "EditPlaybackTracker.h"

#include <glog/logging.h>

#include <algorithm>
#include <optional>

EditPlaybackTracker::EditPlaybackTracker(ExclusiveClient* client, AbstractEditor* editor,
                                         const Editor::Object* editorObject,
                                         std::function<const Timeline::Clip*()> clip, QObject* parent)
    : QObject(parent), m_editorObject(editorObject), m_client(client), m_clip(std::move(clip))
{
    if (!editor) {
        LOG(ERROR) << "EditPlaybackTracker: no editor; a put-off position check will never run";
        return;
    }
    connect(editor, &AbstractEditor::load, this, [this] {
        if (m_checkPending)
            positionCheck();
        m_checkPending = false;
    });
}

EditPlaybackTracker::~EditPlaybackTracker() = default;

ExclusiveClient* EditPlaybackTracker::client() const { return m_client; }

void EditPlaybackTracker::setPlayback(const Playback::Object* playback)
{
    if (playback == m_playback)
        return;
    if (m_playback)
        forget(m_playback);
    m_playback = playback;
    if (m_playback)
        observe(m_playback);
}

const Playback::Object* EditPlaybackTracker::playback() const { return m_playback; }

const Playback::State* EditPlaybackTracker::state() const { return m_playback ? m_playback->state() : nullptr; }

Types::Time EditPlaybackTracker::currentPosition() const
{
    const Playback::State* s = state();
    return s ? s->position : 0;
}

bool EditPlaybackTracker::playing() const
{
    const Playback::State* s = state();
    return s && s->code == Playback::State::Playing;
}

void EditPlaybackTracker::seekTo(Types::Time position)
{
    if (!state())
        return;
    auto change = edit(m_playback);
    change->state()->position = position;
    change->state()->seek = true;
}

void EditPlaybackTracker::setStopAtClipEdge(bool on) { m_stopAtEdge = on; }

bool EditPlaybackTracker::stopsAtClipEdge() const { return m_stopAtEdge; }

void EditPlaybackTracker::playbackChanged(const Playback::Object* object, const Playback::Object* previous,
                                          const Playback::Object* current)
{
    const Playback::State* before = previous->state();
    const Playback::State* after = current->state();
    if (before && before->unavailable && after && !after->unavailable)
        emit playbackAvailable();
    // Kept by value: a stop on the edge changes the record `current` points to.
    const std::optional<Playback::State> was = before ? std::optional<Playback::State>(*before) : std::nullopt;
    const std::optional<Playback::State> is = after ? std::optional<Playback::State>(*after) : std::nullopt;
    Playback::View::playbackChanged(object, previous, current);
    if (m_stopAtEdge && object == m_playback && was && is)
        stopAtEdge(*was, *is);
}

void EditPlaybackTracker::stopAtEdge(const Playback::State& before, const Playback::State& after)
{
    if (after.code != Playback::State::Playing || after.seek || !state())
        return;
    const Timeline::Clip* clip = m_clip();
    if (!clip)
        return;
    const Timeline::Object* timeline =
        m_editorObject && m_editorObject->timeline ? m_editorObject->timeline : Timeline::ownerOf(clip);
    if (!timeline || !timeline->contains(clip))
        return;
    const Types::Time end = timeline->clipTiming(clip).end();
    if (!(before.position < end && after.position >= end))
        return;
    auto change = edit(m_playback);
    change->state()->position = end;
    change->state()->code = Playback::State::Stopped;
    change->state()->seek = true;
}

void EditPlaybackTracker::playbackStarted(const Playback::Object*)
{
    emit playbackStateChanged();
    if (m_client && m_client->isInUse())
        m_client->breakAll();
}

void EditPlaybackTracker::playbackStopped(const Playback::Object*) { emit playbackStateChanged(); }

void EditPlaybackTracker::positionChanged(const Playback::Object* object)
{
    const Playback::State* s = object->state();
    if (!s)
        return;
    const bool stopped = s->code == Playback::State::Stopped;
    if (m_editorObject && m_editorObject->canEdit() && !stopped)
        emit playbackPositionChanged();
    if (!m_client || !m_client->isInUse() || stopped)
        return;
    const Editor::Worker* worker = m_editorObject ? m_editorObject->worker : nullptr;
    m_checkPending = worker && worker->deferPositionCheck(m_editorObject);
    if (m_checkPending)
        return;
    positionCheck();
}

void EditPlaybackTracker::recordRemoved(const Playback::Object* object)
{
    if (object == m_playback)
        m_playback = nullptr;
}

void EditPlaybackTracker::positionCheck()
{
    const Playback::State* s = state();
    if (!s || !m_client || !m_client->isInUse())
        return;
    if (const Timeline::Clip* clip = m_clip()) {
        const Timeline::Object* timeline =
            m_editorObject && m_editorObject->timeline ? m_editorObject->timeline : Timeline::ownerOf(clip);
        const Timeline::ClipTiming* timing = timeline ? &timeline->clipTiming(clip) : nullptr;
        if (timing && timing->isValid()) {
            const Types::Time p = s->position;
            if (std::max(timing->start(), std::min(timing->end(), p)) != p) {
                m_client->breakAll();
                return;
            }
        }
    }
    emit editPositionChanged();
}
