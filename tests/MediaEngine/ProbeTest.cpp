#include "GeneratedMedia.h"

#include <Core/FormatFile.h>
#include <MediaEngine/Probe.h>

#include <QFileInfo>

#include <gtest/gtest.h>

#include <atomic>

using namespace MediaEngine;
using Dravik::Conf::IFormatFile;
using MediaSamples::Sample;

namespace {

// Durations are compared within a frame or an audio packet or two.
constexpr double durationTolerance = 100'000;

QStringList formatGroup(int group)
{
    return QString::fromStdString(Dravik::Conf::GetSupportedFormatExtensions(group))
        .split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

constexpr int videoGroup = IFormatFile::GROUP_ALL_VIDEO, audioGroup = IFormatFile::GROUP_ALL_AUDIO,
              imageGroup = IFormatFile::GROUP_ALL_IMAGES;

struct MediaCase
{
    const char* name;
    Sample sample;
    int group;                            // the file dialogs' format group offering its extension
    QSize frameSize;                      // empty: no video stream
    boost::rational<long long> frameRate; // 0: a still picture
    qint64 videoDuration;
    int sampleRate; // 0: no audio stream
    int channels;
    const char* layout;
    qint64 audioDuration;
    boost::rational<long long> pixelAspect = 1;
};

// Each sample is listed in the format group of its kind, and the engine reports its streams.
TEST(ProbeMedia, reportsTheStreamsOfTheFile)
{
    const MediaCase rows[] = {
        {"mp4VideoWithStereoAudio", Sample::Mp4VideoAudio, videoGroup, QSize(320, 240), 25, 2'000'000, 48000, 2,
         "stereo", 2'000'000},
        {"mkvVideoOnly", Sample::MkvVideo, videoGroup, QSize(640, 360), {30000, 1001}, 1'500'000, 0, 0, "", 0},
        {"aviVideoWithMonoAudio", Sample::AviVideoAudio, videoGroup, QSize(176, 144), 15, 2'000'000, 44100, 1, "mono",
         2'000'000},
        {"mkvAnamorphic", Sample::MkvAnamorphic, videoGroup, QSize(720, 576), 25, 1'000'000, 0, 0, "", 0, {16, 15}},
        {"animatedGifIsAVideo", Sample::GifAnimation, imageGroup, QSize(64, 48), 10, 1'000'000, 0, 0, "", 0},
        {"wavStereo", Sample::WavAudio, audioGroup, QSize(), 0, 0, 44100, 2, "stereo", 1'500'000},
        {"oggMono", Sample::OggAudio, audioGroup, QSize(), 0, 0, 48000, 1, "mono", 1'000'000},
        {"png", Sample::PngImage, imageGroup, QSize(64, 48), 0, 0, 0, 0, "", 0},
        {"jpeg", Sample::JpegImage, imageGroup, QSize(80, 60), 0, 0, 0, 0, "", 0},
        {"bmp", Sample::BmpImage, imageGroup, QSize(50, 40), 0, 0, 0, 0, "", 0},
        {"webp", Sample::WebpImage, imageGroup, QSize(32, 24), 0, 0, 0, 0, "", 0},
        {"pngUnderAVideoExtension", Sample::PngNamedMov, -1, QSize(64, 48), 0, 0, 0, 0, "", 0}};
    for (const MediaCase& expected : rows) {
        SCOPED_TRACE(expected.name);
        const QString file = MediaSamples::path(expected.sample);
        if (expected.group >= 0) {
            EXPECT_TRUE(formatGroup(expected.group).contains(QFileInfo(file).suffix().toLower()));
        }
        const ProbeResult result = probeFile(file);

        ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
        EXPECT_EQ(result.errorCode, ErrorCode::None);
        EXPECT_EQ(result.path, file);
        if (expected.frameSize.isEmpty()) {
            EXPECT_TRUE(result.video.empty());
        } else {
            ASSERT_EQ(result.video.size(), 1u);
            const VideoStream& video = result.video.front();
            const bool still = expected.frameRate == 0;
            EXPECT_EQ(video.frameSize, expected.frameSize);
            EXPECT_EQ(video.frameRate, expected.frameRate);
            EXPECT_NEAR(double(video.duration), double(expected.videoDuration), still ? 0.0 : durationTolerance);
            EXPECT_EQ(video.pixelAspect, expected.pixelAspect);
            EXPECT_EQ(video.stillImage, still);
            EXPECT_NEAR(double(video.frameCount),
                        still ? 1.0
                              : boost::rational_cast<double>(expected.frameRate) * double(expected.videoDuration) / 1e6,
                        still ? 0.0 : 2.0);
        }
        if (expected.sampleRate == 0) {
            EXPECT_TRUE(result.audio.empty());
        } else {
            ASSERT_EQ(result.audio.size(), 1u);
            const AudioStream& audio = result.audio.front();
            EXPECT_EQ(audio.sampleRate, expected.sampleRate);
            EXPECT_EQ(audio.channelCount, expected.channels);
            EXPECT_EQ(audio.channelLayout.toStdString(), expected.layout);
            EXPECT_NEAR(double(audio.duration), double(expected.audioDuration), durationTolerance);
            EXPECT_GE(audio.index, 0);
        }
        EXPECT_NEAR(double(result.duration), double(std::max(expected.videoDuration, expected.audioDuration)),
                    durationTolerance);
    }
}

struct FailureCase
{
    const char* name;
    Sample sample;
    int code;
    Limits limits = {};
    bool cancelled = false;
};

Limits limitsWith(int Limits::*field, int value)
{
    Limits limits;
    limits.*field = value;
    return limits;
}

TEST(ProbeFailure, failsWithTheCodeAndNoStreams)
{
    const FailureCase rows[] = {
        {"missing", Sample::Missing, ErrorCode::FileCorrupted},
        {"folderNamedLikeAVideo", Sample::Folder, ErrorCode::FileCorrupted},
        {"pipeWithoutWriter", Sample::Pipe, ErrorCode::FileCorrupted},
        {"zeroLength", Sample::Empty, ErrorCode::FileCorrupted},
        {"textUnderAVideoExtension", Sample::TextNamedMkv, ErrorCode::FileCorrupted},
        {"randomBytes", Sample::RandomBytes, ErrorCode::FileCorrupted},
        {"mp4CutBeforeItsIndex", Sample::TruncatedMp4, ErrorCode::FileCorrupted},
        {"mkvCutInItsHeader", Sample::TruncatedMkv, ErrorCode::FileCorrupted},
        {"absurdFrameSize", Sample::HugePng, ErrorCode::FileCorrupted},
        {"codecWithoutDecoder", Sample::NoDecoder, ErrorCode::CodecNotAvailable},
        {"pastItsDeadline", Sample::Mp4VideoAudio, ErrorCode::FileCorrupted, limitsWith(&Limits::probeTimeoutMs, 0)},
        {"frameLargerThanTheLimit", Sample::Mp4VideoAudio, ErrorCode::OutOfMemory,
         limitsWith(&Limits::maxFrameSide, 200)},
        {"cancelled", Sample::Mp4VideoAudio, ErrorCode::Unknown, Limits(), true}};
    for (const FailureCase& row : rows) {
        SCOPED_TRACE(row.name);
        const std::atomic_bool cancelled{row.cancelled};
        const ProbeResult result = probeFile(MediaSamples::path(row.sample), row.limits, &cancelled);

        EXPECT_FALSE(result.ok());
        if (!row.cancelled) {
            EXPECT_EQ(result.errorCode, row.code) << result.errorMessage.toStdString();
            EXPECT_FALSE(result.errorMessage.isEmpty());
        }
        EXPECT_TRUE(result.video.empty());
        EXPECT_TRUE(result.audio.empty());
    }
}

// The file dialogs' filters list exactly what the engine opens, sorted lower case without
// dots, the familiar extension of each group leading, and the common formats among them.
TEST(SupportedExtensions, areTheFormatGroupsOfTheFileDialogs)
{
    const QStringList all = supportedExtensions();
    QStringList sorted = all;
    sorted.sort();
    sorted.removeDuplicates();
    EXPECT_EQ(all, sorted);
    for (const QString& extension : all) {
        EXPECT_EQ(extension, extension.toLower());
        EXPECT_FALSE(extension.contains(QLatin1Char('.')));
    }
    struct Group
    {
        ExtensionGroup kind;
        int group;
        const char* leading;
        std::vector<const char*> common;
    };
    int total = 0;
    for (const Group& g :
         {Group{ExtensionGroup::Video, videoGroup, "mp4", {"mp4", "mov", "mkv", "avi", "webm", "mpg", "ts"}},
          Group{ExtensionGroup::Audio, audioGroup, "mp3", {"wav", "mp3", "ogg", "flac", "m4a"}},
          Group{ExtensionGroup::Image, imageGroup, "jpg", {"png", "jpg", "jpeg", "bmp", "webp", "gif"}}}) {
        SCOPED_TRACE(g.leading);
        const QStringList engine = supportedExtensions(g.kind);
        QStringList dialog = formatGroup(g.group);
        EXPECT_EQ(dialog.value(0), QLatin1String(g.leading));
        dialog.sort();
        EXPECT_EQ(dialog, engine);
        for (const char* extension : g.common)
            EXPECT_TRUE(engine.contains(QLatin1String(extension))) << extension;
        total += engine.size();
    }
    EXPECT_EQ(all.size(), total);
    EXPECT_FALSE(supportedExtensions(ExtensionGroup::Video).contains(QStringLiteral("txt")));
    EXPECT_FALSE(supportedExtensions(ExtensionGroup::Video).contains(QStringLiteral("png")));
}

} // namespace
