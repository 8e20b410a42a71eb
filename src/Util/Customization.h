#pragma once

#include <Util/EditorUtilExport.h>

#include <QColor>
#include <QObject>
#include <QVariant>

// The application's look and behaviour options, kept in the editor's settings under
// "Customization/<name>":
//
//   theme               "light" (default) or "dark"
//   accentColor         "#rrggbb", default "#2a82da"
//   imageDuration       milliseconds a still image lasts on the timeline, 100..600000, default 5000
//   transitionDuration  milliseconds, 100..60000, default 1000
//   titleDuration       milliseconds, 100..600000, default 5000
//   snapMode            "off", "items" (default) or "itemsAndPlayhead"
//   snapDistance        pixels within which a dragged item snaps, 1..50, default 10
//
// A stored value that is missing reads as the default; one that is invalid (an unknown theme,
// a colour name that is no colour, a duration out of range) reads as the default with a log
// line. Setters refuse invalid values with a log line and return false, and signal
// changed() only when the value really changed. GUI thread only.
class EDITORUTIL_EXPORT Customization : public QObject
{
    Q_OBJECT
public:
    enum class Option
    {
        Theme,
        AccentColor,
        ImageDuration,
        TransitionDuration,
        TitleDuration,
        SnapMode,
        SnapDistance
    };
    Q_ENUM(Option)
    enum class Theme
    {
        Light,
        Dark
    };
    enum class Snap
    {
        Off,
        Items,
        ItemsAndPlayhead
    };

    explicit Customization(QObject* parent = nullptr);
    ~Customization() override;

    // Every option, read from the settings again (after another program changed them).
    void reload();

    // The value of `option` in its stored form, always valid.
    QVariant value(Option option) const;
    bool setValue(Option option, const QVariant& value);
    static QVariant defaultValue(Option option);
    // The settings name of `option` ("theme", "accentColor", ...).
    static QString name(Option option);
    // Every option back to its default (one changed() per option that differed).
    void restoreDefaults();

    Theme theme() const;
    bool setTheme(Theme theme);
    QColor accentColor() const;
    bool setAccentColor(const QColor& color);
    int durationMs(Option duration) const;
    Snap snapMode() const;
    bool setSnapMode(Snap mode);
    int snapDistance() const;

Q_SIGNALS:
    void changed(Customization::Option option);

protected:
    // Whether `value` is acceptable for `option`; `normalized` receives its stored form.
    virtual bool validate(Option option, const QVariant& value, QVariant* normalized) const;

private:
    QVariant m_values[7];
};
