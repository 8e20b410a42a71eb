#pragma once

#include <Util/Interfaces/EditorModel.h>

#include <QObject>

#include <gtest/gtest.h>

#include <string>
#include <vector>

// A model with one timeline holding one video clip from 1000 to 3000, and a journal that
// the tests' signal listeners write to, so each test can check what happened in which order.
class SessionFixture : public testing::Test
{
protected:
    static constexpr Types::Time ClipStart = 1000;
    static constexpr Types::Time ClipLength = 2000;
    static constexpr Types::Time ClipEnd = ClipStart + ClipLength;

    SessionFixture()
    {
        timeline = host.addTimeline("Project");
        clip = host.addClip(Timeline::Clip(Timeline::Clip::Video));
        host.edit(timeline)->addClip(clip, Timeline::ClipTiming(timeline->primaryTrack(), ClipStart, ClipLength));
    }

    // Writes `entry` to the journal whenever `signal` of `sender` is emitted.
    template <class Sender, class Signal>
    void note(Sender* sender, Signal signal, const std::string& entry)
    {
        QObject::connect(sender, signal, &listenerContext, [this, entry] { journal.push_back(entry); });
    }

    std::vector<std::string> journal;
    QObject listenerContext;
    Model::Host host;
    const Timeline::Object* timeline = nullptr;
    const Timeline::Clip* clip = nullptr;
};
