#include "PlaybackClock.h"

#include <algorithm>

namespace Model {

PlaybackClock::PlaybackClock(Host& host, int intervalMs) : m_host(host)
{
    m_timer.setInterval(intervalMs);
    QObject::connect(&m_timer, &QTimer::timeout, [this] { tick(); });
    observe(host.playback());
}

PlaybackClock::~PlaybackClock() = default;

void PlaybackClock::playbackChanged(const Playback::Object* object, const Playback::Object* previous,
                                    const Playback::Object* current)
{
    const Playback::State* state = current->state();
    const bool playing = state && state->code == Playback::State::Playing;
    if (playing && !m_timer.isActive()) {
        m_elapsed.start();
        m_timer.start();
    } else if (!playing) {
        m_timer.stop();
    }
    Playback::View::playbackChanged(object, previous, current);
}

void PlaybackClock::tick() { advance(m_elapsed.restart() * Types::TimeUnitsPerMillisecond); }

void PlaybackClock::advance(Types::Time elapsed)
{
    const Playback::Object* playback = m_host.playback();
    const Playback::State* state = playback->state();
    if (!state || state->code != Playback::State::Playing)
        return;
    const Types::Time end = playback->timeline ? playback->timeline->duration() : 0;
    const Types::Time next = std::min(state->position + std::max<Types::Time>(elapsed, 0), end);
    if (next != state->position)
        m_host.setPlaybackPosition(next);
    // The move may have stopped the player already (on a clip's edge).
    state = playback->state();
    if (next >= end && state && state->code == Playback::State::Playing)
        m_host.setPlaybackCode(Playback::State::Stopped);
}

} // namespace Model
