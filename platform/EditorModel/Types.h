#pragma once

#include <QImage>
#include <QString>
#include <QTransform>

#include <array>
#include <cstdint>
#include <iosfwd>
#include <string>

namespace Types {

// Times and durations of the model: 64-bit counts of 100-nanosecond units.
using Time = std::int64_t;
constexpr Time TimeUnitsPerSecond = 10'000'000;
constexpr Time TimeUnitsPerMillisecond = TimeUnitsPerSecond / 1000;

// The model's text: UTF-8 bytes, converted to and from QString at the interface.
class String
{
public:
    String() = default;
    String(const char* text) : m_text(text ? text : "") {}
    String(std::string text) : m_text(std::move(text)) {}
    String(const QString& text) : m_text(text.toStdString()) {}

    const std::string& str() const noexcept { return m_text; }
    const char* c_str() const noexcept { return m_text.c_str(); }
    QString toQString() const { return QString::fromStdString(m_text); }
    bool empty() const noexcept { return m_text.empty(); }

    friend bool operator==(const String& a, const String& b) { return a.m_text == b.m_text; }
    friend bool operator!=(const String& a, const String& b) { return a.m_text != b.m_text; }
    friend bool operator<(const String& a, const String& b) { return a.m_text < b.m_text; }

private:
    std::string m_text;
};

std::ostream& operator<<(std::ostream& out, const String& text);

// A 3 x 3 matrix, row by row, in the convention of QTransform (m11 m12 m13 / m21 ... / m31 m32 m33).
class Transform
{
public:
    Transform() noexcept : m_values{1, 0, 0, 0, 1, 0, 0, 0, 1} {}
    Transform(double m11, double m12, double m13, double m21, double m22, double m23, double m31, double m32,
              double m33) noexcept
        : m_values{m11, m12, m13, m21, m22, m23, m31, m32, m33}
    {}
    explicit Transform(const QTransform& t) noexcept
        : Transform(t.m11(), t.m12(), t.m13(), t.m21(), t.m22(), t.m23(), t.m31(), t.m32(), t.m33())
    {}

    QTransform toQTransform() const
    {
        const auto& v = m_values;
        return QTransform(v[0], v[1], v[2], v[3], v[4], v[5], v[6], v[7], v[8]);
    }
    // The element at `row` and `column`, both 0 to 2.
    double at(int row, int column) const { return m_values.at(std::size_t(row * 3 + column)); }
    const std::array<double, 9>& values() const noexcept { return m_values; }

    friend bool operator==(const Transform& a, const Transform& b) { return a.m_values == b.m_values; }
    friend bool operator!=(const Transform& a, const Transform& b) { return !(a == b); }

private:
    std::array<double, 9> m_values;
};

// A decoded picture (a frame of a clip, a thumbnail).
class Image : public QImage
{
public:
    using QImage::QImage;
    Image() = default;
    explicit Image(const QImage& image) : QImage(image) {}
};

} // namespace Types

namespace Translator {

// The user's language version of a model text (translation context "EditorModel").
Types::String translate(const std::string& text);

} // namespace Translator
