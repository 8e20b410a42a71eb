#pragma once

// What the integration tests share: a model host whose files the media engine opens, and a
// one-line description of each clip of a timeline.

#include <MediaEngine/Engine.h>
#include <MediaEngine/ModelAdapter.h>

#include <Util/Interfaces/EditorModel.h>

#include <QFileInfo>

#include <sstream>
#include <string>
#include <vector>

namespace Integration {

constexpr Types::Time second = Types::TimeUnitsPerSecond;

inline std::string fileName(const Media::File* file)
{
    return QFileInfo(file->path().toQString()).fileName().toStdString();
}

// One line per clip, in the timeline's order: what a user of the timeline observes.
inline std::vector<std::string> describe(const Timeline::Object* timeline)
{
    std::vector<std::string> lines;
    for (const Timeline::Clip* clip : timeline->clips()) {
        const Timeline::ClipTiming& timing = timeline->clipTiming(clip);
        std::ostringstream line;
        line << clip->name() << " at=" << timing.position << " len=" << timing.length
             << " track=" << (timing.track ? int(timing.track->kind()) : -1) << (clip->isBroken() ? " broken" : "");
        lines.push_back(line.str());
    }
    return lines;
}

// The model of the editor as an application sets it up: default import services, then the
// media engine opening files and drawing thumbnails.
struct RealModel
{
    RealModel()
    {
        Model::installDefaultServices(host);
        MediaEngine::connectToModel(host, engine);
    }

    Model::Host host;
    MediaEngine::Engine engine;
};

// Counts the changes announced for one timeline.
class ChangeCounter : public Model::View<Timeline::Object>
{
public:
    explicit ChangeCounter(const Timeline::Object* timeline) { observe(timeline); }
    int changes = 0;

private:
    void recordChanged(const Timeline::Object*, const Timeline::Object*) override { ++changes; }
};

} // namespace Integration
