#include <Core/FormatFile.h>
#include <Core/ProcessingError.h>

#include <gtest/gtest.h>

#include <set>
#include <sstream>

using namespace Dravik::Conf;

namespace {
std::set<std::string> extensions(int group)
{
    std::set<std::string> result;
    std::stringstream text(GetSupportedFormatExtensions(group));
    std::string item;
    while (std::getline(text, item, ';'))
        result.insert(item);
    return result;
}
} // namespace

// The groups' extensions against the media engine's own lists: the library's probe tests.
TEST(FormatFile, DvdStructureFilesAreNoOrdinaryMedia)
{
    // The navigation files of a DVD folder are no media; its VOB streams open one by one too.
    const auto dvd = extensions(IFormatFile::GROUP_DVD);
    EXPECT_EQ(dvd.count("ifo"), 1u);
    EXPECT_EQ(dvd.count("vob"), 1u);
    for (int group : {IFormatFile::GROUP_ALL_VIDEO, IFormatFile::GROUP_ALL_AUDIO, IFormatFile::GROUP_ALL_IMAGES})
        for (const auto& e : extensions(group))
            EXPECT_EQ(dvd.count(e), e == "vob" ? 1u : 0u) << e;
}

TEST(FormatFile, TipsAndChannelLayoutNames)
{
    EXPECT_EQ(GetFormatExtentionTip(IFormatFile::GROUP_ALL_VIDEO), "Video Files");
    EXPECT_EQ(GetFormatExtentionTip(IFormatFile::GROUP_ALL_FILES), "All Files");
    EXPECT_EQ(GetFormatExtentionTip(0), "");
    EXPECT_EQ(GetSupportedFormatExtensions(IFormatFile::GROUP_ALL_FILES), "*");
    EXPECT_EQ(GetSupportedFormatExtensions(999), "");
    EXPECT_EQ(GetChannelLayoutName(ChannelLayoutFromCount(2)), "Stereo");
    EXPECT_EQ(GetChannelLayoutName(ChannelLayoutFromCount(6)), "5.1");
    EXPECT_EQ(GetChannelLayoutName(ChannelLayoutFromCount(7)), "Unknown");
    EXPECT_EQ(ChannelLayoutFromName("5.1(side)"), ChannelLayout::Surround51);
    EXPECT_EQ(ChannelLayoutFromName("Stereo"), ChannelLayout::Stereo);
    EXPECT_EQ(ChannelLayoutFromName("downmix"), ChannelLayout::Unknown);
}

TEST(ProcessingError, CarriesItsCodeAndReport)
{
    const Dravik::Proc::ProcessingError full(22, "in.mp4", "out.mp4", "h264", "disk full", 4000);
    EXPECT_EQ(full.GetCode(), Dravik::Proc::ProcessingError::NoSpaceLeft);
    EXPECT_NE(std::string(full.what()).find("disk full"), std::string::npos);
}
