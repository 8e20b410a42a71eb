#include <EditorSerialization/OverlayPresets.h>

#include "TestSupport.h"

#include <gtest/gtest.h>

namespace {

struct MalformedCase
{
    const char* name;
    const char* document;
};

void PrintTo(const MalformedCase& c, std::ostream* os) { *os << c.name; }

class MalformedOverlayPresetsTest : public ::testing::TestWithParam<MalformedCase>
{
};

} // namespace

TEST(OverlayPresetsTest, WrittenPresetsReadBackEqual)
{
    Overlay::Preset preset;
    preset.name = "Caption \xc3\xa9";
    preset.setTag("Titles");
    preset.appendItem(
        Overlay::Item().setText("<b>Bold</b>").setTransform(Types::Transform(2, 0, 0, 0, 2, 0, -5, 7.5, 1)));
    const QByteArray document = Serialize::writeOverlayPresets({&preset, nullptr});
    const auto presets = Serialize::readOverlayPresets(document);
    ASSERT_EQ(presets.size(), 1u) << "null presets are skipped when writing";
    EXPECT_EQ(presets[0]->name, preset.name);
    EXPECT_EQ(presets[0]->tag(), preset.tag());
    ASSERT_EQ(presets[0]->items().size(), 1u);
    EXPECT_EQ(presets[0]->items()[0].text(), "<b>Bold</b>");
    EXPECT_EQ(presets[0]->items()[0].transform(), preset.items()[0].transform());

    TestSupport::LogCapture log;
    EXPECT_TRUE(Serialize::readOverlayPresets(Serialize::writeOverlayPresets({})).empty());
    EXPECT_TRUE(log.errors().empty()) << "an empty list is valid";
}

TEST_P(MalformedOverlayPresetsTest, RejectedWholeWithALogLine)
{
    TestSupport::LogCapture log;
    EXPECT_TRUE(Serialize::readOverlayPresets(QByteArray(GetParam().document)).empty());
    EXPECT_TRUE(log.containsError("Serialize::readOverlayPresets"));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, MalformedOverlayPresetsTest,
    ::testing::Values(
        MalformedCase{"empty", ""},
        MalformedCase{"truncated", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":["},
        MalformedCase{"binary", "\x89PNG\r\n\x1a\n\x00\x00"}, MalformedCase{"array_root", "[1,2,3]"},
        MalformedCase{"other_format", "{\"format\":\"quiz\",\"version\":1,\"presets\":[]}"},
        MalformedCase{"future_version", "{\"format\":\"overlay-presets\",\"version\":2,\"presets\":[]}"},
        MalformedCase{"presets_not_list", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":{}}"},
        MalformedCase{"preset_not_object", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[7]}"},
        MalformedCase{"no_items", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"tag\":\"t\"}]}"},
        MalformedCase{"numeric_text",
                      "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":[{\"text\":5}]}]}"},
        MalformedCase{"short_transform", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":"
                                         "[{\"text\":\"a\",\"transform\":[1,0,0]}]}]}"},
        // Qt would keep the second "presets" and lose the memory of the first.
        MalformedCase{"repeated_key", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":[]}],"
                                      "\"presets\":[{\"items\":[]}]}"},
        MalformedCase{"second_preset_bad", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":"
                                           "[]},{\"items\":[{\"text\":null}]}]}"}),
    [](const ::testing::TestParamInfo<MalformedCase>& info) { return std::string(info.param.name); });
