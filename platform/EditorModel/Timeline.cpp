#include <EditorModel/Registry.h>
#include <EditorModel/Timeline.h>

#include <glog/logging.h>

#include <algorithm>

namespace Timeline {

std::vector<const Effect::Object*> Clip::effects() const
{
    std::vector<const Effect::Object*> result;
    for (const Effect::Object& effect : m_effects)
        result.push_back(&effect);
    return result;
}

const Effect::Object* Clip::findEffect(const std::string& id) const
{
    const auto it =
        std::find_if(m_effects.begin(), m_effects.end(), [&id](const Effect::Object& e) { return e.id() == id; });
    return it == m_effects.end() ? nullptr : &*it;
}

Clip& Clip::replaceEffect(const Effect::Object* effect)
{
    if (!effect) {
        LOG(ERROR) << "Timeline::Clip::replaceEffect: null effect";
        return *this;
    }
    const auto it = std::find_if(m_effects.begin(), m_effects.end(),
                                 [effect](const Effect::Object& e) { return e.id() == effect->id(); });
    if (it == m_effects.end())
        m_effects.push_back(*effect);
    else
        *it = *effect;
    return *this;
}

Clip& Clip::removeEffect(const std::string& id)
{
    // A copy: `id` may belong to one of the effects removed.
    m_effects.remove_if([wanted = id](const Effect::Object& e) { return e.id() == wanted; });
    return *this;
}

Types::Time ClipTiming::mediaTimeAt(Types::Time at) const noexcept
{
    const Types::Time elapsed = std::clamp<Types::Time>(at - position, 0, std::max<Types::Time>(0, length));
    const Types::Time played = reversed ? length - elapsed : elapsed;
    return offset + Types::Time(double(played) * speed + 0.5);
}

Object::Object()
{
    for (Track::Kind kind : {Track::Video, Track::Title, Track::ExtraVideo, Track::NativeAudio})
        m_tracks.push_back(std::make_shared<const Track>(kind));
}

std::vector<const Track*> Object::tracks() const
{
    std::vector<const Track*> result;
    for (const auto& track : m_tracks)
        result.push_back(track.get());
    return result;
}

const Track* Object::addTrack(Track::Kind kind, const Types::String& name)
{
    m_tracks.push_back(std::make_shared<const Track>(kind, name));
    return m_tracks.back().get();
}

std::vector<const Clip*> Object::clips() const
{
    std::vector<const Clip*> result;
    result.reserve(m_clips.size());
    for (const Entry& e : m_clips)
        result.push_back(e.clip);
    return result;
}

std::vector<const Clip*> Object::clipsOnTrack(const Track* track) const
{
    std::vector<const Entry*> entries;
    for (const Entry& e : m_clips) {
        if (e.timing.track == track)
            entries.push_back(&e);
    }
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry* a, const Entry* b) { return ClipTimingOrder()(a->timing, b->timing); });
    std::vector<const Clip*> result;
    for (const Entry* e : entries)
        result.push_back(e->clip);
    return result;
}

std::set<const Clip*> Object::clipsByType(int type) const
{
    std::set<const Clip*> result;
    for (const Entry& e : m_clips) {
        if (e.clip->type() == type)
            result.insert(e.clip);
    }
    return result;
}

bool Object::contains(const Clip* clip) const { return find(clip) != nullptr; }

const ClipTiming& Object::clipTiming(const Clip* clip) const
{
    static const ClipTiming none;
    const Entry* e = find(clip);
    return e ? e->timing : none;
}

Types::Time Object::duration() const
{
    Types::Time end = 0;
    for (const Entry& e : m_clips)
        end = std::max(end, e.timing.end());
    return end;
}

bool Object::isSlave(const Clip* clip) const { return m_links.count(clip) != 0; }

const Clip* Object::masterOf(const Clip* clip) const
{
    const Link* link = linkOf(clip);
    return link ? link->master : nullptr;
}

const Link* Object::linkOf(const Clip* clip) const
{
    const auto it = m_links.find(clip);
    return it == m_links.end() ? nullptr : &it->second;
}

std::set<const Clip*> Object::findSlaves(const Clip* master) const
{
    std::set<const Clip*> result;
    for (const auto& link : m_links) {
        if (link.second.master == master)
            result.insert(link.first);
    }
    return result;
}

const Clip* Object::findNativeAudio(const Clip* clip) const
{
    for (const auto& link : m_links) {
        if (link.second.master != clip)
            continue;
        const Entry* e = find(link.first);
        if (e && e->timing.track == nativeAudioTrack() && e->clip->type() == Clip::Audio)
            return e->clip;
    }
    return nullptr;
}

Object& Object::addClip(const Clip* clip, const ClipTiming& timing)
{
    if (!clip) {
        LOG(ERROR) << "Timeline::Object::addClip: null clip";
    } else if (contains(clip)) {
        LOG(ERROR) << "Timeline::Object::addClip: the clip is already on the timeline";
    } else if (!timing.track || timing.length < 0) {
        LOG(ERROR) << "Timeline::Object::addClip: a timing needs a track and a length of 0 or more";
    } else {
        m_clips.push_back(Entry{clip, timing});
    }
    return *this;
}

Object& Object::removeClip(const Clip* clip)
{
    const auto it = std::find_if(m_clips.begin(), m_clips.end(), [clip](const Entry& e) { return e.clip == clip; });
    if (it == m_clips.end()) {
        LOG(ERROR) << "Timeline::Object::removeClip: the clip is not on the timeline";
        return *this;
    }
    m_clips.erase(it);
    m_links.erase(clip);
    for (auto link = m_links.begin(); link != m_links.end();)
        link = link->second.master == clip ? m_links.erase(link) : std::next(link);
    return *this;
}

Object& Object::moveClip(const Clip* clip, const ClipTiming& timing)
{
    Entry* e = find(clip);
    if (!e)
        LOG(ERROR) << "Timeline::Object::moveClip: the clip is not on the timeline";
    else if (!timing.track || timing.length < 0)
        LOG(ERROR) << "Timeline::Object::moveClip: a timing needs a track and a length of 0 or more";
    else
        e->timing = timing;
    return *this;
}

Object& Object::addLink(const Clip* master, const Clip* slave, Types::Time offset)
{
    if (!contains(master) || !contains(slave))
        LOG(ERROR) << "Timeline::Object::addLink: both clips must be on the timeline";
    else if (master == slave)
        LOG(ERROR) << "Timeline::Object::addLink: a clip cannot be its own master";
    else
        m_links[slave] = Link(master, offset);
    return *this;
}

Object& Object::removeLink(const Clip* clip)
{
    if (!m_links.erase(clip))
        LOG(ERROR) << "Timeline::Object::removeLink: the clip has no master";
    return *this;
}

Object& Object::reverseClip(const Clip* clip)
{
    if (Entry* e = find(clip))
        e->timing.reversed = !e->timing.reversed;
    else
        LOG(ERROR) << "Timeline::Object::reverseClip: the clip is not on the timeline";
    return *this;
}

Object& Object::setClipSpeed(const Clip* clip, double speed)
{
    Entry* e = find(clip);
    if (!e) {
        LOG(ERROR) << "Timeline::Object::setClipSpeed: the clip is not on the timeline";
    } else if (!(speed > 0)) {
        LOG(ERROR) << "Timeline::Object::setClipSpeed: the speed must be above 0, not " << speed;
    } else {
        e->timing.length = Types::Time(double(e->timing.length) * e->timing.speed / speed + 0.5);
        e->timing.speed = speed;
    }
    return *this;
}

const Object::Entry* Object::find(const Clip* clip) const
{
    const auto it = std::find_if(m_clips.begin(), m_clips.end(), [clip](const Entry& e) { return e.clip == clip; });
    return it == m_clips.end() ? nullptr : &*it;
}

Object::Entry* Object::find(const Clip* clip)
{
    return const_cast<Entry*>(static_cast<const Object*>(this)->find(clip));
}

const Object* ownerOf(const Clip* clip)
{
    for (const Object* timeline : Model::Registry::objectsOf<Object>()) {
        if (timeline->contains(clip))
            return timeline;
    }
    return nullptr;
}

} // namespace Timeline
