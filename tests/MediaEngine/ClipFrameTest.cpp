// What the preview shows of a clip whose speed or direction the adjustments panel changed: the
// frames come from the engine, decoded from a file that is red for its first second and blue
// for its second.

#include "GeneratedMedia.h"

#include <MediaEngine/ModelAdapter.h>
#include <Util/Editor/ClipAdjustmentsProvider.h>

#include <QTest>

#include <gtest/gtest.h>

using namespace MediaEngine;
using MediaSamples::Sample;

namespace {

constexpr Types::Time second = Types::TimeUnitsPerSecond;
constexpr Types::Time frame = second / 25;

} // namespace

TEST(ClipFrameTest, ReverseAndSpeedChangeTheFramesThePreviewShows)
{
    Model::Host host;
    Engine engine;
    connectToModel(host, engine);
    const Media::File* file = host.addFile(Types::String(MediaSamples::path(Sample::Mp4Colours)));
    ASSERT_TRUE(QTest::qWaitFor([file] { return file->isFinished(); }, 30000));
    ASSERT_TRUE(file->isOpened());
    const Timeline::Object* timeline = host.addTimeline("Project");
    const Timeline::Clip* clip = host.addClip(Timeline::Clip(Timeline::Clip::Video, file, 0));
    host.edit(timeline)->addClip(clip, Timeline::ClipTiming(timeline->primaryTrack(), second, file->duration()));
    ClipAdjustmentsProvider adjustments;
    adjustments.setClip(timeline, clip);

    struct Row
    {
        const char* name;
        bool reversed;
        double speed;
        Types::Time at; // from the clip's start
        const char* colour;
        Types::Time frameTime; // of the source
    };
    const Row rows[] = {
        {"first frame", false, 1, 0, "red", 0},
        {"reversed: first frame is the source's last", true, 1, 0, "blue", 2 * second - frame},
        {"reversed: last frame is the source's first", true, 1, 2 * second - frame, "red", frame},
        {"2x: half way through is the source's end", false, 2, second / 2 + frame, "blue", second + 2 * frame},
        {"2x reversed: first frame is the source's last", true, 2, 0, "blue", 2 * second - frame},
    };
    int size = 32;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ++size; // a size of its own per row, so that no frame comes from the cache
        ASSERT_TRUE(adjustments.setReversed(row.reversed));
        ASSERT_TRUE(adjustments.setSpeed(row.speed));
        EXPECT_EQ(timeline->clipTiming(clip).length, Types::Time(double(file->duration()) / row.speed + 0.5));

        const std::optional<FrameRequest> request = frameRequestAt(*timeline, second + row.at, QSize(size, 18));
        ASSERT_TRUE(request);
        FrameResult result;
        bool answered = false;
        engine.requestFrame(*request, nullptr, [&](const FrameResult& r) {
            result = r;
            answered = true;
        });
        ASSERT_TRUE(QTest::qWaitFor([&] { return answered; }, 30000));
        ASSERT_TRUE(result.ok()) << result.errorMessage.toStdString();
        EXPECT_FALSE(result.fromCache);
        const QColor pixel = result.image.pixelColor(16, 9);
        EXPECT_STREQ(pixel.red() > pixel.blue() ? "red" : "blue", row.colour);
        EXPECT_NEAR(double(result.frameTime * 10), double(row.frameTime), double(frame / 2));
    }
    EXPECT_FALSE(frameRequestAt(*timeline, 0, QSize(32, 18))) << "no clip before its start";
}
