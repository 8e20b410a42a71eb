#pragma once

// A timeline of the model's host holding a video clip with sound (0 to 4 s) and its native
// sound tied under it, with helpers to add media files and clips.

#include <TestSupport.h>

#include <EditorModel/Host.h>

#include <gtest/gtest.h>

constexpr Types::Time second = Types::TimeUnitsPerSecond;

class ClipTimelineFixture : public ::testing::Test
{
protected:
    ClipTimelineFixture()
    {
        timeline = host.addTimeline("Project");
        withSound = file("talk.mp4", true);
        video = place(Timeline::Clip(Timeline::Clip::Video, withSound, 0).setName("video"), timeline->primaryTrack(), 0,
                      4 * second);
        nativeAudio =
            place(Timeline::Clip(Timeline::Clip::Audio, withSound, 1), timeline->nativeAudioTrack(), 0, 4 * second);
        host.edit(timeline)->addLink(video, nativeAudio, 0);
    }

    const Media::File* file(const char* path, bool sound)
    {
        const Media::File* record = host.add(std::make_unique<Media::File>(Types::String(path)));
        std::vector<const Media::Audio*> audios;
        if (sound)
            audios.push_back(host.add(std::make_unique<Media::Audio>()));
        auto edit = host.edit(record);
        edit->setStreams({host.add(std::make_unique<Media::Video>())}, audios);
        edit->setOpened(true);
        return record;
    }

    const Timeline::Clip* place(Timeline::Clip clip, const Timeline::Track* track, Types::Time at, Types::Time length)
    {
        const Timeline::Clip* record = host.addClip(std::move(clip));
        host.edit(timeline)->addClip(record, Timeline::ClipTiming(track, at, length));
        return record;
    }

    Model::Host host;
    const Timeline::Object* timeline = nullptr;
    const Media::File* withSound = nullptr;
    const Timeline::Clip* video = nullptr;
    const Timeline::Clip* nativeAudio = nullptr;
};
