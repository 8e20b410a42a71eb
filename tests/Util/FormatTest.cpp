#include <Util/Format.h>

#include <Core/FormatFile.h>

#include <gtest/gtest.h>

#include <climits>

#include "TestSupport.h"

using TestSupport::S;

TEST(Format, Durations)
{
    const struct
    {
        bool milliseconds;
        long long value;
        const char* expected;
    } rows[] = {{false, 0, "00:00"},
                {false, 59, "00:59"},
                {false, 61, "01:01"},
                {false, 3599, "59:59"},
                {false, 3600, "01:00:00"},
                {false, 86399, "23:59:59"},
                {false, 86400, "24:00:00"},
                {false, 90061, "25:01:01"},
                {false, 360000, "100:00:00"},
                {false, -59, "-00:59"},
                {true, 1500, "00:01.500"},
                {true, 2000, "00:02"},
                {true, 7, "00:00.007"},
                {true, 3600000, "01:00:00"},
                {true, 3600001, "01:00:00.001"},
                {true, 90000250, "25:00:00.250"},
                {true, -1500, "-00:01.500"},
                // The extremes: "no timestamp" is dashed, the rest are durations.
                {true, LLONG_MIN, "--:--"},
                {true, LLONG_MAX, "2562047788015:12:55.807"},
                {true, -LLONG_MAX, "-2562047788015:12:55.807"},
                {false, INT_MIN, "-596523:14:08"},
                {false, INT_MAX, "596523:14:07"}};
    for (const auto& c : rows) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(c.milliseconds ? Format::timeMs(c.value) : Format::time(static_cast<int>(c.value)), S(c.expected));
    }
}

TEST(Format, MsToQTimeWrapsAtADay)
{
    EXPECT_EQ(Format::msToQTime(3723004), QTime(1, 2, 3, 4));
    EXPECT_EQ(Format::msToQTime(86400000LL + 5), QTime(0, 0, 0, 5));
    EXPECT_EQ(Format::msToQTime(-1000), QTime(23, 59, 59));
    EXPECT_EQ(Format::msToQTime(LLONG_MIN), QTime(16, 47, 4, 192));
}

TEST(Format, VideoSettingsShowTheReducedAspect)
{
    const struct
    {
        int width;
        int height;
        const char* expected;
    } rows[] = {{1920, 1080, "1920x1080 16:9"}, {1280, 720, "1280x720 16:9"},   {720, 576, "720x576 5:4"},
                {640, 480, "640x480 4:3"},      {1080, 1920, "1080x1920 9:16"}, {0, 10, "0x10 0:1"}};
    for (const auto& c : rows) {
        SCOPED_TRACE(c.expected);
        Dravik::Conf::FrameInfo frame;
        frame.width = c.width;
        frame.height = c.height;
        EXPECT_EQ(Format::videoSettings(frame), S(c.expected));
    }
}

TEST(Format, ZeroHeightIsTheRationalLibrarysError)
{
    Dravik::Conf::FrameInfo frame;
    frame.width = 1920;
    EXPECT_EQ(Format::videoResolution(frame), S("1920x0"));
    try {
        Format::videoSettings(frame);
        FAIL() << "no exception";
    } catch (const boost::bad_rational& e) {
        EXPECT_STREQ(e.what(), "bad rational: non-zero singular denominator");
    }
}

TEST(Format, AudioAndProjectSettings)
{
    Dravik::Conf::SampleInfo samples;
    samples.sampleRate = 44100;
    samples.channels = 2;
    samples.channelLayout = Dravik::Conf::ChannelLayout::Stereo;
    EXPECT_EQ(Format::audioSettings(samples, 192, 192), S("192 44100 Stereo"));
    EXPECT_EQ(Format::audioSettings(samples, 128, 320), S("128 - 320 44100 Stereo"));

    Dravik::Conf::FrameInfo frame;
    frame.width = 1920;
    frame.height = 1080;
    samples.sampleRate = 48000;
    samples.channelLayout = Dravik::Conf::ChannelLayout::Surround51;
    EXPECT_EQ(Format::projectSettings(frame, boost::rational<long long>(30000, 1001), samples),
              S("1920x1080 16:9 29.97 FPS, 48000 5.1"));
    EXPECT_EQ(Format::projectSettings(frame, boost::rational<long long>(25), samples),
              S("1920x1080 16:9 25 FPS, 48000 5.1"));
    EXPECT_EQ(Format::projectSettings(frame, boost::rational<long long>(24000, 1001), samples),
              S("1920x1080 16:9 23.976 FPS, 48000 5.1"));
}

TEST(Format, LinksNumbersAndComparison)
{
    EXPECT_EQ(Format::textWithLink(S("buy"), S("https://shop.test"), S("color:red")),
              S("<a href=\"https://shop.test\" style=\"color:red\">buy</a>"));
    EXPECT_EQ(Format::prettyNumber(3.14159, 'f', 2), S("3.14"));
    EXPECT_EQ(Format::prettyNumber(1500000, 'g', 3), S("1.5e+06"));
    EXPECT_LT(Format::localeAwareCompare(S("a"), S("b")), 0);
    EXPECT_EQ(Format::localeAwareCompare(S("same"), S("same")), 0);
}

// The model's streams.

#include <EditorModel/Media.h>

TEST(FormatMedia, ReadsTheStreamsOfTheModel)
{
    Media::Video video;
    video.width = 1280;
    video.height = 720;
    video.frameRate = boost::rational<long long>(30000, 1001);
    Media::Audio audio;
    audio.sampleRate = 44100;
    audio.channels = 2;
    audio.channelLayout = Types::String("stereo");
    EXPECT_EQ(Format::videoResolution(&video), S("1280x720"));
    EXPECT_EQ(Format::videoSettings(&video), S("1280x720 16:9"));
    EXPECT_EQ(Format::audioSettings(&audio, 96, 160), S("96 - 160 44100 Stereo"));
    EXPECT_EQ(Format::projectSettings(&video, &audio), S("1280x720 16:9 29.97 FPS, 44100 Stereo"));

    audio.channelLayout = Types::String("5.1(side)");
    EXPECT_EQ(Format::audioSettings(&audio, 1, 1), S("1 44100 5.1"));
    audio.channelLayout = Types::String();
    audio.channels = 1;
    EXPECT_EQ(Format::audioSettings(&audio, 1, 1), S("1 44100 Mono"));
}

TEST(FormatMedia, NullStreamsGiveEmptyTexts)
{
    TestSupport::LogCapture log;
    Media::Video video;
    video.width = 4;
    video.height = 3;
    EXPECT_EQ(Format::videoResolution(static_cast<const Media::Video*>(nullptr)), QString());
    EXPECT_EQ(Format::videoSettings(static_cast<const Media::Video*>(nullptr)), QString());
    EXPECT_EQ(Format::audioSettings(static_cast<const Media::Audio*>(nullptr), 1, 2), QString());
    EXPECT_EQ(Format::projectSettings(&video, nullptr), QString());
    EXPECT_TRUE(log.containsError("no stream given"));
}
