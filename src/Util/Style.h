#pragma once

#include <Util/Customization.h>
#include <Util/EditorUtilExport.h>

#include <QColor>
#include <QMap>
#include <QString>

// The application style sheet: a base sheet whose colours are named variables ("@accent",
// "@window"), filled in from the theme and accent colour of the customization, and set on the
// application once (setting the same sheet again would re-polish every widget for nothing).
namespace Style {

// The library's own base sheet (its dialogs, the "activeButton" and "state" properties).
EDITORUTIL_EXPORT QString baseSheet();

// The colour variables of `theme` with `accent`: accent, accentText, window, windowText, base,
// text, border, disabledText, error.
EDITORUTIL_EXPORT QMap<QString, QString> themeVariables(Customization::Theme theme, const QColor& accent);

// `sheet` with every "@name" replaced by its value. Empty, with `error` naming the variable
// and its line ("Unknown style variable \"@shade\" on line 3") and a log line, when the sheet
// uses a variable that `variables` lacks.
EDITORUTIL_EXPORT QString substitute(const QString& sheet, const QMap<QString, QString>& variables,
                                     QString* error = nullptr);

// Assembles `sheet` with the theme and accent of `customization` and sets it on the
// application unless that sheet is already set. False when the sheet has an unknown
// variable (nothing is set then) or was already set.
EDITORUTIL_EXPORT bool apply(const QString& sheet, const Customization& customization, QString* error = nullptr);

} // namespace Style
