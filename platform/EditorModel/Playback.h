#pragma once

#include <EditorModel/ModelView.h>
#include <EditorModel/Timeline.h>

#include <PubSub/MessageBase.h>

#include <optional>

namespace Playback {

// What the player is doing.
struct State
{
    enum Code
    {
        Stopped = 0,
        Playing = 1,
        Paused = 2
    };

    Types::Time position = 0;
    int code = Stopped;
    // The availability flag: set while the player cannot show frames yet (it is preparing).
    bool unavailable = false;
    // Set on a change that asks the player to jump to `position`.
    bool seek = false;
};

// The player's state on the bus; without a state no timeline is loaded.
class Object : public virtual PubSub::Object
{
public:
    const State* state() const noexcept { return m_state ? &*m_state : nullptr; }
    State* state() noexcept { return m_state ? &*m_state : nullptr; }
    Object& setState(std::optional<State> state)
    {
        m_state = std::move(state);
        return *this;
    }

    const Timeline::Object* timeline = nullptr;

private:
    std::optional<State> m_state;
};

// Asks the player to show the frame at `position`.
class FrameSeekRequest : public PubSub::Details::MessageBase
{
public:
    FrameSeekRequest(const Object* playback, Types::Time position)
        : MessageBase(playback), playback(playback), position(position)
    {}
    const Object* playback;
    Types::Time position;
};

// The model's view of the player's state. playbackChanged reports every change; its base version
// tells, in this order, whether playback started, stopped, and whether the position moved.
class View : public Model::View<Object>
{
protected:
    virtual void playbackChanged(const Object* object, const Object* previous, const Object* current);
    virtual void playbackStarted(const Object* /*object*/) {}
    virtual void playbackStopped(const Object* /*object*/) {}
    virtual void positionChanged(const Object* /*object*/) {}

private:
    void recordChanged(const Object* object, const Object* previous) override
    {
        playbackChanged(object, previous, object);
    }
};

} // namespace Playback
