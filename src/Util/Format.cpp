#include "Format.h"

#include <Util/Interfaces/Core.h>
#include <Util/Interfaces/EditorModel.h>

#include <QCoreApplication>

#include <glog/logging.h>

#include <cstdlib>
#include <limits>

namespace Format {

namespace {

constexpr long long kMsPerDay = 86400LL * 1000;

// Appends `value` with at least `width` digits.
char* putNumber(char* out, long long value, int width)
{
    char digits[24];
    int n = 0;
    do {
        digits[n++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value > 0);
    for (int i = n; i < width; ++i)
        *out++ = '0';
    while (n > 0)
        *out++ = digits[--n];
    return out;
}

// Formats a non-negative duration. `hoursMode`: 0 none, 1 "hh:" of the time of day, 2 total
// hours unpadded. Minutes, seconds and milliseconds are those of the time of day, as QTime
// shows them.
QString formatDuration(long long totalMs, int hoursMode, long long totalHours, bool withMs, bool negative)
{
    const long long dayMs = totalMs % kMsPerDay;
    char buffer[48];
    char* out = buffer;
    if (negative)
        *out++ = '-';
    if (hoursMode == 1) {
        out = putNumber(out, dayMs / 3600000, 2);
        *out++ = ':';
    } else if (hoursMode == 2) {
        out = putNumber(out, totalHours, 1);
        *out++ = ':';
    }
    out = putNumber(out, dayMs / 60000 % 60, 2);
    *out++ = ':';
    out = putNumber(out, dayMs / 1000 % 60, 2);
    if (withMs) {
        *out++ = '.';
        out = putNumber(out, dayMs % 1000, 3);
    }
    return QString::fromLatin1(buffer, static_cast<int>(out - buffer));
}

QString channelLayoutName(Dravik::Conf::ChannelLayout layout)
{
    return QCoreApplication::translate("core", Dravik::Conf::GetChannelLayoutName(layout).c_str());
}

QString aspectText(std::int32_t width, std::int32_t height)
{
    // Reported as the rational library words it, whatever its version.
    if (height == 0)
        throw boost::bad_rational("bad rational: non-zero singular denominator");
    const boost::rational<long long> aspect(width, height);
    return QString::number(aspect.numerator()) + QLatin1Char(':') + QString::number(aspect.denominator());
}

Dravik::Conf::FrameInfo frameOf(const Media::Video& video)
{
    Dravik::Conf::FrameInfo frame;
    frame.width = video.width;
    frame.height = video.height;
    return frame;
}

Dravik::Conf::SampleInfo samplesOf(const Media::Audio& audio)
{
    Dravik::Conf::SampleInfo samples;
    samples.sampleRate = audio.sampleRate;
    samples.channels = audio.channels;
    samples.channelLayout = Dravik::Conf::ChannelLayoutFromName(audio.channelLayout.str());
    if (samples.channelLayout == Dravik::Conf::ChannelLayout::Unknown)
        samples.channelLayout = Dravik::Conf::ChannelLayoutFromCount(audio.channels);
    return samples;
}

bool present(const void* stream, const char* function)
{
    if (!stream)
        LOG(ERROR) << "Format::" << function << ": no stream given";
    return stream != nullptr;
}

} // namespace

QString time(int seconds)
{
    const bool negative = seconds < 0;
    const long long s = std::llabs(static_cast<long long>(seconds));
    if (s < 3600)
        return formatDuration(s * 1000, 0, 0, false, negative);
    if (s < 86400)
        return formatDuration(s * 1000, 1, 0, false, negative);
    return formatDuration(s * 1000, 2, s / 3600, false, negative);
}

QString invalidTime() { return QStringLiteral("--:--"); }

QString timeMs(long long milliseconds)
{
    if (milliseconds == std::numeric_limits<long long>::min()) // has no positive counterpart
        return invalidTime();
    const bool negative = milliseconds < 0;
    const long long ms = negative ? -milliseconds : milliseconds;
    const long long wholeSeconds = ms / 1000;
    const bool withMs = ms % 1000 != 0;
    if (wholeSeconds < 3600)
        return formatDuration(ms, 0, 0, withMs, negative);
    if (wholeSeconds < 86400)
        return formatDuration(ms, 1, 0, withMs, negative);
    return formatDuration(ms, 2, wholeSeconds / 3600, withMs, negative);
}

QTime msToQTime(long long milliseconds)
{
    long long dayMs = milliseconds % kMsPerDay;
    if (dayMs < 0)
        dayMs += kMsPerDay;
    return QTime(0, 0, 0, 0).addMSecs(static_cast<int>(dayMs));
}

QString videoResolution(const Dravik::Conf::FrameInfo& frame)
{
    return QString::number(frame.width) + QLatin1Char('x') + QString::number(frame.height);
}

QString videoSettings(const Dravik::Conf::FrameInfo& frame)
{
    return videoResolution(frame) + QLatin1Char(' ') + aspectText(frame.width, frame.height);
}

QString audioSettings(const Dravik::Conf::SampleInfo& samples, long long bitrateFrom, long long bitrateTo)
{
    const QString bitrate = bitrateFrom == bitrateTo
                                ? QString::number(bitrateFrom)
                                : QString::number(bitrateFrom) + QStringLiteral(" - ") + QString::number(bitrateTo);
    return QStringLiteral("%1 %2 %3")
        .arg(bitrate, QString::number(samples.sampleRate), channelLayoutName(samples.channelLayout));
}

QString projectSettings(const Dravik::Conf::FrameInfo& frame, const boost::rational<long long>& frameRate,
                        const Dravik::Conf::SampleInfo& samples)
{
    const double fps = frameRate.denominator() == 0 ? 0.0 : boost::rational_cast<double>(frameRate);
    return QStringLiteral("%1 %2 %3, %4 %5")
        .arg(videoSettings(frame), QString::number(fps, 'g', 5), QCoreApplication::translate("Format", "FPS"),
             QString::number(samples.sampleRate), channelLayoutName(samples.channelLayout));
}

QString videoResolution(const Media::Video* video)
{
    return present(video, "videoResolution") ? videoResolution(frameOf(*video)) : QString();
}

QString videoSettings(const Media::Video* video)
{
    return present(video, "videoSettings") ? videoSettings(frameOf(*video)) : QString();
}

QString audioSettings(const Media::Audio* audio, long long bitrateFrom, long long bitrateTo)
{
    return present(audio, "audioSettings") ? audioSettings(samplesOf(*audio), bitrateFrom, bitrateTo) : QString();
}

QString projectSettings(const Media::Video* video, const Media::Audio* audio)
{
    if (!present(video, "projectSettings") || !present(audio, "projectSettings"))
        return QString();
    return projectSettings(frameOf(*video), video->frameRate, samplesOf(*audio));
}

QString textWithLink(QString text, QString link, QString style)
{
    return QStringLiteral("<a href=\"%1\" style=\"%2\">%3</a>").arg(link, style, text);
}

QString prettyNumber(double value, char format, int precision) { return QString::number(value, format, precision); }

int localeAwareCompare(const QString& a, const QString& b) { return QString::localeAwareCompare(a, b); }

} // namespace Format
