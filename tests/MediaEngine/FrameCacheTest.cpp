#include <MediaEngine/FrameCache.h>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

using namespace MediaEngine;

namespace {

FrameRequest requestAt(qint64 time, const QString& path = QStringLiteral("/media/a.mp4"))
{
    FrameRequest request;
    request.path = path;
    request.time = time;
    request.size = QSize(160, 90);
    return request;
}

QImage imageOf(QColor colour)
{
    QImage image(160, 90, QImage::Format_ARGB32_Premultiplied);
    image.fill(colour);
    return image;
}

TEST(FrameCache, givesBackTheSameImageAndStoringAgainReplacesIt)
{
    FrameCache cache(4);
    const QImage stored = imageOf(Qt::red);
    cache.insert(requestAt(0), stored);
    EXPECT_EQ(cache.find(requestAt(0)).cacheKey(), stored.cacheKey());

    const QImage replacement = imageOf(Qt::blue);
    cache.insert(requestAt(0), replacement);
    cache.insert(requestAt(1), QImage()); // a null image is not stored
    EXPECT_EQ(cache.size(), 1);
    EXPECT_EQ(cache.find(requestAt(0)).cacheKey(), replacement.cacheKey());
}

TEST(FrameCache, anyDifferenceInTheRequestMisses)
{
    FrameCache cache(8);
    FrameRequest request = requestAt(0);
    request.paddingColor = Qt::black;
    cache.insert(request, imageOf(Qt::red));

    const std::vector<std::function<void(FrameRequest&)>> changes = {
        [](FrameRequest& r) { r.time = 40'000; },
        [](FrameRequest& r) { r.size = QSize(90, 160); },
        [](FrameRequest& r) { r.resizeMode = ResizeMode::KeepAspectRatio; },
        [](FrameRequest& r) { r.paddingColor = Qt::white; },
        [](FrameRequest& r) { r.paddingColor = QColor(); },
        [](FrameRequest& r) { r.streamIndex = 2; },
        [](FrameRequest& r) { r.path = QStringLiteral("/media/b.mp4"); }};
    for (size_t i = 0; i < changes.size(); ++i) {
        FrameRequest miss = request;
        changes[i](miss);
        EXPECT_TRUE(cache.find(miss).isNull()) << "change " << i;
    }
    EXPECT_FALSE(cache.find(request).isNull());
}

TEST(FrameCache, dropsTheLeastRecentlyUsedFrameWhenFull)
{
    FrameCache cache(3);
    cache.insert(requestAt(0), imageOf(Qt::red));
    cache.insert(requestAt(1), imageOf(Qt::green));
    cache.insert(requestAt(2), imageOf(Qt::blue));
    ASSERT_FALSE(cache.find(requestAt(0)).isNull()); // 0 is now the most recent

    cache.insert(requestAt(3), imageOf(Qt::yellow));

    EXPECT_EQ(cache.size(), 3);
    EXPECT_FALSE(cache.find(requestAt(0)).isNull());
    EXPECT_TRUE(cache.find(requestAt(1)).isNull());
    EXPECT_FALSE(cache.find(requestAt(2)).isNull());
    EXPECT_FALSE(cache.find(requestAt(3)).isNull());
}

TEST(FrameCache, removingAFileKeepsTheOthers)
{
    FrameCache cache(8);
    const QString other = QStringLiteral("/media/b.mp4");
    cache.insert(requestAt(0), imageOf(Qt::red));
    cache.insert(requestAt(0, other), imageOf(Qt::green));
    cache.insert(requestAt(1), imageOf(Qt::blue));

    cache.removeFile(QStringLiteral("/media/a.mp4"));

    EXPECT_EQ(cache.size(), 1);
    EXPECT_TRUE(cache.find(requestAt(0)).isNull());
    EXPECT_FALSE(cache.find(requestAt(0, other)).isNull());
}

TEST(FrameCache, shrinkingTheCapacityDropsTheOldestAndZeroStoresNothing)
{
    FrameCache cache(4);
    for (qint64 time = 0; time < 4; ++time)
        cache.insert(requestAt(time), imageOf(Qt::red));

    cache.setCapacity(2);
    EXPECT_EQ(cache.size(), 2);
    EXPECT_FALSE(cache.find(requestAt(3)).isNull());
    EXPECT_TRUE(cache.find(requestAt(0)).isNull());

    cache.setCapacity(0);
    cache.insert(requestAt(9), imageOf(Qt::red));
    EXPECT_EQ(cache.size(), 0);
}

} // namespace
