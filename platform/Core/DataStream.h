#pragma once

#include <cstddef>
#include <string>

namespace Dravik {
namespace Core {

// Byte sinks and sources the serializers write to and read from.
class DataOutput
{
public:
    virtual ~DataOutput() = default;
    virtual void Write(const char* data, std::size_t size) = 0;
    void Write(const std::string& text) { Write(text.data(), text.size()); }
};

class DataInput
{
public:
    virtual ~DataInput() = default;
    // Copies up to `size` bytes into `data` and returns how many were read.
    virtual std::size_t Read(char* data, std::size_t size) = 0;
    virtual bool AtEnd() const = 0;
};

// Collects everything written into one string (GetString()).
class DataOutputString : public DataOutput
{
public:
    using DataOutput::Write;
    void Write(const char* data, std::size_t size) override { m_string.append(data, size); }
    const std::string& GetString() const { return m_string; }

private:
    std::string m_string;
};

// Reads from a copy of the given string.
class DataInputString : public DataInput
{
public:
    explicit DataInputString(std::string text) : m_string(std::move(text)) {}
    std::size_t Read(char* data, std::size_t size) override;
    bool AtEnd() const override { return m_position >= m_string.size(); }

private:
    std::string m_string;
    std::size_t m_position = 0;
};

} // namespace Core
} // namespace Dravik
