// Good and broken media imported through the real pipeline: the FFmpeg engine opens the files
// for the model, a shadow change adds them to a copy of the scene, a file open handler watches
// them and asks once about the failures, whose clips end broken or removed in one edit.

#include "GeneratedMedia.h"
#include "ImportTestSupport.h"
#include "IntegrationSupport.h"

#include <Util/Import/TimelineFileOpenHandler.h>
#include <Util/Import/TimelineShadowChange.h>

#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

using namespace Integration;
using ImportTest::spinTurns;
using ImportTest::spinUntil;
using ImportTest::StrategyScope;
using MediaSamples::Sample;

namespace {

// The error codes of every failure notification, by file name.
class FailureCodes : public PubSub::Subscriber<Media::FileOpenFailedNotification>
{
public:
    FailureCodes() { subscribeAll(typeid(Media::FileOpenFailedNotification)); }
    std::map<std::string, std::vector<int>> codes;

private:
    void notify(const Media::FileOpenFailedNotification& notification) override
    {
        for (const Media::OpenError& error : notification.errors)
            codes[fileName(notification.file)].push_back(error.code);
    }
};

const QString licenceText =
    QStringLiteral("Some of the files could not been opened because the codec licenses have not been activated.");

// A scene holding one clip, in a model whose files the media engine opens.
struct Scene
{
    Scene()
    {
        scene = model.host.addTimeline("Scene");
        const Timeline::Clip* opening = model.host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("Opening"));
        model.host.edit(scene)->addClip(opening, {scene->primaryTrack(), 0, 3 * second});
    }

    RealModel model;
    StrategyScope dialog;
    FailureCodes failures;
    const Timeline::Object* scene = nullptr;
};

} // namespace

TEST(RealImportTest, failedFilesAreSortedByCauseAskedAboutOnceAndSettledInOneEdit)
{
    const struct
    {
        const char* name;
        bool remove;
        bool withUndecodable; // a file in a codec this installation cannot decode (code 20)
    } rows[] = {{"keep with undecodable", false, true},
                {"remove with undecodable", true, true},
                {"keep corrupt only", false, false},
                {"remove corrupt only", true, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Scene f;
        f.dialog->remove = row.remove;
        QStringList files;
        for (Sample sample : {Sample::Mp4VideoAudio, Sample::MkvVideo, Sample::WavAudio, Sample::PngImage,
                              Sample::TruncatedMp4, Sample::RandomBytes, Sample::Empty})
            files << MediaSamples::path(sample);
        if (row.withUndecodable)
            files << MediaSamples::path(Sample::NoDecoder);
        ASSERT_FALSE(files.contains(QString()));
        const std::vector<std::string> sceneBefore = describe(f.scene);

        TimelineShadowChange change(f.scene, Timeline::Object::Nested);
        const Timeline::Object* shadow = change.shadowTimeline();
        TimelineFileOpenHandler handler(shadow);
        ChangeCounter shadowChanges(shadow);
        QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
        int changesWhenAsked = -1;
        f.dialog->whileAsking = [&] { changesWhenAsked = shadowChanges.changes; };

        change.addFiles(files, FileAdder::DragAndDrop);
        EXPECT_TRUE(change.filesPending());
        ASSERT_TRUE(spinUntil([&] { return ready.count() > 0; }, 60000));
        spinTurns();
        EXPECT_EQ(ready.count(), 1);

        std::map<std::string, std::vector<int>> expectedCodes{
            {"truncated.mp4", {36}}, {"noise.avi", {36}}, {"empty.mp4", {36}}};
        if (row.withUndecodable)
            expectedCodes["commodore.nut"] = {20};
        EXPECT_EQ(f.failures.codes, expectedCodes);

        // One question, offering to keep; the licence text only when a file failed for its codec.
        ASSERT_EQ(f.dialog->questions.size(), 1u);
        EXPECT_TRUE(f.dialog->questions[0].allowKeep);
        EXPECT_EQ(f.dialog->questions[0].message, row.withUndecodable ? licenceText : QString());
        // Removing is one edit of the shadow; keeping marks the clips broken and leaves the
        // shadow's layout alone.
        EXPECT_EQ(shadowChanges.changes, changesWhenAsked + (row.remove ? 1 : 0));

        // Opened files play their real length, packed after the scene's clip; a still and the
        // failed files keep the default length.
        std::map<std::string, Types::Time> length;
        for (const Timeline::Clip* clip : shadow->clips()) {
            if (clip->file() && clip->file()->isOpened())
                length[clip->name().str()] = shadow->clipTiming(clip).length;
        }
        EXPECT_NEAR(double(length["video-audio.mp4"]), double(2 * second), 0.1 * second);
        EXPECT_NEAR(double(length["video.mkv"]), double(1.5 * second), 0.1 * second);
        EXPECT_NEAR(double(length["audio.wav"]), double(1.5 * second), 0.01 * second);
        EXPECT_EQ(length["image.png"], FileAdder::DefaultClipLength);

        const Types::Time video = length["video-audio.mp4"];
        const Types::Time mkv = length["video.mkv"];
        const Types::Time still = FileAdder::DefaultClipLength;
        auto line = [](const char* name, Types::Time at, Types::Time len, int track, bool broken = false) {
            return std::string(name) + " at=" + std::to_string(at) + " len=" + std::to_string(len)
                   + " track=" + std::to_string(track) + (broken ? " broken" : "");
        };
        const Types::Time firstBroken = 3 * second + video + mkv + still;
        std::vector<std::string> expected{
            line("Opening", 0, 3 * second, 0),
            line("video-audio.mp4", 3 * second, video, 0),
            line("video.mkv", 3 * second + video, mkv, 0),
            line("audio.wav", 0, length["audio.wav"], Timeline::Track::Audio),
            line("image.png", 3 * second + video + mkv, still, 0),
        };
        const int brokenCount = row.remove ? 0 : row.withUndecodable ? 4 : 3;
        for (int i = 0; i < brokenCount; ++i)
            expected.push_back(line(std::vector{"truncated.mp4", "noise.avi", "empty.mp4", "commodore.nut"}[size_t(i)],
                                    firstBroken + i * still, still, 0, true));
        EXPECT_EQ(describe(shadow), expected);
        EXPECT_EQ(describe(f.scene), sceneBefore) << "the source is never touched";
    }
}
