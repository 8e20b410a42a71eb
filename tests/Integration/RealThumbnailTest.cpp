// Thumbnails of real video frames: a requester asks the model, the media engine decodes the
// frames, and the requester hands them over at the size asked for.

#include "GeneratedMedia.h"
#include "ImportTestSupport.h"
#include "IntegrationSupport.h"

#include <Util/Preview/Resource.h>
#include <Util/Preview/ThumbnailRequester.h>

#include <QImage>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace Integration;
using ImportTest::spinUntil;
using MediaSamples::Sample;

namespace {

// The colour in the middle of a pixmap.
QColor middleOf(const QPixmap& pixmap)
{
    const QImage image = pixmap.toImage();
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

class RealThumbnailTest : public testing::Test
{
protected:
    // The file opened by the model, or null.
    const Media::File* opened(Sample sample)
    {
        const Media::File* file = model.host.addFile(Types::String(MediaSamples::path(sample)));
        if (!spinUntil([file] { return file->isFinished(); }, 60000) || !file->isOpened())
            return nullptr;
        return file;
    }

    RealModel model;
};

} // namespace

TEST_F(RealThumbnailTest, framesAtDifferentTimesShowWhatTheVideoShowsThen)
{
    const Media::File* file = opened(Sample::Mp4Colours);
    ASSERT_NE(file, nullptr);
    ASSERT_NE(file->mainVideo(), nullptr);

    Util::ThumbnailRequester requester(Resource::encode(file, file->mainVideo()), nullptr);
    requester.setResizeMode(Util::ThumbnailRequester::IgnoreAspectRatio);
    requester.setSize(96, 40);
    QSignalSpy ready(&requester, &Util::ThumbnailRequester::thumbnailReady);
    const Types::Time redTime = second / 2;
    const Types::Time blueTime = 3 * second / 2;
    requester.request(QList<qint64>{redTime, blueTime});
    ASSERT_TRUE(spinUntil([&] { return ready.count() == 2; }, 60000));
    EXPECT_EQ(ready.at(0).at(0).value<Types::Time>(), redTime) << "each frame arrives with its time";

    const QMap<qint64, QPixmap> frames = requester.previews();
    ASSERT_EQ(frames.keys(), (QList<qint64>{redTime, blueTime}));
    for (const QPixmap& frame : frames) {
        ASSERT_FALSE(frame.isNull());
        EXPECT_EQ(frame.size(), QSize(96, 40));
    }
    const QColor red = middleOf(frames.value(redTime));
    const QColor blue = middleOf(frames.value(blueTime));
    EXPECT_GT(red.red(), 200) << red.name().toStdString();
    EXPECT_LT(red.blue(), 60) << red.name().toStdString();
    EXPECT_GT(blue.blue(), 200) << blue.name().toStdString();
    EXPECT_LT(blue.red(), 60) << blue.name().toStdString();
}

TEST_F(RealThumbnailTest, aFrameArrivesAtTheSizeAskedForWithItsTime)
{
    const Media::File* file = opened(Sample::Mp4VideoAudio);
    ASSERT_NE(file, nullptr);
    Util::ThumbnailRequester requester(Resource::encode(file, file->mainVideo()), nullptr);
    requester.setSize(QSize(80, 60));
    QSignalSpy ready(&requester, &Util::ThumbnailRequester::thumbnailReady);
    requester.request(second);
    ASSERT_TRUE(spinUntil([&] { return ready.count() == 1; }, 60000));
    EXPECT_EQ(ready.at(0).at(0).value<Types::Time>(), second);
    const QPixmap frame = ready.at(0).at(1).value<QPixmap>();
    ASSERT_FALSE(frame.isNull());
    EXPECT_EQ(frame.size(), QSize(80, 60)) << "a 4:3 frame fills a 4:3 thumbnail";
}
