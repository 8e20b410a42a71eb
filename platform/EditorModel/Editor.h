#pragma once

#include <EditorModel/ModelView.h>
#include <EditorModel/Timeline.h>

#include <optional>
#include <set>

namespace Editor {

class Worker;

// The editing state of the model: which object of which timeline is being edited, and the worker
// (the panel) that takes part in the session.
class Object : public virtual PubSub::Object
{
public:
    enum Mode
    {
        None = 0,
        ClipSettings = 1,
        OverlaySettings = 2,
        TransitionSettings = 3,
        AnimationSettings = 4,
        SceneEditing = 5
    };

    // True while a session edits a clip.
    bool canEdit() const noexcept { return active && clip != nullptr; }

    bool active = false;
    Mode mode = None;
    const Timeline::Object* timeline = nullptr;
    const Timeline::Clip* clip = nullptr;
    // Timeline position the user edits the clip at, when recorded.
    std::optional<Types::Time> editPosition;
    // The worker taking part in the session (the model calls it), or null.
    Worker* worker = nullptr;
};

// What the model asks of the panel that takes part in an edit session.
class Worker
{
public:
    virtual ~Worker();
    // Whether a playback position check is to wait for the next load of the session.
    virtual bool deferPositionCheck(const Object* /*editor*/) const { return false; }
    virtual void onLoad() = 0;
    virtual void onApply() = 0;
    virtual void onReset() = 0;
    virtual bool canAccept(const std::set<const Timeline::Clip*>& clips) const = 0;
    virtual void filterClips(std::set<const Timeline::Clip*>& clips) const = 0;
};

// The model's view of the editing state, and the worker of its sessions. With request handling
// on, it follows every editor object there is and will be, and attaches itself to each as its
// worker (so the model reaches it); it detaches itself when destroyed.
class WorkerView : public Model::View<Object>, public Worker
{
public:
    explicit WorkerView(bool handleRequests = true);
    ~WorkerView() override;

    // The first editor object the view follows, or null.
    const Object* editorObject() const;

protected:
    // The editing state changed: `current` is the record (new value), `previous` its old value.
    virtual void editorChanged(const Object* /*current*/, const Object* /*previous*/) {}

private:
    void recordAdded(const Object* editor) override;
    void recordChanged(const Object* editor, const Object* previous) override;
    void attachTo(const Object* editor, Worker* worker);

    bool m_handleRequests;
};

// The edit position recorded for `clip` by the session editing it now, if any.
std::optional<Types::Time> editPosition(const Timeline::Clip* clip);

} // namespace Editor
