#include <EditorSerialization/Cloner.h>

#include "TestSupport.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr Types::Time second = Types::TimeUnitsPerSecond;

std::vector<std::string> describe(const Timeline::Object& timeline)
{
    std::vector<std::string> lines;
    for (const Timeline::Clip* clip : timeline.clips()) {
        const Timeline::ClipTiming& t = timeline.clipTiming(clip);
        std::ostringstream line;
        line << clip->name() << " type=" << clip->type() << " at=" << t.position << " len=" << t.length
             << " off=" << t.offset << " speed=" << t.speed << " track=" << t.track
             << " effects=" << clip->effects().size() << " file=" << clip->file();
        if (const Timeline::Link* link = timeline.linkOf(clip))
            line << " linked-to=" << link->master->name() << "+" << link->offset;
        lines.push_back(line.str());
    }
    return lines;
}

// A scene with a video clip, its native audio, a title over it, and two clips showing the
// same nested timeline.
class ClonerTest : public ::testing::Test
{
protected:
    ClonerTest()
    {
        inner.addClip(&innerClip, {inner.primaryTrack(), 0, 2 * second});
        video.setName("Video").replaceEffect(&blur);
        audio.setName("Audio");
        title.setName("Title");
        nestedA.setNestedTimeline(&inner).setName("Nested A");
        nestedB.setNestedTimeline(&inner).setName("Nested B");
        scene.addClip(&video, {scene.primaryTrack(), 0, 4 * second, second});
        scene.addClip(&audio, {scene.nativeAudioTrack(), 0, 4 * second, second});
        scene.addClip(&title, {scene.titleTrack(), second, 2 * second});
        scene.addClip(&nestedA, {scene.primaryTrack(), 4 * second, 2 * second});
        scene.addClip(&nestedB, {scene.primaryTrack(), 6 * second, 2 * second});
        scene.addLink(&video, &audio, 0).addLink(&video, &title, second).setClipSpeed(&nestedB, 2.0);
    }

    Effect::Object blur{EditorCollection::CollectionID::EFFECTS_VIDEO, "blur"};
    Timeline::Object inner;
    Timeline::Clip innerClip{Timeline::Clip::Color};
    Timeline::Clip video{Timeline::Clip::Video};
    Timeline::Clip audio{Timeline::Clip::Audio};
    Timeline::Clip title{Timeline::Clip::Title};
    Timeline::Clip nestedA{Timeline::Clip::Nested};
    Timeline::Clip nestedB{Timeline::Clip::Nested};
    Timeline::Object scene;
};

} // namespace

TEST_F(ClonerTest, CopyHasNewClipsWithTheSameTimingsAndLinksAndOneNestedTimeline)
{
    const std::vector<std::string> before = describe(scene);
    Serialize::ObjectStorage storage;
    Serialize::Cloner cloner(storage);
    const Timeline::Object* copy = cloner.clone(scene);

    ASSERT_EQ(copy, storage.root());
    EXPECT_EQ(describe(*copy), before);
    EXPECT_EQ(describe(scene), before) << "the source is not touched";
    for (const Timeline::Clip* clip : copy->clips())
        EXPECT_FALSE(scene.contains(clip)) << clip->name();
    EXPECT_EQ(copy->primaryTrack(), scene.primaryTrack()) << "tracks are shared records";
    EXPECT_EQ(copy->findNativeAudio(cloner.copyOf(&video)), cloner.copyOf(&audio));
    EXPECT_EQ(copy->masterOf(cloner.copyOf(&title)), cloner.copyOf(&video));
    EXPECT_EQ(storage.clips().size(), 6u) << "five clips and the nested timeline's clip";
    // The nested timeline is copied once for both clips showing it.
    ASSERT_EQ(storage.timelines().size(), 1u);
    const Timeline::Object* innerCopy = storage.timelines().front().get();
    EXPECT_EQ(cloner.copyOf(&inner), innerCopy);
    EXPECT_EQ(cloner.copyOf(&nestedA)->nestedTimeline(), innerCopy);
    EXPECT_EQ(cloner.copyOf(&nestedB)->nestedTimeline(), innerCopy);
    EXPECT_EQ(describe(*innerCopy), describe(inner));
    EXPECT_NE(innerCopy->clips().front(), &innerClip);

    Serialize::ObjectStorage clipStorage;
    Timeline::Clip* copyOfVideo = Serialize::Cloner(clipStorage).clone(video);
    copyOfVideo->setName("Renamed").setBroken(true).removeEffect("blur");
    EXPECT_EQ(video.name(), Types::String("Video")) << "copies are independent values";
    EXPECT_FALSE(video.isBroken());
    EXPECT_NE(video.findEffect("blur"), nullptr);
}

TEST_F(ClonerTest, TimelineShownInsideItselfStopsWithALogLine)
{
    Timeline::Object loop;
    Timeline::Clip self(Timeline::Clip::Nested);
    self.setNestedTimeline(&loop);
    loop.addClip(&self, {loop.primaryTrack(), 0, second});
    TestSupport::LogCapture log;
    Serialize::ObjectStorage storage;
    Serialize::Cloner cloner(storage);
    const Timeline::Object* copy = cloner.clone(loop);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->clips().size(), 1u);
    EXPECT_TRUE(log.containsError("Serialize::Cloner"));
}

// Handing the copies to the model: the library's import tests (TimelineShadowChange). Without a
// model, nothing takes them, and that is logged.
TEST_F(ClonerTest, ReleasedCopiesWithoutAModelAreLogged)
{
    Serialize::ObjectStorage orphanStorage;
    Serialize::Cloner(orphanStorage).clone(scene);
    TestSupport::LogCapture log;
    EXPECT_TRUE(orphanStorage.releaseToModel().clips.empty());
    EXPECT_TRUE(log.containsError("nobody serves add requests"));
}
