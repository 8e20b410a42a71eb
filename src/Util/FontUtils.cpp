#include "FontUtils.h"

#include <QFontDatabase>

namespace FontUtils {

QStringList fontNamesWithStyle(const QFont& font)
{
    const QString family = font.family();
    if (family.isEmpty())
        return {};
    QStringList names;
    QString style = font.styleName();
    if (style.isEmpty())
        style = QFontDatabase().styleString(font);
    if (!style.isEmpty())
        names << family + QLatin1Char(' ') + style;
    names << family;
    return names;
}

QList<QFont> fontsByFamilies(const QStringList& families)
{
    QList<QFont> fonts;
    for (const QString& family : families)
        if (!family.trimmed().isEmpty())
            fonts << QFont(family.trimmed());
    return fonts;
}

} // namespace FontUtils
