// FileAdder and the timeline request service on a live host, with files on disk opened by the
// signature opener.

#include <EditorModel/EditorModel.h>
#include <EditorModel/FileAdder.h>
#include <EditorModel/TimelineRequestService.h>

#include "MediaSamples.h"
#include "TestSupport.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr Types::Time second = Types::TimeUnitsPerSecond;
constexpr Types::Time clipLength = FileAdder::DefaultClipLength;

// Everything the timeline hears while files are added, in order.
class TimelineEar : public PubSub::Subscriber<Timeline::FileAddingNotification>,
                    public PubSub::Subscriber<Timeline::AllFilesProcessedNotification>
{
public:
    explicit TimelineEar(const Timeline::Object* timeline) { subscribe(timeline); }
    std::vector<std::string> log;

private:
    void notify(const Timeline::FileAddingNotification& n) override
    {
        log.push_back("adding " + n.file->path().toQString().section(QLatin1Char('/'), -1).toStdString()
                      + (n.file->isFinished() ? " finished" : ""));
    }
    void notify(const Timeline::AllFilesProcessedNotification&) override { log.push_back("all processed"); }
};

std::string placement(const Timeline::Object* timeline, const Timeline::Clip* clip)
{
    const Timeline::ClipTiming& t = timeline->clipTiming(clip);
    std::ostringstream out;
    out << clip->name() << " type=" << clip->type() << " track=" << (t.track ? int(t.track->kind()) : -1)
        << " at=" << t.position / (second / 10) << " len=" << t.length / (second / 10)
        << " off=" << t.offset / (second / 10);
    return out.str();
}

std::vector<std::string> placements(const Timeline::Object* timeline)
{
    std::vector<std::string> result;
    for (const Timeline::Clip* clip : timeline->clips())
        result.push_back(placement(timeline, clip));
    return result;
}

bool spinUntil(const std::function<bool()>& done)
{
    QElapsedTimer timer;
    timer.start();
    while (!done() && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    return done();
}

class ImportServicesTest : public ::testing::Test
{
protected:
    ImportServicesTest()
    {
        Model::installDefaultServices(host);
        timeline = host.addTimeline("T");
        existing = host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("Existing"));
        host.edit(timeline)->addClip(existing, {timeline->primaryTrack(), 0, 3 * second});
    }

    QString file(const char* name, const QByteArray& content)
    {
        const QString path = dir.filePath(QString::fromUtf8(name));
        MediaSamples::writeFile(path, content);
        return path;
    }

    QTemporaryDir dir;
    Model::Host host;
    const Timeline::Object* timeline = nullptr;
    const Timeline::Clip* existing = nullptr;
};

} // namespace

TEST_F(ImportServicesTest, FilesAreAnnouncedPlacedOpenedAndReportedOnce)
{
    TimelineEar ear(timeline);
    const QStringList paths{file("a.mp4", MediaSamples::mp4()), file("b.png", MediaSamples::png(4, 4)),
                            file("c.wav", MediaSamples::wave()), file("d.mov", QByteArray("junk"))};
    const FileAdder::AddedResult added =
        FileAdder::addMediaFiles(paths, FileAdder::ImportPanel, FileAdder::Context(timeline));

    ASSERT_EQ(added.files.size(), 4u);
    ASSERT_EQ(added.clips.size(), 4u);
    EXPECT_TRUE(added.refused.isEmpty());
    EXPECT_EQ(ear.log, (std::vector<std::string>{"adding a.mp4", "adding b.png", "adding c.wav", "adding d.mov"}));
    EXPECT_EQ(placements(timeline), (std::vector<std::string>{
                                        "Existing type=9 track=0 at=0 len=30 off=0",
                                        "a.mp4 type=1 track=0 at=30 len=50 off=0",
                                        "b.png type=3 track=0 at=80 len=50 off=0",
                                        "c.wav type=2 track=4 at=0 len=50 off=0",
                                        "d.mov type=1 track=0 at=130 len=50 off=0",
                                    }));

    ASSERT_TRUE(spinUntil([&] { return ear.log.size() == 5; }));
    EXPECT_EQ(ear.log.back(), "all processed");
    EXPECT_TRUE(added.files[0]->isOpened());
    EXPECT_TRUE(added.files[1]->isOpened());
    ASSERT_NE(added.files[1]->mainVideo(), nullptr);
    EXPECT_TRUE(added.files[1]->mainVideo()->stillImage);
    EXPECT_TRUE(added.files[2]->isOpened());
    EXPECT_TRUE(added.files[3]->isFailed());
    for (int i = 0; i < 10; ++i)
        QCoreApplication::processEvents();
    EXPECT_EQ(ear.log.size(), 5u) << "the batch is reported once";
}

TEST_F(ImportServicesTest, InsertionMovesLaterClipsOfTheTrackRight)
{
    const Timeline::Clip* later = host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("Later"));
    host.edit(timeline)->addClip(later, {timeline->primaryTrack(), 3 * second, second});
    FileAdder::addMediaFiles({file("x.mp4", MediaSamples::mp4()), file("y.mp4", MediaSamples::mp4())},
                             FileAdder::DragAndDrop, FileAdder::Context(timeline, 3 * second));
    EXPECT_EQ(placements(timeline), (std::vector<std::string>{
                                        "Existing type=9 track=0 at=0 len=30 off=0",
                                        "Later type=9 track=0 at=130 len=10 off=0",
                                        "x.mp4 type=1 track=0 at=30 len=50 off=0",
                                        "y.mp4 type=1 track=0 at=80 len=50 off=0",
                                    }));
}

TEST_F(ImportServicesTest, BadCallsAddNothingAndSaySo)
{
    TestSupport::LogCapture log;
    const FileAdder::AddedResult blank =
        FileAdder::addMediaFiles({QStringLiteral("  ")}, FileAdder::Unknown, FileAdder::Context(timeline));
    EXPECT_TRUE(blank.empty());
    EXPECT_EQ(blank.refused.size(), 1);
    EXPECT_TRUE(log.containsError("empty path refused"));
    EXPECT_TRUE(
        FileAdder::addMediaFiles({file("a.mp4", MediaSamples::mp4())}, FileAdder::Unknown, FileAdder::Context(nullptr))
            .empty());
    EXPECT_TRUE(log.containsError("no timeline"));
    Timeline::Track foreign(Timeline::Track::Video);
    EXPECT_TRUE(FileAdder::addMediaFiles({file("a.mp4", MediaSamples::mp4())}, FileAdder::Unknown,
                                         FileAdder::Context(timeline, -1, &foreign))
                    .empty());
    EXPECT_TRUE(log.containsError("not one of the timeline"));
    EXPECT_EQ(timeline->clips().size(), 1u);
}

class RequestServiceTest
    : public ImportServicesTest,
      public PubSub::Publisher<Timeline::SplitRequest, Timeline::FreezeFrameRequest, Timeline::TransitionAddRequest,
                               Timeline::ClipAddRequest, Timeline::AnimationAddRequest, Timeline::PanAndZoomAddRequest,
                               Timeline::OverlayAddRequest, Timeline::FileAddRequest>
{
protected:
    RequestServiceTest()
    {
        video = host.addClip(Timeline::Clip(Timeline::Clip::Video).setName("V"));
        after = host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("After"));
        auto edit = host.edit(timeline);
        edit->addClip(video, {timeline->primaryTrack(), 3 * second, 4 * second, second});
        edit->addClip(after, {timeline->primaryTrack(), 7 * second, second});
    }
    const Timeline::Clip* video = nullptr;
    const Timeline::Clip* after = nullptr;
};

TEST_F(RequestServiceTest, SplitCutsTheClipsUnderThePosition)
{
    publish(Timeline::SplitRequest(timeline, 5 * second));
    EXPECT_EQ(placements(timeline), (std::vector<std::string>{
                                        "Existing type=9 track=0 at=0 len=30 off=0",
                                        "V type=1 track=0 at=30 len=20 off=10",
                                        "After type=9 track=0 at=70 len=10 off=0",
                                        "V type=1 track=0 at=50 len=20 off=30",
                                    }));
    publish(Timeline::SplitRequest(timeline, 3 * second)); // at a clip edge: nothing to cut
    EXPECT_EQ(timeline->clips().size(), 4u);
}

TEST_F(RequestServiceTest, FreezeFrameInsertsAStillAndMovesTheRest)
{
    publish(Timeline::FreezeFrameRequest(timeline, video, 4 * second, 2 * second));
    EXPECT_EQ(placements(timeline), (std::vector<std::string>{
                                        "Existing type=9 track=0 at=0 len=30 off=0",
                                        "V type=1 track=0 at=30 len=10 off=10",
                                        "After type=9 track=0 at=90 len=10 off=0",
                                        "V type=1 track=0 at=60 len=30 off=20",
                                        "V type=3 track=0 at=40 len=20 off=20",
                                    }));
}

TEST_F(RequestServiceTest, ClipEditsReachTheClipRecords)
{
    publish(Timeline::TransitionAddRequest(timeline, Transition::Object("fade", 2 * second), video));
    const Effect::Object* transition = video->findEffect("fade");
    ASSERT_NE(transition, nullptr);
    EXPECT_EQ(transition->collectionId(), EditorCollection::CollectionID::TRANSITIONS);
    EXPECT_DOUBLE_EQ(transition->parameter("duration"), 2.0);

    publish(Timeline::AnimationAddRequest(timeline, video, Animation::TransformationItem()));
    EXPECT_NE(video->animation(), nullptr);
    publish(Timeline::PanAndZoomAddRequest(timeline, after, Animation::TransformationItem()));
    EXPECT_NE(after->animation(), nullptr);
}

TEST_F(RequestServiceTest, ClipAndOverlayRequestsAddNewClips)
{
    publish(Timeline::ClipAddRequest(timeline, std::make_unique<Timeline::Clip>(Timeline::Clip::Color),
                                     Timeline::ClipTiming(nullptr, 9 * second, second)));
    auto preset = std::make_unique<Overlay::Preset>();
    preset->name = "Over V";
    publish(Timeline::OverlayAddRequest(timeline, std::move(preset), nullptr, video));
    auto loose = std::make_unique<Overlay::Preset>();
    loose->setTag("Loose");
    const Timeline::OverlayAddRequest looseRequest(timeline, std::move(loose), nullptr, nullptr);
    publish(looseRequest);
    EXPECT_TRUE(looseRequest.preset.taken()) << "the service keeps the preset it placed";

    const auto clips = timeline->clips();
    ASSERT_EQ(clips.size(), 6u);
    EXPECT_EQ(placement(timeline, clips[3]), " type=9 track=0 at=90 len=10 off=0");
    EXPECT_EQ(placement(timeline, clips[4]), "Over V type=4 track=1 at=30 len=50 off=0");
    EXPECT_EQ(timeline->masterOf(clips[4]), video);
    EXPECT_EQ(placement(timeline, clips[5]), "Loose type=4 track=1 at=80 len=50 off=0") << "after the last title";
    EXPECT_TRUE(host.owns(clips[3]));
}

TEST_F(RequestServiceTest, RequestsNamingForeignClipsChangeNothing)
{
    const Timeline::Clip* stranger = host.addClip(Timeline::Clip(Timeline::Clip::Video));
    const std::vector<std::string> before = placements(timeline);
    TestSupport::LogCapture log;
    publish(Timeline::FreezeFrameRequest(timeline, stranger, second, second));
    publish(Timeline::TransitionAddRequest(timeline, Transition::Object("fade"), stranger));
    publish(Timeline::FreezeFrameRequest(timeline, video, 20 * second, second));
    EXPECT_EQ(placements(timeline), before);
    EXPECT_EQ(stranger->findEffect("fade"), nullptr);
    EXPECT_EQ(log.errors().size(), 3u);
}
