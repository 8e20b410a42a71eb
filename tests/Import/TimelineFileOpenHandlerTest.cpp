#include "ImportTestSupport.h"

#include <Util/Import/TimelineFileOpenHandler.h>

#include <gtest/gtest.h>

using namespace ImportTest;

namespace {

// Counts the changes the owner applied to each clip.
class ClipChanges : public Model::View<Timeline::Clip>
{
public:
    void watch(const Timeline::Clip* clip) { subscribe(clip); }
    std::map<const Timeline::Clip*, int> count;

private:
    void recordChanged(const Timeline::Clip* clip, const Timeline::Clip*) override { ++count[clip]; }
};

class TimelineFileOpenHandlerTest : public ::testing::Test
{
protected:
    TimelineFileOpenHandlerTest() : opener(std::make_shared<ManualOpener>())
    {
        host.setOpener(opener);
        timeline = host.addTimeline("Edit");
    }

    // A file being added to the timeline (as the model announces it) and `clips` clips of it.
    std::vector<const Timeline::Clip*> add(const QString& path, int clips = 1, bool broken = false)
    {
        const Media::File* file = host.addFile(Types::String(path));
        publisher.publish(Timeline::FileAddingNotification(timeline, file));
        std::vector<const Timeline::Clip*> result;
        for (int i = 0; i < clips; ++i) {
            const Timeline::Clip* clip = host.addClip(Timeline::Clip(Timeline::Clip::Video, file, 0).setBroken(broken));
            auto edit = host.edit(timeline);
            edit->addClip(clip, {timeline->primaryTrack(), timeline->duration(), Types::TimeUnitsPerSecond});
            changes.watch(clip);
            result.push_back(clip);
        }
        return result;
    }

    struct Publisher : PubSub::Publisher<Timeline::FileAddingNotification>
    {
    } publisher;
    Model::Host host;
    std::shared_ptr<ManualOpener> opener;
    StrategyScope dialog;
    const Timeline::Object* timeline = nullptr;
    ClipChanges changes;
};

} // namespace

TEST_F(TimelineFileOpenHandlerTest, KeepMarksEveryClipOfAFailedFileBroken)
{
    TimelineFileOpenHandler handler(timeline);
    const auto twins = add(QStringLiteral("/m/twice.mp4"), 2);
    const auto good = add(QStringLiteral("/m/good.mp4"));
    const auto broken = add(QStringLiteral("/m/broken.mp4"), 1, true);
    dialog->remove = false;

    opener->answer(QStringLiteral("/m/twice.mp4"), failed({36}));
    opener->answer(QStringLiteral("/m/good.mp4"), opened());
    opener->answer(QStringLiteral("/m/broken.mp4"), failed({36}));
    spinTurns();

    ASSERT_EQ(dialog->questions.size(), 1u);
    EXPECT_TRUE(dialog->questions[0].allowKeep);
    EXPECT_TRUE(twins[0]->isBroken());
    EXPECT_TRUE(twins[1]->isBroken());
    EXPECT_FALSE(good[0]->isBroken());
    EXPECT_EQ(timeline->clips().size(), 4u) << "kept clips stay on the timeline";
    EXPECT_EQ(changes.count[twins[0]], 1);
    EXPECT_EQ(changes.count[good[0]], 0);
    EXPECT_EQ(changes.count[broken[0]], 0) << "no edit for a clip already broken";
    EXPECT_TRUE(broken[0]->isBroken());
}

TEST_F(TimelineFileOpenHandlerTest, RemoveTakesTheClipsOffInOneTimelineEdit)
{
    TimelineFileOpenHandler handler(timeline);
    const auto twins = add(QStringLiteral("/m/twice.mp4"), 2);
    const auto good = add(QStringLiteral("/m/good.mp4"));
    const Types::Time goodStart = timeline->clipTiming(good[0]).position;
    dialog->remove = true;

    struct TimelineChanges : Model::View<Timeline::Object>
    {
        int count = 0;
        void recordChanged(const Timeline::Object*, const Timeline::Object*) override { ++count; }
    } timelineChanges;
    timelineChanges.subscribe(timeline);

    opener->answer(QStringLiteral("/m/twice.mp4"), failed({20}));
    opener->answer(QStringLiteral("/m/good.mp4"), opened());
    spinTurns();

    EXPECT_EQ(timelineChanges.count, 1) << "both clips leave in one edit";
    EXPECT_EQ(timeline->clips(), std::vector<const Timeline::Clip*>{good[0]});
    EXPECT_EQ(timeline->clipTiming(good[0]).position, goodStart);
    EXPECT_TRUE(twins[0]->isBroken()) << "removed clips are marked broken as well";
    EXPECT_TRUE(twins[1]->isBroken());
}

TEST_F(TimelineFileOpenHandlerTest, FailedFileWithoutClipsOnTheTimelineChangesNothing)
{
    TimelineFileOpenHandler handler(timeline);
    const Media::File* loose = host.addFile("/m/loose.mp4");
    handler.addFile(loose);
    const auto good = add(QStringLiteral("/m/good.mp4"));
    opener->answer(QStringLiteral("/m/loose.mp4"), failed({36}));
    opener->answer(QStringLiteral("/m/good.mp4"), opened());
    dialog->remove = true;
    spinTurns();
    ASSERT_EQ(dialog->questions.size(), 1u);
    EXPECT_FALSE(dialog->questions[0].allowKeep) << "keeping is offered only for clips of this timeline";
    EXPECT_EQ(timeline->clips().size(), 1u);
    EXPECT_EQ(changes.count[good[0]], 0);
}

TEST_F(TimelineFileOpenHandlerTest, HandlerListensToTheTimelineItIsBoundTo)
{
    TimelineFileOpenHandler handler(nullptr);
    const Timeline::Object* other = host.addTimeline("Other");
    handler.setTimeline(other);
    const auto ignored = add(QStringLiteral("/m/elsewhere.mp4"));
    opener->answer(QStringLiteral("/m/elsewhere.mp4"), failed({36}));
    spinTurns();
    EXPECT_TRUE(dialog->questions.empty()) << "files of another timeline are not watched";

    handler.setTimeline(timeline);
    const auto heard = add(QStringLiteral("/m/here.mp4"));
    opener->answer(QStringLiteral("/m/here.mp4"), failed({36}));
    spinTurns();
    ASSERT_EQ(dialog->questions.size(), 1u);
    EXPECT_TRUE(heard[0]->isBroken());
    EXPECT_FALSE(ignored[0]->isBroken());

    const auto pending = add(QStringLiteral("/m/pending.mp4"));
    handler.setTimeline(nullptr);
    EXPECT_EQ(handler.timeline(), nullptr);
    add(QStringLiteral("/m/unheard.mp4")); // announced on a timeline the handler left
    opener->answer(QStringLiteral("/m/pending.mp4"), failed({36}));
    spinTurns();
    ASSERT_EQ(dialog->questions.size(), 2u) << "the pending batch still completes";
    EXPECT_FALSE(dialog->questions[1].allowKeep);
    EXPECT_FALSE(pending[0]->isBroken());
    EXPECT_EQ(timeline->clips().size(), 4u);
}

TEST_F(TimelineFileOpenHandlerTest, ClearStopsListeningToTheFinishedBatch)
{
    TimelineFileOpenHandler handler(timeline);
    const auto clips = add(QStringLiteral("/m/a.mp4"));
    const Media::File* file = clips[0]->file();
    opener->answer(QStringLiteral("/m/a.mp4"), opened());
    spinTurns();
    EXPECT_FALSE(
        PubSub::Details::Dispatcher::instance().hasSubscribers(typeid(Media::FileOpenFailedNotification), file));
}
