#include "GeneratedMedia.h"

#include <MediaEngine/FrameDecoder.h>
#include <MediaEngine/ModelAdapter.h>
#include <MediaEngine/Probe.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QtEndian>

#include <gtest/gtest.h>

#include <vector>

using namespace MediaEngine;
using MediaSamples::Sample;

namespace {

struct HostileCase
{
    const char* name;
    Sample source;
};

class DamagedFiles : public testing::TestWithParam<HostileCase>
{
};

// Copies of a good file with bytes overwritten or the tail cut at places chosen by a fixed
// seed: every one probes and decodes to an answer with a known code, and a frame, when
// there is one, has exactly the requested size.
TEST_P(DamagedFiles, answerWithAKnownCodeAndNeverAWrongSizedFrame)
{
    QFile source(MediaSamples::path(GetParam().source));
    ASSERT_TRUE(source.open(QIODevice::ReadOnly));
    const QByteArray original = source.readAll();
    ASSERT_GT(original.size(), 256);
    QRandomGenerator random(quint32(qHash(QLatin1String(GetParam().name))));
    const QString copyName = QStringLiteral("damaged-") + QLatin1String(GetParam().name) + QLatin1Char('.')
                             + QFileInfo(source.fileName()).suffix();

    for (int round = 0; round < 24; ++round) {
        QByteArray damaged = original;
        if (round % 3 == 2) {
            damaged.truncate(random.bounded(damaged.size()));
        } else {
            // The headers are where a bad value does the most harm.
            const int span = round % 3 == 0 ? std::min(damaged.size(), 4096) : damaged.size();
            for (int i = 0; i < 16; ++i)
                damaged[random.bounded(span)] = char(random.bounded(256));
        }
        const QString file = MediaSamples::scratchPath(copyName);
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(damaged);
        out.close();

        const ProbeResult probe = probeFile(file);
        EXPECT_TRUE(probe.ok() || probe.errorCode == ErrorCode::FileCorrupted || probe.errorCode == ErrorCode::Unknown
                    || probe.errorCode == ErrorCode::CodecNotAvailable || probe.errorCode == ErrorCode::OutOfMemory)
            << "round " << round << ": " << probe.errorCode;
        if (!probe.ok()) {
            EXPECT_TRUE(probe.video.empty() && probe.audio.empty()) << "round " << round;
        }

        FrameRequest request;
        request.path = file;
        request.time = 500'000;
        request.size = QSize(48, 27);
        const FrameResult frame = decodeFrame(request);
        if (frame.ok()) {
            EXPECT_EQ(frame.image.size(), QSize(48, 27)) << "round " << round;
        } else {
            EXPECT_TRUE(frame.image.isNull()) << "round " << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Containers, DamagedFiles,
                         testing::Values(HostileCase{"mp4", Sample::Mp4VideoAudio},
                                         HostileCase{"mkv", Sample::MkvVideo},
                                         HostileCase{"avi", Sample::AviVideoAudio},
                                         HostileCase{"png", Sample::PngImage}, HostileCase{"jpeg", Sample::JpegImage},
                                         HostileCase{"ogg", Sample::OggAudio}),
                         [](const testing::TestParamInfo<HostileCase>& info) { return std::string(info.param.name); });

// A small valid file whose header was edited to announce frames of 9000x9000, past the
// engine's 8192x8192 pixels: probing, the model's opener and decoding all refuse it as too
// large, not as corrupt.
TEST(HugeHeaders, areTooLargeForProbingOpeningAndDecodingAlike)
{
    const struct
    {
        const char* name;
        const char* codec;
        const char* box;       // in this part of the header,
        const char* sizeField; // what precedes the frame size...
        int offset;            // ...and how far after it the width starts
        bool bigEndian;
    } cases[] = {{"huge.mov", "mjpeg", "stsd", "jpeg", 28, true}, {"huge.avi", "mpeg4", "strl", "strf", 12, false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const QString small =
            MediaSamples::encoded(QStringLiteral("small-") + QLatin1String(c.name),
                                  {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
                                   QStringLiteral("color=c=red:size=64x64:rate=25:duration=0.2"),
                                   QStringLiteral("-c:v"), QLatin1String(c.codec)});
        QFile in(small);
        ASSERT_TRUE(in.open(QIODevice::ReadOnly));
        QByteArray bytes = in.readAll();
        const int at = bytes.indexOf(c.sizeField, bytes.indexOf(c.box));
        ASSERT_GT(at, 0);
        uchar* size = reinterpret_cast<uchar*>(bytes.data() + at + c.offset);
        if (c.bigEndian) {
            qToBigEndian<quint16>(9000, size);
            qToBigEndian<quint16>(9000, size + 2);
        } else {
            qToLittleEndian<qint32>(9000, size);
            qToLittleEndian<qint32>(9000, size + 4);
        }
        const QString file = MediaSamples::scratchPath(QLatin1String(c.name));
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly | QIODevice::Truncate));
        out.write(bytes);
        out.close();

        EXPECT_EQ(probeFile(file).errorCode, ErrorCode::OutOfMemory);
        Engine engine;
        ModelOpener opener(engine);
        std::vector<int> codes;
        opener.open(Types::String(file), [&](const Media::OpenResult& result) {
            for (const Media::OpenError& error : result.errors)
                codes.push_back(error.code);
        });
        ASSERT_TRUE(engine.waitForDone(30000));
        QCoreApplication::processEvents();
        EXPECT_EQ(codes, std::vector<int>{ErrorCode::OutOfMemory});
        FrameRequest request;
        request.path = file;
        request.size = QSize(48, 27);
        EXPECT_EQ(decodeFrame(request).errorCode, ErrorCode::OutOfMemory);
    }
}

} // namespace
