#include <DQtUtil/ExclusiveService.h>
#include <DQtUtil/SceneHelper.h>

#include <QGraphicsScene>
#include <QImage>
#include <QPainter>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

QColor centreOf(QGraphicsScene* scene)
{
    QImage image(160, 90, QImage::Format_ARGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    scene->render(&painter, QRectF(image.rect()), scene->sceneRect());
    painter.end();
    return image.pixelColor(80, 45);
}

TEST(SceneHelperTest, ShowsTheBackgroundStretchedSignalsOnlyChangesAndOffersTheScene)
{
    SceneHelper helper;
    helper.scene()->setSceneRect(0, 0, 320, 180);
    QPixmap red(16, 9);
    red.fill(Qt::red);
    QSignalSpy changed(&helper, &SceneHelper::sceneBackgroundChanged);

    helper.setSceneBackground(QPixmap());
    EXPECT_EQ(changed.count(), 0);
    helper.setSceneBackground(red);
    helper.setSceneBackground(red);
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).value<QPixmap>().cacheKey(), red.cacheKey());
    EXPECT_EQ(centreOf(helper.scene()), QColor(Qt::red));
    EXPECT_EQ(helper.sceneBackground().cacheKey(), red.cacheKey());

    helper.setSceneBackground(QPixmap());
    ASSERT_EQ(changed.count(), 2);
    EXPECT_TRUE(changed.at(1).at(0).value<QPixmap>().isNull());
    EXPECT_NE(centreOf(helper.scene()), QColor(Qt::red));

    // The scene is offered for exclusive use.
    ExclusiveClient first(helper.service());
    ExclusiveClient second(helper.service());
    first.acquire();
    second.acquire();
    EXPECT_EQ(helper.service()->holder(), &second);
}

} // namespace
