#include <Util/Preview/Resource.h>
#include <Util/Preview/ThumbnailRequester.h>

#include <EditorModel/StillImageThumbnails.h>

#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// A picture of 320 x 180 written for the test: red on the left half, blue on the right.
class ThumbnailTest : public testing::Test
{
protected:
    ThumbnailTest()
    {
        QImage image(320, 180, QImage::Format_RGB32);
        QPainter painter(&image);
        painter.fillRect(0, 0, 160, 180, Qt::red);
        painter.fillRect(160, 0, 160, 180, Qt::blue);
        painter.end();
        picture = dir.filePath(QStringLiteral("picture.png"));
        EXPECT_TRUE(image.save(picture));
    }

    Thumbnail::StillImageProvider& service()
    {
        return dynamic_cast<Thumbnail::StillImageProvider&>(*host.thumbnailProvider());
    }

    std::unique_ptr<Util::ThumbnailRequester> requesterOf(const QString& path, Resource::Type type = Resource::Video)
    {
        auto requester = std::make_unique<Util::ThumbnailRequester>(Resource::encode(path, type, 0), nullptr);
        QObject::connect(requester.get(), &Util::ThumbnailRequester::thumbnailReady, &context,
                         [this](Types::Time time, const QPixmap& pixmap) { frames.emplace_back(time, pixmap); });
        return requester;
    }

    // Lets the event loop run until `count` frames have arrived (or a generous time passed).
    bool waitForFrames(std::size_t count)
    {
        return QTest::qWaitFor([&] { return frames.size() >= count; }, 10000);
    }

    std::vector<Types::Time> frameTimes() const
    {
        std::vector<Types::Time> times;
        for (const auto& frame : frames)
            times.push_back(frame.first);
        return times;
    }

    QTemporaryDir dir;
    QString picture;
    Model::Host host;
    QObject context;
    std::vector<std::pair<Types::Time, QPixmap>> frames;
};

QColor colourAt(const QPixmap& pixmap, int x, int y) { return pixmap.toImage().pixelColor(x, y); }

TEST_F(ThumbnailTest, FramesOfSeveralTimesArriveInRequestOrderFromOneDecode)
{
    auto requester = requesterOf(picture);
    requester->setSize(160, 90);

    requester->request({0, 400, 800, 400});
    EXPECT_THAT(frames, IsEmpty()) << "frames never arrive inside request()";
    ASSERT_TRUE(waitForFrames(4));

    EXPECT_THAT(frameTimes(), ElementsAre(0, 400, 800, 400));
    for (const auto& frame : frames) {
        EXPECT_EQ(frame.second.size(), QSize(160, 90));
        EXPECT_EQ(colourAt(frame.second, 10, 45), QColor(Qt::red));
        EXPECT_EQ(colourAt(frame.second, 150, 45), QColor(Qt::blue));
    }
    EXPECT_EQ(requester->previews().keys(), QList<qint64>({0, 400, 800}));
    EXPECT_EQ(service().decodeCount(), 1);
    EXPECT_TRUE(Model::Registry::objectsOf<Thumbnail::Object>().empty()) << "answered requests leave no records";
}

TEST_F(ThumbnailTest, ALaterRequestIsServedWithoutDecodingAgainAndTheLatestFrameOfATimeIsKept)
{
    auto requester = requesterOf(picture);
    requester->setSize(160, 90);
    requester->request(0);
    ASSERT_TRUE(waitForFrames(1));

    requester->request({0, 1000});
    ASSERT_TRUE(waitForFrames(3));
    EXPECT_THAT(frameTimes(), ElementsAre(0, 0, 1000));
    EXPECT_EQ(service().decodeCount(), 1);
    EXPECT_EQ(service().pendingCount(), 0);

    requester->setSize(QSize(32, 18));
    requester->request(0);
    ASSERT_TRUE(waitForFrames(4));
    EXPECT_EQ(frames[3].second.size(), QSize(32, 18));
    EXPECT_EQ(requester->previews().value(0).size(), QSize(32, 18));
    EXPECT_EQ(requester->previews().keys(), QList<qint64>({0, 1000}));
}

TEST_F(ThumbnailTest, AnotherSizeIsAnotherDecodeAndFramesStillArriveInRequestOrder)
{
    auto requester = requesterOf(picture);
    requester->setSize(160, 90);
    requester->request(0);
    requester->setSize(QSize(32, 18));
    requester->request(1);
    ASSERT_TRUE(waitForFrames(2));

    EXPECT_THAT(frameTimes(), ElementsAre(0, 1));
    EXPECT_EQ(frames[0].second.size(), QSize(160, 90));
    EXPECT_EQ(frames[1].second.size(), QSize(32, 18));
    EXPECT_EQ(service().decodeCount(), 2);
}

TEST_F(ThumbnailTest, WithoutASizeNothingIsAskedFor)
{
    auto requester = requesterOf(picture);

    requester->request({0, 10});
    requester->setSize(0, 100);
    requester->request(0);
    requester->setWidth(100);
    requester->setHeight(-1);
    requester->request(0);

    EXPECT_EQ(service().pendingCount(), 0);
    EXPECT_TRUE(Model::Registry::objectsOf<Thumbnail::Object>().empty());
    QCoreApplication::processEvents();
    EXPECT_THAT(frames, IsEmpty());
}

TEST_F(ThumbnailTest, AMissingFileAFileThatIsNoPictureOrAnAudioStreamYieldsANullPixmap)
{
    const QString text = dir.filePath(QStringLiteral("notes.png"));
    QFile file(text);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("not a picture");
    file.close();
    auto missing = requesterOf(dir.filePath(QStringLiteral("gone.png")));
    auto notAPicture = requesterOf(text);
    auto audio = requesterOf(picture, Resource::Audio);
    missing->setSize(160, 90);
    notAPicture->setSize(16, 9);
    audio->setSize(16, 9);

    missing->request({5, 6});
    notAPicture->request(1);
    audio->request(2);
    ASSERT_TRUE(waitForFrames(4));

    EXPECT_THAT(frameTimes(), testing::UnorderedElementsAre(5, 6, 1, 2));
    for (const auto& frame : frames)
        EXPECT_TRUE(frame.second.isNull()) << frame.first;
    EXPECT_TRUE(missing->previews().contains(5));
}

// Cancelled requests never arrive, and neither do those of a requester gone before the answer.
TEST_F(ThumbnailTest, CancelledRequestsAndThoseOfAGoneRequesterNeverArrive)
{
    auto requester = requesterOf(picture);
    requester->setSize(160, 90);
    requester->request({0, 1, 2});

    requester->cancel();
    EXPECT_EQ(service().pendingCount(), 0);

    requester->request(3);
    ASSERT_TRUE(waitForFrames(1));
    QCoreApplication::processEvents();
    EXPECT_THAT(frameTimes(), ElementsAre(3));

    requester->setSize(32, 18); // another size: another decode, still pending at the reset
    requester->request({0, 1});
    requester.reset();
    EXPECT_EQ(service().pendingCount(), 0);
    QCoreApplication::processEvents();
    EXPECT_THAT(frameTimes(), ElementsAre(3));
}

TEST_F(ThumbnailTest, ARequesterDeletedByItsOwnSlotStopsThere)
{
    auto* requester = requesterOf(picture).release();
    requester->setSize(160, 90);
    int delivered = 0;
    QObject::connect(requester, &Util::ThumbnailRequester::thumbnailReady, &context, [&] {
        ++delivered;
        delete requester;
    });

    requester->request({0, 1, 2});
    ASSERT_TRUE(QTest::qWaitFor([&] { return delivered > 0; }, 10000));
    QCoreApplication::processEvents();

    EXPECT_EQ(delivered, 1);
    EXPECT_EQ(service().pendingCount(), 0);
}

// How a 320 x 180 picture fits into 160 x 160 by each resize mode.
TEST_F(ThumbnailTest, FitsThePictureIntoTheSizeByEachMode)
{
    const struct
    {
        const char* name;
        Util::ThumbnailRequester::ResizeMode mode;
        QColor padding;
        QSize size;
        QColor top;    // the colour at (80, 5)
        QColor centre; // the colour at (40, height / 2)
    } rows[] = {
        {"stretched", Util::ThumbnailRequester::IgnoreAspectRatio, QColor(), QSize(160, 160), Qt::red, Qt::red},
        {"inside padded", Util::ThumbnailRequester::KeepAspectRatio, Qt::green, QSize(160, 160), Qt::green, Qt::red},
        {"inside unpadded", Util::ThumbnailRequester::KeepAspectRatio, QColor(), QSize(160, 90), Qt::red, Qt::red},
        // Covering 160 x 160 cuts the sides: the left quarter of the picture is gone.
        {"covering", Util::ThumbnailRequester::KeepAspectRatioByExpanding, QColor(), QSize(160, 160), Qt::red, Qt::red},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        frames.clear();
        auto requester = requesterOf(picture);
        requester->setSize(160, 160);
        requester->setResizeMode(row.mode);
        requester->setPaddingColor(row.padding);

        requester->request(0);
        ASSERT_TRUE(waitForFrames(1));

        const QPixmap& frame = frames[0].second;
        EXPECT_EQ(frame.size(), row.size);
        EXPECT_EQ(colourAt(frame, 80 - 1, 5), row.top);
        EXPECT_EQ(colourAt(frame, 40, frame.height() / 2), row.centre);
    }
}

TEST(ThumbnailRequesterSettings, CoverTheSizeByDefault)
{
    Util::ThumbnailRequester requester(Resource::encode(QStringLiteral("/a.png"), Resource::Video, 0), nullptr);
    EXPECT_EQ(requester.resizeMode(), Util::ThumbnailRequester::KeepAspectRatioByExpanding);
    EXPECT_FALSE(requester.paddingColor().isValid());
    EXPECT_EQ(std::get<0>(requester.resource()), "/a.png:v:0");
}

} // namespace
