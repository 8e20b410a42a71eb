#include <EditorModel/EditorModel.h>
#include <EditorModel/PlaybackClock.h>

#include <QCoreApplication>
#include <QDeadlineTimer>

#include <TestSupport.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// A timeline 3 s long (one clip) loaded in the player, and the player's clock.
class PlaybackClockTest : public testing::Test
{
protected:
    static constexpr Types::Time End = 3 * Types::TimeUnitsPerSecond;

    PlaybackClockTest()
    {
        timeline = host.addTimeline("Project");
        const Timeline::Clip* clip = host.addClip(Timeline::Clip(Timeline::Clip::Video));
        host.edit(timeline)->addClip(clip, Timeline::ClipTiming(timeline->primaryTrack(), 0, End));
        host.setPlaybackTimeline(timeline);
    }

    const Playback::State& state() const { return *host.playback()->state(); }

    Model::Host host;
    const Timeline::Object* timeline = nullptr;
    Model::PlaybackClock clock{host, 5};
};

TEST_F(PlaybackClockTest, MovesOnlyAPlayingPlayerAndStopsItOnTheTimelinesEnd)
{
    clock.advance(1000);
    EXPECT_EQ(state().position, 0);
    EXPECT_FALSE(clock.running());

    host.setPlaybackCode(Playback::State::Playing);
    EXPECT_TRUE(clock.running());
    clock.advance(1000);
    EXPECT_EQ(state().position, 1000);
    EXPECT_EQ(state().code, Playback::State::Playing);

    clock.advance(End);
    EXPECT_EQ(state().position, End);
    EXPECT_EQ(state().code, Playback::State::Stopped);
    EXPECT_FALSE(clock.running());

    // Paused by somebody else: the clock stops with it and moves nothing.
    host.setPlaybackPosition(500);
    host.setPlaybackCode(Playback::State::Playing);
    host.setPlaybackCode(Playback::State::Paused);
    EXPECT_FALSE(clock.running());
    clock.advance(1000);
    EXPECT_EQ(state().position, 500);
}

TEST_F(PlaybackClockTest, ItsTicksPlayThePlayerToTheEnd)
{
    host.setPlaybackPosition(End - 30 * Types::TimeUnitsPerMillisecond);
    host.setPlaybackCode(Playback::State::Playing);

    QDeadlineTimer deadline(10000);
    while (state().code == Playback::State::Playing && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);

    EXPECT_EQ(state().code, Playback::State::Stopped);
    EXPECT_EQ(state().position, End);
}

// A view hears starts, stops and moves in that order; a seek published on the bus and a view's
// edit both move the player; a player with no timeline refuses to play.
TEST_F(PlaybackClockTest, ViewsHearEveryChangeAndSeeksAndViewEditsMoveThePlayer)
{
    struct Watcher : Playback::View
    {
        std::vector<std::string> log;
        void playbackStarted(const Playback::Object*) override { log.push_back("started"); }
        void playbackStopped(const Playback::Object*) override { log.push_back("stopped"); }
        void positionChanged(const Playback::Object* p) override
        {
            log.push_back("position " + std::to_string(p->state()->position));
        }
    } view;
    struct Seeker : PubSub::Publisher<Playback::FrameSeekRequest>
    {
    } seeker;
    view.observe(host.playback());
    host.setPlaybackCode(Playback::State::Playing);
    clock.advance(250);
    host.setPlaybackCode(Playback::State::Stopped);
    seeker.publish(Playback::FrameSeekRequest(host.playback(), 700));
    EXPECT_TRUE(state().seek);
    view.edit(host.playback())->state()->position = 900;
    EXPECT_EQ(state().position, 900);
    EXPECT_EQ(view.log,
              (std::vector<std::string>{"started", "position 250", "stopped", "position 700", "position 900"}));

    Model::Host empty;
    TestSupport::LogCapture log;
    EXPECT_FALSE(empty.setPlaybackCode(Playback::State::Playing));
    EXPECT_TRUE(log.containsError("no timeline is loaded"));
    seeker.publish(Playback::FrameSeekRequest(empty.playback(), 700)); // nothing loaded: nothing to move
    EXPECT_FALSE(empty.playback()->state());
}

} // namespace
