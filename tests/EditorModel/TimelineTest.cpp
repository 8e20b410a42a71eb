#include <EditorModel/EditorModel.h>

#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using Timeline::Clip;
using Timeline::ClipTiming;

class TimelineTest : public ::testing::Test
{
protected:
    Timeline::Object timeline;
    Clip video{Clip::Video};
    Clip audio{Clip::Audio};
    Clip title{Clip::Title};
    Clip nested{Clip::Nested};
};

TEST_F(TimelineTest, CopiesShareTheFourStandardTracksSoTimingsHoldForBoth)
{
    EXPECT_EQ(timeline.duration(), 0);
    EXPECT_EQ(timeline.tracks(),
              (std::vector<const Timeline::Track*>{timeline.primaryTrack(), timeline.titleTrack(),
                                                   timeline.extraVideoTrack(), timeline.nativeAudioTrack()}));
    EXPECT_EQ(timeline.extraVideoTrack()->kind(), Timeline::Track::ExtraVideo);
    timeline.addClip(&video, ClipTiming(timeline.primaryTrack(), 0, 100));
    Timeline::Object copy(timeline);
    EXPECT_EQ(copy.primaryTrack(), timeline.primaryTrack());
    EXPECT_EQ(copy.clipTiming(&video).track, timeline.primaryTrack());
    copy.removeClip(&video);
    EXPECT_TRUE(timeline.contains(&video));
    EXPECT_FALSE(copy.contains(&video));
    // Two timelines made apart have tracks of their own.
    EXPECT_NE(Timeline::Object().primaryTrack(), timeline.primaryTrack());
}

TEST_F(TimelineTest, BuilderOperationsChainAndPlaceClips)
{
    timeline.addClip(&video, ClipTiming(timeline.primaryTrack(), 100, 400, 20))
        .addClip(&audio, ClipTiming(timeline.nativeAudioTrack(), 100, 400))
        .addClip(&title, ClipTiming(timeline.titleTrack(), 0, 50))
        .addLink(&video, &audio, 0)
        .addLink(&video, &title, -100);

    EXPECT_THAT(timeline.clips(), ElementsAre(&video, &audio, &title));
    EXPECT_EQ(timeline.duration(), 500);
    const ClipTiming& t = timeline.clipTiming(&video);
    EXPECT_EQ(t.start(), 100);
    EXPECT_EQ(t.end(), 500);
    EXPECT_EQ(t.offset, 20);
    EXPECT_THAT(timeline.findSlaves(&video), UnorderedElementsAre(&audio, &title));
    EXPECT_EQ(timeline.masterOf(&title), &video);
    EXPECT_EQ(timeline.linkOf(&title)->offset, -100);
    EXPECT_TRUE(timeline.isSlave(&audio));
    EXPECT_FALSE(timeline.isSlave(&video));
    EXPECT_EQ(timeline.findNativeAudio(&video), &audio);
    EXPECT_EQ(timeline.findNativeAudio(&audio), nullptr);
    EXPECT_THAT(timeline.clipsByType(Clip::Title), ElementsAre(&title));
    EXPECT_THAT(timeline.clipsByType(Clip::Nested), IsEmpty());
}

TEST_F(TimelineTest, RemovingAClipDropsEveryLinkItTakesPartIn)
{
    timeline.addClip(&video, ClipTiming(timeline.primaryTrack(), 0, 100))
        .addClip(&audio, ClipTiming(timeline.nativeAudioTrack(), 0, 100))
        .addClip(&title, ClipTiming(timeline.titleTrack(), 0, 10))
        .addLink(&video, &audio, 0)
        .addLink(&audio, &title, 5);
    timeline.removeClip(&audio);
    EXPECT_FALSE(timeline.contains(&audio));
    EXPECT_THAT(timeline.findSlaves(&video), IsEmpty());
    EXPECT_FALSE(timeline.isSlave(&title));
    EXPECT_FALSE(timeline.clipTiming(&audio).isValid());

    timeline.addClip(&audio, ClipTiming(timeline.nativeAudioTrack(), 0, 100))
        .addLink(&video, &audio, 0)
        .removeLink(&audio);
    EXPECT_FALSE(timeline.isSlave(&audio));
    EXPECT_TRUE(timeline.contains(&audio));
}

TEST_F(TimelineTest, ClipsOnATrackComeByPosition)
{
    Clip second(Clip::Video);
    timeline.addClip(&video, ClipTiming(timeline.primaryTrack(), 300, 10))
        .addClip(&second, ClipTiming(timeline.primaryTrack(), 100, 10))
        .addClip(&title, ClipTiming(timeline.titleTrack(), 0, 10));
    EXPECT_THAT(timeline.clipsOnTrack(timeline.primaryTrack()), ElementsAre(&second, &video));
}

TEST_F(TimelineTest, SpeedChangesLengthAndReverseToggles)
{
    timeline.addClip(&video, ClipTiming(timeline.primaryTrack(), 0, 1000));
    timeline.setClipSpeed(&video, 2.0);
    EXPECT_EQ(timeline.clipTiming(&video).length, 500);
    timeline.setClipSpeed(&video, 0.5);
    EXPECT_EQ(timeline.clipTiming(&video).length, 2000);
    EXPECT_DOUBLE_EQ(timeline.clipTiming(&video).speed, 0.5);
    timeline.reverseClip(&video);
    EXPECT_TRUE(timeline.clipTiming(&video).reversed);
    timeline.reverseClip(&video);
    EXPECT_FALSE(timeline.clipTiming(&video).reversed);
}

struct RefusedEdit
{
    const char* name;
    std::function<void(Timeline::Object&, Clip&, Clip&)> edit;
    const char* error;
};

TEST(TimelineRefusalTest, RefusedEditLeavesTheTimelineUnchangedAndSaysWhy)
{
    const RefusedEdit rows[] = {
        {"null clip", [](auto& t, auto&, auto&) { t.addClip(nullptr, ClipTiming(t.primaryTrack(), 0, 1)); },
         "null clip"},
        {"twice", [](auto& t, auto& on, auto&) { t.addClip(&on, ClipTiming(t.primaryTrack(), 5, 1)); }, "already on"},
        {"no track", [](auto& t, auto&, auto& off) { t.addClip(&off, ClipTiming(nullptr, 0, 1)); }, "needs a track"},
        {"remove absent", [](auto& t, auto&, auto& off) { t.removeClip(&off); }, "not on the timeline"},
        {"link absent", [](auto& t, auto& on, auto& off) { t.addLink(&off, &on, 0); }, "both clips"},
        {"self link", [](auto& t, auto& on, auto&) { t.addLink(&on, &on, 0); }, "its own master"},
        {"unlink", [](auto& t, auto& on, auto&) { t.removeLink(&on); }, "no master"},
        {"zero speed", [](auto& t, auto& on, auto&) { t.setClipSpeed(&on, 0); }, "above 0"},
        {"reverse absent", [](auto& t, auto&, auto& off) { t.reverseClip(&off); }, "not on the timeline"}};
    for (const RefusedEdit& row : rows) {
        SCOPED_TRACE(row.name);
        Timeline::Object timeline;
        Clip on(Clip::Video), off(Clip::Video);
        timeline.addClip(&on, ClipTiming(timeline.primaryTrack(), 0, 100));
        const Timeline::Object before(timeline);

        TestSupport::LogCapture log;
        row.edit(timeline, on, off);
        EXPECT_TRUE(log.containsError(row.error)) << row.name;
        EXPECT_EQ(timeline.clips(), before.clips());
        EXPECT_EQ(timeline.clipTiming(&on), before.clipTiming(&on));
        EXPECT_FALSE(timeline.isSlave(&on));
    }
}

TEST(ClipTest, EffectsAreFoundReplacedAndCopiedWithTheClip)
{
    Clip clip(Clip::Video);
    Effect::Object blur(EditorCollection::CollectionID::EFFECTS_VIDEO, "blur");
    blur.setParameter("radius", 2);
    clip.replaceEffect(&blur);
    EXPECT_EQ(clip.findEffect("blur")->parameter("radius"), 2);
    EXPECT_EQ(clip.findEffect("blur")->collectionId(), "effects.video");
    EXPECT_NE(clip.findEffect("blur"), &blur); // the clip keeps a copy

    blur.setParameter("radius", 5);
    Clip copy(clip);
    copy.replaceEffect(&blur);
    EXPECT_EQ(copy.findEffect("blur")->parameter("radius"), 5);
    EXPECT_EQ(clip.findEffect("blur")->parameter("radius"), 2);
    EXPECT_EQ(copy.effects().size(), 1u);
    EXPECT_EQ(clip.findEffect("sepia"), nullptr);
}

} // namespace
