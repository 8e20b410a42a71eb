#include <Util/Preview/Resource.h>

#include <TestSupport.h>

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

using Id = std::tuple<std::string, Resource::Type>;

// The key of a stream, by what each row shows.
TEST(ResourceEncodeTest, BuildsTheKeyOfTheStream)
{
    const struct
    {
        const char* name;
        const char* path;
        Resource::Type type;
        int index;
        Id expected;
    } rows[] = {
        {"video", "/media/clip.mp4", Resource::Video, 0, Id("/media/clip.mp4:v:0", Resource::Video)},
        {"audio", "/media/clip.mp4", Resource::Audio, 0, Id("/media/clip.mp4:a:0", Resource::Audio)},
        {"index in decimal", "/media/clip.mp4", Resource::Audio, 12, Id("/media/clip.mp4:a:12", Resource::Audio)},
        {"path cleaned", "  /media//old/../clip.mp4 ", Resource::Video, 3, Id("/media/clip.mp4:v:3", Resource::Video)},
        {"utf8 path", "/média/été.mov", Resource::Video, 0, Id("/média/été.mov:v:0", Resource::Video)},
        // File names holding "%" come out as they are, whatever follows the sign.
        {"percent before digit", "/v/a%2b.mp4", Resource::Video, 3, Id("/v/a%2b.mp4:v:3", Resource::Video)},
        {"percent one", "/v/50%1off.mp4", Resource::Audio, 2, Id("/v/50%1off.mp4:a:2", Resource::Audio)},
        {"percent signs", "/v/%%3%.mp4", Resource::Video, 1, Id("/v/%%3%.mp4:v:1", Resource::Video)},
        {"unknown type", "/media/clip.mp4", Resource::Unknown, 1, Id("", Resource::Unknown)},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Resource::encode(QString::fromUtf8(row.path), row.type, row.index), row.expected);
    }
}

// A file with a video stream 0 and an audio stream 1, in a model.
class ResourceOfModelTest : public testing::Test
{
protected:
    ResourceOfModelTest()
    {
        auto record = std::make_unique<Media::File>(Types::String("/media/holiday.mp4"));
        video.index = 0;
        video.width = 1920;
        video.height = 1080;
        audio.index = 1;
        metadata.videos.push_back(video);
        metadata.audios.push_back(audio);
        file = host.add(std::move(record));
    }

    Model::Host host;
    const Media::File* file = nullptr;
    Media::Video video;
    Media::Audio audio;
    Media::Metadata metadata;
};

// The key of a file's stream, of its track and of the stream a clip shows; a clip of another
// kind takes the kind of its stream once the file knows its streams.
TEST_F(ResourceOfModelTest, StreamsTracksAndClipsOfAFile)
{
    EXPECT_EQ(Resource::encode(file, &video), Id("/media/holiday.mp4:v:0", Resource::Video));
    EXPECT_EQ(Resource::encode(file, &audio), Id("/media/holiday.mp4:a:1", Resource::Audio));

    const Media::File::Track::Video videoTrack{file, &video};
    const Media::File::Track::Audio audioTrack{file, &audio};
    EXPECT_EQ(Resource::encode(&videoTrack), Id("/media/holiday.mp4:v:0", Resource::Video));
    EXPECT_EQ(Resource::encode(&audioTrack), Id("/media/holiday.mp4:a:1", Resource::Audio));

    const Timeline::Clip videoClip(Timeline::Clip::Video, file, 0);
    const Timeline::Clip audioClip(Timeline::Clip::Audio, file, 1);
    const Timeline::Clip picture(Timeline::Clip::Image, file, 0);
    const Timeline::Clip title(Timeline::Clip::Title);
    EXPECT_EQ(Resource::encode(&videoClip), Id("/media/holiday.mp4:v:0", Resource::Video));
    EXPECT_EQ(Resource::encode(&audioClip), Id("/media/holiday.mp4:a:1", Resource::Audio));
    EXPECT_EQ(Resource::encode(&picture), Id("/media/holiday.mp4:v:0", Resource::Video));
    EXPECT_EQ(std::get<0>(Resource::encode(&title)), "");

    std::vector<const Media::Video*> videos{host.add(std::make_unique<Media::Video>(video))};
    std::vector<const Media::Audio*> audios{host.add(std::make_unique<Media::Audio>(audio))};
    host.edit(file)->setStreams(videos, audios);
    const Timeline::Clip onAudioStream(Timeline::Clip::Unknown, file, 1);
    const Timeline::Clip onVideoStream(Timeline::Clip::Unknown, file, 0);
    EXPECT_EQ(Resource::encode(&onAudioStream), Id("/media/holiday.mp4:a:1", Resource::Audio));
    EXPECT_EQ(Resource::encode(&onVideoStream), Id("/media/holiday.mp4:v:0", Resource::Video));
}

TEST_F(ResourceOfModelTest, NullInputGivesAnEmptyKeyAndAnError)
{
    TestSupport::LogCapture log;

    EXPECT_EQ(std::get<0>(Resource::encode(static_cast<const Media::File*>(nullptr), &video)), "");
    EXPECT_EQ(std::get<0>(Resource::encode(file, static_cast<const Media::Audio*>(nullptr))), "");
    EXPECT_EQ(std::get<0>(Resource::encode(static_cast<const Media::File::Track::Video*>(nullptr))), "");
    EXPECT_EQ(std::get<0>(Resource::encode(static_cast<const Timeline::Clip*>(nullptr))), "");
    Resource::registerFile(nullptr, metadata);

    EXPECT_EQ(log.errors().size(), 5u);
    EXPECT_TRUE(log.containsError("Resource::encode: null file"));
    EXPECT_TRUE(log.containsError("Resource::registerFile: null file"));
}

TEST_F(ResourceOfModelTest, ARegisteredFileIsFoundUnderEachOfItsStreamsUntilItLeavesTheModel)
{
    const Id videoKey("/media/holiday.mp4:v:0", Resource::Video);
    const Id audioKey("/media/holiday.mp4:a:1", Resource::Audio);
    Resource::registerFile(file, metadata);
    EXPECT_EQ(Resource::registeredFile(videoKey), file);
    EXPECT_EQ(Resource::registeredFile(audioKey), file);
    EXPECT_EQ(Resource::registeredFile(Id("/media/holiday.mp4:a:0", Resource::Audio)), nullptr);
    EXPECT_EQ(Resource::registeredFile(Id("/media/holiday.mp4:v:0", Resource::Audio)), nullptr);

    Media::Metadata videoOnly;
    videoOnly.videos.push_back(video);
    Resource::registerFile(file, videoOnly);
    EXPECT_EQ(Resource::registeredFile(videoKey), file) << "registering again replaces the streams";
    EXPECT_EQ(Resource::registeredFile(audioKey), nullptr);

    host.remove(file);
    EXPECT_EQ(Resource::registeredFile(videoKey), nullptr);
}

} // namespace
