// The model's records edited through the library's Message::View, as the library's editors and
// import handlers do: the model host (or another owner) applies each change and announces it.

#include <Util/Editor/MessageView.h>

#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
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

TEST_F(ModelThroughViewsTest, ClipMarkedBrokenThroughAChainIsChangedByTheHost)
{
    ClipView clips(video);
    clips.change(video)->setBroken(true);
    EXPECT_TRUE(video->isBroken());
    EXPECT_FALSE(clips.isOwned(video));
    EXPECT_THAT(clips.log, ElementsAre("fine -> broken"));
}

TEST_F(ModelThroughViewsTest, TimelineEditedInOneChainRemovesClipsAndTheirLinks)
{
    Message::View<Timeline::Object> timelines(timeline);
    {
        auto edit = timelines.change(timeline);
        edit->removeClip(video);
        EXPECT_TRUE(timeline->contains(video)); // nothing changes before the commit
    }
    EXPECT_FALSE(timeline->contains(video));
    EXPECT_FALSE(timeline->isSlave(audio));
    EXPECT_THAT(timeline->clips(), ElementsAre(audio));
}

TEST_F(ModelThroughViewsTest, NestedTimelineAndEffectsAreEditedOnTheWorkingCopy)
{
    const Timeline::Object* inner = host.addTimeline("inner");
    const Clip* nested = host.addClip(Clip(Clip::Nested).setNestedTimeline(inner).setName("Intro"));
    Message::View<Timeline::Object> timelines(timeline);
    timelines.change(timeline)
        ->addClip(nested, ClipTiming(timeline->primaryTrack(), 100, 50))
        .setClipSpeed(video, 2)
        .reverseClip(video);
    EXPECT_THAT(timeline->clipsByType(Clip::Nested), ElementsAre(nested));
    EXPECT_EQ((*timeline->clipsByType(Clip::Nested).begin())->nestedTimeline(), inner);
    EXPECT_EQ(timeline->clipTiming(video).length, 50);
    EXPECT_TRUE(timeline->clipTiming(video).reversed);
    EXPECT_EQ(timeline->duration(), 150);

    Message::View<Clip> clips(nested);
    Effect::Object sepia(EditorCollection::CollectionID::EFFECTS_VIDEO, "sepia");
    clips.change(nested)->replaceEffect(&sepia).setName("* Intro");
    EXPECT_NE(nested->findEffect("sepia"), nullptr);
    EXPECT_EQ(nested->name().str(), "* Intro");
}

TEST_F(ModelThroughViewsTest, PlaybackSeekAskedThroughAChainIsAppliedByTheHost)
{
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

// The thumbnail service of the model answers records a requester adds and owns.
class Frames : public Thumbnail::Provider
{
public:
    void request(const Thumbnail::Object* t) override { asked.push_back(t); }
    std::vector<const Thumbnail::Object*> asked;
};

class Requester : public Message::View<Thumbnail::Object>
{
public:
    std::vector<Types::Time> ready;

protected:
    using Message::View<Thumbnail::Object>::changed;
    void changed(const Thumbnail::Object* t) override
    {
        if (t->isAnswered())
            ready.push_back(t->time());
    }
};

TEST_F(ModelThroughViewsTest, ThumbnailRecordsAddedByAViewAreAnsweredThroughIt)
{
    auto frames = std::make_shared<Frames>();
    host.setThumbnailProvider(frames);
    Requester requester;
    {
        auto chain = requester.add(new Thumbnail::Object);
        chain->setResource({"/media/a.mp4:v:0", Resource::Video})
            .setResourceDuration(100)
            .setTime(30)
            .setWidth(160)
            .setHeight(90);
    }
    ASSERT_EQ(frames->asked.size(), 1u);
    const Thumbnail::Object* thumbnail = frames->asked[0];
    EXPECT_TRUE(requester.isOwned(thumbnail));
    EXPECT_EQ(std::get<0>(thumbnail->resource()), "/media/a.mp4:v:0");
    EXPECT_EQ(thumbnail->width(), 160);

    host.answerThumbnail(thumbnail, QImage(160, 90, QImage::Format_RGB32));
    EXPECT_THAT(requester.ready, ElementsAre(30));
    EXPECT_EQ(thumbnail->image().size(), QSize(160, 90));
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
