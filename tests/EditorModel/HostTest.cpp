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

// A thumbnail service that answers what it is asked.
class RecordingProvider : public Thumbnail::Provider
{
public:
    void request(const Thumbnail::Object* t) override { requested.push_back(t); }
    void cancel(const Thumbnail::Object* t) override { cancelled.push_back(t); }
    std::vector<const Thumbnail::Object*> requested;
    std::vector<const Thumbnail::Object*> cancelled;
};

class ThumbnailOwner : public Model::View<Thumbnail::Object>
{
public:
    std::vector<QSize> frames;

private:
    void recordChanged(const Thumbnail::Object* t, const Thumbnail::Object*) override
    {
        frames.push_back(t->image().size());
    }
};

TEST(HostThumbnailTest, ProviderAnswersReachTheOwnerOfTheRecord)
{
    Model::Host host;
    auto provider = std::make_shared<RecordingProvider>();
    host.setThumbnailProvider(provider);
    ThumbnailOwner owner;
    auto record = std::make_unique<Thumbnail::Object>();
    record->setResource({"/a.mp4:v:0", Resource::Video}).setTime(10).setWidth(16).setHeight(9);
    const Thumbnail::Object* thumbnail = owner.own(std::move(record));
    ASSERT_THAT(provider->requested, ElementsAre(thumbnail));

    EXPECT_TRUE(host.answerThumbnail(thumbnail, QImage(16, 9, QImage::Format_ARGB32)));
    EXPECT_THAT(owner.frames, ElementsAre(QSize(16, 9)));
    EXPECT_TRUE(thumbnail->isAnswered());
    EXPECT_FALSE(thumbnail->isFailed());

    owner.remove(thumbnail);
    EXPECT_THAT(provider->cancelled, ElementsAre(thumbnail));
    TestSupport::LogCapture log;
    EXPECT_FALSE(host.answerThumbnail(thumbnail, QImage()));
    EXPECT_TRUE(log.containsError("gone"));
}

// A panel taking part in edit sessions.
class Panel : public Editor::WorkerView
{
public:
    std::vector<std::string> log;
    bool accept = true;

    void onLoad() override { log.push_back("load"); }
    void onApply() override { log.push_back("apply"); }
    void onReset() override { log.push_back("reset"); }
    bool canAccept(const std::set<const Timeline::Clip*>& clips) const override { return accept && !clips.empty(); }
    void filterClips(std::set<const Timeline::Clip*>& clips) const override
    {
        for (auto it = clips.begin(); it != clips.end();)
            it = (*it)->type() == Timeline::Clip::Video ? std::next(it) : clips.erase(it);
    }

private:
    void editorChanged(const Editor::Object* current, const Editor::Object* previous) override
    {
        log.push_back(std::string("changed ") + (previous->active ? "active" : "idle") + " -> "
                      + (current->active ? "active" : "idle"));
    }
};

TEST(HostSessionTest, SessionReachesTheWorkerAttachedToTheEditorObject)
{
    Model::Host host;
    const Timeline::Object* timeline = host.addTimeline();
    const Timeline::Clip* video = host.addClip(Timeline::Clip(Timeline::Clip::Video));
    const Timeline::Clip* title = host.addClip(Timeline::Clip(Timeline::Clip::Title));
    host.edit(timeline)->addClip(video, Timeline::ClipTiming(timeline->primaryTrack(), 0, 100));

    EXPECT_FALSE(host.beginSession(timeline, video)); // nobody to load yet
    host.resetSession();
    {
        Panel panel;
        EXPECT_EQ(host.editor()->worker, &panel);
        EXPECT_EQ(panel.editorObject(), host.editor());
        panel.log.clear();

        EXPECT_TRUE(host.beginSession(timeline, video));
        EXPECT_TRUE(host.editor()->canEdit());
        EXPECT_TRUE(host.canAcceptClips({video}));
        std::set<const Timeline::Clip*> clips{video, title};
        host.filterClips(clips);
        EXPECT_THAT(clips, ElementsAre(video));
        EXPECT_EQ(Timeline::ownerOf(video), timeline);
        EXPECT_TRUE(host.applySession());
        EXPECT_FALSE(host.editor()->canEdit());
        EXPECT_THAT(panel.log, ElementsAre("changed idle -> active", "load", "apply", "changed active -> idle"));
        panel.log.clear();
        ASSERT_TRUE(host.beginSession(timeline, video));
        EXPECT_TRUE(host.loadSession()) << "a reload";
        EXPECT_THAT(panel.log, ElementsAre("changed idle -> active", "load", "load"));
        EXPECT_TRUE(host.applySession());

        ASSERT_TRUE(host.beginSession(timeline, video));
        EXPECT_TRUE(host.setEditPosition(40));
        EXPECT_EQ(Editor::editPosition(video), 40);
        EXPECT_TRUE(host.applySession());
        EXPECT_TRUE(host.setEditPosition(40));
        EXPECT_FALSE(Editor::editPosition(video)); // the session ended: no clip is edited
        TestSupport::LogCapture log;
        EXPECT_FALSE(host.beginSession(timeline, host.addClip(Timeline::Clip())));
        EXPECT_TRUE(log.containsError("not on the timeline"));
    }
    EXPECT_EQ(host.editor()->worker, nullptr); // the panel detached itself
    EXPECT_FALSE(host.canAcceptClips({video}));
}

class PlayerWatcher : public Playback::View
{
public:
    std::vector<std::string> log;

private:
    void playbackStarted(const Playback::Object*) override { log.push_back("started"); }
    void playbackStopped(const Playback::Object*) override { log.push_back("stopped"); }
    void positionChanged(const Playback::Object* p) override
    {
        log.push_back("position " + std::to_string(p->state()->position));
    }
};

class Seeker : public PubSub::Publisher<Playback::FrameSeekRequest>
{
};

TEST(HostPlaybackTest, PlayerChangesAndSeeksReachThePlaybackView)
{
    Model::Host host;
    PlayerWatcher watcher;
    watcher.observe(host.playback());
    TestSupport::LogCapture log;
    EXPECT_FALSE(host.setPlaybackCode(Playback::State::Playing));
    EXPECT_TRUE(log.containsError("no timeline is loaded"));

    host.setPlaybackTimeline(host.addTimeline());
    host.setPlaybackCode(Playback::State::Playing);
    host.setPlaybackPosition(25);
    host.setPlaybackCode(Playback::State::Stopped);
    Seeker().publish(Playback::FrameSeekRequest(host.playback(), 70));
    EXPECT_TRUE(host.playback()->state()->seek);
    {
        auto seek = watcher.edit(host.playback()); // a view's change goes to the host
        seek->state()->position = 90;
    }
    EXPECT_EQ(host.playback()->state()->position, 90);
    EXPECT_THAT(watcher.log,
                ElementsAre("position 0", "started", "position 25", "stopped", "position 70", "position 90"));
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

// A service serving some timeline requests.
class OverlayService : public Model::TimelineRequestHandler
{
public:
    void overlayAdd(const Timeline::OverlayAddRequest& r) override
    {
        if (takeOverlays)
            taken.push_back(r.preset.take());
    }
    void split(const Timeline::SplitRequest& r) override { splits.push_back(r.position); }
    bool takeOverlays = true;
    std::vector<std::unique_ptr<Overlay::Preset>> taken;
    std::vector<Types::Time> splits;
};

class Dropper : public PubSub::Publisher<Timeline::OverlayAddRequest, Timeline::SplitRequest>
{
};

TEST(HostRequestTest, TimelineRequestsToAnyTimelineReachTheHandler)
{
    Model::Host host;
    auto service = std::make_shared<OverlayService>();
    Dropper dropper;
    Timeline::Object shadow; // not a record of the host: a private copy

    dropper.publish(Timeline::SplitRequest(&shadow, 5)); // no handler yet: ignored
    host.setTimelineRequestHandler(service);
    dropper.publish(Timeline::SplitRequest(&shadow, 7));
    auto preset = std::make_unique<Overlay::Preset>();
    preset->setTag("DroppedSVG");
    const Timeline::OverlayAddRequest request(&shadow, std::move(preset), shadow.titleTrack(), nullptr);
    dropper.publish(request);

    EXPECT_THAT(service->splits, ElementsAre(7));
    ASSERT_EQ(service->taken.size(), 1u);
    EXPECT_EQ(service->taken[0]->tag(), "DroppedSVG");
    EXPECT_TRUE(request.preset.taken());
}

} // namespace
