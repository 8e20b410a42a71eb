#include <Util/Editor/TimelineEdits.h>

#include "ClipTimelineFixture.h"

#include <TimelineChanges.h>

#include <QUndoStack>

#include <gtest/gtest.h>

#include <tuple>

class TimelineEditsTest : public ClipTimelineFixture
{
protected:
    // Puts the video (and its sound under it) at 2 s for 6 s, from 10 s of its media on.
    Timeline::ClipTiming retime(double speed, bool reversed)
    {
        Timeline::ClipTiming whole(timeline->primaryTrack(), 2 * second, 6 * second, 10 * second);
        whole.speed = speed;
        whole.reversed = reversed;
        Timeline::ClipTiming sound = whole;
        sound.track = timeline->nativeAudioTrack();
        host.edit(timeline)->moveClip(video, whole).moveClip(nativeAudio, sound);
        return whole;
    }

    QUndoStack undo;
};

TEST_F(TimelineEditsTest, ASplitClipShowsEveryFrameWhereItDidAndUndoJoinsItAgain)
{
    const Timeline::Clip* early =
        place(Timeline::Clip(Timeline::Clip::Title), timeline->titleTrack(), 3 * second, second);
    const Timeline::Clip* late =
        place(Timeline::Clip(Timeline::Clip::Title), timeline->titleTrack(), 6 * second, second);
    host.edit(timeline)->addLink(video, early, second).addLink(video, late, 4 * second);
    struct Row
    {
        const char* name;
        double speed;
        bool reversed;
    };
    const Row rows[] = {{"forward", 1.0, false},
                        {"twice as fast", 2.0, false},
                        {"reversed", 1.0, true},
                        {"reversed at half speed", 0.5, true}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Timeline::ClipTiming whole = retime(row.speed, row.reversed);
        TimelineChanges edits(timeline);

        const Timeline::Clip* rest = TimelineEdits::splitClip(timeline, video, 5 * second, &undo);

        ASSERT_NE(rest, nullptr);
        EXPECT_EQ(edits.count, 1);
        for (Types::Time t = whole.start(); t < whole.end(); t += second / 2) {
            const Timeline::Clip* half = t < 5 * second ? video : rest;
            EXPECT_EQ(timeline->clipTiming(half).mediaTimeAt(t), whole.mediaTimeAt(t)) << t;
        }
        const Timeline::Clip* restSound = timeline->findNativeAudio(rest);
        ASSERT_NE(restSound, nullptr);
        EXPECT_EQ(timeline->clipTiming(restSound).offset, timeline->clipTiming(rest).offset);
        EXPECT_EQ(timeline->clipTiming(nativeAudio).length, 3 * second);
        EXPECT_EQ(timeline->masterOf(early), video);
        EXPECT_EQ(timeline->masterOf(late), rest);
        EXPECT_EQ(timeline->clipTiming(late).position, 6 * second) << "what was tied stays where it was";

        undo.undo();
        EXPECT_EQ(timeline->clipTiming(video), whole);
        EXPECT_FALSE(timeline->contains(rest) || timeline->contains(restSound));
        EXPECT_EQ(timeline->masterOf(late), video);
        EXPECT_EQ(timeline->findNativeAudio(video), nativeAudio);
        EXPECT_EQ(timeline->clipTiming(nativeAudio).length, 6 * second);
    }
}

TEST_F(TimelineEditsTest, ATrimmedClipShowsMoreOrLessOfItsMediaAsFarAsItGoes)
{
    // 2 s to 8 s on the timeline, from 10 s of media 17 s long.
    host.edit(withSound)->setDuration(17 * second);
    const Timeline::Clip* title =
        place(Timeline::Clip(Timeline::Clip::Title), timeline->titleTrack(), 3 * second, second);
    using TimelineEdits::Edge;
    struct Row
    {
        const char* name;
        bool reversed;
        Edge edge;
        Types::Time to;
        Types::Time position, length, offset;
    };
    const Types::Time s = second;
    const Row rows[] = {
        {"start later", false, Edge::Start, 3 * s, 3 * s, 5 * s, 11 * s},
        {"start before the timeline", false, Edge::Start, -5 * s, 0, 8 * s, 8 * s},
        {"end past the media", false, Edge::End, 20 * s, 2 * s, 7 * s, 10 * s},
        {"end before the start", false, Edge::End, 0, 2 * s, TimelineEdits::minimumClipLength, 10 * s},
        {"reversed, start later", true, Edge::Start, 3 * s, 3 * s, 5 * s, 10 * s},
        {"reversed, start past the media's end", true, Edge::Start, 0, 1 * s, 7 * s, 10 * s},
        {"reversed, end past the media's start", true, Edge::End, 20 * s, 2 * s, 16 * s, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        retime(1.0, row.reversed);
        host.edit(timeline)->addLink(video, title, second);
        ASSERT_TRUE(TimelineEdits::trimClip(timeline, video, row.edge, row.to, &undo));
        const Timeline::ClipTiming& now = timeline->clipTiming(video);
        EXPECT_EQ(std::tuple(now.position, now.length, now.offset), std::tuple(row.position, row.length, row.offset));
        EXPECT_EQ(timeline->clipTiming(nativeAudio).length, now.length) << "the sound is trimmed alike";
        EXPECT_EQ(now.start() + timeline->linkOf(title)->offset, 3 * second) << "the title keeps its place";
        undo.undo();
        EXPECT_EQ(timeline->clipTiming(video).length, 6 * second);
    }
}

TEST_F(TimelineEditsTest, CutsOutsideAClipEditsOfClipsElsewhereAndMovesToWhereAClipStandsChangeNothing)
{
    TestSupport::LogCapture log;
    retime(1.0, false);
    for (Types::Time at : {2 * second, 8 * second, 20 * second})
        EXPECT_EQ(TimelineEdits::splitClip(timeline, video, at, &undo), nullptr) << at;
    EXPECT_TRUE(log.containsError("is not inside the clip"));
    const Timeline::Clip* loose = host.addClip(Timeline::Clip(Timeline::Clip::Video, withSound, 0));
    EXPECT_FALSE(TimelineEdits::removeClip(timeline, loose, &undo));
    EXPECT_FALSE(TimelineEdits::moveClip(timeline, loose, nullptr, 0, &undo));
    EXPECT_EQ(undo.count(), 0);
    EXPECT_EQ(timeline->clips().size(), 2u);

    // Straight down onto another track is a move; to where it stands is none.
    ASSERT_TRUE(TimelineEdits::moveClip(timeline, video, timeline->extraVideoTrack(), 2 * second, &undo));
    EXPECT_EQ(timeline->clipTiming(video).track, timeline->extraVideoTrack());
    EXPECT_TRUE(TimelineEdits::moveClip(timeline, video, nullptr, 2 * second, &undo));
    EXPECT_EQ(undo.count(), 1);
}
