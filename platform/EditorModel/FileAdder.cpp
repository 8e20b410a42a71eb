#include "FileAdder.h"

#include <EditorModel/Host.h>
#include <EditorModel/TimelineRequests.h>

#include <QFileInfo>
#include <QImageReader>
#include <QSet>

#include <glog/logging.h>

#include <algorithm>
#include <map>

namespace FileAdder {

namespace {

class Announcer : public PubSub::Publisher<Timeline::FileAddingNotification>
{
};

const QSet<QString>& imageSuffixes()
{
    static const QSet<QString> suffixes = [] {
        QSet<QString> result;
        const QList<QByteArray> formats = QImageReader::supportedImageFormats();
        for (const QByteArray& format : formats)
            result.insert(QString::fromLatin1(format).toLower());
        result.remove(QStringLiteral("svg")); // vector drawings become overlays, not pictures
        return result;
    }();
    return suffixes;
}

const QSet<QString>& audioSuffixes()
{
    static const QSet<QString> suffixes{QStringLiteral("mp3"), QStringLiteral("wav"),  QStringLiteral("wave"),
                                        QStringLiteral("aac"), QStringLiteral("m4a"),  QStringLiteral("flac"),
                                        QStringLiteral("ogg"), QStringLiteral("oga"),  QStringLiteral("opus"),
                                        QStringLiteral("wma"), QStringLiteral("aiff"), QStringLiteral("aif")};
    return suffixes;
}

const Timeline::Track* audioTrackOf(Timeline::Object& timeline)
{
    for (const Timeline::Track* track : timeline.tracks()) {
        if (track->kind() == Timeline::Track::Audio)
            return track;
    }
    return timeline.addTrack(Timeline::Track::Audio);
}

Types::Time trackEnd(const Timeline::Object& timeline, const Timeline::Track* track)
{
    Types::Time end = 0;
    for (const Timeline::Clip* clip : timeline.clipsOnTrack(track))
        end = std::max(end, timeline.clipTiming(clip).end());
    return end;
}

} // namespace

Timeline::Clip::Type guessClipType(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    if (imageSuffixes().contains(suffix))
        return Timeline::Clip::Image;
    if (audioSuffixes().contains(suffix))
        return Timeline::Clip::Audio;
    return Timeline::Clip::Video;
}

AddedResult addMediaFiles(const QStringList& paths, Asrc origin, const Context& context)
{
    AddedResult result;
    Model::Host* host = Model::Host::instance();
    if (!host) {
        LOG(ERROR) << "FileAdder::addMediaFiles: there is no model host";
        return result;
    }
    if (!context.timeline) {
        LOG(ERROR) << "FileAdder::addMediaFiles: no timeline to add files to";
        return result;
    }
    if (context.track && !context.timeline->tracks().empty()) {
        const auto tracks = context.timeline->tracks();
        if (std::find(tracks.begin(), tracks.end(), context.track) == tracks.end()) {
            LOG(ERROR) << "FileAdder::addMediaFiles: the track is not one of the timeline";
            return result;
        }
    }

    // Every file is announced to the timeline before any can finish: opening answers come from
    // the event loop, never from inside addFile().
    const Announcer announcer;
    for (const QString& path : paths) {
        if (path.trimmed().isEmpty()) {
            LOG(ERROR) << "FileAdder::addMediaFiles: empty path refused (origin " << int(origin) << ")";
            result.refused.append(path);
            continue;
        }
        const Media::File* file = host->addFile(Types::String(path));
        if (!file) {
            result.refused.append(path);
            continue;
        }
        result.files.push_back(file);
        announcer.publish(Timeline::FileAddingNotification(context.timeline, file));
    }
    if (result.files.empty())
        return result;

    Model::View<Timeline::Object> timelines;
    Model::Edit<Timeline::Object> edit(&timelines, context.timeline);
    Timeline::Object& timeline = *edit;

    struct Placement
    {
        const Timeline::Clip* clip;
        const Timeline::Track* track;
    };
    std::vector<Placement> placements;
    for (const Media::File* file : result.files) {
        const QString path = file->path().toQString();
        const Timeline::Clip::Type type = guessClipType(path);
        Timeline::Clip clip(type, file, 0);
        clip.setName(Types::String(QFileInfo(path).fileName()));
        const Timeline::Clip* record = host->addClip(std::move(clip));
        const Timeline::Track* track = context.track                   ? context.track
                                       : type == Timeline::Clip::Audio ? audioTrackOf(timeline)
                                                                       : timeline.primaryTrack();
        placements.push_back(Placement{record, track});
        result.clips.push_back(record);
    }

    // Clips of one track follow each other; an insertion moves what was at or after the
    // position right by the length inserted on that track.
    std::map<const Timeline::Track*, Types::Time> cursor;
    for (const Placement& p : placements) {
        if (cursor.count(p.track))
            continue;
        if (context.position < 0) {
            cursor[p.track] = trackEnd(timeline, p.track);
            continue;
        }
        cursor[p.track] = context.position;
        Types::Time inserted = 0;
        for (const Placement& q : placements)
            inserted += q.track == p.track ? DefaultClipLength : 0;
        for (const Timeline::Clip* existing : timeline.clipsOnTrack(p.track)) {
            Timeline::ClipTiming timing = timeline.clipTiming(existing);
            if (timing.position >= context.position) {
                timing.position += inserted;
                timeline.moveClip(existing, timing);
            }
        }
    }
    for (const Placement& p : placements) {
        Types::Time& at = cursor[p.track];
        timeline.addClip(p.clip, Timeline::ClipTiming(p.track, at, DefaultClipLength));
        at += DefaultClipLength;
    }
    if (!edit.commit()) {
        LOG(ERROR) << "FileAdder::addMediaFiles: the timeline did not take the clips; they are dropped";
        for (const Timeline::Clip* clip : result.clips)
            host->remove(clip);
        result.clips.clear();
    }

    host->fitWhenOpened(context.timeline, result.clips);
    host->watchFiles(context.timeline, result.files);
    return result;
}

} // namespace FileAdder
