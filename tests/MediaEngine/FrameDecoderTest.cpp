#include "GeneratedMedia.h"

#include <MediaEngine/FrameDecoder.h>

#include <TestSupport.h>

#include <gtest/gtest.h>

using namespace MediaEngine;
using MediaSamples::Sample;

namespace {

// Lossy codecs and scaling shift colours a little; a colour is recognised by being near.
bool near(QRgb actual, QColor expected, int tolerance = 48)
{
    return qAbs(qRed(actual) - expected.red()) <= tolerance && qAbs(qGreen(actual) - expected.green()) <= tolerance
        && qAbs(qBlue(actual) - expected.blue()) <= tolerance && qAbs(qAlpha(actual) - expected.alpha()) <= tolerance;
}

std::string describe(QRgb colour)
{
    return QColor::fromRgba(colour).name(QColor::HexArgb).toStdString();
}

FrameRequest requestOf(Sample sample, qint64 time, QSize size, ResizeMode mode = ResizeMode::KeepAspectRatioByExpanding,
                       QColor padding = QColor())
{
    FrameRequest request;
    request.path = MediaSamples::path(sample);
    request.time = time;
    request.size = size;
    request.resizeMode = mode;
    request.paddingColor = padding;
    return request;
}

struct TimeCase
{
    const char* name;
    qint64 time;
    Qt::GlobalColor colour;
    qint64 frameTime; // the frame expected, within half a frame
};

class DecodeAtTime : public testing::TestWithParam<TimeCase>
{
};

TEST_P(DecodeAtTime, givesTheFrameNearestTheTime)
{
    const FrameResult result = decodeFrame(requestOf(Sample::Mp4Colours, GetParam().time, QSize(160, 90)));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    EXPECT_EQ(result.image.size(), QSize(160, 90));
    EXPECT_EQ(result.image.format(), QImage::Format_ARGB32_Premultiplied);
    const QRgb centre = result.image.pixel(80, 45);
    EXPECT_TRUE(near(centre, GetParam().colour)) << describe(centre);
    EXPECT_NEAR(double(result.frameTime), double(GetParam().frameTime), 20'000.0);
    EXPECT_FALSE(result.fromCache);
}

INSTANTIATE_TEST_SUITE_P(
    ColourChange, DecodeAtTime,
    testing::Values(TimeCase{"start", 0, Qt::red, 0}, TimeCase{"beforeTheStart", -5'000'000, Qt::red, 0},
                    TimeCase{"betweenKeyFrames", 530'000, Qt::red, 520'000},
                    TimeCase{"lastRedFrame", 960'000, Qt::red, 960'000},
                    TimeCase{"firstBlueFrame", 1'000'000, Qt::blue, 1'000'000},
                    TimeCase{"nearerTheNextFrame", 1'435'000, Qt::blue, 1'440'000},
                    TimeCase{"pastTheEnd", 60'000'000, Qt::blue, 1'960'000}),
    [](const testing::TestParamInfo<TimeCase>& info) { return std::string(info.param.name); });

struct ContainerCase
{
    const char* name;
    Sample sample;
    qint64 time;
    qint64 frameTime;
};

class DecodeContainer : public testing::TestWithParam<ContainerCase>
{
};

TEST_P(DecodeContainer, landsOnTheFrameOfTheTime)
{
    const FrameResult result = decodeFrame(requestOf(GetParam().sample, GetParam().time, QSize(96, 54)));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    EXPECT_EQ(result.image.size(), QSize(96, 54));
    EXPECT_NEAR(double(result.frameTime), double(GetParam().frameTime), 2'000.0);
}

INSTANTIATE_TEST_SUITE_P(
    Containers, DecodeContainer,
    testing::Values(ContainerCase{"mp4WithAudio", Sample::Mp4VideoAudio, 1'000'000, 1'000'000},
                    ContainerCase{"mkvNtscRate", Sample::MkvVideo, 1'000'000, 1'001'000},
                    ContainerCase{"aviWithAudio", Sample::AviVideoAudio, 1'010'000, 1'000'000},
                    ContainerCase{"mkvAnamorphic", Sample::MkvAnamorphic, 520'000, 520'000},
                    ContainerCase{"animatedGif", Sample::GifAnimation, 610'000, 600'000}),
    [](const testing::TestParamInfo<ContainerCase>& info) { return std::string(info.param.name); });

// How far two pictures of one size are apart: the mean difference of their channels.
double distance(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum += qAbs(qRed(p) - qRed(q)) + qAbs(qGreen(p) - qGreen(q)) + qAbs(qBlue(p) - qBlue(q));
        }
    return sum / (3.0 * a.width() * a.height());
}

class DecodeReordered : public testing::TestWithParam<qint64>
{
};

// Frames stored out of order (b-frames referring to b-frames) still give the very frame of
// the time: the same picture and time as the file where every frame stands alone, and not
// a neighbour of it.
TEST_P(DecodeReordered, givesTheSameFrameAsAnIntraOnlyFile)
{
    if (!MediaSamples::hasEncoder("libx264"))
        GTEST_SKIP() << "no libx264 to make frames stored out of order";
    const qint64 time = GetParam();
    const FrameResult reordered = decodeFrame(requestOf(Sample::Mp4Reordered, time, QSize(160, 120)));
    const FrameResult intra = decodeFrame(requestOf(Sample::MkvIntra, time, QSize(160, 120)));
    const FrameResult before = decodeFrame(requestOf(Sample::MkvIntra, time - 40'000, QSize(160, 120)));
    const FrameResult after = decodeFrame(requestOf(Sample::MkvIntra, time + 40'000, QSize(160, 120)));
    ASSERT_TRUE(reordered.ok()) << reordered.errorMessage.toStdString();
    ASSERT_TRUE(intra.ok() && before.ok() && after.ok());

    EXPECT_EQ(reordered.frameTime, intra.frameTime);
    const double same = distance(reordered.image, intra.image);
    EXPECT_LT(same, 0.25);
    EXPECT_LT(same * 4, distance(reordered.image, before.image));
    EXPECT_LT(same * 4, distance(reordered.image, after.image));
}

// Key frames come at 0 and 1 s; between them each kind of frame: the key frame, a
// p-frame, a referenced and an unreferenced b-frame, and times between two frames.
INSTANTIATE_TEST_SUITE_P(FramesOfAGroup, DecodeReordered,
                         testing::Values(1'000'000, 40'000, 120'000, 160'000, 200'000, 440'000, 480'000, 520'000,
                                         560'000, 600'000, 655'000, 870'000, 960'000, 1'230'000, 1'515'000));

// The colours sample is 16:9; asked for a square it is fitted, cut or stretched.
TEST(DecodeResize, keepingTheAspectPadsTopAndBottomWithThePaddingColour)
{
    const FrameResult result =
        decodeFrame(requestOf(Sample::Mp4Colours, 0, QSize(100, 100), ResizeMode::KeepAspectRatio, Qt::green));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    ASSERT_EQ(result.image.size(), QSize(100, 100));
    // 100x56 of picture in the middle, 22 rows of padding above and below.
    for (const QPoint border : {QPoint(0, 0), QPoint(50, 10), QPoint(99, 99), QPoint(50, 90)})
        EXPECT_TRUE(near(result.image.pixel(border), Qt::green, 8)) << border.y() << ": " << describe(result.image.pixel(border));
    for (const QPoint inside : {QPoint(50, 50), QPoint(2, 30), QPoint(97, 70)})
        EXPECT_TRUE(near(result.image.pixel(inside), Qt::red)) << inside.y() << ": " << describe(result.image.pixel(inside));
}

TEST(DecodeResize, keepingTheAspectWithoutAPaddingColourLeavesTransparentBands)
{
    const FrameResult result = decodeFrame(requestOf(Sample::Mp4Colours, 0, QSize(100, 100), ResizeMode::KeepAspectRatio));

    ASSERT_TRUE(result.ok());
    EXPECT_EQ(qAlpha(result.image.pixel(50, 5)), 0);
    EXPECT_EQ(qAlpha(result.image.pixel(50, 50)), 255);
}

TEST(DecodeResize, expandingAndIgnoringTheAspectFillTheWholeSize)
{
    for (const ResizeMode mode : {ResizeMode::KeepAspectRatioByExpanding, ResizeMode::IgnoreAspectRatio}) {
        const FrameResult result = decodeFrame(requestOf(Sample::Mp4Colours, 0, QSize(100, 100), mode, Qt::green));

        ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
        ASSERT_EQ(result.image.size(), QSize(100, 100));
        for (const QPoint point : {QPoint(0, 0), QPoint(99, 0), QPoint(50, 50), QPoint(0, 99), QPoint(99, 99)})
            EXPECT_TRUE(near(result.image.pixel(point), Qt::red)) << int(mode) << ": " << describe(result.image.pixel(point));
    }
}

TEST(DecodeResize, expandingAVeryWideFrameKeepsItsMiddle)
{
    const FrameResult result = decodeFrame(requestOf(Sample::PngStrip, 0, QSize(90, 90)));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    ASSERT_EQ(result.image.size(), QSize(90, 90));
    for (const QPoint point : {QPoint(0, 0), QPoint(45, 45), QPoint(89, 89)})
        EXPECT_TRUE(near(result.image.pixel(point), Qt::green)) << describe(result.image.pixel(point));
}

TEST(DecodeResize, fittingAVeryWideFrameShowsItWhole)
{
    const FrameResult result =
        decodeFrame(requestOf(Sample::PngStrip, 0, QSize(300, 90), ResizeMode::KeepAspectRatio, Qt::black));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    ASSERT_EQ(result.image.size(), QSize(300, 90));
    // 300x2 of picture across the middle rows.
    EXPECT_TRUE(near(result.image.pixel(50, 44), Qt::red)) << describe(result.image.pixel(50, 44));
    EXPECT_TRUE(near(result.image.pixel(150, 44), Qt::green)) << describe(result.image.pixel(150, 44));
    EXPECT_TRUE(near(result.image.pixel(250, 45), Qt::blue)) << describe(result.image.pixel(250, 45));
    EXPECT_TRUE(near(result.image.pixel(150, 10), Qt::black, 8));
}

TEST(DecodeResize, theShapeOfAPixelCountsWhenKeepingTheAspect)
{
    // 720x576 with 16:15 pixels shows as 768x576 (4:3): 120x90 of picture in 160x90,
    // where square pixels would give 113x90.
    const FrameResult result =
        decodeFrame(requestOf(Sample::MkvAnamorphic, 0, QSize(160, 90), ResizeMode::KeepAspectRatio, Qt::black));

    ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
    for (const int x : {0, 18, 141, 159})
        EXPECT_TRUE(near(result.image.pixel(x, 45), Qt::black, 8)) << x << ": " << describe(result.image.pixel(x, 45));
    for (const int x : {21, 80, 138})
        EXPECT_TRUE(near(result.image.pixel(x, 45), Qt::white)) << x << ": " << describe(result.image.pixel(x, 45));
}

struct StillCase
{
    const char* name;
    Sample sample;
    Qt::GlobalColor colour;
};

class DecodeStill : public testing::TestWithParam<StillCase>
{
};

TEST_P(DecodeStill, givesThePictureAtAnyTime)
{
    for (const qint64 time : {qint64(0), qint64(3'000'000)}) {
        const FrameResult result = decodeFrame(requestOf(GetParam().sample, time, QSize(40, 30)));

        ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
        EXPECT_EQ(result.image.size(), QSize(40, 30));
        EXPECT_TRUE(near(result.image.pixel(20, 15), GetParam().colour)) << describe(result.image.pixel(20, 15));
    }
}

INSTANTIATE_TEST_SUITE_P(Formats, DecodeStill,
                         testing::Values(StillCase{"png", Sample::PngImage, Qt::red},
                                         StillCase{"jpeg", Sample::JpegImage, Qt::green},
                                         StillCase{"bmp", Sample::BmpImage, Qt::blue},
                                         StillCase{"webp", Sample::WebpImage, Qt::yellow}),
                         [](const testing::TestParamInfo<StillCase>& info) { return std::string(info.param.name); });

struct DecodeFailureCase
{
    const char* name;
    Sample sample;
    int code;
};

class DecodeFailure : public testing::TestWithParam<DecodeFailureCase>
{
};

TEST_P(DecodeFailure, failsWithTheCodeAndNoImage)
{
    const FrameResult result = decodeFrame(requestOf(GetParam().sample, 500'000, QSize(64, 36)));

    EXPECT_EQ(result.errorCode, GetParam().code) << result.errorMessage.toStdString();
    EXPECT_TRUE(result.image.isNull());
}

INSTANTIATE_TEST_SUITE_P(
    BrokenFiles, DecodeFailure,
    testing::Values(DecodeFailureCase{"missing", Sample::Missing, ErrorCode::FileCorrupted},
                    DecodeFailureCase{"folder", Sample::Folder, ErrorCode::FileCorrupted},
                    DecodeFailureCase{"pipeWithoutWriter", Sample::Pipe, ErrorCode::FileCorrupted},
                    DecodeFailureCase{"zeroLength", Sample::Empty, ErrorCode::FileCorrupted},
                    DecodeFailureCase{"randomBytes", Sample::RandomBytes, ErrorCode::FileCorrupted},
                    DecodeFailureCase{"mp4CutBeforeItsIndex", Sample::TruncatedMp4, ErrorCode::FileCorrupted},
                    DecodeFailureCase{"absurdFrameSize", Sample::HugePng, ErrorCode::FileCorrupted},
                    DecodeFailureCase{"codecWithoutDecoder", Sample::NoDecoder, ErrorCode::CodecNotAvailable},
                    DecodeFailureCase{"audioOnly", Sample::WavAudio, ErrorCode::Unknown}),
    [](const testing::TestParamInfo<DecodeFailureCase>& info) { return std::string(info.param.name); });

TEST(DecodeMistakes, anEmptyOrHugeSizeIsRefusedWithALogLine)
{
    for (const QSize size : {QSize(0, 90), QSize(160, -1), QSize(100000, 90)}) {
        TestSupport::LogCapture log;
        const FrameResult result = decodeFrame(requestOf(Sample::Mp4Colours, 0, size));

        EXPECT_FALSE(result.ok());
        EXPECT_TRUE(result.image.isNull());
        EXPECT_TRUE(log.containsError("invalid frame size")) << size.width() << "x" << size.height();
    }
}

TEST(DecodeMistakes, anAudioStreamIndexIsRefusedWithALogLine)
{
    TestSupport::LogCapture log;
    FrameRequest request = requestOf(Sample::Mp4VideoAudio, 0, QSize(32, 24));
    request.streamIndex = 1; // the aac stream

    const FrameResult result = decodeFrame(request);

    EXPECT_EQ(result.errorCode, ErrorCode::Unknown);
    EXPECT_TRUE(log.containsError("is not a video stream"));
}

TEST(DecodeMistakes, aCorrectRequestLogsNothing)
{
    TestSupport::LogCapture log;
    FrameRequest request = requestOf(Sample::Mp4VideoAudio, 1'000'000, QSize(32, 24));
    request.streamIndex = 0;

    EXPECT_TRUE(decodeFrame(request).ok());
    EXPECT_TRUE(log.errors().empty());
}

TEST(DecodeLimits, aDecodePastItsDeadlineGivesNoImage)
{
    Limits limits;
    limits.decodeTimeoutMs = 0;
    const FrameResult result = decodeFrame(requestOf(Sample::Mp4Colours, 1'500'000, QSize(32, 24)), limits);

    EXPECT_EQ(result.errorCode, ErrorCode::FileCorrupted);
    EXPECT_TRUE(result.image.isNull());
}

TEST(DecodeCancellation, aCancelledDecodeGivesNoImage)
{
    const std::atomic_bool cancelled{true};
    const FrameResult result = decodeFrame(requestOf(Sample::Mp4Colours, 1'500'000, QSize(32, 24)), Limits(), &cancelled);

    EXPECT_FALSE(result.ok());
    EXPECT_TRUE(result.image.isNull());
}

} // namespace
