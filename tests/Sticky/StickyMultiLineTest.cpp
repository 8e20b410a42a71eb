#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyMultiLine.h>

#include <QSignalSpy>

namespace {

// Three levels of height 40 with a spacing of 10 from y 100: bands 100-140, 150-190, 200-240,
// one item at x 10 on each.
class StickyMultiLineTest : public StickySceneTest
{
protected:
    void SetUp() override
    {
        line.setOrigin(QPointF(0, 100));
        line.setLevelSpacing(10);
        for (int level = 0; level < 3; ++level) {
            on.append(addItem(20, 40));
            const StickyArea::StickyPoint p(&line, QPointF(10, 0), level == 0 ? 0 : -1 - level);
            line.insertItem(p, on.last(), false);
        }
        line.enableHeightTracking(true);
        line.updateLayout(nullptr);
    }

    QList<double> ys() const
    {
        QList<double> result;
        for (QGraphicsItem* e : on)
            result << e->y();
        return result;
    }

    StickyMultiLine line;
    QList<QGraphicsItem*> on;
};

struct LevelDropRow
{
    const char* name;
    bool allowEmpty;
    double y;
    int level; // -1 - n: opens level n
    double standY;
    int index; // for a drop at x 20
};

TEST_F(StickyMultiLineTest, DropsLandOnLevelsOrOpenOnesOnlyWhenAllowed)
{
    const LevelDropRow rows[] = {
        {"on_level_0", true, 110, 0, 100, 1},
        {"last_pixel_of_level_2", false, 239.9, 2, 200, 3},
        {"spacing_opens_a_level_between", true, 145, -2, 150, 1},
        {"spacing_near_lower_without_empty_levels", false, 144, 0, 100, 1},
        {"spacing_near_upper_without_empty_levels", false, 147, 1, 150, 2},
        {"past_the_last_opens_a_new_last", true, 300, -4, 250, 3},
        {"past_the_last_lands_on_it", false, 300, 2, 200, 3},
        {"before_level_0_opens_level_0", true, 90, -1, 100, 0},
        {"before_level_0_lands_on_it", false, 90, 0, 100, 1},
    };
    for (const LevelDropRow& row : rows) {
        SCOPED_TRACE(row.name);
        line.setAllowEmptyLevels(row.allowEmpty);
        EXPECT_POINT(line.findStickyPoint(QPointF(20, row.y), nullptr), &line, 20, row.standY, row.level, row.index);
    }
    EXPECT_EQ(line.levelAt(145), -1);
    EXPECT_EQ(line.levelAt(150), 1);
}

TEST_F(StickyMultiLineTest, UpwardLevelsMirrorTheBands)
{
    StickyMultiLine up;
    up.setVerticalDirection(StickyArea::Up);
    up.setOrigin(QPointF(0, 100));
    up.setLevelSpacing(10);
    QGraphicsItem* a = addItem(10, 40);
    QGraphicsItem* b = addItem(10, 40);
    up.insertItem(up.findStickyPoint(QPointF(0, 75), a), a, false);
    up.insertItem(up.findStickyPoint(QPointF(0, 40), b), b, false);
    EXPECT_EQ(up.itemLevel(a), 0);
    EXPECT_EQ(up.itemLevel(b), 1);
    EXPECT_DOUBLE_EQ(a->y(), 60);
    EXPECT_DOUBLE_EQ(b->y(), 10);
}

TEST_F(StickyMultiLineTest, OpeningALevelBetweenPushesTheLaterLevelsOnce)
{
    QSignalSpy levels(&line, &StickyMultiLine::levelCountChanged);
    QSignalSpy heights(&line, &StickyArea::heightChanged);
    QGraphicsItem* dropped = addItem(20, 40);
    line.insertItem(line.findStickyPoint(QPointF(30, 145), dropped), dropped, false);
    line.updateLayout(nullptr);
    EXPECT_EQ(levels.count(), 1);
    EXPECT_EQ(line.levelCount(), 4);
    EXPECT_EQ(ys(), (QList<double>{100, 200, 250}));
    EXPECT_DOUBLE_EQ(dropped->pos().y(), 150);
    EXPECT_EQ(line.levelItems(1), QList<QGraphicsItem*>{dropped});
    EXPECT_EQ(line.itemAt(line.itemPoint(dropped)), dropped);
    ASSERT_EQ(heights.count(), 1);
    EXPECT_DOUBLE_EQ(heights.at(0).at(0).toDouble(), 4 * 40 + 3 * 10);
}

TEST_F(StickyMultiLineTest, OverlappingDropsStayAsDroppedOnTheirLevel)
{
    QGraphicsItem* over = addItem(20, 40);
    line.insertItem(line.findStickyPoint(QPointF(15, 160), over), over, false);
    EXPECT_EQ(line.levelCount(), 3);
    EXPECT_EQ(line.levelItems(1), (QList<QGraphicsItem*>{on.at(1), over}));
    EXPECT_EQ(on.at(1)->pos(), QPointF(10, 150));
    EXPECT_EQ(over->pos(), QPointF(15, 150));
}

TEST_F(StickyMultiLineTest, PlaceholdersOpenNoLevelAndShiftNoIndex)
{
    QSignalSpy levels(&line, &StickyMultiLine::levelCountChanged);
    QGraphicsItem* placeholder = addItem(20, 40);
    line.insertItem(line.findStickyPoint(QPointF(30, 145), placeholder), placeholder, true);
    EXPECT_EQ(placeholder->pos(), QPointF(30, 145)); // half a spacing before level 1
    line.moveItem(line.findStickyPoint(QPointF(5, 160), placeholder), placeholder);
    EXPECT_EQ(line.levelItems(1), (QList<QGraphicsItem*>{placeholder, on.at(1)}));
    EXPECT_POINT(line.findStickyPoint(QPointF(20, 170), nullptr), &line, 20, 150, 1, 2);
    line.moveItem(line.findStickyPoint(QPointF(30, 300), placeholder), placeholder);
    line.removeItem(placeholder);
    EXPECT_EQ(levels.count(), 0);
    EXPECT_EQ(ys(), (QList<double>{100, 150, 200}));
    // A real item's level stays when it leaves, as empty levels are allowed.
    line.removeItem(on.at(1));
    EXPECT_EQ(line.levelCount(), 3);
    EXPECT_TRUE(line.levelItems(1).isEmpty());
}

TEST_F(StickyMultiLineTest, WithoutEmptyLevelsALevelClosesAndItsItemPointReopensIt)
{
    line.setAllowEmptyLevels(false);
    const StickyArea::StickyPoint back = line.itemPoint(on.at(1));
    EXPECT_EQ(StickyMultiLine::openedLevel(back), 1);
    line.removeItem(on.at(1));
    EXPECT_EQ(line.levelCount(), 2);
    EXPECT_DOUBLE_EQ(on.at(2)->y(), 150);
    line.insertItem(back, on.at(1), false);
    EXPECT_EQ(ys(), (QList<double>{100, 150, 200}));
    EXPECT_EQ(line.levelItems(2), QList<QGraphicsItem*>{on.at(2)});
}

TEST_F(StickyMultiLineTest, FixedLevelsStayEmptyAndDropsLandOnTheNearest)
{
    QSignalSpy levels(&line, &StickyMultiLine::levelCountChanged);
    line.setLevelCount(5);
    line.setDropsOpenLevels(false);
    EXPECT_EQ(line.levelCount(), 5);
    EXPECT_TRUE(line.levelItems(4).isEmpty());
    EXPECT_DOUBLE_EQ(line.height(), 5 * 40 + 4 * 10);
    const LevelDropRow rows[] = {
        {"spacing_tie_goes_to_the_lower", true, 145, 0, 100, 1},
        {"spacing_near_level_1", true, 147, 1, 150, 2},
        {"past_the_last_lands_on_it", true, 400, 4, 300, 3},
        {"before_level_0_lands_on_it", true, 90, 0, 100, 1},
    };
    for (const LevelDropRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_POINT(line.findStickyPoint(QPointF(20, row.y), nullptr), &line, 20, row.standY, row.level, row.index);
    }
    QGraphicsItem* dropped = addItem(20, 40);
    line.insertItem(line.findStickyPoint(QPointF(30, 320), dropped), dropped, false);
    EXPECT_EQ(dropped->pos(), QPointF(30, 300));
    line.removeItem(dropped);
    EXPECT_EQ(line.levelCount(), 5);

    // Only empty last levels close.
    line.setLevelCount(3);
    EXPECT_EQ(line.levelCount(), 3);
    EXPECT_EQ(levels.count(), 4);
    TestSupport::LogCapture log;
    line.setLevelCount(2);
    line.setLevelCount(-1);
    line.setAllowEmptyLevels(false);
    line.setLevelCount(4);
    EXPECT_EQ(log.errors().size(), 3u);
    EXPECT_TRUE(log.containsError("StickyMultiLine::setLevelCount"));
    EXPECT_EQ(line.levelCount(), 3);
    EXPECT_EQ(ys(), (QList<double>{100, 150, 200}));
}

TEST_F(StickyMultiLineTest, BadInputIsRefusedWithALogLine)
{
    TestSupport::LogCapture log;
    line.setLevelHeight(0);
    line.insertItem(line.findStickyPoint(QPointF(50, 110), on.at(0)), on.at(0), false);
    line.moveItem(StickyArea::StickyPoint(&line), addItem(5));
    EXPECT_TRUE(log.containsError("StickyMultiLine::setLevelHeight"));
    EXPECT_TRUE(log.containsError("StickyMultiLine::insertItem"));
    EXPECT_TRUE(log.containsError("StickyMultiLine::moveItem"));
    EXPECT_EQ(line.count(), 3u);
    EXPECT_EQ(ys(), (QList<double>{100, 150, 200}));
}

} // namespace
