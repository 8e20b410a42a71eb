#pragma once

#include <EditorModel/Types.h>

#include <PubSub/Object.h>

#include <algorithm>
#include <vector>

namespace Transformation {

// The placement of a picture on the frame.
class Object : public virtual PubSub::Object
{
public:
    const Types::Transform& matrix() const noexcept { return m_matrix; }
    Object& setMatrix(const Types::Transform& matrix)
    {
        m_matrix = matrix;
        return *this;
    }
    friend bool operator==(const Object& a, const Object& b) { return a.m_matrix == b.m_matrix; }

private:
    Types::Transform m_matrix;
};

} // namespace Transformation

namespace Envelope {

// Blends two transformations element by element; `t` runs from 0 (first) to 1 (second).
struct TransformationInterpolator
{
    Transformation::Object operator()(const Transformation::Object& a, const Transformation::Object& b, double t) const
    {
        const auto& x = a.matrix().values();
        const auto& y = b.matrix().values();
        auto mix = [&](std::size_t i) { return x[i] + (y[i] - x[i]) * t; };
        Transformation::Object result;
        result.setMatrix(Types::Transform(mix(0), mix(1), mix(2), mix(3), mix(4), mix(5), mix(6), mix(7), mix(8)));
        return result;
    }
};

} // namespace Envelope

namespace Animation {

template <class T>
struct ValueTypeTrait
{
    using ValueType = T;
};

// A value at a time of an animation.
template <class T>
struct KeyValue
{
    Types::Time time = 0;
    T value;

    // The element name of a key value in a saved project.
    static const char* NameInArchive();
};

template <>
inline const char* KeyValue<Transformation::Object>::NameInArchive()
{
    return "TransformationKeyValue";
}

// An animation of a value over time: keys in time order, values between them blended by the
// interpolator, the first and last values held outside them.
template <class Trait, class Interpolator>
class Item : public virtual PubSub::Object
{
public:
    using ValueType = typename Trait::ValueType;
    using Key = KeyValue<ValueType>;

    Types::String name;

    const std::vector<Key>& keys() const noexcept { return m_keys; }
    // Adds a key, replacing one at the same time.
    Item& setKey(Types::Time time, const ValueType& value)
    {
        auto it = std::lower_bound(m_keys.begin(), m_keys.end(), time,
                                   [](const Key& k, Types::Time t) { return k.time < t; });
        if (it != m_keys.end() && it->time == time)
            it->value = value;
        else
            m_keys.insert(it, Key{time, value});
        return *this;
    }
    // The value at `time`; a default value when there are no keys.
    ValueType valueAt(Types::Time time) const
    {
        if (m_keys.empty())
            return ValueType();
        if (time <= m_keys.front().time)
            return m_keys.front().value;
        if (time >= m_keys.back().time)
            return m_keys.back().value;
        const auto next = std::upper_bound(m_keys.begin(), m_keys.end(), time,
                                           [](Types::Time t, const Key& k) { return t < k.time; });
        const auto prev = next - 1;
        const double t = double(time - prev->time) / double(next->time - prev->time);
        return Interpolator()(prev->value, next->value, t);
    }

private:
    std::vector<Key> m_keys;
};

// The animation of a picture's placement, used by pan-and-zoom and animation presets.
using TransformationItem = Item<ValueTypeTrait<Transformation::Object>, Envelope::TransformationInterpolator>;

} // namespace Animation
