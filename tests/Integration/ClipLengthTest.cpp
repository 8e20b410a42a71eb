// A clip added for a file plays the file's own length once the file opens: its video stream's,
// its audio stream's for a sound file, the default length for a still. The change is an edit
// of the timeline announced like any other, and what follows the clip on its track moves with
// its end.

#include "GeneratedMedia.h"
#include "ImportTestSupport.h"
#include "IntegrationSupport.h"

#include <gtest/gtest.h>

using namespace Integration;
using ImportTest::spinTurns;
using ImportTest::spinUntil;
using MediaSamples::Sample;

namespace {

class ClipLengthOnRealFiles : public testing::Test
{
protected:
    void SetUp() override
    {
        timeline = model.host.addTimeline("Project");
        tail = model.host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("Tail"));
        model.host.edit(timeline)->addClip(tail, {timeline->primaryTrack(), 0, second});
    }

    RealModel model;
    const Timeline::Object* timeline = nullptr;
    const Timeline::Clip* tail = nullptr;
};

} // namespace

TEST_F(ClipLengthOnRealFiles, insertedClipsTakeTheirFilesLengthAndTheRestFollows)
{
    ChangeCounter changes(timeline);
    const FileAdder::AddedResult added =
        FileAdder::addMediaFiles({MediaSamples::path(Sample::Mp4VideoAudio), MediaSamples::path(Sample::WavAudio),
                                  MediaSamples::path(Sample::PngImage)},
                                 FileAdder::ImportPanel, FileAdder::Context(timeline, 0));
    ASSERT_EQ(added.clips.size(), 3u);
    const int changesWhenAdded = changes.changes;
    EXPECT_EQ(timeline->clipTiming(tail).position, 2 * FileAdder::DefaultClipLength) << "provisional lengths first";

    for (const Media::File* file : added.files)
        ASSERT_TRUE(spinUntil([file] { return file->isFinished(); }, 60000) && file->isOpened());
    spinTurns();

    const Types::Time video = added.files[0]->mainVideo()->duration;
    const Types::Time sound = added.files[1]->mainAudio()->duration;
    EXPECT_NEAR(double(video), double(2 * second), 0.1 * second);
    EXPECT_NEAR(double(sound), double(1.5 * second), 0.01 * second);
    EXPECT_EQ(timeline->clipTiming(added.clips[0]).length, video) << "the video stream's length";
    EXPECT_EQ(timeline->clipTiming(added.clips[1]).length, sound) << "a sound file's audio length";
    EXPECT_EQ(timeline->clipTiming(added.clips[2]),
              Timeline::ClipTiming(timeline->primaryTrack(), video, FileAdder::DefaultClipLength))
        << "a still keeps its length and follows the video's end";
    EXPECT_EQ(timeline->clipTiming(tail).position, video + FileAdder::DefaultClipLength)
        << "what followed the inserted clips follows their real ends";
    EXPECT_GT(changes.changes, changesWhenAdded) << "the new lengths are announced as changes of the timeline";
}

namespace {

Media::OpenResult openedWith(Types::Time videoLength, Types::Time fileLength)
{
    Media::OpenResult result = ImportTest::opened();
    result.metadata.videos[0].duration = videoLength;
    result.metadata.videos[0].frameRate = {25, 1};
    result.metadata.duration = fileLength;
    return result;
}

class ClipLengthWhileOpening : public testing::Test
{
protected:
    void SetUp() override
    {
        host.setOpener(opener);
        Model::installDefaultServices(host);
        timeline = host.addTimeline("Project");
    }

    const Timeline::Clip* add(const QString& name, const Timeline::Object* into = nullptr)
    {
        const FileAdder::AddedResult added =
            FileAdder::addMediaFiles({name}, FileAdder::DragAndDrop, FileAdder::Context(into ? into : timeline));
        return added.clips.empty() ? nullptr : added.clips.front();
    }

    Model::Host host;
    std::shared_ptr<ImportTest::ManualOpener> opener = std::make_shared<ImportTest::ManualOpener>();
    const Timeline::Object* timeline = nullptr;
};

} // namespace

TEST_F(ClipLengthWhileOpening, aLengthTheUserGaveMeanwhileStays)
{
    const Timeline::Clip* first = add(QStringLiteral("first.mp4"));
    const Timeline::Clip* trimmed = add(QStringLiteral("trimmed.mp4"));
    ASSERT_TRUE(first && trimmed);
    {
        auto edit = host.edit(timeline);
        Timeline::ClipTiming timing = edit->clipTiming(trimmed);
        timing.length = 2 * second;
        edit->moveClip(trimmed, timing);
    }
    ASSERT_TRUE(opener->answer(QStringLiteral("first.mp4"), openedWith(3 * second, 4 * second)));
    ASSERT_TRUE(opener->answer(QStringLiteral("trimmed.mp4"), openedWith(7 * second, 7 * second)));

    EXPECT_EQ(timeline->clipTiming(first).length, 3 * second) << "the stream's length, not the file's";
    EXPECT_EQ(timeline->clipTiming(trimmed), Timeline::ClipTiming(timeline->primaryTrack(), 3 * second, 2 * second));
}

TEST_F(ClipLengthWhileOpening, aStreamWithoutLengthTakesTheFilesAndAFailedFileKeepsTheDefault)
{
    const Timeline::Clip* unsized = add(QStringLiteral("unsized.mp4"));
    const Timeline::Clip* broken = add(QStringLiteral("broken.mp4"));
    ASSERT_TRUE(opener->answer(QStringLiteral("broken.mp4"), ImportTest::failed({36})));
    ASSERT_TRUE(opener->answer(QStringLiteral("unsized.mp4"), openedWith(0, 4 * second)));

    EXPECT_EQ(timeline->clipTiming(unsized).length, 4 * second);
    EXPECT_EQ(timeline->clipTiming(broken),
              Timeline::ClipTiming(timeline->primaryTrack(), 4 * second, FileAdder::DefaultClipLength));
}

TEST_F(ClipLengthWhileOpening, aClipOrTimelineGoneBeforeTheFileOpensIsLeftAlone)
{
    const Timeline::Clip* gone = add(QStringLiteral("gone.mp4"));
    const Timeline::Clip* staying = add(QStringLiteral("staying.mp4"));
    host.edit(timeline)->removeClip(gone);
    ASSERT_TRUE(opener->answer(QStringLiteral("gone.mp4"), openedWith(3 * second, 3 * second)));
    EXPECT_FALSE(timeline->contains(gone));
    EXPECT_EQ(timeline->clipTiming(staying).position, FileAdder::DefaultClipLength)
        << "a clip no longer on the timeline moves nothing";

    const Timeline::Object* scratch = host.addTimeline("Scratch");
    ASSERT_NE(add(QStringLiteral("late.mp4"), scratch), nullptr);
    ASSERT_TRUE(host.remove(scratch));
    EXPECT_TRUE(opener->answer(QStringLiteral("late.mp4"), openedWith(3 * second, 3 * second)));
    EXPECT_TRUE(opener->answer(QStringLiteral("staying.mp4"), openedWith(2 * second, 2 * second)));
    EXPECT_EQ(timeline->clipTiming(staying).length, 2 * second);
}
