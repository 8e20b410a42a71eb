#include <EditorSerialization/OverlayPresets.h>

#include "TestSupport.h"

#include <gtest/gtest.h>

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
    // Up to the size limit a document is read; one byte more is refused unread.
    QByteArray padded = document;
    padded.append(Serialize::maxOverlayPresetBytes - document.size(), ' ');
    EXPECT_EQ(Serialize::readOverlayPresets(padded).size(), 1u);
    TestSupport::LogCapture tooLarge;
    EXPECT_TRUE(Serialize::readOverlayPresets(padded + ' ').empty());
    EXPECT_TRUE(tooLarge.containsError("document too large"));

    TestSupport::LogCapture log;
    EXPECT_TRUE(Serialize::readOverlayPresets(Serialize::writeOverlayPresets({})).empty());
    EXPECT_TRUE(log.errors().empty()) << "an empty list is valid";
}

// A document that is not a list of presets of this format is refused whole, with a log line.
TEST(OverlayPresetsTest, MalformedDocumentsAreRejectedWholeWithALogLine)
{
    struct Row
    {
        const char* name;
        QByteArray document;
    };
    const Row rows[] = {
        {"empty", ""},
        {"truncated", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":["},
        {"binary", QByteArray("\x89PNG\r\n\x1a\n\x00\x00")},
        {"array root", "[1,2,3]"},
        {"other format", "{\"format\":\"quiz\",\"version\":1,\"presets\":[]}"},
        {"future version", "{\"format\":\"overlay-presets\",\"version\":2,\"presets\":[]}"},
        {"presets not a list", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":{}}"},
        {"preset not an object", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[7]}"},
        {"no items", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"tag\":\"t\"}]}"},
        {"numeric text", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":[{\"text\":5}]}]}"},
        {"short transform", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":"
                            "[{\"text\":\"a\",\"transform\":[1,0,0]}]}]}"},
        // Qt would keep the second "presets" and lose the memory of the first.
        {"repeated key", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":[]}],"
                         "\"presets\":[{\"items\":[]}]}"},
        {"second preset bad", "{\"format\":\"overlay-presets\",\"version\":1,\"presets\":[{\"items\":"
                              "[]},{\"items\":[{\"text\":null}]}]}"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        TestSupport::LogCapture log;
        EXPECT_TRUE(Serialize::readOverlayPresets(row.document).empty());
        EXPECT_TRUE(log.containsError("Serialize::readOverlayPresets"));
    }
}
