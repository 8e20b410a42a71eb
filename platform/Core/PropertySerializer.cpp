#include "PropertySerializer.h"

#include <glog/logging.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Dravik {
namespace Core {

std::size_t DataInputString::Read(char* data, std::size_t size)
{
    const std::size_t count = std::min(size, m_string.size() - std::min(m_position, m_string.size()));
    std::memcpy(data, m_string.data() + m_position, count);
    m_position += count;
    return count;
}

namespace {

const char kHeader[] = "DPROP 1\n";
constexpr int kMaxDepth = 64;

char tagOf(Property::Type type)
{
    switch (type) {
    case Property::Type::Null:
        return 'N';
    case Property::Type::Bool:
        return 'B';
    case Property::Type::Int:
        return 'I';
    case Property::Type::Double:
        return 'D';
    case Property::Type::String:
        return 'S';
    case Property::Type::Array:
        return 'A';
    case Property::Type::Object:
        return 'O';
    }
    return 'N';
}

void writeCounted(std::string& out, const std::string& bytes)
{
    out += std::to_string(bytes.size());
    out += ':';
    out += bytes;
}

void writeProperty(std::string& out, const Property& p)
{
    out += tagOf(p.GetType());
    out += ' ';
    writeCounted(out, p.GetName());
    switch (p.GetType()) {
    case Property::Type::Null:
        break;
    case Property::Type::Bool:
        out += p.GetBool() ? " 1" : " 0";
        break;
    case Property::Type::Int:
        out += ' ';
        out += std::to_string(p.GetInt());
        break;
    case Property::Type::Double: {
        char buffer[40];
        std::snprintf(buffer, sizeof buffer, "%.17g", p.GetDouble());
        out += ' ';
        out += buffer;
        break;
    }
    case Property::Type::String:
        out += ' ';
        writeCounted(out, p.GetString());
        break;
    case Property::Type::Array:
    case Property::Type::Object:
        out += ' ';
        out += std::to_string(p.Size());
        break;
    }
    out += '\n';
    for (const auto& child : p.GetChildren())
        writeProperty(out, child);
}

// Recursive-descent reader over the whole text; every step checks the bounds it reads.
class Reader
{
public:
    explicit Reader(std::string text) : m_text(std::move(text)) {}

    bool readDocument(Property& result)
    {
        const std::size_t headerSize = sizeof kHeader - 1;
        if (m_text.compare(0, headerSize, kHeader) != 0)
            return fail("missing header");
        m_pos = headerSize;
        if (!readProperty(result, 0))
            return false;
        while (m_pos < m_text.size()) {
            const char c = m_text[m_pos++];
            if (c != ' ' && c != '\n' && c != '\r' && c != '\t')
                return fail("unexpected data after the last property");
        }
        return true;
    }

    const std::string& error() const { return m_error; }
    std::size_t position() const { return m_pos; }

private:
    bool fail(const char* what)
    {
        if (m_error.empty())
            m_error = what;
        return false;
    }

    bool expect(char c)
    {
        if (m_pos >= m_text.size() || m_text[m_pos] != c)
            return fail("unexpected character");
        ++m_pos;
        return true;
    }

    bool readToken(std::string& token)
    {
        const std::size_t start = m_pos;
        while (m_pos < m_text.size() && m_text[m_pos] != ' ' && m_text[m_pos] != '\n' && m_text[m_pos] != ':')
            ++m_pos;
        token.assign(m_text, start, m_pos - start);
        return !token.empty() || fail("empty token");
    }

    bool readUnsigned(std::size_t& value)
    {
        std::string token;
        if (!readToken(token))
            return false;
        if (token.size() > 18 || token.find_first_not_of("0123456789") != std::string::npos)
            return fail("bad count");
        value = static_cast<std::size_t>(std::strtoull(token.c_str(), nullptr, 10));
        return true;
    }

    bool readCounted(std::string& bytes)
    {
        std::size_t length = 0;
        if (!readUnsigned(length) || !expect(':'))
            return false;
        if (length > m_text.size() - m_pos)
            return fail("length beyond the end of the data");
        bytes.assign(m_text, m_pos, length);
        m_pos += length;
        return true;
    }

    bool readProperty(Property& result, int depth)
    {
        if (depth > kMaxDepth)
            return fail("nesting too deep");
        if (m_pos >= m_text.size())
            return fail("truncated data");
        const char tag = m_text[m_pos++];
        std::string name;
        if (!expect(' ') || !readCounted(name))
            return false;
        std::string token;
        switch (tag) {
        case 'N':
            result = Property(std::move(name));
            break;
        case 'B':
            if (!expect(' ') || !readToken(token) || (token != "0" && token != "1"))
                return fail("bad bool");
            result = Property::MakeBool(std::move(name), token == "1");
            break;
        case 'I': {
            if (!expect(' ') || !readToken(token))
                return false;
            errno = 0;
            char* end = nullptr;
            const long long value = std::strtoll(token.c_str(), &end, 10);
            if (errno != 0 || end != token.c_str() + token.size())
                return fail("bad integer");
            result = Property::MakeInt(std::move(name), value);
            break;
        }
        case 'D': {
            if (!expect(' ') || !readToken(token))
                return false;
            char* end = nullptr;
            const double value = std::strtod(token.c_str(), &end);
            if (end != token.c_str() + token.size())
                return fail("bad real");
            result = Property::MakeDouble(std::move(name), value);
            break;
        }
        case 'S': {
            std::string value;
            if (!expect(' ') || !readCounted(value))
                return false;
            result = Property::MakeString(std::move(name), std::move(value));
            break;
        }
        case 'A':
        case 'O': {
            std::size_t count = 0;
            if (!expect(' ') || !readUnsigned(count) || !expect('\n'))
                return false;
            // Every child takes at least five bytes ("N 0:\n"): a larger count is corrupt.
            if (count > (m_text.size() - m_pos) / 5)
                return fail("child count beyond the end of the data");
            result = Property(std::move(name), tag == 'A' ? Property::Type::Array : Property::Type::Object);
            for (std::size_t i = 0; i < count; ++i) {
                Property child;
                if (!readProperty(child, depth + 1))
                    return false;
                result.Append(std::move(child));
            }
            return true;
        }
        default:
            return fail("unknown tag");
        }
        return expect('\n');
    }

    std::string m_text;
    std::size_t m_pos = 0;
    std::string m_error;
};

} // namespace

void PropertySerializer::Serialize(const Property& property, DataOutput& output)
{
    std::string text = kHeader;
    writeProperty(text, property);
    output.Write(text);
}

bool PropertySerializer::Deserialize(Property& property, DataInput& input)
{
    std::string text;
    char buffer[4096];
    while (!input.AtEnd()) {
        const std::size_t n = input.Read(buffer, sizeof buffer);
        if (n == 0)
            break;
        text.append(buffer, n);
    }
    Reader reader(std::move(text));
    Property result;
    if (!reader.readDocument(result)) {
        LOG(ERROR) << "PropertySerializer::Deserialize: corrupted property data (" << reader.error() << " at byte "
                   << reader.position() << ")";
        property = Property();
        return false;
    }
    property = std::move(result);
    return true;
}

} // namespace Core
} // namespace Dravik
