#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyFreeLine.h>
#include <Util/Sticky/StickyOrder.h>

#include <algorithm>
#include <random>

namespace {

class StickyFreeLineTest : public StickyAreaFixture<StickyFreeLine>
{
protected:
    void SetUp() override { line.enableHeightTracking(true); }

    QGraphicsRectItem* drop(double x)
    {
        QGraphicsRectItem* item = addItem(10);
        line.insertItem(line.findStickyPoint(QPointF(x, 0), item), item, false);
        return item;
    }

    bool sortedByX() const { return std::is_sorted(line.begin(), line.end(), XOrder()); }

    StickyFreeLine& line = area;
};

TEST_F(StickyFreeLineTest, EmptyLineAnswersTheDropXOnTheBaseLine)
{
    line.setOrigin(QPointF(5, 40));
    EXPECT_POINT(line.findStickyPoint(QPointF(77, 3), nullptr), &line, 77, 40, 0, 0);
    EXPECT_DOUBLE_EQ(line.width(), 0.0);
    EXPECT_EQ(line.itemAt(StickyArea::StickyPoint(&line, {}, 0, 0)), nullptr);
}

TEST_F(StickyFreeLineTest, DropCountsItemsStrictlyLeftOfIt)
{
    for (double x : {10.0, 20.0, 30.0})
        line.insertItem(StickyArea::StickyPoint(&line, QPointF(x, 0), 0, 0), addItem(5), false);
    QGraphicsRectItem* dragged = addItem(5, 10, 20, 0); // not in the line, at an item's x
    const struct
    {
        const char* name;
        double x;
        int index;
    } rows[] = {{"left of all", 5, 0},
                {"on the first", 10, 0},
                {"between first and second", 15, 1},
                {"on the second", 20, 1},
                {"just after the second", 20.001, 2},
                {"on the last", 30, 2},
                {"right of all", 35, 3}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_POINT(line.findStickyPoint(QPointF(row.x, 99), dragged), &line, row.x, 0, 0, row.index);
    }
}

TEST_F(StickyFreeLineTest, TheDraggedItemStillInTheLineCounts)
{
    QGraphicsRectItem* a = drop(10);
    drop(20);
    EXPECT_EQ(line.findStickyPoint(QPointF(25, 0), a).index, 2);
}

TEST_F(StickyFreeLineTest, DropLeftOfTheOriginIsPlacedAtTheOrigin)
{
    line.setOrigin(QPointF(100, 50));
    QGraphicsRectItem* item = addItem(10);
    const auto point = line.findStickyPoint(QPointF(60, 0), item);
    EXPECT_POINT(point, &line, 60, 50, 0, 0);
    line.insertItem(point, item, false);
    EXPECT_EQ(item->pos(), QPointF(100, 50));
    EXPECT_EQ(countSpy.count(), 1);
    EXPECT_EQ(heightSpy.count(), 0) << "inserting does not lay out";
}

TEST_F(StickyFreeLineTest, InsertKeepsTheListInXOrderWhateverTheIndex)
{
    QGraphicsRectItem* c = drop(30);
    QGraphicsRectItem* a = drop(10);
    QGraphicsRectItem* b = addItem(10);
    // A stale index must not break the order.
    line.insertItem(StickyArea::StickyPoint(&line, QPointF(20, 0), 0, 0), b, false);
    QGraphicsRectItem* d = addItem(10);
    line.insertItem(StickyArea::StickyPoint(&line, QPointF(40, 0), 0, -1), d, false);
    QGraphicsRectItem* e = addItem(10);
    line.insertItem(StickyArea::StickyPoint(&line, QPointF(0, 0), 0, 99), e, false);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{e, a, b, c, d}));
    EXPECT_EQ(countSpy.count(), 5);
    EXPECT_EQ(a->pos(), QPointF(10, 0));
    EXPECT_EQ(c->pos(), QPointF(30, 0));
}

TEST_F(StickyFreeLineTest, ItemPointAndItemAt)
{
    QGraphicsRectItem* a = drop(10);
    QGraphicsRectItem* b = drop(20);
    EXPECT_POINT(line.itemPoint(b), &line, 20, 0, 0, 1);
    EXPECT_POINT(line.itemPoint(nullptr), &line, 0, 0, 0, -1);
    const std::vector<std::pair<int, QGraphicsItem*>> rows{{-1, nullptr}, {0, a}, {1, b}, {2, nullptr}, {-7, nullptr}};
    for (const auto& row : rows)
        EXPECT_EQ(line.itemAt(StickyArea::StickyPoint(&line, {}, 0, row.first)), row.second) << row.first;
}

TEST_F(StickyFreeLineTest, RemovingLeavesTheGap)
{
    QGraphicsRectItem* a = drop(10);
    QGraphicsRectItem* b = drop(20);
    QGraphicsRectItem* c = drop(30);
    line.updateLayout(nullptr);
    heightSpy.clear();
    line.removeItem(b);
    line.updateLayout(nullptr);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{a, c}));
    EXPECT_EQ(a->pos(), QPointF(10, 0));
    EXPECT_EQ(c->pos(), QPointF(30, 0));
    EXPECT_EQ(heightSpy.count(), 0);
    EXPECT_EQ(countSpy.count(), 4);
}

TEST_F(StickyFreeLineTest, OriginChangeShiftsEveryItemOnce)
{
    QGraphicsRectItem* a = drop(10);
    QGraphicsRectItem* b = addItem(10);
    line.insertItem(StickyArea::StickyPoint(&line, QPointF(25, 5)), b, false);
    line.setOrigin(QPointF(50, 0));
    EXPECT_EQ(a->pos(), QPointF(60, 0));
    EXPECT_EQ(b->pos(), QPointF(75, 5));
    ASSERT_EQ(heightSpy.count(), 1);
    EXPECT_DOUBLE_EQ(heightSpy.at(0).at(0).toDouble(), 15.0);

    line.updateLayout(nullptr);
    EXPECT_EQ(a->pos(), QPointF(60, 0)) << "a layout without origin change moves nothing";
    EXPECT_EQ(heightSpy.count(), 1);

    line.setOrigin(QPointF(40, 10));
    EXPECT_EQ(a->pos(), QPointF(50, 10));
    EXPECT_EQ(b->pos(), QPointF(65, 15));
    EXPECT_EQ(heightSpy.count(), 1) << "both moved with the origin: same height";
    EXPECT_DOUBLE_EQ(line.width(), 35.0);
}

TEST_F(StickyFreeLineTest, MoveRepositionsAndReorders)
{
    QGraphicsRectItem* a = drop(10);
    QGraphicsRectItem* b = drop(20);
    QGraphicsRectItem* c = drop(30);
    QGraphicsRectItem* d = drop(40);
    line.moveItem(StickyArea::StickyPoint(&line, QPointF(35, 7), 0, 0), a);
    EXPECT_EQ(a->pos(), QPointF(35, 7));
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{b, c, a, d}));
    line.moveItem(StickyArea::StickyPoint(&line, QPointF(-20, 0), 0, 2), c);
    EXPECT_EQ(c->pos(), QPointF(0, 0));
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{c, b, a, d}));
    EXPECT_EQ(countSpy.count(), 4);
    EXPECT_EQ(heightSpy.count(), 0);
    b->setPos(45, 0); // by hand: the next layout restores the order
    line.updateLayout(nullptr);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{c, a, d, b}));
}

TEST_F(StickyFreeLineTest, MovingAnItemOfAnotherAreaChangesNothing)
{
    TestSupport::LogCapture log;
    QGraphicsRectItem* a = drop(10);
    QGraphicsRectItem* stranger = addItem(10, 10, 3, 4);
    line.moveItem(StickyArea::StickyPoint(&line, QPointF(50, 0), 0, 0), stranger);
    EXPECT_EQ(stranger->pos(), QPointF(3, 4));
    EXPECT_EQ(items(), QList<QGraphicsItem*>{a});
    EXPECT_TRUE(log.containsError("StickyFreeLine::moveItem"));
}

TEST_F(StickyFreeLineTest, RandomMovesKeepTheListSorted)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> x(0, 60); // few distinct x: many ties
    QList<QGraphicsItem*> all;
    for (int i = 0; i < 40; ++i)
        all.append(drop(x(random)));
    ASSERT_TRUE(sortedByX());
    for (int step = 0; step < 300; ++step) {
        QGraphicsItem* item = all.at(step % all.size());
        if (step % 17 == 0)
            all.at((step * 7) % all.size())->setPos(x(random), 0); // a hand move in between
        line.moveItem(StickyArea::StickyPoint(&line, QPointF(x(random), 0)), item);
        ASSERT_TRUE(sortedByX()) << "step " << step;
        ASSERT_EQ(line.count(), 40u);
    }
    EXPECT_EQ(countSpy.count(), 40);
}

TEST_F(StickyFreeLineTest, OrdersCompareScenePositions)
{
    const struct
    {
        const char* name;
        QPointF a;
        QPointF b;
        bool x;
        bool y;
        bool yx;
    } rows[] = {{"higher but right", {5, 10}, {1, 20}, false, true, true},
                {"same row, left", {1, 10}, {5, 10}, true, false, true},
                {"same row, right", {5, 10}, {1, 10}, false, false, false},
                {"lower and left", {1, 20}, {5, 10}, true, false, false},
                {"same place", {3, 3}, {3, 3}, false, false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QGraphicsRectItem* parent = addItem(1, 1, 0, 0);
        QGraphicsRectItem* a = addItem(1, 1, row.a.x(), row.a.y());
        auto* b = new QGraphicsRectItem(0, 0, 1, 1,
                                        parent); // scene position = parent + own
        parent->setPos(row.b - QPointF(2, 3));
        b->setPos(2, 3);
        EXPECT_EQ(XOrder()(a, b), row.x);
        EXPECT_EQ(YOrder()(a, b), row.y);
        EXPECT_EQ(YXOrder()(a, b), row.yx);
    }
}

} // namespace
