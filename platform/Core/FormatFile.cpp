#include "FormatFile.h"

#include <MediaEngine/Probe.h>

#include <algorithm>
#include <cctype>

namespace Dravik {
namespace Conf {

namespace {
// The media groups list what the media engine of this installation really opens, so a file
// dialog never offers a file that would then fail to open for want of a demuxer.
std::string engineExtensions(MediaEngine::ExtensionGroup group)
{
    static const std::string video = MediaEngine::supportedExtensions(MediaEngine::ExtensionGroup::Video)
                                         .join(QLatin1Char(';')).toStdString();
    static const std::string audio = MediaEngine::supportedExtensions(MediaEngine::ExtensionGroup::Audio)
                                         .join(QLatin1Char(';')).toStdString();
    static const std::string images = MediaEngine::supportedExtensions(MediaEngine::ExtensionGroup::Image)
                                          .join(QLatin1Char(';')).toStdString();
    switch (group) {
    case MediaEngine::ExtensionGroup::Video: return video;
    case MediaEngine::ExtensionGroup::Audio: return audio;
    case MediaEngine::ExtensionGroup::Image: return images;
    }
    return {};
}
} // namespace

std::string GetSupportedFormatExtensions(int group)
{
    switch (group) {
    case IFormatFile::GROUP_ALL_VIDEO:
        return engineExtensions(MediaEngine::ExtensionGroup::Video);
    case IFormatFile::GROUP_ALL_AUDIO:
        return engineExtensions(MediaEngine::ExtensionGroup::Audio);
    case IFormatFile::GROUP_ALL_IMAGES:
        return engineExtensions(MediaEngine::ExtensionGroup::Image);
    case IFormatFile::GROUP_ALL_FILES:
        return "*";
    case IFormatFile::GROUP_DVD:
        return "ifo;bup;vob";
    default:
        return {};
    }
}

std::string GetFormatExtentionTip(int group)
{
    switch (group) {
    case IFormatFile::GROUP_ALL_VIDEO: return "Video Files";
    case IFormatFile::GROUP_ALL_AUDIO: return "Audio Files";
    case IFormatFile::GROUP_ALL_IMAGES: return "Image Files";
    case IFormatFile::GROUP_ALL_FILES: return "All Files";
    case IFormatFile::GROUP_DVD: return "DVD Files";
    default: return {};
    }
}

std::string GetChannelLayoutName(ChannelLayout layout)
{
    switch (layout) {
    case ChannelLayout::Mono: return "Mono";
    case ChannelLayout::Stereo: return "Stereo";
    case ChannelLayout::Surround21: return "2.1";
    case ChannelLayout::Quad: return "Quad";
    case ChannelLayout::Surround50: return "5.0";
    case ChannelLayout::Surround51: return "5.1";
    case ChannelLayout::Surround71: return "7.1";
    case ChannelLayout::Unknown: break;
    }
    return "Unknown";
}

ChannelLayout ChannelLayoutFromCount(int channels)
{
    switch (channels) {
    case 1: return ChannelLayout::Mono;
    case 2: return ChannelLayout::Stereo;
    case 3: return ChannelLayout::Surround21;
    case 4: return ChannelLayout::Quad;
    case 5: return ChannelLayout::Surround50;
    case 6: return ChannelLayout::Surround51;
    case 8: return ChannelLayout::Surround71;
    default: return ChannelLayout::Unknown;
    }
}

ChannelLayout ChannelLayoutFromName(const std::string& name)
{
    std::string key = name.substr(0, name.find('('));
    std::transform(key.begin(), key.end(), key.begin(), [](unsigned char c) { return std::tolower(c); });
    if (key == "mono")
        return ChannelLayout::Mono;
    if (key == "stereo")
        return ChannelLayout::Stereo;
    if (key == "2.1")
        return ChannelLayout::Surround21;
    if (key == "quad")
        return ChannelLayout::Quad;
    if (key == "5.0")
        return ChannelLayout::Surround50;
    if (key == "5.1")
        return ChannelLayout::Surround51;
    if (key == "7.1")
        return ChannelLayout::Surround71;
    return ChannelLayout::Unknown;
}

} // namespace Conf
} // namespace Dravik
