#pragma once

#include <Util/EditorUtilExport.h>

#include <QString>
#include <QTime>

#include <boost/rational.hpp>

namespace Dravik {
namespace Conf {
struct FrameInfo;
struct SampleInfo;
} // namespace Conf
} // namespace Dravik

namespace Media {
class Video;
class Audio;
} // namespace Media

// Texts of durations, resolutions and media settings for labels and lists.
namespace Format {

// "mm:ss" below an hour, "hh:mm:ss" below a day; from one day on "<total hours>:mm:ss"
// with the hours unpadded (90000 seconds give "25:00:00"). A negative duration gets a "-".
EDITORUTIL_EXPORT QString time(int seconds);
// As time(), with ".zzz" milliseconds unless the duration is a whole number of seconds.
// LLONG_MIN is the media engine's "no timestamp" and shows invalidTime(); every other value,
// LLONG_MAX and -LLONG_MAX included, shows as a duration.
EDITORUTIL_EXPORT QString timeMs(long long milliseconds);
// "--:--": the text of a time that is not known.
EDITORUTIL_EXPORT QString invalidTime();
// Midnight advanced by the milliseconds (wrapping at one day).
EDITORUTIL_EXPORT QTime msToQTime(long long milliseconds);

// "1920x1080".
EDITORUTIL_EXPORT QString videoResolution(const Dravik::Conf::FrameInfo& frame);
EDITORUTIL_EXPORT QString videoResolution(const Media::Video* video);
// "1920x1080 16:9": the aspect ratio reduced to lowest terms. A zero height throws
// boost::bad_rational.
EDITORUTIL_EXPORT QString videoSettings(const Dravik::Conf::FrameInfo& frame);
EDITORUTIL_EXPORT QString videoSettings(const Media::Video* video);
// "<bitrate> <sample rate> <channel layout>", the bitrate shown as "from - to" when the two
// differ: "128 - 320 44100 Stereo".
EDITORUTIL_EXPORT QString audioSettings(const Dravik::Conf::SampleInfo& samples, long long bitrateFrom,
                                        long long bitrateTo);
// The stream's rate and layout (named from the stream's layout, else from its channel count).
EDITORUTIL_EXPORT QString audioSettings(const Media::Audio* audio, long long bitrateFrom, long long bitrateTo);
// "1920x1080 16:9 29.97 FPS, 48000 Stereo".
EDITORUTIL_EXPORT QString projectSettings(const Dravik::Conf::FrameInfo& frame,
                                          const boost::rational<long long>& frameRate,
                                          const Dravik::Conf::SampleInfo& samples);
// The same from the model's streams (the video's frame rate).
EDITORUTIL_EXPORT QString projectSettings(const Media::Video* video, const Media::Audio* audio);
// The Media overloads give an empty text, with a logged error, for a null stream.

// <a href="link" style="style">text</a>.
EDITORUTIL_EXPORT QString textWithLink(QString text, QString link, QString style);
// QString::number(value, format, precision).
EDITORUTIL_EXPORT QString prettyNumber(double value, char format, int precision);
EDITORUTIL_EXPORT int localeAwareCompare(const QString& a, const QString& b);

} // namespace Format
