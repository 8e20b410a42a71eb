#pragma once

#include <EditorModel/Timeline.h>

#include <memory>
#include <vector>

namespace Serialize {

// The records a Cloner made: the copy of the timeline it was asked for (the root), and the
// clips and nested timelines the copy refers to. The storage owns them until they are taken
// over: the root by whoever keeps the copy (takeRoot), the rest by the model
// (releaseToModel), so that a copy merged into another timeline stays valid.
class ObjectStorage
{
public:
    ObjectStorage();
    ~ObjectStorage();
    ObjectStorage(const ObjectStorage&) = delete;
    ObjectStorage& operator=(const ObjectStorage&) = delete;

    Timeline::Object* root() const noexcept { return m_root.get(); }
    std::unique_ptr<Timeline::Object> takeRoot() { return std::move(m_root); }

    const std::vector<std::unique_ptr<Timeline::Clip>>& clips() const noexcept { return m_clips; }
    const std::vector<std::unique_ptr<Timeline::Object>>& timelines() const noexcept { return m_timelines; }

    // Hands every clip and nested timeline to the owner that serves add requests of its type (the
    // model host), nested timelines first. Returns the records taken over; those nobody took are
    // freed (and logged). The root is not part of it.
    struct Released
    {
        std::vector<const Timeline::Clip*> clips;
        std::vector<const Timeline::Object*> timelines;
    };
    Released releaseToModel();

    // Frees everything still held.
    void clear();

private:
    friend class Cloner;

    std::unique_ptr<Timeline::Object> m_root;
    std::vector<std::unique_ptr<Timeline::Clip>> m_clips;
    std::vector<std::unique_ptr<Timeline::Object>> m_timelines;
};

} // namespace Serialize
