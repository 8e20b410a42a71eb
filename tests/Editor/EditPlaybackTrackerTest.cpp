#include "SessionFixture.h"

#include <Util/Editor/EditPlaybackTracker.h>
#include <Util/Editor/ModelEditor.h>
#include <Util/Editor/PlayerEditor.h>

#include <TestSupport.h>

#include <QSignalSpy>

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A panel whose worker may put position checks off until the session loads again.
class PanelEditor : public ModelEditor
{
public:
    PanelEditor() : ModelEditor([](const auto&, const auto*) { return true; }, nullptr) {}
    bool deferPositionCheck(const Editor::Object*) const override { return defer; }
    bool defer = false;
};

// A clip being edited with the player borrowed: the panel's client holds the editor's player,
// the PlayerEditor's client holds the panel's player view, and the tracker follows the
// model's playback with the PlayerEditor's client.
class PlayerHoldTest : public SessionFixture
{
protected:
    PlayerHoldTest()
    {
        note(&panelClient, &ExclusiveClient::released, "panel gives the player back");
        playerEditor = std::make_unique<PlayerEditor>(panel, host.editor(), &panelClient);
        playerEditor->setPlayerService(&panelPlayer);
        note(playerClient(), &ExclusiveClient::released, "player editor lets go");
        tracker = std::make_unique<EditPlaybackTracker>(
            playerClient(), playerEditor.get(), host.editor(), [this] { return editedClip; }, nullptr);
        note(tracker.get(), &EditPlaybackTracker::playbackAvailable, "available");
        note(tracker.get(), &EditPlaybackTracker::playbackPositionChanged, "position changed");
        note(tracker.get(), &EditPlaybackTracker::playbackStateChanged, "state changed");
        note(tracker.get(), &EditPlaybackTracker::editPositionChanged, "edit position changed");

        host.setPlaybackTimeline(timeline);
        tracker->setPlayback(host.playback());
        host.beginSession(timeline, clip);
        // Scrubbing: the player is paused, not playing.
        host.setPlaybackCode(Playback::State::Paused);
    }

    ExclusiveClient* playerClient() { return playerEditor->playerClient(); }

    void takePlayer()
    {
        ASSERT_TRUE(panelClient.acquire());
        ASSERT_TRUE(playerClient()->acquire());
        journal.clear();
    }

    ExclusiveService editorPlayer;
    ExclusiveService panelPlayer;
    ExclusiveClient panelClient{&editorPlayer};
    PanelEditor panel;
    std::unique_ptr<PlayerEditor> playerEditor;
    const Timeline::Clip* editedClip = clip;
    std::unique_ptr<EditPlaybackTracker> tracker;
};

// One move of the model's playback while the clip (1000 to 3000) holds the player, each from a
// paused player at the start of the playback.
TEST_F(PlayerHoldTest, KeepsTheHoldOnlyWhilePausedInsideTheClip)
{
    const std::vector<std::string> kept{"position changed", "edit position changed"};
    const std::vector<std::string> givenBack{"position changed", "panel gives the player back",
                                             "player editor lets go"};
    const struct
    {
        const char* name;
        std::function<void()> move;
        std::vector<std::string> journal;
        bool held;
        bool playing;
    } rows[] = {
        {"at end", [this] { host.setPlaybackPosition(3000); }, kept, true, false},
        {"at start", [this] { host.setPlaybackPosition(1000); }, kept, true, false},
        {"past end", [this] { host.setPlaybackPosition(3001); }, givenBack, false, false},
        {"before start", [this] { host.setPlaybackPosition(999); }, givenBack, false, false},
        {"playing",
         [this] { host.setPlaybackCode(Playback::State::Playing); },
         {"state changed", "panel gives the player back", "player editor lets go"},
         false,
         true},
        {"stopped", [this] { host.setPlaybackCode(Playback::State::Stopped); }, {"state changed"}, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        host.setPlaybackCode(Playback::State::Paused);
        host.setPlaybackPosition(0);
        ASSERT_FALSE(playerClient()->isInUse()); // given back at the move out of the clip
        takePlayer();

        row.move();

        EXPECT_EQ(journal, row.journal);
        EXPECT_EQ(playerClient()->isInUse(), row.held);
        EXPECT_EQ(panelClient.isInUse(), row.held);
        EXPECT_EQ(editorPlayer.isFree(), !row.held);
        EXPECT_EQ(tracker->playing(), row.playing);
    }
}

// Without the hold only the position is reported; while stopped, a move outside the clip does
// nothing to the hold.
TEST_F(PlayerHoldTest, OutsideTheClipOnlyAPausedHoldIsGivenBack)
{
    host.setPlaybackPosition(ClipEnd + 500);
    EXPECT_THAT(journal, ElementsAre("position changed"));

    host.setPlaybackCode(Playback::State::Stopped);
    takePlayer();
    host.setPlaybackPosition(ClipEnd + 600);
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_TRUE(playerClient()->isInUse());
}

TEST_F(PlayerHoldTest, APutOffCheckRunsAtTheNextLoadOnce)
{
    takePlayer();
    panel.defer = true;

    host.setPlaybackPosition(ClipEnd + 1);
    EXPECT_THAT(journal, ElementsAre("position changed"));
    EXPECT_TRUE(playerClient()->isInUse());

    panel.defer = false;
    journal.clear();
    host.loadSession();
    EXPECT_THAT(journal, ElementsAre("panel gives the player back", "player editor lets go"));

    journal.clear();
    ASSERT_TRUE(panelClient.acquire());
    ASSERT_TRUE(playerClient()->acquire());
    journal.clear();
    host.loadSession();
    EXPECT_THAT(journal, IsEmpty());
}

TEST_F(PlayerHoldTest, ANullClipSkipsTheRangeTest)
{
    editedClip = nullptr;
    takePlayer();

    host.setPlaybackPosition(ClipEnd + 500);

    EXPECT_THAT(journal, ElementsAre("position changed", "edit position changed"));
    EXPECT_TRUE(playerClient()->isInUse());
}

// Only the availability flag clearing is announced (once); seeking changes the playback object
// as a seek.
TEST_F(PlayerHoldTest, AvailabilityClearingAndSeeksAreAnnounced)
{
    host.setPlaybackUnavailable(true);
    EXPECT_THAT(journal, IsEmpty());
    host.setPlaybackUnavailable(false);
    host.setPlaybackUnavailable(false);
    EXPECT_THAT(journal, ElementsAre("available"));

    journal.clear();
    tracker->seekTo(ClipStart + 25);
    ASSERT_NE(host.playback()->state(), nullptr);
    EXPECT_EQ(host.playback()->state()->position, ClipStart + 25);
    EXPECT_TRUE(host.playback()->state()->seek);
    EXPECT_EQ(tracker->currentPosition(), ClipStart + 25);
    EXPECT_THAT(journal, ElementsAre("position changed"));
}

TEST_F(PlayerHoldTest, AnotherPlaybackObjectReplacesTheFirst)
{
    Playback::Object other;
    tracker->setPlayback(&other);

    host.setPlaybackPosition(ClipStart + 5);

    EXPECT_THAT(journal, IsEmpty());
    EXPECT_EQ(tracker->currentPosition(), 0);
    EXPECT_FALSE(tracker->playing());
}

// Playback with the clip (1000 to 3000) edited and the tracker stopping at its edge: where
// it ends up after one move of the playing position.
TEST_F(PlayerHoldTest, PlaybackRunningAcrossTheClipsEndStopsOnTheEdge)
{
    struct Row
    {
        const char* name;
        bool stopAtEdge;
        Types::Time from;
        std::function<void()> move;
        Types::Time position;
        int code;
        int stateChanges; // the start, and the stop when there is one
    };
    const Row rows[] = {
        {"across the end", true, 2500, [this] { host.setPlaybackPosition(ClipEnd + 40); }, ClipEnd,
         Playback::State::Stopped, 2},
        {"exactly onto the end", true, 2500, [this] { host.setPlaybackPosition(ClipEnd); }, ClipEnd,
         Playback::State::Stopped, 2},
        {"still inside", true, 2500, [this] { host.setPlaybackPosition(ClipEnd - 1); }, ClipEnd - 1,
         Playback::State::Playing, 1},
        {"from past the end", true, ClipEnd + 100, [this] { host.setPlaybackPosition(ClipEnd + 200); }, ClipEnd + 200,
         Playback::State::Playing, 1},
        {"a seek across the end", true, 2500, [this] { tracker->seekTo(ClipEnd + 500); }, ClipEnd + 500,
         Playback::State::Playing, 1},
        {"switched off", false, 2500, [this] { host.setPlaybackPosition(ClipEnd + 40); }, ClipEnd + 40,
         Playback::State::Playing, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        tracker->setStopAtClipEdge(row.stopAtEdge);
        host.setPlaybackCode(Playback::State::Paused);
        host.setPlaybackPosition(row.from);
        journal.clear();

        host.setPlaybackCode(Playback::State::Playing);
        row.move();

        const Playback::State* state = host.playback()->state();
        ASSERT_NE(state, nullptr);
        EXPECT_EQ(state->position, row.position);
        EXPECT_EQ(state->code, row.code);
        EXPECT_EQ(std::count(journal.begin(), journal.end(), "state changed"), row.stateChanges);
    }
}

TEST_F(PlayerHoldTest, PlayingTheEditedClipGivesThePlayerBackAndStillStopsOnTheEdge)
{
    tracker->setStopAtClipEdge(true);
    host.setPlaybackPosition(ClipStart + 500);
    takePlayer();

    host.setPlaybackCode(Playback::State::Playing);
    EXPECT_FALSE(playerClient()->isInUse());
    EXPECT_TRUE(editorPlayer.isFree());
    host.setPlaybackPosition(ClipEnd + 25);

    EXPECT_EQ(host.playback()->state()->position, ClipEnd);
    EXPECT_EQ(host.playback()->state()->code, Playback::State::Stopped);
    EXPECT_TRUE(host.playback()->state()->seek);
    EXPECT_THAT(journal, ElementsAre("state changed", "panel gives the player back", "player editor lets go",
                                     "position changed", "state changed"));
}

class EditPlaybackTrackerEdgeTest : public SessionFixture
{
};

TEST_F(EditPlaybackTrackerEdgeTest, WithoutPlaybackNothingHappens)
{
    ExclusiveService service;
    ExclusiveClient client(&service);
    AbstractEditor editor(nullptr);
    EditPlaybackTracker tracker(
        &client, &editor, host.editor(), [] { return nullptr; }, nullptr);
    QSignalSpy positions(&tracker, &EditPlaybackTracker::playbackPositionChanged);

    tracker.seekTo(500);
    tracker.setPlayback(nullptr);

    EXPECT_EQ(tracker.currentPosition(), 0);
    EXPECT_FALSE(tracker.playing());
    EXPECT_EQ(positions.count(), 0);

    // A player without a timeline has no state: still nothing to seek.
    tracker.setPlayback(host.playback());
    tracker.seekTo(500);
    EXPECT_EQ(host.playback()->state(), nullptr);
}

TEST_F(EditPlaybackTrackerEdgeTest, AnEmptyClipFunctionThrowsWhenTheCheckRuns)
{
    ExclusiveService service;
    ExclusiveClient client(&service);
    AbstractEditor editor(nullptr);
    EditPlaybackTracker tracker(&client, &editor, host.editor(), nullptr, nullptr);
    host.setPlaybackTimeline(timeline);
    tracker.setPlayback(host.playback());
    host.beginSession(timeline, clip);
    host.setPlaybackCode(Playback::State::Paused);

    // Not holding the player: no check, no call.
    EXPECT_NO_THROW(host.setPlaybackPosition(ClipStart + 1));

    client.acquire();
    EXPECT_THROW(host.setPlaybackPosition(ClipStart + 2), std::bad_function_call);
}

// Without a client or an editor the tracker still follows the playback (and says what is
// missing), and it forgets a playback object that goes away.
TEST_F(EditPlaybackTrackerEdgeTest, NullClientAndEditorAreToleratedAndAPlaybackThatGoesAwayIsForgotten)
{
    TestSupport::LogCapture log;
    EditPlaybackTracker tracker(
        nullptr, nullptr, nullptr, [] { return nullptr; }, nullptr);
    QSignalSpy state(&tracker, &EditPlaybackTracker::playbackStateChanged);
    host.setPlaybackTimeline(timeline);
    tracker.setPlayback(host.playback());

    host.setPlaybackCode(Playback::State::Playing);
    host.setPlaybackPosition(ClipStart);
    EXPECT_EQ(state.count(), 1);
    EXPECT_TRUE(log.containsError("EditPlaybackTracker"));

    auto playback = std::make_unique<Playback::Object>();
    playback->setState(Playback::State{});
    const Playback::Object* record = host.add(std::move(playback));
    tracker.setPlayback(record);
    host.remove(record);
    EXPECT_EQ(tracker.playback(), nullptr);
    EXPECT_EQ(tracker.currentPosition(), 0);
}

} // namespace
