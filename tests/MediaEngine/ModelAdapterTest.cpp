#include "GeneratedMedia.h"

#include <MediaEngine/ModelAdapter.h>

#include <ModelFakes.h>
#include <TestSupport.h>

#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace MediaEngine;
using MediaSamples::Sample;
using ::testing::ElementsAre;
using FileWatcher = TestSupport::FileLog;

namespace {

constexpr Types::Time second = Types::TimeUnitsPerSecond;

// Owns thumbnail records the way a thumbnail requester does and sees their answers.
class ThumbnailOwner : public Model::View<Thumbnail::Object>
{
public:
    const Thumbnail::Object* ask(const Resource::Id& resource, Types::Time time, QSize size, int mode = 2,
                                 unsigned padding = 0)
    {
        auto record = std::make_unique<Thumbnail::Object>();
        record->setResource(resource).setTime(time).setWidth(size.width()).setHeight(size.height());
        record->setResizeMode(mode).setPaddingColor(padding);
        return own(std::move(record));
    }
    int answers = 0;

private:
    void recordChanged(const Thumbnail::Object*, const Thumbnail::Object*) override { ++answers; }
};

Resource::Id videoOf(Sample sample, int index = 0)
{
    return {(MediaSamples::path(sample) + QStringLiteral(":v:%1").arg(index)).toStdString(), Resource::Video};
}

class ModelAdapterTest : public testing::Test
{
protected:
    void SetUp() override { connectToModel(host, engine); }

    void settle()
    {
        ASSERT_TRUE(engine.waitForDone(30000));
        QCoreApplication::processEvents();
    }

    Model::Host host;
    Engine engine;
};

TEST_F(ModelAdapterTest, anOpenedFileGetsTheStreamsTheEngineFound)
{
    FileWatcher watcher;
    watcher.observeNew(true);
    const Media::File* file = host.addFile(Types::String(MediaSamples::path(Sample::Mp4VideoAudio)));

    ASSERT_TRUE(QTest::qWaitFor([file] { return file->isFinished(); }, 30000));
    ASSERT_TRUE(file->isOpened());
    EXPECT_THAT(watcher.log, ElementsAre("added video-audio.mp4", "opened video-audio.mp4 streams 2"));
    EXPECT_NEAR(double(file->duration()), double(2 * second), double(second / 10));
    const Media::Video* video = file->mainVideo();
    ASSERT_NE(video, nullptr);
    EXPECT_EQ(video->file, file);
    EXPECT_EQ(video->index, 0);
    EXPECT_EQ(video->width, 320);
    EXPECT_EQ(video->height, 240);
    EXPECT_EQ(video->frameRate, boost::rational<long long>(25));
    EXPECT_NEAR(double(video->duration), double(2 * second), double(second / 10));
    EXPECT_FALSE(video->stillImage);
    const Media::Audio* audio = file->mainAudio();
    ASSERT_NE(audio, nullptr);
    EXPECT_EQ(audio->index, 1);
    EXPECT_EQ(audio->sampleRate, 48000);
    EXPECT_EQ(audio->channels, 2);
    EXPECT_EQ(audio->channelLayout, Types::String("stereo"));
}

struct FailedFileCase
{
    const char* name;
    Sample sample;
    const char* codes; // of the notification
};

TEST_F(ModelAdapterTest, theFailureNotificationCarriesTheCodeBeforeTheFileFails)
{
    const FailedFileCase rows[] = {{"missing", Sample::Missing, " 36"},
                                   {"truncated", Sample::TruncatedMp4, " 36"},
                                   {"textUnderAVideoExtension", Sample::TextNamedMkv, " 36"},
                                   {"codecWithoutDecoder", Sample::NoDecoder, " 20"}};
    for (const FailedFileCase& row : rows) {
        SCOPED_TRACE(row.name);
        FileWatcher watcher;
        const Media::File* file = host.addFile(Types::String(MediaSamples::path(row.sample)));
        watcher.subscribe(file);

        ASSERT_TRUE(QTest::qWaitFor([file] { return file->isFinished(); }, 30000));
        EXPECT_TRUE(file->isFailed());
        EXPECT_TRUE(file->videos().empty());
        const std::string name = QFileInfo(MediaSamples::path(row.sample)).fileName().toStdString();
        EXPECT_THAT(watcher.log, ElementsAre("notification " + name + row.codes, "failed " + name));
    }
}

TEST_F(ModelAdapterTest, aThumbnailRecordIsAnsweredWithTheFrameAtItsTimeModeAndPadding)
{
    ThumbnailOwner owner;
    const Thumbnail::Object* red = owner.ask(videoOf(Sample::Mp4Colours), second / 2, QSize(64, 36));
    const Thumbnail::Object* blue = owner.ask(videoOf(Sample::Mp4Colours), 3 * second / 2, QSize(64, 36));
    const Thumbnail::Object* padded =
        owner.ask(videoOf(Sample::Mp4Colours), 0, QSize(100, 100), int(ResizeMode::KeepAspectRatio), 0xff00ff00u);
    EXPECT_FALSE(red->isAnswered()); // never inside the request

    ASSERT_TRUE(
        QTest::qWaitFor([&] { return red->isAnswered() && blue->isAnswered() && padded->isAnswered(); }, 30000));
    EXPECT_EQ(owner.answers, 3);
    for (const auto& [thumbnail, colour] : {std::pair{red, QColor(Qt::red)}, std::pair{blue, QColor(Qt::blue)}}) {
        EXPECT_FALSE(thumbnail->isFailed());
        ASSERT_EQ(thumbnail->image().size(), QSize(64, 36));
        const QColor centre = thumbnail->image().pixelColor(32, 18);
        EXPECT_LT(qAbs(centre.red() - colour.red()) + qAbs(centre.blue() - colour.blue()), 96)
            << centre.name().toStdString();
    }
    ASSERT_EQ(padded->image().size(), QSize(100, 100));
    EXPECT_EQ(padded->image().pixel(50, 2), 0xff00ff00u);
}

TEST_F(ModelAdapterTest, unreadableFilesAndAudioResourcesGetAFailedAnswer)
{
    ThumbnailOwner owner;
    const Thumbnail::Object* missing = owner.ask(videoOf(Sample::Missing), 0, QSize(64, 36));
    const Thumbnail::Object* audio =
        owner.ask({(MediaSamples::path(Sample::WavAudio) + QStringLiteral(":a:0")).toStdString(), Resource::Audio}, 0,
                  QSize(64, 36));

    ASSERT_TRUE(QTest::qWaitFor([&] { return missing->isAnswered() && audio->isAnswered(); }, 30000));
    EXPECT_TRUE(missing->isFailed());
    EXPECT_TRUE(missing->image().isNull());
    EXPECT_TRUE(audio->isFailed());
}

TEST_F(ModelAdapterTest, aThumbnailRemovedBeforeItsAnswerIsNeverAnswered)
{
    TestSupport::LogCapture log;
    ThumbnailOwner owner;
    const Thumbnail::Object* decoded = owner.ask(videoOf(Sample::Mp4Colours), second, QSize(64, 36));
    const Thumbnail::Object* refused = owner.ask({"no stream", Resource::Audio}, 0, QSize(64, 36));

    owner.remove(decoded);
    owner.remove(refused);
    settle();

    EXPECT_EQ(owner.answers, 0);
    EXPECT_EQ(engine.pendingCount(), 0);
    EXPECT_TRUE(log.errors().empty()); // in particular no answer for a record that is gone
    EXPECT_FALSE(host.answerThumbnail(decoded, QImage(64, 36, QImage::Format_ARGB32))); // a late answer is refused
    EXPECT_TRUE(log.containsError("the thumbnail record is gone"));
}

struct ResourceCase
{
    const char* name;
    Resource::Id resource;
    bool valid;
    const char* path;
    int index;
};

TEST(FrameRequestOf, readsTheFileAndStreamOfAVideoResource)
{
    const ResourceCase rows[] = {
        {"plain", {"/media/a.mp4:v:0", Resource::Video}, true, "/media/a.mp4", 0},
        {"colonInThePath", {"/media/a:v:b.mp4:v:3", Resource::Video}, true, "/media/a:v:b.mp4", 3},
        {"audioStream", {"/media/a.mp4:a:1", Resource::Audio}, false, "", 0},
        {"videoTypeWithAudioKey", {"/media/a.mp4:a:1", Resource::Video}, false, "", 0},
        {"indexNotANumber", {"/media/a.mp4:v:x", Resource::Video}, false, "", 0},
        {"negativeIndex", {"/media/a.mp4:v:-1", Resource::Video}, false, "", 0},
        {"emptyKey", {"", Resource::Video}, false, "", 0}};
    for (const ResourceCase& row : rows) {
        SCOPED_TRACE(row.name);
        Thumbnail::Object thumbnail;
        thumbnail.setResource(row.resource);
        const std::optional<FrameRequest> request = frameRequestOf(thumbnail);

        ASSERT_EQ(request.has_value(), row.valid);
        if (request) {
            EXPECT_EQ(request->path.toStdString(), row.path);
            EXPECT_EQ(request->streamIndex, row.index);
        }
    }
}

} // namespace
