#include "FormatFile.h"

#include <MediaEngine/Probe.h>

#include <algorithm>
#include <cctype>

namespace Dravik {
namespace Conf {

namespace {
// The media groups list what the media engine of this installation really opens, so a file
// dialog never offers a file that would then fail to open for want of a demuxer.
// The familiar extensions of a group come first, in the order users know them (a dialog's
// summary names the first), then the others the engine opens.
std::string ordered(MediaEngine::ExtensionGroup group, const QStringList& familiar)
{
    const QStringList opened = MediaEngine::supportedExtensions(group);
    QStringList result;
    for (const QString& extension : familiar) {
        if (opened.contains(extension))
            result.append(extension);
    }
    for (const QString& extension : opened) {
        if (!result.contains(extension))
            result.append(extension);
    }
    return result.join(QLatin1Char(';')).toStdString();
}

QStringList split(const char* list) { return QString::fromLatin1(list).split(QLatin1Char(';')); }

std::string engineExtensions(MediaEngine::ExtensionGroup group)
{
    static const std::string video =
        ordered(MediaEngine::ExtensionGroup::Video,
                split("mp4;m4v;mov;avi;mkv;webm;wmv;asf;flv;f4v;mpg;mpeg;mpe;m2v;ts;mts;m2ts;3gp;3g2;ogv;mxf;dv"));
    static const std::string audio = ordered(MediaEngine::ExtensionGroup::Audio,
                                             split("mp3;wav;aac;m4a;flac;ogg;oga;opus;wma;aif;aiff;ac3;mka;amr"));
    static const std::string images =
        ordered(MediaEngine::ExtensionGroup::Image, split("jpg;jpeg;png;bmp;gif;tif;tiff;webp"));
    switch (group) {
    case MediaEngine::ExtensionGroup::Video:
        return video;
    case MediaEngine::ExtensionGroup::Audio:
        return audio;
    case MediaEngine::ExtensionGroup::Image:
        return images;
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
    case IFormatFile::GROUP_ALL_VIDEO:
        return "Video Files";
    case IFormatFile::GROUP_ALL_AUDIO:
        return "Audio Files";
    case IFormatFile::GROUP_ALL_IMAGES:
        return "Image Files";
    case IFormatFile::GROUP_ALL_FILES:
        return "All Files";
    case IFormatFile::GROUP_DVD:
        return "DVD Files";
    default:
        return {};
    }
}

std::string GetChannelLayoutName(ChannelLayout layout)
{
    switch (layout) {
    case ChannelLayout::Mono:
        return "Mono";
    case ChannelLayout::Stereo:
        return "Stereo";
    case ChannelLayout::Surround21:
        return "2.1";
    case ChannelLayout::Quad:
        return "Quad";
    case ChannelLayout::Surround50:
        return "5.0";
    case ChannelLayout::Surround51:
        return "5.1";
    case ChannelLayout::Surround71:
        return "7.1";
    case ChannelLayout::Unknown:
        break;
    }
    return "Unknown";
}

ChannelLayout ChannelLayoutFromCount(int channels)
{
    switch (channels) {
    case 1:
        return ChannelLayout::Mono;
    case 2:
        return ChannelLayout::Stereo;
    case 3:
        return ChannelLayout::Surround21;
    case 4:
        return ChannelLayout::Quad;
    case 5:
        return ChannelLayout::Surround50;
    case 6:
        return ChannelLayout::Surround51;
    case 8:
        return ChannelLayout::Surround71;
    default:
        return ChannelLayout::Unknown;
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
