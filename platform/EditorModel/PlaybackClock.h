#pragma once

#include <EditorModel/Host.h>
#include <EditorModel/Playback.h>

#include <QElapsedTimer>
#include <QTimer>

namespace Model {

// The player's clock: while the host's player plays, moves its position forward by the real
// time passed, one step per tick, and stops it at the end of the loaded timeline. Whoever
// stops the player (a change of the playback object) stops the clock with it.
//
//   Model::PlaybackClock clock(host);
//   host.setPlaybackCode(Playback::State::Playing); // the position now runs
class PlaybackClock : private Playback::View
{
public:
    explicit PlaybackClock(Host& host, int intervalMs = 40);
    ~PlaybackClock() override;

    // True while the player plays and the clock moves it.
    bool running() const { return m_timer.isActive(); }
    // One step: a playing player moves `elapsed` forward, and stops on the timeline's end when
    // it gets there. Nothing while the player does not play.
    void advance(Types::Time elapsed);

private:
    void playbackChanged(const Playback::Object* object, const Playback::Object* previous,
                         const Playback::Object* current) override;
    void tick();

    Host& m_host;
    QTimer m_timer;
    QElapsedTimer m_elapsed;
};

} // namespace Model
