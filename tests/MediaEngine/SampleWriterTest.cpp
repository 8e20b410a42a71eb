// Files written by the sample writer open in the engine with the streams asked for, and the
// first and last frames show what was painted; a bad recipe or an unwritable place leaves no
// file behind.

#include <MediaEngine/FrameDecoder.h>
#include <MediaEngine/Probe.h>
#include <MediaEngine/SampleWriter.h>

#include <QDir>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace MediaEngine;

namespace {

// Red frames, then blue ones from the middle on.
ClipRecipe halves(int frames)
{
    ClipRecipe recipe;
    recipe.size = QSize(160, 96);
    recipe.frameRate = 25;
    recipe.frameCount = frames;
    recipe.paintFrame = [frames](QImage& picture, int frame) { picture.fill(frame < frames / 2 ? Qt::red : Qt::blue); };
    return recipe;
}

} // namespace

TEST(SampleWriter, writtenClipsOpenWithTheirStreamsAndFrames)
{
    QTemporaryDir dir;
    struct Row
    {
        const char* file;
        double toneHz;
        const char* audioCodec; // empty: no sound
    };
    const Row rows[] = {{"clip.mp4", 440, "aac"}, {"clip.mkv", 0, ""}, {"clip.avi", 660, "pcm_s16le"}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.file);
        const QString path = dir.filePath(QString::fromLatin1(row.file));
        ClipRecipe recipe = halves(50);
        recipe.toneHz = row.toneHz;
        QString error;
        ASSERT_TRUE(writeClip(path, recipe, &error)) << error.toStdString();
        EXPECT_TRUE(error.isEmpty());
        EXPECT_FALSE(QFile::exists(path + QStringLiteral(".part")));

        const ProbeResult probe = probeFile(path);
        ASSERT_TRUE(probe.ok()) << probe.errorMessage.toStdString();
        ASSERT_EQ(probe.video.size(), 1u);
        EXPECT_EQ(probe.video[0].frameSize, QSize(160, 96));
        EXPECT_EQ(probe.video[0].frameRate, boost::rational<long long>(25, 1));
        EXPECT_EQ(probe.video[0].codecName, QStringLiteral("mpeg4"));
        EXPECT_NEAR(double(probe.video[0].duration), 2'000'000.0, 80'000.0);
        ASSERT_EQ(probe.audio.size(), row.toneHz > 0 ? 1u : 0u);
        if (row.toneHz > 0) {
            EXPECT_EQ(probe.audio[0].codecName, QString::fromLatin1(row.audioCodec));
            EXPECT_EQ(probe.audio[0].channelCount, 1);
            EXPECT_NEAR(double(probe.audio[0].duration), 2'000'000.0, 100'000.0);
        }

        for (const auto& [time, colour] : {std::pair<qint64, QColor>{200'000, Qt::red}, {1'800'000, Qt::blue}}) {
            FrameRequest request;
            request.path = path;
            request.time = time;
            request.size = QSize(16, 16);
            const FrameResult frame = decodeFrame(request);
            ASSERT_TRUE(frame.ok()) << frame.errorMessage.toStdString();
            const QColor seen = frame.image.pixelColor(8, 8);
            EXPECT_NEAR(seen.red(), colour.red(), 40);
            EXPECT_NEAR(seen.blue(), colour.blue(), 40);
        }
    }
}

TEST(SampleWriter, aToneOpensAsSoundOfItsLength)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("tone.wav"));
    ASSERT_TRUE(writeTone(path, 1.5, 660, 22050));
    const ProbeResult probe = probeFile(path);
    ASSERT_TRUE(probe.ok());
    EXPECT_TRUE(probe.video.empty());
    ASSERT_EQ(probe.audio.size(), 1u);
    EXPECT_EQ(probe.audio[0].sampleRate, 22050);
    EXPECT_NEAR(double(probe.audio[0].duration), 1'500'000.0, 50'000.0);
}

TEST(SampleWriter, refusedRecipesAndPlacesLeaveNoFile)
{
    QTemporaryDir dir;
    ClipRecipe odd = halves(10);
    odd.size = QSize(161, 96);
    ClipRecipe unpainted = halves(10);
    unpainted.paintFrame = nullptr;
    struct Row
    {
        const char* name;
        QString path;
        ClipRecipe recipe;
    };
    const Row rows[] = {
        {"odd width", dir.filePath(QStringLiteral("odd.mp4")), odd},
        {"no painter", dir.filePath(QStringLiteral("none.mp4")), unpainted},
        {"no container for the extension", dir.filePath(QStringLiteral("clip.nothing")), halves(10)},
        {"a folder that does not exist", dir.filePath(QStringLiteral("missing/clip.mp4")), halves(10)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QString error;
        EXPECT_FALSE(writeClip(row.path, row.recipe, &error));
        EXPECT_FALSE(error.isEmpty());
    }
    EXPECT_FALSE(writeTone(dir.filePath(QStringLiteral("silent.wav")), 0, 440));
    EXPECT_TRUE(QDir(dir.path()).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot).isEmpty());
}
