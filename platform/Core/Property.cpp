#include "Property.h"

namespace Dravik {
namespace Core {

Property::Property(std::string name, Type type) : m_name(std::move(name)), m_type(type) {}

Property Property::MakeString(std::string name, std::string value)
{
    Property p(std::move(name), Type::String);
    p.m_string = std::move(value);
    return p;
}

Property Property::MakeInt(std::string name, std::int64_t value)
{
    Property p(std::move(name), Type::Int);
    p.m_int = value;
    return p;
}

Property Property::MakeDouble(std::string name, double value)
{
    Property p(std::move(name), Type::Double);
    p.m_double = value;
    return p;
}

Property Property::MakeBool(std::string name, bool value)
{
    Property p(std::move(name), Type::Bool);
    p.m_int = value ? 1 : 0;
    return p;
}

const std::string& Property::GetString() const
{
    static const std::string empty;
    return m_type == Type::String ? m_string : empty;
}

void Property::SetBool(bool value) { *this = MakeBool(std::move(m_name), value); }

void Property::SetInt(std::int64_t value) { *this = MakeInt(std::move(m_name), value); }

void Property::SetDouble(double value) { *this = MakeDouble(std::move(m_name), value); }

void Property::SetString(std::string value) { *this = MakeString(std::move(m_name), std::move(value)); }

Property& Property::Append(Property child)
{
    if (!IsContainer()) {
        m_type = Type::Array;
        m_int = 0;
        m_double = 0.0;
        m_string.clear();
    }
    m_children.push_back(std::move(child));
    return m_children.back();
}

const Property* Property::Find(const std::string& name) const
{
    for (const auto& child : m_children)
        if (child.m_name == name)
            return &child;
    return nullptr;
}

bool Property::operator==(const Property& other) const
{
    return m_name == other.m_name && m_type == other.m_type && m_int == other.m_int && m_double == other.m_double
           && m_string == other.m_string && m_children == other.m_children;
}

} // namespace Core
} // namespace Dravik
