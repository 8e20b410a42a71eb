#include "GeneratedMedia.h"

#include <MediaEngine/FrameDecoder.h>
#include <MediaEngine/TimeArithmetic.h>

#include <TestSupport.h>

#include <gtest/gtest.h>

#include <limits>

using namespace MediaEngine;
using MediaSamples::Sample;

namespace {

// Lossy codecs and scaling shift colours a little; a colour is recognised by being near, with
// its very opacity.
bool near(QRgb actual, QColor expected, int tolerance = 48)
{
    return qAbs(qRed(actual) - expected.red()) <= tolerance && qAbs(qGreen(actual) - expected.green()) <= tolerance
           && qAbs(qBlue(actual) - expected.blue()) <= tolerance && qAlpha(actual) == expected.alpha();
}

std::string describe(QRgb colour) { return QColor::fromRgba(colour).name(QColor::HexArgb).toStdString(); }

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

TEST(DecodeAtTime, givesTheFrameNearestTheTime)
{
    const TimeCase rows[] = {{"start", 0, Qt::red, 0},
                             {"beforeTheStart", -5'000'000, Qt::red, 0},
                             {"betweenKeyFrames", 530'000, Qt::red, 520'000},
                             {"lastRedFrame", 960'000, Qt::red, 960'000},
                             {"firstBlueFrame", 1'000'000, Qt::blue, 1'000'000},
                             {"nearerTheNextFrame", 1'435'000, Qt::blue, 1'440'000},
                             {"pastTheEnd", 60'000'000, Qt::blue, 1'960'000}};
    for (const TimeCase& row : rows) {
        SCOPED_TRACE(row.name);
        const FrameResult result = decodeFrame(requestOf(Sample::Mp4Colours, row.time, QSize(160, 90)));

        ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
        EXPECT_EQ(result.image.size(), QSize(160, 90));
        EXPECT_EQ(result.image.format(), QImage::Format_ARGB32_Premultiplied);
        const QRgb centre = result.image.pixel(80, 45);
        EXPECT_TRUE(near(centre, row.colour)) << describe(centre);
        EXPECT_NEAR(double(result.frameTime), double(row.frameTime), 20'000.0);
        EXPECT_FALSE(result.fromCache);
    }
}

struct SampleCase
{
    const char* name;
    Sample sample;
    qint64 time;
    qint64 frameTime; // -1: a still, the same picture at any time
    QColor colour;    // in the middle, when given
};

TEST(DecodeSample, landsOnTheFrameOfTheTime)
{
    const SampleCase rows[] = {{"mp4WithAudio", Sample::Mp4VideoAudio, 1'000'000, 1'000'000, QColor()},
                               {"mkvNtscRate", Sample::MkvVideo, 1'000'000, 1'001'000, QColor()},
                               {"aviWithAudio", Sample::AviVideoAudio, 1'010'000, 1'000'000, QColor()},
                               {"mkvAnamorphic", Sample::MkvAnamorphic, 520'000, 520'000, Qt::white},
                               {"animatedGif", Sample::GifAnimation, 610'000, 600'000, QColor()},
                               {"pngAtTheStart", Sample::PngImage, 0, -1, Qt::red},
                               {"png", Sample::PngImage, 3'000'000, -1, Qt::red},
                               {"jpeg", Sample::JpegImage, 3'000'000, -1, Qt::green},
                               {"bmp", Sample::BmpImage, 3'000'000, -1, Qt::blue},
                               {"webp", Sample::WebpImage, 3'000'000, -1, Qt::yellow}};
    for (const SampleCase& c : rows) {
        SCOPED_TRACE(c.name);
        const FrameResult result = decodeFrame(requestOf(c.sample, c.time, QSize(96, 54)));

        ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
        EXPECT_EQ(result.image.size(), QSize(96, 54));
        if (c.frameTime >= 0) {
            EXPECT_NEAR(double(result.frameTime), double(c.frameTime), 2'000.0);
        }
        if (c.colour.isValid()) {
            EXPECT_TRUE(near(result.image.pixel(48, 27), c.colour)) << describe(result.image.pixel(48, 27));
        }
    }
}

struct ContainerCase
{
    const char* name;
    const char* file;
    const char* encoder;   // skipped without it
    const char* arguments; // codec, key frame distance, start time, container
    int lastFrame = 49;    // the last frame whose packet carries a time
};

class DecodeContainer : public testing::TestWithParam<ContainerCase>
{
};

// 25 frames a second, 2 s, each showing its number in six black or white bars (lowest bit
// left), which every codec keeps readable.
QString numberedFrames(const ContainerCase& c)
{
    QStringList arguments{QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                          QStringLiteral("color=c=black:size=192x64:rate=25:duration=2,format=yuv420p,"
                                         "geq=lum='255*mod(floor(N/pow(2,floor(X*6/W))),2)':cb=128:cr=128")};
    arguments += QString::fromLatin1(c.arguments).split(QLatin1Char(' '));
    return MediaSamples::encoded(QLatin1String(c.file), arguments);
}

int frameNumberOf(const QImage& image)
{
    int number = 0;
    for (int bit = 0; bit < 6; ++bit)
        number |= (qGray(image.pixel(16 + 32 * bit, 32)) > 128 ? 1 : 0) << bit;
    return number;
}

// The frame asked for at a time is the one a player shows then, whatever the container, its
// index (or lack of one), key frame distance, reordered frames or start time.
TEST_P(DecodeContainer, givesTheFrameShownAtTheTime)
{
    const ContainerCase& c = GetParam();
    if (!MediaSamples::hasEncoder(c.encoder))
        GTEST_SKIP() << "no " << c.encoder << " encoder";
    const QString file = numberedFrames(c);
    ASSERT_FALSE(file.isEmpty());
    // The same times asked in a row of one decoder that keeps the file open (a strip of
    // thumbnails): it goes on from the frames already decoded where it can.
    FrameDecoder strip;
    for (const int number : {0, 1, 7, 11, 12, 13, 24, 37, 49}) {
        if (number > c.lastFrame)
            continue;
        for (const qint64 into : {0, 10'000}) { // at the frame's start, and a quarter into it
            const qint64 time = number * 40'000 + into;
            SCOPED_TRACE(testing::Message() << "frame " << number << " at " << time << " us");
            FrameRequest request;
            request.path = file;
            request.time = time;
            request.size = QSize(192, 64);
            request.resizeMode = ResizeMode::IgnoreAspectRatio;
            const FrameResult result = decodeFrame(request);
            ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
            EXPECT_EQ(frameNumberOf(result.image), number);
            EXPECT_NEAR(double(result.frameTime), double(number * 40'000), 1'000.0);
            const FrameResult inStrip = strip.decode(request, nullptr, true);
            ASSERT_TRUE(inStrip.ok()) << inStrip.errorMessage.toStdString();
            EXPECT_EQ(frameNumberOf(inStrip.image), number) << "in a strip";
            EXPECT_EQ(inStrip.frameTime, result.frameTime) << "in a strip";
        }
    }
}

// (The program stream muxer writes the last picture without a time: the frame before it is
// taken for the end.)
INSTANTIATE_TEST_SUITE_P(
    EveryContainer, DecodeContainer,
    testing::Values(ContainerCase{"mp4H264", "seek.mp4", "libx264", "-c:v libx264 -preset ultrafast -g 12 -bf 2"},
                    ContainerCase{"movMpeg4", "seek.mov", "mpeg4", "-c:v mpeg4 -q:v 2 -g 12 -bf 2"},
                    ContainerCase{"mkvH264", "seek.mkv", "libx264", "-c:v libx264 -preset ultrafast -g 12 -bf 2"},
                    ContainerCase{"webmVp8", "seek.webm", "libvpx", "-c:v libvpx -b:v 1M -g 12"},
                    ContainerCase{"aviMpeg4", "seek.avi", "mpeg4", "-c:v mpeg4 -q:v 2 -g 12"},
                    ContainerCase{"tsH264", "seek-h264.ts", "libx264", "-c:v libx264 -preset ultrafast -g 12 -bf 2"},
                    ContainerCase{"tsMpeg2", "seek-mpeg2.ts", "mpeg2video", "-c:v mpeg2video -q:v 2 -g 12 -bf 2"},
                    ContainerCase{"tsEveryFrameAKey", "seek-intra.ts", "mpeg2video", "-c:v mpeg2video -q:v 2 -g 1"},
                    ContainerCase{"mpegProgramStream", "seek.mpg", "mpeg2video",
                                  "-c:v mpeg2video -q:v 2 -g 12 -bf 2 -f vob", 48},
                    ContainerCase{"mkvStartingAt10s", "seek-late.mkv", "libx264",
                                  "-c:v libx264 -preset ultrafast -g 12 -bf 2 -output_ts_offset 10"},
                    ContainerCase{"tsStartingAt10s", "seek-late.ts", "libx264",
                                  "-c:v libx264 -preset ultrafast -g 12 -bf 2 -output_ts_offset 10"}),
    [](const testing::TestParamInfo<ContainerCase>& info) { return std::string(info.param.name); });

// Times a hostile file can carry, "no timestamp" among them, never overflow the arithmetic
// that picks the nearest frame.
TEST(DecodeTimes, arithmeticOnExtremeTimesSaturates)
{
    using namespace MediaEngine::Detail;
    constexpr int64_t max = std::numeric_limits<int64_t>::max();
    const struct
    {
        const char* name;
        int64_t a, b;
        int64_t distance;
    } cases[] = {{"ordinary", 40, 100, 60},
                 {"frame without a time", noTimestamp, 100, max},
                 {"nearest without a time", 100, noTimestamp, max},
                 {"both without", noTimestamp, noTimestamp, max},
                 {"opposite extremes", max, noTimestamp + 1, max},
                 {"far apart", -max, max, max}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(timeDistance(c.a, c.b), c.distance);
        EXPECT_EQ(timeDistance(c.b, c.a), c.distance);
    }
    EXPECT_EQ(saturatingAdd(max, 1), max);
    EXPECT_EQ(saturatingSubtract(0, noTimestamp), max);
    EXPECT_EQ(saturatingSubtract(noTimestamp + 1, 5), noTimestamp + 1) << "never lands on \"no timestamp\"";
    EXPECT_EQ(saturatingSubtract(100, 40), 60);
}

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

struct Spot
{
    QPoint point;
    QColor colour;
    int tolerance = 48; // 8 for a padding colour, which no codec touched
};

struct ResizeCase
{
    const char* name;
    Sample sample;
    QSize size;
    ResizeMode mode;
    QColor padding;
    std::vector<Spot> spots;
};

const QColor transparent(0, 0, 0, 0);

TEST(DecodeResize, fitsCutsOrStretchesTheFrameIntoTheSize)
{
    // The colours sample is 16:9 and red at first; the strip is 3000x20, red, green and blue thirds;
    // the anamorphic one is white, 720x576 with 16:15 pixels.
    const ResizeCase rows[] = {
        // 100x56 of picture in the middle, 22 rows of padding above and below.
        {"keepingTheAspectPadsWithThePaddingColour",
         Sample::Mp4Colours,
         QSize(100, 100),
         ResizeMode::KeepAspectRatio,
         Qt::green,
         {{{0, 0}, Qt::green, 8},
          {{50, 10}, Qt::green, 8},
          {{99, 99}, Qt::green, 8},
          {{50, 90}, Qt::green, 8},
          {{50, 50}, Qt::red},
          {{2, 30}, Qt::red},
          {{97, 70}, Qt::red}}},
        {"keepingTheAspectWithoutAPaddingColourLeavesTransparentBands",
         Sample::Mp4Colours,
         QSize(100, 100),
         ResizeMode::KeepAspectRatio,
         QColor(),
         {{{50, 5}, transparent, 0}, {{50, 50}, Qt::red}}},
        {"expandingFillsTheWholeSize",
         Sample::Mp4Colours,
         QSize(100, 100),
         ResizeMode::KeepAspectRatioByExpanding,
         Qt::green,
         {{{0, 0}, Qt::red}, {{99, 0}, Qt::red}, {{50, 50}, Qt::red}, {{0, 99}, Qt::red}, {{99, 99}, Qt::red}}},
        {"ignoringTheAspectFillsTheWholeSize",
         Sample::Mp4Colours,
         QSize(100, 100),
         ResizeMode::IgnoreAspectRatio,
         Qt::green,
         {{{0, 0}, Qt::red}, {{99, 0}, Qt::red}, {{50, 50}, Qt::red}, {{0, 99}, Qt::red}, {{99, 99}, Qt::red}}},
        {"expandingAVeryWideFrameKeepsItsMiddle",
         Sample::PngStrip,
         QSize(90, 90),
         ResizeMode::KeepAspectRatioByExpanding,
         QColor(),
         {{{0, 0}, Qt::green}, {{45, 45}, Qt::green}, {{89, 89}, Qt::green}}},
        // 300x2 of picture across the middle rows.
        {"fittingAVeryWideFrameShowsItWhole",
         Sample::PngStrip,
         QSize(300, 90),
         ResizeMode::KeepAspectRatio,
         Qt::black,
         {{{50, 44}, Qt::red}, {{150, 44}, Qt::green}, {{250, 45}, Qt::blue}, {{150, 10}, Qt::black, 8}}},
        // Shown as 768x576 (4:3): 120x90 of picture in 160x90, where square pixels would give 113x90.
        {"theShapeOfAPixelCountsWhenKeepingTheAspect",
         Sample::MkvAnamorphic,
         QSize(160, 90),
         ResizeMode::KeepAspectRatio,
         Qt::black,
         {{{0, 45}, Qt::black, 8},
          {{18, 45}, Qt::black, 8},
          {{141, 45}, Qt::black, 8},
          {{159, 45}, Qt::black, 8},
          {{21, 45}, Qt::white},
          {{80, 45}, Qt::white},
          {{138, 45}, Qt::white}}}};
    for (const ResizeCase& c : rows) {
        SCOPED_TRACE(c.name);
        const FrameResult result = decodeFrame(requestOf(c.sample, 0, c.size, c.mode, c.padding));

        ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
        ASSERT_EQ(result.image.size(), c.size);
        for (const Spot& spot : c.spots) {
            const QRgb pixel = result.image.pixel(spot.point);
            EXPECT_TRUE(near(pixel, spot.colour, spot.tolerance))
                << spot.point.x() << "," << spot.point.y() << ": " << describe(pixel);
        }
    }
}

struct DecodeFailureCase
{
    const char* name;
    Sample sample;
    int code; // -1: any failure
    QSize size = QSize(64, 36);
    const char* logLine = nullptr; // the caller's mistake is logged
    int streamIndex = -1;
    Limits limits = {};
    bool cancelled = false;
};

Limits noTimeToDecode()
{
    Limits limits;
    limits.decodeTimeoutMs = 0;
    return limits;
}

TEST(DecodeFailure, failsWithTheCodeAndNoImage)
{
    const DecodeFailureCase rows[] = {
        {"missing", Sample::Missing, ErrorCode::FileCorrupted},
        {"folder", Sample::Folder, ErrorCode::FileCorrupted},
        {"pipeWithoutWriter", Sample::Pipe, ErrorCode::FileCorrupted},
        {"zeroLength", Sample::Empty, ErrorCode::FileCorrupted},
        {"randomBytes", Sample::RandomBytes, ErrorCode::FileCorrupted},
        {"mp4CutBeforeItsIndex", Sample::TruncatedMp4, ErrorCode::FileCorrupted},
        {"absurdFrameSize", Sample::HugePng, ErrorCode::FileCorrupted},
        {"codecWithoutDecoder", Sample::NoDecoder, ErrorCode::CodecNotAvailable},
        {"audioOnly", Sample::WavAudio, ErrorCode::Unknown},
        {"emptyWidth", Sample::Mp4Colours, -1, QSize(0, 90), "invalid frame size"},
        {"negativeHeight", Sample::Mp4Colours, -1, QSize(160, -1), "invalid frame size"},
        {"hugeSize", Sample::Mp4Colours, -1, QSize(100000, 90), "invalid frame size"},
        // the aac stream
        {"audioStreamIndex", Sample::Mp4VideoAudio, ErrorCode::Unknown, QSize(32, 24), "is not a video stream", 1},
        {"pastItsDeadline", Sample::Mp4Colours, ErrorCode::FileCorrupted, QSize(32, 24), nullptr, -1, noTimeToDecode()},
        {"cancelled", Sample::Mp4Colours, -1, QSize(32, 24), nullptr, -1, Limits(), true}};
    for (const DecodeFailureCase& c : rows) {
        SCOPED_TRACE(c.name);
        TestSupport::LogCapture log;
        FrameRequest request = requestOf(c.sample, 500'000, c.size);
        request.streamIndex = c.streamIndex;
        const std::atomic_bool cancelled{c.cancelled};
        const FrameResult result = decodeFrame(request, c.limits, &cancelled);

        EXPECT_FALSE(result.ok());
        if (c.code >= 0) {
            EXPECT_EQ(result.errorCode, c.code) << result.errorMessage.toStdString();
        }
        EXPECT_TRUE(result.image.isNull());
        if (c.logLine) {
            EXPECT_TRUE(log.containsError(c.logLine));
        }
    }
}

} // namespace
