#pragma once

#include <QString>
#include <QVariant>

// One entry of a clip's adjustments panel: what it is, its current value, and whether it applies
// to the clip (with the reason when it does not).
struct Adjustment
{
    enum Kind
    {
        Normalization = 0, // value: bool, the clip's sound is brought to a standard loudness
        Reverse = 1,       // value: bool, the clip plays backward
        Speed = 2,         // value: double, 1.0 is the media's own pace
        Stabilization = 3, // value: bool, camera shake is smoothed out
        Filter = 4,        // value: QString, the id of the clip's colour filter, empty for none
    };

    Kind kind = Normalization;
    QString title;  // in the user's language
    QVariant value; // the value read from the clip, whether it applies or not
    bool available = false;
    QString reason; // why the entry does not apply to this clip (empty when it does)
};

Q_DECLARE_METATYPE(Adjustment::Kind)
