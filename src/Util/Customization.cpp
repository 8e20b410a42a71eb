#include "Customization.h"

#include <Util/Interfaces/EditorSettings.h>

#include <glog/logging.h>

namespace {

constexpr Customization::Option kOptions[] = {
    Customization::Option::Theme,         Customization::Option::AccentColor,
    Customization::Option::ImageDuration, Customization::Option::TransitionDuration,
    Customization::Option::TitleDuration, Customization::Option::SnapMode,
    Customization::Option::SnapDistance};

const char* const kThemes[] = {"light", "dark"};
const char* const kSnapModes[] = {"off", "items", "itemsAndPlayhead"};

template <size_t N>
int indexOf(const char* const (&names)[N], const QString& text)
{
    for (size_t i = 0; i < N; ++i)
        if (text == QLatin1String(names[i]))
            return int(i);
    return -1;
}

struct Range
{
    int low;
    int high;
};

Range rangeOf(Customization::Option option)
{
    switch (option) {
    case Customization::Option::TransitionDuration:
        return {100, 60000};
    case Customization::Option::SnapDistance:
        return {1, 50};
    default:
        return {100, 600000};
    }
}

std::string shown(const QVariant& value) { return value.toString().toStdString(); }

} // namespace

Customization::Customization(QObject* parent) : QObject(parent)
{
    qRegisterMetaType<Customization::Option>();
    reload();
}

Customization::~Customization() = default;

QString Customization::name(Option option)
{
    static const char* const names[] = {"theme",         "accentColor", "imageDuration", "transitionDuration",
                                        "titleDuration", "snapMode",    "snapDistance"};
    return QLatin1String(names[int(option)]);
}

QVariant Customization::defaultValue(Option option)
{
    switch (option) {
    case Option::Theme:
        return QStringLiteral("light");
    case Option::AccentColor:
        return QStringLiteral("#2a82da");
    case Option::TransitionDuration:
        return 1000;
    case Option::SnapMode:
        return QStringLiteral("items");
    case Option::SnapDistance:
        return 10;
    default:
        return 5000;
    }
}

bool Customization::validate(Option option, const QVariant& value, QVariant* normalized) const
{
    const QString text = value.toString().trimmed();
    switch (option) {
    case Option::Theme:
        *normalized = text;
        return indexOf(kThemes, text) >= 0;
    case Option::SnapMode:
        *normalized = text;
        return indexOf(kSnapModes, text) >= 0;
    case Option::AccentColor: {
        const QColor color(text);
        *normalized = color.name();
        return !text.isEmpty() && color.isValid();
    }
    default: {
        bool ok = false;
        const int number = text.toInt(&ok);
        *normalized = number;
        const Range range = rangeOf(option);
        return ok && number >= range.low && number <= range.high;
    }
    }
}

void Customization::reload()
{
    for (const Option option : kOptions) {
        const QVariant stored = Settings::customizationValue(name(option));
        QVariant normalized;
        QVariant next = defaultValue(option);
        if (stored.isValid()) {
            if (validate(option, stored, &normalized))
                next = normalized;
            else
                LOG(ERROR) << "Customization::reload: stored value \"" << shown(stored) << "\" of \""
                           << name(option).toStdString() << "\" is invalid; the default \""
                           << shown(defaultValue(option)) << "\" is used";
        }
        QVariant& current = m_values[int(option)];
        const bool differs = current.isValid() && current != next;
        current = next;
        if (differs)
            Q_EMIT changed(option);
    }
}

QVariant Customization::value(Option option) const { return m_values[int(option)]; }

bool Customization::setValue(Option option, const QVariant& value)
{
    QVariant normalized;
    if (!validate(option, value, &normalized)) {
        LOG(ERROR) << "Customization::setValue: \"" << shown(value) << "\" is no valid value of \""
                   << name(option).toStdString() << "\"; it stays \"" << shown(m_values[int(option)]) << "\"";
        return false;
    }
    Settings::setCustomizationValue(name(option), normalized);
    if (m_values[int(option)] == normalized)
        return true;
    m_values[int(option)] = normalized;
    Q_EMIT changed(option);
    return true;
}

void Customization::restoreDefaults()
{
    for (const Option option : kOptions) {
        Settings::removeCustomizationValue(name(option));
        if (m_values[int(option)] != defaultValue(option)) {
            m_values[int(option)] = defaultValue(option);
            Q_EMIT changed(option);
        }
    }
}

Customization::Theme Customization::theme() const { return Theme(indexOf(kThemes, value(Option::Theme).toString())); }

bool Customization::setTheme(Theme theme) { return setValue(Option::Theme, QLatin1String(kThemes[int(theme)])); }

QColor Customization::accentColor() const { return QColor(value(Option::AccentColor).toString()); }

bool Customization::setAccentColor(const QColor& color)
{
    return setValue(Option::AccentColor, color.isValid() ? color.name() : QString());
}

int Customization::durationMs(Option duration) const
{
    if (duration != Option::ImageDuration && duration != Option::TransitionDuration
        && duration != Option::TitleDuration) {
        LOG(ERROR) << "Customization::durationMs: \"" << name(duration).toStdString() << "\" is no duration";
        return 0;
    }
    return value(duration).toInt();
}

Customization::Snap Customization::snapMode() const
{
    return Snap(indexOf(kSnapModes, value(Option::SnapMode).toString()));
}

bool Customization::setSnapMode(Snap mode) { return setValue(Option::SnapMode, QLatin1String(kSnapModes[int(mode)])); }

int Customization::snapDistance() const { return value(Option::SnapDistance).toInt(); }
