#include <EditorModel/EditorModel.h>

#include "ModelFakes.h"
#include "TestSupport.h"

#include <QCoreApplication>
#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using TestSupport::failed;
using FileWatcher = TestSupport::FileLog;

Media::OpenResult opened()
{
    Media::OpenResult result;
    result.ok = true;
    result.metadata.duration = 50;
    Media::Video video;
    video.index = 0;
    video.width = 1280;
    video.height = 720;
    result.metadata.videos.push_back(video);
    Media::Audio audio;
    audio.index = 1;
    audio.sampleRate = 48000;
    result.metadata.audios.push_back(audio);
    return result;
}

class AllProcessed : public PubSub::Subscriber<Timeline::AllFilesProcessedNotification>
{
public:
    int count = 0;

private:
    void notify(const Timeline::AllFilesProcessedNotification&) override { ++count; }
};

class HostFilesTest : public ::testing::Test
{
protected:
    void SetUp() override { host.setOpener(opener); }

    Model::Host host;
    std::shared_ptr<TestSupport::ManualOpener> opener = std::make_shared<TestSupport::ManualOpener>();
};

TEST_F(HostFilesTest, OpenedFileGetsItsStreamsAsRecords)
{
    FileWatcher watcher;
    watcher.observeNew(true);
    const Media::File* file = host.addFile("/media/a.mp4");
    ASSERT_EQ(opener->pendingCount(), 1);
    EXPECT_FALSE(file->isFinished());
    EXPECT_EQ(host.pendingOpenCount(), 1);

    ASSERT_TRUE(opener->answer(QStringLiteral("/media/a.mp4"), opened()));
    EXPECT_TRUE(file->isOpened());
    EXPECT_EQ(host.pendingOpenCount(), 0);
    ASSERT_NE(file->mainVideo(), nullptr);
    EXPECT_EQ(file->mainVideo()->file, file);
    EXPECT_EQ(file->mainVideo()->width, 1280);
    EXPECT_EQ(file->videoStream(0), file->mainVideo());
    EXPECT_EQ(file->audioStream(1)->sampleRate, 48000);
    EXPECT_TRUE(host.owns(file->mainVideo()));
    EXPECT_EQ(file->duration(), 50);
    EXPECT_THAT(watcher.log, ElementsAre("added a.mp4", "opened a.mp4 streams 2"));
}

TEST_F(HostFilesTest, FailureIsNotifiedBeforeTheFileIsMarkedFailed)
{
    FileWatcher watcher;
    const Media::File* file = host.addFile("/media/../media/b.mkv");
    EXPECT_EQ(file->path().str(), "/media/b.mkv");
    watcher.subscribe(file); // a handler that subscribes to the file directly hears it all
    ASSERT_TRUE(opener->answer(QStringLiteral("/media/b.mkv"), failed({5, 20})));
    EXPECT_TRUE(file->isFailed());
    EXPECT_FALSE(file->isOpened());
    EXPECT_THAT(watcher.log, ElementsAre("notification b.mkv 5 20", "failed b.mkv"));
}

TEST_F(HostFilesTest, BatchIsAnnouncedFromTheEventLoopOnceAllFilesFinished)
{
    const Timeline::Object* timeline = host.addTimeline();
    AllProcessed processed;
    processed.subscribe(timeline);
    const Media::File* a = host.addFile("/a.mp4");
    const Media::File* b = host.addFile("/b.mp4");
    const Media::File* c = host.addFile("/c.mp4");
    host.watchFiles(timeline, {a, b, c});

    ASSERT_TRUE(opener->answer(QStringLiteral("/a.mp4"), opened()));
    ASSERT_TRUE(opener->answer(QStringLiteral("/b.mp4"), failed({36})));
    QCoreApplication::processEvents();
    EXPECT_EQ(processed.count, 0);

    host.remove(c); // a file removed before it finished settles too
    EXPECT_EQ(processed.count, 0);
    QCoreApplication::processEvents();
    EXPECT_EQ(processed.count, 1);

    // A batch of finished files is announced too, but never inside the call.
    host.watchFiles(timeline, {a});
    EXPECT_EQ(processed.count, 1);
    QCoreApplication::processEvents();
    EXPECT_EQ(processed.count, 2);
}

TEST_F(HostFilesTest, RemovedTimelineTakesItsBatchesWithIt)
{
    const Timeline::Object* kept = host.addTimeline();
    const Timeline::Object* first = host.addTimeline();
    auto privateCopy = std::make_unique<Model::View<Timeline::Object>>();
    const Timeline::Object* copy = privateCopy->own(std::make_unique<Timeline::Object>());
    const Media::File* a = host.addFile("/a.mp4");
    host.watchFiles(kept, {a});
    host.watchFiles(first, {a});
    host.watchFiles(copy, {a});
    host.watchFiles(copy, {a});

    // Whoever hears the first batch removes the timeline of another finished one.
    class Remover : public PubSub::Subscriber<Timeline::AllFilesProcessedNotification>
    {
    public:
        Remover() { subscribeAll(typeid(Timeline::AllFilesProcessedNotification)); }
        std::vector<const Timeline::Object*> heard;
        std::function<void()> onFirst;

    private:
        void notify(const Timeline::AllFilesProcessedNotification& n) override
        {
            heard.push_back(n.timeline);
            if (heard.size() == 1)
                onFirst();
        }
    } remover;
    remover.onFirst = [&] { host.remove(first); };

    privateCopy.reset(); // the copy is given up while its file opens
    ASSERT_TRUE(opener->answer(QStringLiteral("/a.mp4"), opened()));
    QCoreApplication::processEvents();
    EXPECT_THAT(remover.heard, ElementsAre(kept)) << "neither the freed copy nor the removed timeline is announced";
}

TEST_F(HostFilesTest, AnswerForARemovedFileIsDropped)
{
    const Media::File* file = host.addFile("/gone.mp4");
    FileWatcher watcher;
    watcher.observe(file);
    host.remove(file);
    opener->answer(QStringLiteral("/gone.mp4"), opened());
    EXPECT_THAT(watcher.log, ElementsAre("removed gone.mp4"));
}

TEST_F(HostFilesTest, WithoutAnOpenerFilesStayUnopenedAndThatIsReported)
{
    Model::Host bare;
    TestSupport::LogCapture log;
    const Media::File* file = bare.addFile("/x.mp4");
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(file->isFinished());
    EXPECT_TRUE(log.containsError("no media opener"));
    EXPECT_EQ(bare.addFile(""), nullptr);
    EXPECT_FALSE(host.openFile(file)); // not a file of this host
}

class ClipSelectionWatcher : public Selection::View<Timeline::Clip>
{
public:
    std::vector<std::size_t> sizes;

private:
    void selectionChanged(const std::set<const Timeline::Clip*>& current,
                          const std::set<const Timeline::Clip*>&) override
    {
        sizes.push_back(current.size());
    }
};

TEST(HostSelectionTest, SelectionViewFindsTheModelsSelectionAndReportsChanges)
{
    Model::Host host;
    ClipSelectionWatcher watcher;
    EXPECT_EQ(watcher.selectionObject(), host.clipSelection());
    const Timeline::Clip* a = host.addClip(Timeline::Clip(Timeline::Clip::Video));
    EXPECT_TRUE(watcher.select({a}));
    EXPECT_TRUE(watcher.select({a})); // the same selection again: no change reported
    EXPECT_TRUE(watcher.select({}));
    EXPECT_THAT(watcher.sizes, ElementsAre(1u, 0u));
    EXPECT_THAT(watcher.selection(), IsEmpty());
}

} // namespace
