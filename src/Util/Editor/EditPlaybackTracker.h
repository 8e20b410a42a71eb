#pragma once

#include <Util/Editor/AbstractEditor.h>
#include <Util/Interfaces/DQtUtil.h>
#include <Util/Interfaces/EditorModel.h>

#include <QObject>

#include <functional>

// Follows the player's state while a clip is edited: turns its changes into signals, seeks
// the player, and ends the exclusive use of the player (client->breakAll()) as soon as
// playback starts or the playhead leaves the edited clip. A position exactly at the clip's
// start or end counts as inside. With setStopAtClipEdge(true), playback that runs across the
// edited clip's end stops on that edge.
class EDITORUTIL_EXPORT EditPlaybackTracker : public QObject,
                                              public Playback::View,
                                              public PubSub::Publisher<Playback::FrameSeekRequest>
{
    Q_OBJECT

public:
    // `clip` gives the edited clip (it may give null; an empty function throws
    // std::bad_function_call when a position check runs). A position check the session's
    // worker puts off runs at the next load() of `editor`.
    EditPlaybackTracker(ExclusiveClient* client, AbstractEditor* editor, const Editor::Object* editorObject,
                        std::function<const Timeline::Clip*()> clip, QObject* parent);
    ~EditPlaybackTracker() override;

    ExclusiveClient* client() const;

    // Follows `playback` instead of the current playback object (null: none).
    void setPlayback(const Playback::Object* playback);
    const Playback::Object* playback() const;

    // The player's position, or 0 without a playback object or state.
    Types::Time currentPosition() const;
    bool playing() const;
    // Asks the player to show `position` (a change of the playback object marked as a seek);
    // nothing without a playback object or state.
    void seekTo(Types::Time position);

    // While on, playback running forward across the edited clip's end (a position before the
    // end, then one at or past it, not a seek) is stopped on the edge: one change of the
    // playback object puts it there, stopped, marked as a seek. Off at construction.
    void setStopAtClipEdge(bool on);
    bool stopsAtClipEdge() const;

signals:
    void playbackAvailable();
    void playbackPositionChanged();
    void playbackStateChanged();
    void editPositionChanged();

protected:
    void playbackChanged(const Playback::Object* object, const Playback::Object* previous,
                         const Playback::Object* current) override;
    void playbackStarted(const Playback::Object* object) override;
    void playbackStopped(const Playback::Object* object) override;
    void positionChanged(const Playback::Object* object) override;
    void recordRemoved(const Playback::Object* object) override;

private:
    void positionCheck();
    void stopAtEdge(const Playback::State& before, const Playback::State& after);
    const Playback::State* state() const;

    const Editor::Object* m_editorObject;
    ExclusiveClient* m_client;
    bool m_checkPending = false;
    bool m_stopAtEdge = false;
    std::function<const Timeline::Clip*()> m_clip;
    const Playback::Object* m_playback = nullptr;
};
