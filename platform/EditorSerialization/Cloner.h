#pragma once

#include <EditorSerialization/ObjectStorage.h>

#include <map>

namespace Serialize {

// Deep copies of timelines: every clip is copied (with its effects, name, media and presets),
// nested timelines are copied too (once each, however many clips show them), links are
// re-made between the copies with their offsets, and the copy keeps the source's tracks
// (tracks are shared records) and timings. Media files are not copied: copies show the same
// files. The copies go into the storage given to the cloner.
class Cloner
{
public:
    explicit Cloner(ObjectStorage& storage);
    Cloner(const Cloner&) = delete;
    Cloner& operator=(const Cloner&) = delete;

    // Copies `source` as the storage's root (replacing any earlier root) and returns it.
    Timeline::Object* clone(const Timeline::Object& source);
    // Copies a clip into the storage (its nested timeline copied as well); the copy.
    Timeline::Clip* clone(const Timeline::Clip& source);

    // The copy made of a clip or timeline of the source, or null.
    const Timeline::Clip* copyOf(const Timeline::Clip* source) const;
    const Timeline::Object* copyOf(const Timeline::Object* source) const;

private:
    std::unique_ptr<Timeline::Object> copyTimeline(const Timeline::Object& source);
    const Timeline::Clip* clipCopy(const Timeline::Clip* source);
    const Timeline::Object* nestedCopy(const Timeline::Object* source);

    ObjectStorage& m_storage;
    std::map<const Timeline::Clip*, const Timeline::Clip*> m_clips;
    std::map<const Timeline::Object*, const Timeline::Object*> m_timelines;
    int m_depth = 0;
};

} // namespace Serialize
