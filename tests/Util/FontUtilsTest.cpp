#include <Util/FontUtils.h>

#include <gtest/gtest.h>

#include "TestSupport.h"

using TestSupport::S;

TEST(FontUtils, NamesWithStyleComeBeforeTheFamilyAndEachNamedFamilyGivesOneFont)
{
    QFont font(S("DejaVu Sans"));
    font.setStyleName(S("Bold Oblique"));
    EXPECT_EQ(FontUtils::fontNamesWithStyle(font), (QStringList{S("DejaVu Sans Bold Oblique"), S("DejaVu Sans")}));

    const QList<QFont> fonts = FontUtils::fontsByFamilies({S("Serif"), S("  "), S(" Sans "), QString()});
    ASSERT_EQ(fonts.size(), 2);
    EXPECT_EQ(fonts[0].family(), S("Serif"));
    EXPECT_EQ(fonts[1].family(), S("Sans"));
    EXPECT_TRUE(FontUtils::fontsByFamilies({}).isEmpty());
}
