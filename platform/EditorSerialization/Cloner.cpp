#include <EditorSerialization/Cloner.h>

#include <EditorModel/Messages.h>

#include <glog/logging.h>

namespace Serialize {

namespace {
// Nested timelines deeper than this are taken for a cycle (a timeline shown inside itself).
constexpr int maxNestingDepth = 32;
} // namespace

ObjectStorage::ObjectStorage() = default;

ObjectStorage::~ObjectStorage() { clear(); }

void ObjectStorage::clear()
{
    // The root and nested copies name clips; they go first.
    m_root.reset();
    m_timelines.clear();
    m_clips.clear();
}

ObjectStorage::Released ObjectStorage::releaseToModel()
{
    Released released;
    auto timelines = std::move(m_timelines);
    auto clips = std::move(m_clips);
    for (auto& timeline : timelines) {
        if (const Timeline::Object* record = Model::requestAdd(std::move(timeline)))
            released.timelines.push_back(record);
    }
    for (auto& clip : clips) {
        if (const Timeline::Clip* record = Model::requestAdd(std::move(clip)))
            released.clips.push_back(record);
    }
    return released;
}

Cloner::Cloner(ObjectStorage& storage) : m_storage(storage) {}

Timeline::Object* Cloner::clone(const Timeline::Object& source)
{
    m_storage.m_root = copyTimeline(source);
    m_timelines[&source] = m_storage.m_root.get();
    return m_storage.m_root.get();
}

Timeline::Clip* Cloner::clone(const Timeline::Clip& source) { return const_cast<Timeline::Clip*>(clipCopy(&source)); }

const Timeline::Clip* Cloner::copyOf(const Timeline::Clip* source) const
{
    const auto it = m_clips.find(source);
    return it == m_clips.end() ? nullptr : it->second;
}

const Timeline::Object* Cloner::copyOf(const Timeline::Object* source) const
{
    const auto it = m_timelines.find(source);
    return it == m_timelines.end() ? nullptr : it->second;
}

std::unique_ptr<Timeline::Object> Cloner::copyTimeline(const Timeline::Object& source)
{
    // The copy starts as a value copy (tracks, name, timings, links) and has its clips swapped
    // for copies, links re-made between the copies.
    auto copy = std::make_unique<Timeline::Object>(source);
    const std::vector<const Timeline::Clip*> clips = source.clips();
    for (const Timeline::Clip* clip : clips)
        copy->removeClip(clip);

    ++m_depth;
    for (const Timeline::Clip* clip : clips)
        copy->addClip(clipCopy(clip), source.clipTiming(clip));
    --m_depth;

    for (const Timeline::Clip* clip : clips) {
        if (const Timeline::Link* link = source.linkOf(clip))
            copy->addLink(copyOf(link->master), copyOf(clip), link->offset);
    }
    return copy;
}

const Timeline::Clip* Cloner::clipCopy(const Timeline::Clip* source)
{
    if (const Timeline::Clip* known = copyOf(source))
        return known;
    auto copy = std::make_unique<Timeline::Clip>(*source);
    if (const Timeline::Object* nested = source->nestedTimeline())
        copy->setNestedTimeline(nestedCopy(nested));
    const Timeline::Clip* result = copy.get();
    m_storage.m_clips.push_back(std::move(copy));
    m_clips[source] = result;
    return result;
}

const Timeline::Object* Cloner::nestedCopy(const Timeline::Object* source)
{
    if (const Timeline::Object* known = copyOf(source))
        return known;
    if (m_depth > maxNestingDepth) {
        LOG(ERROR) << "Serialize::Cloner: nested timelines deeper than " << maxNestingDepth
                   << " (a timeline shown inside itself?); the deepest clip keeps showing the original";
        return source;
    }
    std::unique_ptr<Timeline::Object> copy = copyTimeline(*source);
    const Timeline::Object* result = copy.get();
    m_storage.m_timelines.push_back(std::move(copy));
    m_timelines[source] = result;
    return result;
}

} // namespace Serialize
