#pragma once

#include <Util/EditorUtilExport.h>

#include <QFont>
#include <QList>
#include <QStringList>

namespace FontUtils {

// The names under which the font with its style is known: "<family> <style>" (for example
// "DejaVu Sans Bold") followed by the family name.
EDITORUTIL_EXPORT QStringList fontNamesWithStyle(const QFont& font);
// One font per non-empty family name, in order.
EDITORUTIL_EXPORT QList<QFont> fontsByFamilies(const QStringList& families);

} // namespace FontUtils
