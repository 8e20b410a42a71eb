#pragma once

#include <cstdint>
#include <string>

namespace Dravik {
namespace Conf {

// Named groups of file extensions the media engine opens.
class IFormatFile
{
public:
    enum Group : int
    {
        GROUP_ALL_VIDEO = 1,
        GROUP_ALL_AUDIO = 2,
        GROUP_ALL_IMAGES = 3,
        GROUP_ALL_FILES = 4,
        // Files of a DVD's folder structure: navigation files (ifo, bup) and the VOB streams.
        GROUP_DVD = 5,
    };
};

// Lower-case extensions of a group without dots, separated by ";" ("mp4;mov;..."). The
// all-files group is "*". An unknown group gives an empty text.
std::string GetSupportedFormatExtensions(int group);

// Untranslated description of a group for file-dialog filters ("Video Files"); translate it
// in the "core" context. An unknown group gives an empty text.
std::string GetFormatExtentionTip(int group);

// Speaker arrangement of an audio stream.
enum class ChannelLayout : std::int32_t
{
    Unknown,
    Mono,
    Stereo,
    Surround21,
    Quad,
    Surround50,
    Surround51,
    Surround71
};

// Untranslated name of a layout ("Stereo", "5.1"); translate it in the "core" context.
std::string GetChannelLayoutName(ChannelLayout layout);
// The usual layout of a channel count (1 mono, 2 stereo, 6 5.1...), Unknown when none is.
ChannelLayout ChannelLayoutFromCount(int channels);
// The layout of an FFmpeg-style layout name ("mono", "stereo", "5.1(side)"...), case
// insensitive; Unknown for other names.
ChannelLayout ChannelLayoutFromName(const std::string& name);

// Picture geometry of a video stream.
struct FrameInfo
{
    std::int32_t width = 0;
    std::int32_t height = 0;
    // Pixel aspect ratio (width of a pixel relative to its height).
    std::int32_t pixelAspectNum = 1;
    std::int32_t pixelAspectDen = 1;
};

// Sample format of an audio stream.
struct SampleInfo
{
    std::int32_t sampleRate = 0;
    std::int32_t channels = 0;
    ChannelLayout channelLayout = ChannelLayout::Unknown;
};

} // namespace Conf
} // namespace Dravik
