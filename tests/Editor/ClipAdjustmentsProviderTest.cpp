#include <Util/Editor/ClipAdjustmentsProvider.h>

#include "ClipTimelineFixture.h"

#include <TestSupport.h>
#include <TimelineChanges.h>

#include <QSignalSpy>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

using ClipAdjustmentsProviderTest = ClipTimelineFixture;

TEST_F(ClipAdjustmentsProviderTest, EntriesApplyOnlyWhereTheClipsMediaAllows)
{
    const Timeline::Clip* silent = place(Timeline::Clip(Timeline::Clip::Video, file("silent.mkv", false), 0),
                                         timeline->extraVideoTrack(), 0, second);
    const Timeline::Clip* still = place(Timeline::Clip(Timeline::Clip::Image, file("still.png", false), 0),
                                        timeline->primaryTrack(), 9 * second, second);
    const Timeline::Clip* title = place(Timeline::Clip(Timeline::Clip::Title), timeline->titleTrack(), 0, second);
    const Timeline::Clip* broken = place(Timeline::Clip(Timeline::Clip::Video, withSound, 0).setBroken(true),
                                         timeline->primaryTrack(), 20 * second, second);
    struct Row
    {
        const char* name;
        const Timeline::Clip* clip;
        const char* available; // N R S St F
        QString reverseReason;
    };
    const Row rows[] = {
        {"video with sound", video, "NRSXF", {}},
        {"its native audio", nativeAudio, "NRS--", {}},
        {"silent video", silent, "-RSXF", {}},
        {"still picture", still, "----F", QStringLiteral("A still picture does not play over time.")},
        {"title", title, "-----", QStringLiteral("Only video and sound clips play at a speed or backward.")},
        {"broken clip", broken, "-----", QStringLiteral("The clip's media is missing.")},
        {"no clip", nullptr, "-----", QStringLiteral("No clip is selected.")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ClipAdjustmentsProvider provider;
        provider.setClip(row.clip ? timeline : nullptr, row.clip);
        const QList<Adjustment> entries = provider.adjustments();
        ASSERT_EQ(entries.size(), 5);
        std::string available;
        for (int i = 0; i < entries.size(); ++i) {
            EXPECT_EQ(entries[i].kind, Adjustment::Kind(i));
            EXPECT_EQ(entries[i].available, entries[i].reason.isEmpty());
            available += entries[i].available ? "NRSXF"[i] : '-';
        }
        EXPECT_EQ(available, row.available);
        EXPECT_EQ(entries[Adjustment::Reverse].reason, row.reverseReason);
        if (row.clip == silent) {
            EXPECT_EQ(entries[Adjustment::Normalization].reason, QStringLiteral("The clip has no sound."));
        }
    }
}

TEST_F(ClipAdjustmentsProviderTest, EachChangeIsOneEditAndOutOfRangeValuesChangeNothing)
{
    TestSupport::LogCapture log;
    ClipAdjustmentsProvider provider;
    provider.setClip(timeline, video);
    QSignalSpy changed(&provider, &ClipAdjustmentsProvider::adjustmentsChanged);
    TimelineChanges timelineEdits(timeline);

    ASSERT_TRUE(provider.setSpeed(2.0));
    EXPECT_EQ(timelineEdits.count, 1) << "the clip and its native audio change in one edit";
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(timeline->clipTiming(video).length, 2 * second) << "2x plays in half the time";
    EXPECT_EQ(timeline->clipTiming(nativeAudio).length, 2 * second);
    EXPECT_EQ(provider.adjustment(Adjustment::Speed).value.toDouble(), 2.0);

    ASSERT_TRUE(provider.setReversed(true));
    EXPECT_EQ(timelineEdits.count, 2);
    EXPECT_TRUE(timeline->clipTiming(video).reversed);
    EXPECT_TRUE(timeline->clipTiming(nativeAudio).reversed);
    EXPECT_TRUE(provider.setReversed(true)) << "already so: nothing to edit";
    EXPECT_EQ(timelineEdits.count, 2);

    ASSERT_TRUE(provider.setSpeed(1.0));
    EXPECT_EQ(timeline->clipTiming(video).length, 4 * second);

    struct Bad
    {
        const char* name;
        double speed;
    };
    const Bad bad[] = {{"zero", 0},
                       {"negative", -2},
                       {"too fast", 11},
                       {"NaN", std::nan("")},
                       {"infinite", std::numeric_limits<double>::infinity()}};
    for (const Bad& row : bad) {
        SCOPED_TRACE(row.name);
        EXPECT_FALSE(provider.setSpeed(row.speed));
    }
    EXPECT_TRUE(log.containsError("ClipAdjustmentsProvider::setSpeed: the speed must lie from 0.1 to 10, not 0"));
    EXPECT_EQ(timelineEdits.count, 3);
    EXPECT_EQ(changed.count(), 3);

    // Effects: each change is one edit of the clip.
    ASSERT_TRUE(provider.setNormalized(true));
    ASSERT_TRUE(provider.setStabilized(true));
    ASSERT_TRUE(provider.setFilter(QStringLiteral("sepia")));
    ASSERT_TRUE(provider.setFilter(QStringLiteral("noir")));
    EXPECT_EQ(changed.count(), 7);
    std::vector<std::string> effects;
    for (const Effect::Object* effect : video->effects())
        effects.push_back(effect->collectionId() + "/" + effect->id());
    EXPECT_EQ(effects, (std::vector<std::string>{"effects.audio/normalization", "effects.video/stabilization",
                                                 "filters.color/noir"}));
    EXPECT_EQ(provider.adjustment(Adjustment::Filter).value.toString(), QStringLiteral("noir"));
    ASSERT_TRUE(provider.setFilter(QString()));
    ASSERT_TRUE(provider.setNormalized(false));
    EXPECT_EQ(video->effects().size(), 1u);

    // An entry that does not apply is refused without an edit.
    provider.setClip(timeline, nativeAudio);
    const int before = changed.count();
    EXPECT_FALSE(provider.setStabilized(true));
    EXPECT_TRUE(log.containsError("ClipAdjustmentsProvider::setStabilized: Only video clips can be stabilized."));
    EXPECT_EQ(changed.count(), before);

    // The clip leaving the model leaves the provider empty.
    host.edit(timeline)->removeClip(nativeAudio);
    host.remove(nativeAudio);
    EXPECT_EQ(provider.clip(), nullptr);
    EXPECT_FALSE(provider.adjustment(Adjustment::Speed).available);
}

TEST_F(ClipAdjustmentsProviderTest, EachChangeIsOneUndoCommandThatPutsTheClipBackExactly)
{
    QUndoStack stack;
    ClipAdjustmentsProvider provider;
    provider.setUndoStack(&stack);
    provider.setClip(timeline, video);
    // A length that does not halve evenly.
    host.edit(timeline)->moveClip(video, Timeline::ClipTiming(timeline->primaryTrack(), 0, 4 * second + 1));
    const Timeline::ClipTiming original = timeline->clipTiming(video);
    const Timeline::ClipTiming originalSound = timeline->clipTiming(nativeAudio);

    ASSERT_TRUE(provider.setSpeed(3.0));
    ASSERT_TRUE(provider.setSpeed(3.0));
    ASSERT_TRUE(provider.setFilter(QStringLiteral("sepia")));
    ASSERT_EQ(stack.count(), 2) << "a change to the value the clip has is no command";
    EXPECT_EQ(stack.text(0), QStringLiteral("Speed"));
    EXPECT_EQ(stack.text(1), QStringLiteral("Filter"));
    const Types::Time fast = timeline->clipTiming(video).length;

    TimelineChanges timelineEdits(timeline);
    stack.undo();
    EXPECT_TRUE(video->effects().empty());
    EXPECT_EQ(timelineEdits.count, 0);
    stack.undo();
    EXPECT_EQ(timelineEdits.count, 1) << "the clip and its sound go back in one edit";
    EXPECT_EQ(timeline->clipTiming(video), original);
    EXPECT_EQ(timeline->clipTiming(nativeAudio), originalSound);
    EXPECT_EQ(provider.adjustment(Adjustment::Speed).value.toDouble(), 1.0);

    stack.redo();
    EXPECT_EQ(timeline->clipTiming(video).length, fast);
    EXPECT_EQ(timeline->clipTiming(video).speed, 3.0);
}

TEST_F(ClipAdjustmentsProviderTest, ARefusedChangeSaysWhyAndPushesNothing)
{
    TestSupport::LogCapture log;
    QUndoStack stack;
    ClipAdjustmentsProvider provider;
    provider.setUndoStack(&stack);
    QSignalSpy refused(&provider, &ClipAdjustmentsProvider::changeRefused);
    const Timeline::Clip* still = place(Timeline::Clip(Timeline::Clip::Image, file("still.png", false), 0),
                                        timeline->primaryTrack(), 9 * second, second);
    struct Row
    {
        const char* name;
        const Timeline::Clip* clip;
        std::function<bool(ClipAdjustmentsProvider&)> change;
        Adjustment::Kind kind;
        QString reason;
    };
    const Row rows[] = {
        {"speed out of range", video, [](ClipAdjustmentsProvider& p) { return p.setSpeed(40); }, Adjustment::Speed,
         QStringLiteral("The speed must lie from 0.1x to 10x.")},
        {"a still picture's speed", still, [](ClipAdjustmentsProvider& p) { return p.setSpeed(2); }, Adjustment::Speed,
         QStringLiteral("A still picture does not play over time.")},
        {"sound stabilized", nativeAudio, [](ClipAdjustmentsProvider& p) { return p.setStabilized(true); },
         Adjustment::Stabilization, QStringLiteral("Only video clips can be stabilized.")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        provider.setClip(timeline, row.clip);
        const Timeline::ClipTiming before = timeline->clipTiming(row.clip);
        refused.clear();

        EXPECT_FALSE(row.change(provider));

        ASSERT_EQ(refused.count(), 1);
        EXPECT_EQ(refused.at(0).at(0).value<Adjustment::Kind>(), row.kind);
        EXPECT_EQ(refused.at(0).at(1).toString(), row.reason);
        EXPECT_EQ(timeline->clipTiming(row.clip), before);
        EXPECT_EQ(stack.count(), 0);
    }
}

TEST_F(ClipAdjustmentsProviderTest, WhatTheClipWasGivenIsListedAndTakenOffOneCommandEach)
{
    auto motion = std::make_shared<Animation::TransformationItem>();
    motion->name = "Close-up";
    Effect::Object blur(EditorCollection::CollectionID::EFFECTS_VIDEO, "blur");
    Effect::Object crossfade(EditorCollection::CollectionID::TRANSITIONS, "crossfade");
    crossfade.setParameter("duration", 1.5);
    host.edit(video)->replaceEffect(&blur).replaceEffect(&crossfade).setAnimation(motion);
    const QStringList all{QStringLiteral("Blur"), QStringLiteral("Crossfade"), QStringLiteral("Close-up")};
    ASSERT_EQ(ClipAdjustmentsProvider::contentNames(video), all);
    TestSupport::LogCapture log;
    QUndoStack stack;
    ClipAdjustmentsProvider provider;
    provider.setUndoStack(&stack);
    provider.setClip(timeline, video);

    ASSERT_TRUE(provider.removeEffect(QStringLiteral("crossfade")));
    ASSERT_TRUE(provider.removeMotion());
    EXPECT_EQ(ClipAdjustmentsProvider::contentNames(video), QStringList{QStringLiteral("Blur")});
    EXPECT_FALSE(provider.removeEffect(QStringLiteral("crossfade")));
    EXPECT_FALSE(provider.removeMotion());
    EXPECT_TRUE(log.containsError("has no motion"));
    ASSERT_EQ(stack.count(), 2);
    EXPECT_EQ(stack.text(0), QStringLiteral("Remove Crossfade"));
    EXPECT_EQ(stack.text(1), QStringLiteral("Remove motion"));

    stack.undo();
    stack.undo();
    EXPECT_EQ(ClipAdjustmentsProvider::contentNames(video), all);
    EXPECT_EQ(video->findEffect("crossfade")->parameter("duration"), 1.5);
    ASSERT_NE(video->animation(), nullptr);
    EXPECT_EQ(video->animation()->name, motion->name);
    stack.redo();
    EXPECT_EQ(ClipAdjustmentsProvider::contentNames(video),
              (QStringList{QStringLiteral("Blur"), QStringLiteral("Close-up")}));
    // A clip taken off its timeline is no longer shown.
    host.edit(timeline)->removeClip(video);
    EXPECT_EQ(provider.clip(), nullptr);
}
