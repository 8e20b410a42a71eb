#include <Util/Preview/MessageView.h>
#include <Util/Preview/ObjectView.h>

#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using EffectPreview = Preview::Object<Effect::Object>;
using PubSub::Details::Dispatcher;

using Log = std::vector<std::string>;

std::string size(const EffectPreview* p) { return std::to_string(p->width) + "x" + std::to_string(p->height); }

// A view that logs every hook with the sizes it is given.
class RecordingView : public Message::View<EffectPreview>
{
public:
    RecordingView(std::string name, Log& log, const EffectPreview* object = nullptr)
        : Message::View<EffectPreview>(object), m_name(std::move(name)), m_log(log)
    {}
    std::function<void()> onChanged;

protected:
    void addRequested(EffectPreview* p) override { write("addRequested " + size(p)); }
    void added(const EffectPreview* p) override { write("added " + size(p)); }
    void changeRequested(EffectPreview* p, EffectPreview* requested) override
    {
        write("changeRequested " + size(p) + " to " + size(requested));
    }
    void changed(const EffectPreview* p, const EffectPreview* previous, const EffectPreview* current) override
    {
        write("changed3 " + size(previous) + " -> " + size(current) + (p == current ? "" : " (not the object)"));
        if (onChanged)
            onChanged();
    }
    void changed(const EffectPreview* p, const EffectPreview* previous) override
    {
        write("changed2 " + size(previous) + " -> " + size(p));
    }
    void changed(const EffectPreview* p) override { write("changed1 " + size(p)); }
    void removeRequested(EffectPreview* p) override { write("removeRequested " + size(p)); }
    void removed(const EffectPreview* p) override { write("removed " + size(p)); }

private:
    void write(const std::string& line) { m_log.push_back(m_name + ": " + line); }
    std::string m_name;
    Log& m_log;
};

// Logs the bus messages of previews addressed to the objects it subscribes to.
class BusLog : public PubSub::Subscriber<Message::Types::Added<EffectPreview>>,
               public PubSub::Subscriber<Message::Types::Changed<EffectPreview>>,
               public PubSub::Subscriber<Message::Types::Removed<EffectPreview>>
{
public:
    explicit BusLog(Log& log) : m_log(log) {}

private:
    void notify(const Message::Types::Added<EffectPreview>& m) override
    {
        m_log.push_back("bus: Added " + size(m.object()));
    }
    void notify(const Message::Types::Changed<EffectPreview>& m) override
    {
        m_log.push_back("bus: Changed " + size(m.previous()) + " -> " + size(m.object()));
    }
    void notify(const Message::Types::Removed<EffectPreview>& m) override
    {
        m_log.push_back("bus: Removed " + size(m.object()));
    }
    Log& m_log;
};

class Requester : public PubSub::Publisher<Message::Types::Change<EffectPreview>>
{
};

class MessageViewTest : public ::testing::Test
{
protected:
    void SetUp() override { baseSubscriptions = Dispatcher::instance().subscriptionCount(); }
    void TearDown() override
    {
        // Every view of a test is gone: nothing it subscribed to may remain.
        EXPECT_EQ(Dispatcher::instance().subscriptionCount(), baseSubscriptions);
    }

    // An owner holding one preview of 100 x 50.
    static void makeOwned(RecordingView& owner)
    {
        auto chain = owner.add(new EffectPreview);
        chain->width = 100;
        chain->height = 50;
    }

    std::size_t baseSubscriptions = 0;
    Log log;
};

// An added record is owned, announced and becomes the view's object; a change of it calls the
// hooks in order, then is announced.
TEST_F(MessageViewTest, AddedRecordIsOwnedAnnouncedAndChangedInPlace)
{
    RecordingView owner("owner", log);
    EXPECT_EQ(owner.object(), nullptr);
    {
        auto chain = owner.add(new EffectPreview);
        chain->width = 100;
        EXPECT_THAT(log, IsEmpty()); // nothing happens before the chain commits
    }
    const EffectPreview* preview = owner.object();
    ASSERT_NE(preview, nullptr);
    EXPECT_TRUE(owner.isOwned(preview));
    EXPECT_FALSE(owner.isObserved(preview));
    EXPECT_EQ(owner.ownerPointer(preview), preview);
    EXPECT_THAT(owner.objects(), ElementsAre(preview));
    EXPECT_EQ(owner.enumerateAll().count(preview), 1u);
    EXPECT_THAT(log, ElementsAre("owner: added 100x450"));

    BusLog bus(log);
    bus.subscribe(preview);
    log.clear();
    owner.change(preview)->width = 640;
    EXPECT_EQ(preview->width, 640);
    EXPECT_EQ(preview->height, 450); // fields not written keep their value
    EXPECT_THAT(log, ElementsAre("owner: changed3 100x450 -> 640x450", "owner: changed2 100x450 -> 640x450",
                                 "owner: changed1 640x450", "bus: Changed 100x450 -> 640x450"));
}

TEST_F(MessageViewTest, CommittedChangeResetsTheWorkingCopyToADefaultRecord)
{
    RecordingView owner("owner", log);
    makeOwned(owner);
    const EffectPreview* preview = owner.object();
    Composition::Object composition;

    auto chain = owner.change(preview);
    EffectPreview* copy = chain.get();
    chain->composition = &composition;
    chain->width = 10;
    std::string copyDuringHooks;
    owner.onChanged = [&] {
        copyDuringHooks = size(copy) + (copy->composition ? " with composition" : " without composition");
    };
    {
        auto commit = std::move(chain);
    }
    owner.onChanged = nullptr;
    EXPECT_EQ(copyDuringHooks, "800x450 without composition");
    EXPECT_EQ(preview->composition, &composition);

    // A change request published by hand: the requester's own copy is reset by the owner.
    EffectPreview requested(*preview);
    requested.height = 99;
    const Message::Types::Change<EffectPreview> request(preview, &requested);
    Requester().publish(request);
    EXPECT_TRUE(request.applied());
    EXPECT_EQ(preview->height, 99);
    EXPECT_EQ(size(&requested), "800x450");
    EXPECT_EQ(requested.composition, nullptr);
}

// A change or a removal of an observed record is asked of its owner and reaches the observer
// as the owner's announcement.
TEST_F(MessageViewTest, ChangeAndRemovalOfAnObservedRecordGoToTheOwner)
{
    RecordingView owner("owner", log);
    makeOwned(owner);
    const EffectPreview* preview = owner.object();
    RecordingView observer("observer", log, preview);
    EXPECT_EQ(observer.object(), preview);
    EXPECT_TRUE(observer.isObserved(preview));
    EXPECT_EQ(observer.ownerPointer(preview), nullptr);
    BusLog bus(log);
    bus.subscribe(preview);
    log.clear();

    {
        auto chain = observer.change(preview);
        chain->width = 300;
        EXPECT_EQ(preview->width, 100);
    }
    EXPECT_EQ(preview->width, 300);
    EXPECT_THAT(log, ElementsAre("owner: changeRequested 100x50 to 300x50", "owner: changed3 100x50 -> 300x50",
                                 "owner: changed2 100x50 -> 300x50", "owner: changed1 300x50",
                                 "observer: changed3 100x50 -> 300x50", "observer: changed2 100x50 -> 300x50",
                                 "observer: changed1 300x50", "bus: Changed 100x50 -> 300x50"));

    log.clear();
    EXPECT_TRUE(observer.remove(preview));
    EXPECT_THAT(log, ElementsAre("owner: removeRequested 300x50", "owner: removed 300x50", "observer: removed 300x50",
                                 "bus: Removed 300x50"));
    EXPECT_EQ(owner.object(), nullptr);
    EXPECT_THAT(owner.objects(), IsEmpty());
    EXPECT_THAT(observer.objects(), IsEmpty());
}

TEST_F(MessageViewTest, ChangeReachingNoOwnerChangesNothingAndIsReported)
{
    EffectPreview orphan;
    RecordingView observer("observer", log, &orphan);
    TestSupport::LogCapture capture;
    observer.change(&orphan)->width = 1;
    EXPECT_EQ(orphan.width, 800);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_TRUE(capture.containsError("reached no owner"));

    // A chain outliving its record is lost the same way.
    RecordingView owner("owner", log);
    makeOwned(owner);
    RecordingView late("late", log, owner.object());
    auto chain = late.change(owner.object());
    chain->width = 5;
    owner.remove(owner.object());
    const auto errorsBefore = capture.errors().size();
    {
        auto commit = std::move(chain);
    }
    EXPECT_EQ(capture.errors().size(), errorsBefore + 1);
    EXPECT_TRUE(late.objects().empty());
}

TEST_F(MessageViewTest, AddRequestsAreServedOnlyWhileProcessed)
{
    RecordingView server("server", log);
    server.processAddRequests(true);
    auto record = std::make_unique<EffectPreview>();
    record->width = 1;
    const EffectPreview* added = Model::requestAdd(std::move(record));
    ASSERT_NE(added, nullptr);
    EXPECT_TRUE(server.isOwned(added));
    EXPECT_THAT(log, ElementsAre("server: addRequested 1x450", "server: added 1x450"));

    server.processAddRequests(false);
    TestSupport::LogCapture capture;
    EXPECT_EQ(Model::requestAdd(std::make_unique<EffectPreview>()), nullptr);
    EXPECT_EQ(server.objects().size(), 1u);
}

TEST_F(MessageViewTest, ObserveNewAndObserveAllFollowRecordsOfOtherOwners)
{
    RecordingView owner("owner", log);
    RecordingView fresh("fresh", log);
    fresh.observeNew(true);
    makeOwned(owner);
    const EffectPreview* preview = owner.object();
    EXPECT_TRUE(fresh.isObserved(preview));

    RecordingView all("all", log);
    all.observeAll();
    EXPECT_TRUE(all.isObserved(preview));
    log.clear();
    owner.change(preview)->height = 7;
    EXPECT_THAT(
        log, ElementsAre("owner: changed3 100x50 -> 100x7", "owner: changed2 100x50 -> 100x7", "owner: changed1 100x7",
                         "fresh: changed3 100x50 -> 100x7", "fresh: changed2 100x50 -> 100x7", "fresh: changed1 100x7",
                         "all: changed3 100x50 -> 100x7", "all: changed2 100x50 -> 100x7", "all: changed1 100x7"));
}

// A forgotten record is no longer followed, and a view destroyed during a delivery is not
// called.
TEST_F(MessageViewTest, ForgottenOrDestroyedViewsAreNoLongerCalled)
{
    RecordingView owner("owner", log);
    makeOwned(owner);
    const EffectPreview* preview = owner.object();
    RecordingView observer("observer", log, preview);
    EXPECT_TRUE(observer.forget(preview));
    EXPECT_FALSE(observer.isObserved(preview));
    log.clear();
    owner.change(preview)->width = 3;
    EXPECT_EQ(log.size(), 3u); // the owner's hooks only

    TestSupport::LogCapture capture;
    EXPECT_FALSE(observer.forget(preview));
    EXPECT_TRUE(capture.containsError("never observed"));
    EXPECT_FALSE(owner.forget(preview));
    EXPECT_TRUE(capture.containsError("owned by this view"));
    EXPECT_TRUE(owner.isOwned(preview));

    RecordingView killer("killer", log, preview);
    auto doomed = std::make_unique<RecordingView>("doomed", log, preview);
    killer.onChanged = [&] { doomed.reset(); };
    log.clear();
    owner.change(preview)->width = 1;
    EXPECT_THAT(log,
                ElementsAre("owner: changed3 3x50 -> 1x50", "owner: changed2 3x50 -> 1x50", "owner: changed1 1x50",
                            "killer: changed3 3x50 -> 1x50", "killer: changed2 3x50 -> 1x50", "killer: changed1 1x50"));
}

TEST_F(MessageViewTest, DestroyedOwnerAnnouncesItsRecordsRemoved)
{
    Log busLog;
    BusLog bus(busLog);
    {
        RecordingView owner("owner", log);
        makeOwned(owner);
        bus.subscribe(owner.object());
    }
    EXPECT_THAT(busLog, ElementsAre("bus: Removed 100x50"));
}

TEST_F(MessageViewTest, NullRecordsAreRefusedWithAnError)
{
    RecordingView view("view", log);
    TestSupport::LogCapture capture;
    view.add(nullptr)->width = 1; // written to a scratch copy, dropped
    view.own(nullptr)->height = 1;
    EXPECT_FALSE(view.remove(nullptr));
    EXPECT_FALSE(view.observe(nullptr));
    EXPECT_EQ(capture.errors().size(), 4u);
    EXPECT_THAT(view.objects(), IsEmpty());
    EXPECT_THAT(log, IsEmpty());
}

} // namespace

// The model's records edited through Message::View, as the library's editors and import
// handlers do: the model host (or another owner) applies each change and announces it.
namespace {

using Timeline::Clip;
using Timeline::ClipTiming;

class ClipView : public Message::View<Clip>
{
public:
    using Message::View<Clip>::View;
    std::vector<std::string> log;

protected:
    using Message::View<Clip>::changed;
    void changed(const Clip* clip, const Clip* previous) override
    {
        log.push_back(std::string(previous->isBroken() ? "broken" : "fine") + " -> "
                      + (clip->isBroken() ? "broken" : "fine"));
    }
};

class ModelThroughViewsTest : public ::testing::Test
{
protected:
    ModelThroughViewsTest()
    {
        file = host.add(std::make_unique<Media::File>("/media/a.mp4"));
        video = host.addClip(Clip(Clip::Video, file, 0));
        audio = host.addClip(Clip(Clip::Audio, file, 1));
        timeline = host.addTimeline();
        host.edit(timeline)
            ->addClip(video, ClipTiming(timeline->primaryTrack(), 0, 100))
            .addClip(audio, ClipTiming(timeline->nativeAudioTrack(), 0, 100))
            .addLink(video, audio, 0);
    }

    Model::Host host;
    const Media::File* file;
    const Clip* video;
    const Clip* audio;
    const Timeline::Object* timeline;
};

// The host owns the model's records: a chain of the library's view on a clip, a timeline or the
// playback is a change request the host applies when the chain is destroyed, then announces.
TEST_F(ModelThroughViewsTest, TheHostAppliesWhatAViewsChainAsksWhenTheChainEnds)
{
    ClipView clips(video);
    clips.change(video)->setBroken(true);
    EXPECT_TRUE(video->isBroken());
    EXPECT_FALSE(clips.isOwned(video));
    EXPECT_THAT(clips.log, ElementsAre("fine -> broken"));

    Message::View<Timeline::Object> timelines(timeline);
    {
        auto edit = timelines.change(timeline);
        edit->removeClip(video);
        EXPECT_TRUE(timeline->contains(video)); // nothing changes before the commit
    }
    EXPECT_FALSE(timeline->isSlave(audio)); // the link went with the clip
    EXPECT_THAT(timeline->clips(), ElementsAre(audio));

    host.setPlaybackTimeline(timeline);
    Message::View<Playback::Object> playback(host.playback());
    {
        auto seek = playback.change(host.playback());
        seek->state()->position = 42;
        seek->state()->seek = true;
    }
    EXPECT_EQ(host.playback()->state()->position, 42);
    EXPECT_TRUE(host.playback()->state()->seek);
}

// The owner of a private timeline (a shadow copy) serves the edits others ask of it.
class ShadowOwner : public Timeline::Details::ObjectViewBase
{
public:
    int changes = 0;

private:
    void timelineChanged(const Timeline::Object*, const Timeline::Object*) override { ++changes; }
};

TEST_F(ModelThroughViewsTest, PrivateTimelineOwnerServesEditsOfOtherViews)
{
    ShadowOwner owner;
    const Timeline::Object* shadow = owner.own(std::make_unique<Timeline::Object>(*timeline));
    EXPECT_EQ(shadow->primaryTrack(), timeline->primaryTrack());
    const Clip* title = host.addClip(Clip(Clip::Title).setOverlay(std::make_shared<Overlay::Preset>()));
    Message::View<Timeline::Object> editor;
    editor.change(shadow)->addClip(title, ClipTiming(shadow->titleTrack(), 0, Clip::DEFAULT_TITLE_CLIP_DURATION));
    EXPECT_TRUE(shadow->contains(title));
    EXPECT_FALSE(timeline->contains(title));
    EXPECT_EQ(owner.changes, 1);
}

class VideoWatcher : public Media::View<Media::Video>
{
public:
    std::vector<std::string> log;

private:
    void videoChanged(const Media::Video* previous, const Media::Video* current) override
    {
        log.push_back(std::to_string(previous->width) + " -> " + std::to_string(current->width));
    }
};

TEST_F(ModelThroughViewsTest, VideoViewReportsTheFormerAndTheNewFrameSize)
{
    auto stream = std::make_unique<Media::Video>();
    stream->width = 1280;
    const Media::Video* video = host.add(std::move(stream));
    VideoWatcher watcher;
    watcher.observe(video);
    Message::View<Media::Video> videos(video);
    videos.change(video)->width = 1920;
    EXPECT_THAT(watcher.log, ElementsAre("1280 -> 1920"));
}

} // namespace
