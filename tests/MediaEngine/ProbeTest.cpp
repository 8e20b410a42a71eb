#include "GeneratedMedia.h"

#include <Core/FormatFile.h>
#include <MediaEngine/Probe.h>

#include <QFileInfo>

#include <gtest/gtest.h>

#include <atomic>

using namespace MediaEngine;
using MediaSamples::Sample;

namespace {

// Durations are compared within a frame or an audio packet or two.
constexpr qint64 durationTolerance = 100'000;

struct MediaCase
{
    const char* name;
    Sample sample;
    QSize frameSize;                       // empty: no video stream
    boost::rational<long long> frameRate;
    qint64 videoDuration;
    int sampleRate;                        // 0: no audio stream
    int channels;
    const char* layout;
    qint64 audioDuration;
};

class ProbeMedia : public testing::TestWithParam<MediaCase>
{
};

TEST_P(ProbeMedia, reportsTheStreamsOfTheFile)
{
    const MediaCase& expected = GetParam();
    const QString file = MediaSamples::path(expected.sample);
    const ProbeResult result = probeFile(file);

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    EXPECT_EQ(result.errorCode, ErrorCode::None);
    EXPECT_EQ(result.path, file);
    if (expected.frameSize.isEmpty()) {
        EXPECT_TRUE(result.video.empty());
    } else {
        ASSERT_EQ(result.video.size(), 1u);
        const VideoStream& video = result.video.front();
        EXPECT_EQ(video.frameSize, expected.frameSize);
        EXPECT_EQ(video.frameRate, expected.frameRate);
        EXPECT_NEAR(double(video.duration), double(expected.videoDuration), double(durationTolerance));
        EXPECT_EQ(video.pixelAspect, boost::rational<long long>(1));
        EXPECT_FALSE(video.stillImage);
        EXPECT_NEAR(double(video.frameCount),
                    boost::rational_cast<double>(expected.frameRate) * double(expected.videoDuration) / 1e6, 2.0);
    }
    if (expected.sampleRate == 0) {
        EXPECT_TRUE(result.audio.empty());
    } else {
        ASSERT_EQ(result.audio.size(), 1u);
        const AudioStream& audio = result.audio.front();
        EXPECT_EQ(audio.sampleRate, expected.sampleRate);
        EXPECT_EQ(audio.channelCount, expected.channels);
        EXPECT_EQ(audio.channelLayout.toStdString(), expected.layout);
        EXPECT_NEAR(double(audio.duration), double(expected.audioDuration), double(durationTolerance));
        EXPECT_GE(audio.index, 0);
    }
    EXPECT_NEAR(double(result.duration), double(std::max(expected.videoDuration, expected.audioDuration)),
                double(durationTolerance));
}

INSTANTIATE_TEST_SUITE_P(
    Containers, ProbeMedia,
    testing::Values(
        MediaCase{"mp4VideoWithStereoAudio", Sample::Mp4VideoAudio, QSize(320, 240), 25, 2'000'000, 48000, 2, "stereo", 2'000'000},
        MediaCase{"mkvVideoOnly", Sample::MkvVideo, QSize(640, 360), {30000, 1001}, 1'500'000, 0, 0, "", 0},
        MediaCase{"aviVideoWithMonoAudio", Sample::AviVideoAudio, QSize(176, 144), 15, 2'000'000, 44100, 1, "mono", 2'000'000},
        MediaCase{"wavStereo", Sample::WavAudio, QSize(), 0, 0, 44100, 2, "stereo", 1'500'000},
        MediaCase{"oggMono", Sample::OggAudio, QSize(), 0, 0, 48000, 1, "mono", 1'000'000}),
    [](const testing::TestParamInfo<MediaCase>& info) { return std::string(info.param.name); });

struct ImageCase
{
    const char* name;
    Sample sample;
    QSize frameSize;
};

class ProbeImage : public testing::TestWithParam<ImageCase>
{
};

TEST_P(ProbeImage, isOneStillFrame)
{
    const ProbeResult result = probeFile(MediaSamples::path(GetParam().sample));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    ASSERT_EQ(result.video.size(), 1u);
    EXPECT_TRUE(result.audio.empty());
    const VideoStream& video = result.video.front();
    EXPECT_EQ(video.frameSize, GetParam().frameSize);
    EXPECT_TRUE(video.stillImage);
    EXPECT_EQ(video.frameCount, 1);
    EXPECT_EQ(video.duration, 0);
    EXPECT_EQ(video.frameRate, boost::rational<long long>(0));
}

INSTANTIATE_TEST_SUITE_P(Formats, ProbeImage,
                         testing::Values(ImageCase{"png", Sample::PngImage, QSize(64, 48)},
                                         ImageCase{"jpeg", Sample::JpegImage, QSize(80, 60)},
                                         ImageCase{"bmp", Sample::BmpImage, QSize(50, 40)},
                                         ImageCase{"webp", Sample::WebpImage, QSize(32, 24)},
                                         ImageCase{"pngUnderAVideoExtension", Sample::PngNamedMov, QSize(64, 48)}),
                         [](const testing::TestParamInfo<ImageCase>& info) { return std::string(info.param.name); });

TEST(ProbeAnimatedPicture, isAVideoOfItsFrames)
{
    const ProbeResult result = probeFile(MediaSamples::path(Sample::GifAnimation));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    ASSERT_EQ(result.video.size(), 1u);
    const VideoStream& video = result.video.front();
    EXPECT_FALSE(video.stillImage);
    EXPECT_EQ(video.frameSize, QSize(64, 48));
    EXPECT_EQ(video.frameRate, boost::rational<long long>(10));
    EXPECT_NEAR(double(video.duration), 1e6, 100'000.0);
}

TEST(ProbeAnamorphic, reportsThePixelAspect)
{
    const ProbeResult result = probeFile(MediaSamples::path(Sample::MkvAnamorphic));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    ASSERT_EQ(result.video.size(), 1u);
    EXPECT_EQ(result.video.front().frameSize, QSize(720, 576));
    EXPECT_EQ(result.video.front().pixelAspect, boost::rational<long long>(16, 15));
}

struct FailureCase
{
    const char* name;
    Sample sample;
    int code;
};

class ProbeFailure : public testing::TestWithParam<FailureCase>
{
};

TEST_P(ProbeFailure, failsWithTheCodeAndNoStreams)
{
    const ProbeResult result = probeFile(MediaSamples::path(GetParam().sample));

    EXPECT_FALSE(result.ok());
    EXPECT_EQ(result.errorCode, GetParam().code) << result.errorMessage.toStdString();
    EXPECT_FALSE(result.errorMessage.isEmpty());
    EXPECT_TRUE(result.video.empty());
    EXPECT_TRUE(result.audio.empty());
}

INSTANTIATE_TEST_SUITE_P(
    BrokenFiles, ProbeFailure,
    testing::Values(FailureCase{"missing", Sample::Missing, ErrorCode::FileCorrupted},
                    FailureCase{"folderNamedLikeAVideo", Sample::Folder, ErrorCode::FileCorrupted},
                    FailureCase{"pipeWithoutWriter", Sample::Pipe, ErrorCode::FileCorrupted},
                    FailureCase{"zeroLength", Sample::Empty, ErrorCode::FileCorrupted},
                    FailureCase{"textUnderAVideoExtension", Sample::TextNamedMkv, ErrorCode::FileCorrupted},
                    FailureCase{"randomBytes", Sample::RandomBytes, ErrorCode::FileCorrupted},
                    FailureCase{"mp4CutBeforeItsIndex", Sample::TruncatedMp4, ErrorCode::FileCorrupted},
                    FailureCase{"mkvCutInItsHeader", Sample::TruncatedMkv, ErrorCode::FileCorrupted},
                    FailureCase{"absurdFrameSize", Sample::HugePng, ErrorCode::FileCorrupted},
                    FailureCase{"codecWithoutDecoder", Sample::NoDecoder, ErrorCode::CodecNotAvailable}),
    [](const testing::TestParamInfo<FailureCase>& info) { return std::string(info.param.name); });

TEST(ProbeCancellation, aCancelledProbeFailsWithoutStreams)
{
    const std::atomic_bool cancelled{true};
    const ProbeResult result = probeFile(MediaSamples::path(Sample::Mp4VideoAudio), Limits(), &cancelled);

    EXPECT_FALSE(result.ok());
    EXPECT_TRUE(result.video.empty());
    EXPECT_TRUE(result.audio.empty());
}

TEST(ProbeLimits, aProbePastItsDeadlineFailsAsUnreadable)
{
    Limits limits;
    limits.probeTimeoutMs = 0;
    const ProbeResult result = probeFile(MediaSamples::path(Sample::Mp4VideoAudio), limits);

    EXPECT_EQ(result.errorCode, ErrorCode::FileCorrupted);
    EXPECT_TRUE(result.video.empty());
}

TEST(ProbeLimits, aFrameLargerThanTheLimitFailsAsOutOfMemory)
{
    Limits limits;
    limits.maxFrameSide = 200;
    const ProbeResult result = probeFile(MediaSamples::path(Sample::Mp4VideoAudio), limits);

    EXPECT_EQ(result.errorCode, ErrorCode::OutOfMemory);
}

TEST(SupportedExtensions, listTheCommonFormatsOfEachGroup)
{
    const QStringList video = supportedExtensions(ExtensionGroup::Video);
    const QStringList audio = supportedExtensions(ExtensionGroup::Audio);
    const QStringList image = supportedExtensions(ExtensionGroup::Image);
    for (const char* extension : {"mp4", "mov", "mkv", "avi", "webm", "mpg", "ts"})
        EXPECT_TRUE(video.contains(QLatin1String(extension))) << extension;
    for (const char* extension : {"wav", "mp3", "ogg", "flac", "m4a"})
        EXPECT_TRUE(audio.contains(QLatin1String(extension))) << extension;
    for (const char* extension : {"png", "jpg", "jpeg", "bmp", "webp", "gif"})
        EXPECT_TRUE(image.contains(QLatin1String(extension))) << extension;
    EXPECT_FALSE(video.contains(QStringLiteral("txt")));
    EXPECT_FALSE(video.contains(QStringLiteral("png")));
}

TEST(SupportedExtensions, allAreSortedLowerCaseWithoutRepeatsOrDots)
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
    EXPECT_EQ(all.size(), supportedExtensions(ExtensionGroup::Video).size()
                              + supportedExtensions(ExtensionGroup::Audio).size()
                              + supportedExtensions(ExtensionGroup::Image).size());
}

} // namespace

namespace {

QStringList formatGroup(int group)
{
    return QString::fromStdString(Dravik::Conf::GetSupportedFormatExtensions(group))
        .split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

struct GroupSample
{
    const char* name;
    Sample sample;
    int group;
};

class FormatGroupsOpen : public ::testing::TestWithParam<GroupSample>
{
};

} // namespace

// The file dialogs' filters come from the format groups: each generated sample's extension
// is offered in the group of its kind, and the engine opens it.
TEST_P(FormatGroupsOpen, aSampleOfTheGroupIsListedAndOpens)
{
    const GroupSample& param = GetParam();
    const QString file = MediaSamples::path(param.sample);
    ASSERT_FALSE(file.isEmpty());
    const QString extension = QFileInfo(file).suffix().toLower();

    EXPECT_TRUE(formatGroup(param.group).contains(extension)) << extension.toStdString();
    const ProbeResult result = probeFile(file);
    EXPECT_EQ(result.errorCode, ErrorCode::None) << extension.toStdString();
}

INSTANTIATE_TEST_SUITE_P(
    Samples, FormatGroupsOpen,
    ::testing::Values(GroupSample{"mp4", Sample::Mp4VideoAudio, Dravik::Conf::IFormatFile::GROUP_ALL_VIDEO},
                      GroupSample{"mkv", Sample::MkvVideo, Dravik::Conf::IFormatFile::GROUP_ALL_VIDEO},
                      GroupSample{"avi", Sample::AviVideoAudio, Dravik::Conf::IFormatFile::GROUP_ALL_VIDEO},
                      GroupSample{"wav", Sample::WavAudio, Dravik::Conf::IFormatFile::GROUP_ALL_AUDIO},
                      GroupSample{"ogg", Sample::OggAudio, Dravik::Conf::IFormatFile::GROUP_ALL_AUDIO},
                      GroupSample{"png", Sample::PngImage, Dravik::Conf::IFormatFile::GROUP_ALL_IMAGES},
                      GroupSample{"jpeg", Sample::JpegImage, Dravik::Conf::IFormatFile::GROUP_ALL_IMAGES},
                      GroupSample{"bmp", Sample::BmpImage, Dravik::Conf::IFormatFile::GROUP_ALL_IMAGES},
                      GroupSample{"webp", Sample::WebpImage, Dravik::Conf::IFormatFile::GROUP_ALL_IMAGES}),
    [](const ::testing::TestParamInfo<GroupSample>& info) { return std::string(info.param.name); });

TEST(FormatGroups, listExactlyTheEnginesExtensions)
{
    using Dravik::Conf::IFormatFile;
    auto sorted = [](QStringList list) {
        list.sort();
        return list;
    };
    EXPECT_EQ(sorted(formatGroup(IFormatFile::GROUP_ALL_VIDEO)), sorted(supportedExtensions(ExtensionGroup::Video)));
    EXPECT_EQ(sorted(formatGroup(IFormatFile::GROUP_ALL_AUDIO)), sorted(supportedExtensions(ExtensionGroup::Audio)));
    EXPECT_EQ(sorted(formatGroup(IFormatFile::GROUP_ALL_IMAGES)), sorted(supportedExtensions(ExtensionGroup::Image)));
    // The familiar extension of each group leads, as file dialogs summarise it.
    EXPECT_EQ(formatGroup(IFormatFile::GROUP_ALL_VIDEO).value(0), QStringLiteral("mp4"));
    EXPECT_EQ(formatGroup(IFormatFile::GROUP_ALL_AUDIO).value(0), QStringLiteral("mp3"));
    EXPECT_EQ(formatGroup(IFormatFile::GROUP_ALL_IMAGES).value(0), QStringLiteral("jpg"));
}
