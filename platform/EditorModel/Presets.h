#pragma once

#include <EditorModel/Types.h>

#include <PubSub/Object.h>

#include <boost/rational.hpp>

#include <map>
#include <string>
#include <vector>

// The kinds of presets the editor applies to clips, and the compositions previews are drawn in.

namespace EditorCollection::CollectionID {
inline const std::string EFFECTS_VIDEO = "effects.video";
inline const std::string EFFECTS_AUDIO = "effects.audio";
inline const std::string FILTERS_COLOR = "filters.color";
inline const std::string TRANSITIONS = "transitions";
} // namespace EditorCollection::CollectionID

namespace Composition {

// A named position in a composition.
struct Marker
{
    Types::Time position = 0;
    Types::String name;
};

// What a player draws: compared by address only.
class Object : public virtual PubSub::Object
{
public:
    Types::String name;
    int width = 1920;
    int height = 1080;
    boost::rational<long long> frameRate{30, 1};
    std::vector<Marker> markers;
};

} // namespace Composition

namespace Effect {

// An effect of a collection, with its parameters by name.
class Object : public virtual PubSub::Object
{
public:
    Object() = default;
    Object(std::string collectionId, std::string effectId)
        : m_collection(std::move(collectionId)), m_id(std::move(effectId))
    {}

    const std::string& collectionId() const noexcept { return m_collection; }
    const std::string& id() const noexcept { return m_id; }
    double parameter(const std::string& name, double fallback = 0) const
    {
        const auto it = m_parameters.find(name);
        return it == m_parameters.end() ? fallback : it->second;
    }
    Object& setParameter(const std::string& name, double value)
    {
        m_parameters[name] = value;
        return *this;
    }
    const std::map<std::string, double>& parameters() const noexcept { return m_parameters; }

    friend bool operator==(const Object& a, const Object& b)
    {
        return a.m_collection == b.m_collection && a.m_id == b.m_id && a.m_parameters == b.m_parameters;
    }

private:
    std::string m_collection;
    std::string m_id;
    std::map<std::string, double> m_parameters;
};

} // namespace Effect

namespace Transition {

class Object : public virtual PubSub::Object
{
public:
    Object() = default;
    explicit Object(std::string id, Types::Time duration = Types::TimeUnitsPerSecond)
        : id(std::move(id)), duration(duration)
    {}
    std::string id;
    Types::String name;
    Types::Time duration = Types::TimeUnitsPerSecond;
};

} // namespace Transition

namespace Overlay {

// One element of a title or callout: a text (or an SVG document) placed by a transform.
class Item
{
public:
    const std::string& text() const noexcept { return m_text; }
    Item& setText(const std::string& text)
    {
        m_text = text;
        return *this;
    }
    const Types::Transform& transform() const noexcept { return m_transform; }
    Item& setTransform(const Types::Transform& transform)
    {
        m_transform = transform;
        return *this;
    }

private:
    std::string m_text;
    Types::Transform m_transform;
};

// A title or callout preset: its items, and a tag saying where it came from.
class Preset : public virtual PubSub::Object
{
public:
    // Mime format of a serialized preset on the clipboard or in a drag.
    static const Types::String* mimeType;

    const std::vector<Item>& items() const noexcept { return m_items; }
    Preset& appendItem(const Item& item)
    {
        m_items.push_back(item);
        return *this;
    }
    const std::string& tag() const noexcept { return m_tag; }
    Preset& setTag(const std::string& tag)
    {
        m_tag = tag;
        return *this;
    }
    Types::String name;

private:
    std::vector<Item> m_items;
    std::string m_tag;
};

} // namespace Overlay

namespace Quiz {

struct Question
{
    Types::String text;
    std::vector<Types::String> answers;
    std::vector<int> correctAnswers; // indices into answers
};

class Preset : public virtual PubSub::Object
{
public:
    static const Types::String* mimeType;

    Types::String name;
    std::vector<Question> questions;
};

} // namespace Quiz

namespace Import {

// An import source (a folder, a device, a recording) the user can bring media from.
class Object : public virtual PubSub::Object
{
public:
    static const Types::String* mimeType;

    Types::String name;
    Types::String path;
};

} // namespace Import
