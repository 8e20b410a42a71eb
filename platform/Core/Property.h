#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Dravik {
namespace Core {

// A named value of the property tree: a scalar (bool, integer, real, string) or a container
// (an array of unnamed elements, or an object of named members). Stored settings such as the
// list of recent projects are one array property of string elements.
class Property
{
public:
    enum class Type : std::uint8_t
    {
        Null,
        Bool,
        Int,
        Double,
        String,
        Array,
        Object
    };

    Property() = default;
    explicit Property(std::string name, Type type = Type::Null);

    static Property MakeString(std::string name, std::string value);
    static Property MakeInt(std::string name, std::int64_t value);
    static Property MakeDouble(std::string name, double value);
    static Property MakeBool(std::string name, bool value);

    const std::string& GetName() const { return m_name; }
    void SetName(std::string name) { m_name = std::move(name); }
    Type GetType() const { return m_type; }
    bool IsContainer() const { return m_type == Type::Array || m_type == Type::Object; }

    // Scalar access. A getter of the wrong type returns the type's empty value.
    bool GetBool() const { return m_type == Type::Bool && m_int != 0; }
    std::int64_t GetInt() const { return m_type == Type::Int || m_type == Type::Bool ? m_int : 0; }
    double GetDouble() const { return m_type == Type::Double ? m_double : 0.0; }
    const std::string& GetString() const;
    void SetBool(bool value);
    void SetInt(std::int64_t value);
    void SetDouble(double value);
    void SetString(std::string value);

    // Children of an array or object, in insertion order. Appending to a scalar turns it into
    // an array.
    const std::vector<Property>& GetChildren() const { return m_children; }
    std::size_t Size() const { return m_children.size(); }
    Property& Append(Property child);
    // First member with the given name, or nullptr.
    const Property* Find(const std::string& name) const;

    bool operator==(const Property& other) const;
    bool operator!=(const Property& other) const { return !(*this == other); }

private:
    std::string m_name;
    Type m_type = Type::Null;
    std::int64_t m_int = 0;
    double m_double = 0.0;
    std::string m_string;
    std::vector<Property> m_children;
};

} // namespace Core
} // namespace Dravik
