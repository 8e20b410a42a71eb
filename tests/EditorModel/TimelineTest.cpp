#include <EditorModel/EditorModel.h>

#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using Timeline::Clip;
using Timeline::ClipTiming;

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
        {"negative length", [](auto& t, auto&, auto& off) { t.addClip(&off, ClipTiming(t.primaryTrack(), 0, -1)); },
         "length of 0 or more"},
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
    Timeline::Object timeline;
    Clip empty(Clip::Video);
    EXPECT_TRUE(timeline.addClip(&empty, ClipTiming(timeline.primaryTrack(), 0, 0)).contains(&empty)); // 0 is a length
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
