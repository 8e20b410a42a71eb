#pragma once

#include <EditorModel/Animation.h>
#include <EditorModel/Media.h>
#include <EditorModel/Presets.h>
#include <EditorModel/Types.h>

#include <PubSub/Object.h>

#include <list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Timeline {

class Clip;
class Object;

// A track of a timeline. Tracks are shared, unchanging records: a timeline and its copies (a
// working copy, a shadow) name the same track objects, so a timing made on one holds for all.
class Track : public virtual PubSub::Object
{
public:
    enum Kind
    {
        Video = 0,
        Title = 1,
        ExtraVideo = 2,
        NativeAudio = 3,
        Audio = 4
    };

    Track() = default;
    explicit Track(Kind kind, Types::String name = {}) : m_kind(kind), m_name(std::move(name)) {}

    Kind kind() const noexcept { return m_kind; }
    const Types::String& name() const noexcept { return m_name; }

private:
    Kind m_kind = Video;
    Types::String m_name;
};

// Where a clip sits on its timeline: its track, start (position), length, the point of its
// media it starts from (offset), its speed and direction.
class ClipTiming
{
public:
    ClipTiming() = default;
    ClipTiming(const Track* track, Types::Time position, Types::Time length, Types::Time offset = 0)
        : track(track), position(position), length(length), offset(offset)
    {}

    Types::Time start() const noexcept { return position; }
    Types::Time end() const noexcept { return position + length; }
    // A timing read for a clip the timeline does not hold has no track.
    bool isValid() const noexcept { return track != nullptr; }
    // The point of its media the clip shows at `at` (timeline time, held inside the clip): from
    // the offset forward at its speed, or, reversed, from the end of its media span backward,
    // so that a reversed clip starts on the last frame of its span.
    Types::Time mediaTimeAt(Types::Time at) const noexcept;

    friend bool operator==(const ClipTiming& a, const ClipTiming& b)
    {
        return a.track == b.track && a.position == b.position && a.length == b.length && a.offset == b.offset
               && a.speed == b.speed && a.reversed == b.reversed;
    }

    const Track* track = nullptr;
    Types::Time position = 0;
    Types::Time length = 0;
    Types::Time offset = 0;
    double speed = 1.0;
    bool reversed = false;
};

// Orders timings by position (start) alone.
struct ClipTimingOrder
{
    bool operator()(const ClipTiming& a, const ClipTiming& b) const noexcept { return a.position < b.position; }
};

// The tie of a slave clip (a native audio clip, a title over a video) to its master, at an
// offset from the master's start.
class Link
{
public:
    Link() = default;
    Link(const Clip* master, Types::Time offset) : master(master), offset(offset) {}
    Link& operator=(const Link&) = default;

    const Clip* master = nullptr;
    Types::Time offset = 0;
};

// A clip: what it shows (a stream of a media file, a title or callout preset, a quiz, a nested
// timeline), its name, its effects and whether its media is missing (broken).
class Clip : public virtual PubSub::Object
{
public:
    enum Type
    {
        Unknown = 0,
        Video = 1,
        Audio = 2,
        Image = 3,
        Title = 4,
        Callout = 5,
        Quiz = 6,
        Animation = 7,
        Nested = 8, // shows a nested timeline
        Color = 9,
    };

    static constexpr Types::Time DEFAULT_TITLE_CLIP_DURATION = 5 * Types::TimeUnitsPerSecond;
    static constexpr Types::Time DEFAULT_CALLOUT_CLIP_DURATION = 4 * Types::TimeUnitsPerSecond;
    static constexpr Types::Time DEFAULT_QUIZ_CLIP_DURATION = 10 * Types::TimeUnitsPerSecond;

    Clip() = default;
    explicit Clip(Type type, const Media::File* file = nullptr, int streamIndex = -1)
        : m_type(type), m_file(file), m_stream(streamIndex)
    {}
    Clip(const Clip&) = default;
    Clip(Clip&&) = default;
    Clip& operator=(const Clip&) = default;
    Clip& operator=(Clip&&) = default;
    ~Clip() override = default;

    Type type() const noexcept { return m_type; }
    Clip& setType(Type type)
    {
        m_type = type;
        return *this;
    }
    const Media::File* file() const noexcept { return m_file; }
    int streamIndex() const noexcept { return m_stream; }
    Clip& setMedia(const Media::File* file, int streamIndex)
    {
        m_file = file;
        m_stream = streamIndex;
        return *this;
    }
    const Types::String& name() const noexcept { return m_name; }
    Clip& setName(const Types::String& name)
    {
        m_name = name;
        return *this;
    }
    bool isBroken() const noexcept { return m_broken; }
    Clip& setBroken(bool broken)
    {
        m_broken = broken;
        return *this;
    }
    // Spelt out in full: inside a clip, a bare `Object` is the bus base class.
    const Timeline::Object* nestedTimeline() const noexcept { return m_nested; }
    Clip& setNestedTimeline(const Timeline::Object* timeline)
    {
        m_nested = timeline;
        return *this;
    }
    // The title or callout a clip shows (shared, unchanging), or null.
    const Overlay::Preset* overlay() const noexcept { return m_overlay.get(); }
    Clip& setOverlay(std::shared_ptr<const Overlay::Preset> preset)
    {
        m_overlay = std::move(preset);
        return *this;
    }
    const Quiz::Preset* quiz() const noexcept { return m_quiz.get(); }
    Clip& setQuiz(std::shared_ptr<const Quiz::Preset> preset)
    {
        m_quiz = std::move(preset);
        return *this;
    }
    const Animation::TransformationItem* animation() const noexcept { return m_animation.get(); }
    Clip& setAnimation(std::shared_ptr<const Animation::TransformationItem> item)
    {
        m_animation = std::move(item);
        return *this;
    }

    // Effects in the order they apply. Each clip (and each copy) holds its own.
    std::vector<const Effect::Object*> effects() const;
    const Effect::Object* findEffect(const std::string& id) const;
    // Replaces the effect with the same id by a copy of `effect`, or appends the copy.
    Clip& replaceEffect(const Effect::Object* effect);
    Clip& removeEffect(const std::string& id);

private:
    Type m_type = Unknown;
    const Media::File* m_file = nullptr;
    int m_stream = -1;
    Types::String m_name;
    bool m_broken = false;
    const Timeline::Object* m_nested = nullptr;
    std::shared_ptr<const Overlay::Preset> m_overlay;
    std::shared_ptr<const Quiz::Preset> m_quiz;
    std::shared_ptr<const Animation::TransformationItem> m_animation;
    std::list<Effect::Object> m_effects;
};

// A timeline: tracks, the clips placed on them (by pointer; clips are records of their own) with
// their timings, and the links between clips. The builder operations edit this value (normally a
// working copy in an edit) and return it for chaining; a refused operation leaves it unchanged
// and logs why.
class Object : public virtual PubSub::Object
{
public:
    // Whether a timeline is a project's own or one nested in another as a clip.
    enum Scope
    {
        Project = 0,
        Nested = 1
    };

    // A timeline with its four standard tracks: video, title, extra video, native audio.
    Object();
    Object(const Object&) = default;
    Object(Object&&) = default;
    Object& operator=(const Object&) = default;
    Object& operator=(Object&&) = default;
    ~Object() override = default;

    const Track* primaryTrack() const noexcept { return m_tracks[Track::Video].get(); }
    const Track* titleTrack() const noexcept { return m_tracks[Track::Title].get(); }
    const Track* extraVideoTrack() const noexcept { return m_tracks[Track::ExtraVideo].get(); }
    const Track* nativeAudioTrack() const noexcept { return m_tracks[Track::NativeAudio].get(); }
    std::vector<const Track*> tracks() const;
    // Adds a further track (an audio track, another video track).
    const Track* addTrack(Track::Kind kind, const Types::String& name = {});

    // Clips in the order they were added.
    std::vector<const Clip*> clips() const;
    // Clips of a track by position.
    std::vector<const Clip*> clipsOnTrack(const Track* track) const;
    std::set<const Clip*> clipsByType(int type) const;
    bool contains(const Clip* clip) const;
    // The timing of a clip; an invalid timing (no track) for a clip not on this timeline.
    const ClipTiming& clipTiming(const Clip* clip) const;
    // End of the last clip; 0 for an empty timeline.
    Types::Time duration() const;

    bool isSlave(const Clip* clip) const;
    const Clip* masterOf(const Clip* clip) const;
    // The link that ties `clip` to its master, or null.
    const Link* linkOf(const Clip* clip) const;
    std::set<const Clip*> findSlaves(const Clip* master) const;
    // The audio clip on the native audio track that is a slave of `clip`, or null.
    const Clip* findNativeAudio(const Clip* clip) const;

    Object& addClip(const Clip* clip, const ClipTiming& timing);
    // Removes the clip and every link it takes part in (as slave or master).
    Object& removeClip(const Clip* clip);
    Object& moveClip(const Clip* clip, const ClipTiming& timing);
    Object& addLink(const Clip* master, const Clip* slave, Types::Time offset);
    // Removes the link of `clip` to its master.
    Object& removeLink(const Clip* clip);
    Object& reverseClip(const Clip* clip);
    // Plays the clip at `speed` (> 0): its length changes, its media span does not.
    Object& setClipSpeed(const Clip* clip, double speed);

    Types::String name;

private:
    struct Entry
    {
        const Clip* clip;
        ClipTiming timing;
    };
    const Entry* find(const Clip* clip) const;
    Entry* find(const Clip* clip);

    std::vector<std::shared_ptr<const Track>> m_tracks;
    std::vector<Entry> m_clips;
    std::map<const Clip*, Link> m_links; // by slave
};

// The timeline among those the model owns that holds `clip`, or null.
const Object* ownerOf(const Clip* clip);

} // namespace Timeline
