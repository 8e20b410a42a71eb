#include <EditorModel/EditorModel.h>

#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using Timeline::Clip;

// Records what the model's clip view reports.
class ClipWatcher : public Timeline::Details::ClipViewBase
{
public:
    std::vector<std::string> log;

private:
    void clipAdded(const Clip* clip) override { log.push_back("added " + clip->name().str()); }
    void clipChanged(const Clip* clip, const Clip* previous) override
    {
        log.push_back("changed " + previous->name().str() + " -> " + clip->name().str());
    }
    void clipRemoved(const Clip* clip) override { log.push_back("removed " + clip->name().str()); }
};

// Counts the bus messages of clips addressed to one clip.
class ClipMessages : public PubSub::Subscriber<Message::Types::Changed<Clip>>,
                     public PubSub::Subscriber<Message::Types::Removed<Clip>>
{
public:
    int changed = 0;
    int removed = 0;
    std::string previousName;

private:
    void notify(const Message::Types::Changed<Clip>& m) override
    {
        ++changed;
        previousName = m.previous()->name().str();
    }
    void notify(const Message::Types::Removed<Clip>&) override { ++removed; }
};

class ModelViewTest : public ::testing::Test
{
protected:
    Model::Host host;
    const Clip* clip = host.addClip(Clip(Clip::Video).setName("a"));
};

TEST_F(ModelViewTest, OwnerAppliesItsEditAndAnnouncesItOnce)
{
    ClipMessages messages;
    messages.subscribe(clip);
    ClipWatcher watcher;
    watcher.observe(clip);

    host.edit(clip)->setName("b");
    EXPECT_EQ(clip->name().str(), "b");
    EXPECT_EQ(messages.changed, 1);
    EXPECT_EQ(messages.previousName, "a");
    EXPECT_THAT(watcher.log, ElementsAre("changed a -> b"));

    auto cancelled = host.edit(clip);
    cancelled->setName("c");
    cancelled.cancel();
    EXPECT_EQ(clip->name().str(), "b");
    EXPECT_EQ(messages.changed, 1) << "a cancelled edit changes nothing";
}

TEST_F(ModelViewTest, EditOfAnObservedRecordGoesToTheOwner)
{
    ClipWatcher watcher;
    watcher.observe(clip);
    {
        auto edit = watcher.edit(clip);
        edit->setName("b");
        // Not applied locally while the edit is open: the record is the owner's.
        EXPECT_EQ(clip->name().str(), "a");
    }
    EXPECT_EQ(clip->name().str(), "b");
    EXPECT_THAT(watcher.log, ElementsAre("changed a -> b"));
}

TEST_F(ModelViewTest, NewRecordsAreSeenByViewsObservingNewOnes)
{
    ClipWatcher watcher;
    watcher.observeNew(true);
    const Clip* added = Model::requestAdd(std::make_unique<Clip>(Clip(Clip::Audio).setName("new")));
    ASSERT_NE(added, nullptr);
    EXPECT_TRUE(host.owns(added));
    EXPECT_TRUE(watcher.isObserved(added));
    EXPECT_THAT(watcher.log, ElementsAre("added new"));

    watcher.observeNew(false);
    host.addClip(Clip(Clip::Audio).setName("unseen"));
    EXPECT_THAT(watcher.log, ElementsAre("added new"));
}

TEST_F(ModelViewTest, RemovalReachesObserversBeforeTheRecordIsFreed)
{
    ClipWatcher watcher;
    watcher.observe(clip);
    EXPECT_EQ(Model::Registry::objectsOf<Clip>().count(clip), 1u);
    const PubSub::Object* busObject = clip; // taken while the clip lives
    EXPECT_TRUE(watcher.remove(clip));      // a request to the owner
    EXPECT_THAT(watcher.log, ElementsAre("removed a"));
    EXPECT_FALSE(watcher.isFollowed(clip));
    EXPECT_FALSE(host.owns(clip));
    EXPECT_FALSE(watcher.isSubscribed(busObject));
    EXPECT_EQ(Model::Registry::objectsOf<Clip>().count(clip), 0u);
}

TEST_F(ModelViewTest, DestroyedOwnerAnnouncesItsRecordsRemoved)
{
    ClipMessages messages;
    {
        Model::View<Clip> owner;
        const Clip* own = owner.own(std::make_unique<Clip>(Clip::Title));
        messages.subscribe(own);
    }
    EXPECT_EQ(messages.removed, 1);
}

TEST_F(ModelViewTest, MistakesAreReportedAndChangeNothing)
{
    ClipWatcher watcher;
    TestSupport::LogCapture log;

    EXPECT_FALSE(watcher.forget(clip));
    EXPECT_TRUE(log.containsError("not observed"));

    EXPECT_FALSE(watcher.observe(nullptr));
    EXPECT_FALSE(watcher.edit(nullptr).commit());
    Clip stray;
    host.edit(&stray)->setName("nowhere"); // not the host's: the write is dropped
    EXPECT_EQ(stray.name().str(), "");
    EXPECT_TRUE(log.containsError("not a record of the host"));
    watcher.edit(nullptr)->setName("nowhere");
    EXPECT_FALSE(watcher.own(nullptr));
    EXPECT_TRUE(log.containsError("null object"));

    // A record nobody owns: the change is lost, and said so.
    Clip orphan(Clip::Video);
    orphan.setName("orphan");
    {
        auto edit = watcher.edit(&orphan);
        edit->setName("changed");
    }
    EXPECT_EQ(orphan.name().str(), "orphan");
    EXPECT_TRUE(log.containsError("reached no owner"));

    // A change of a removed record.
    watcher.observe(clip);
    auto late = watcher.edit(clip);
    late->setName("late");
    host.remove(clip);
    log.clear();
    EXPECT_FALSE(late.commit());
    EXPECT_TRUE(log.containsError("reached no owner"));
    EXPECT_FALSE(watcher.remove(&orphan));
    EXPECT_TRUE(log.containsError("nobody owns"));
    EXPECT_EQ(Model::requestAdd(std::make_unique<Overlay::Preset>()), nullptr);
    EXPECT_TRUE(log.containsError("nobody serves add requests"));
}

} // namespace
