#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyGrid.h>
#include <Util/Sticky/StickyOrder.h>

namespace {

class StickyGridTest : public StickyAreaFixture<StickyGrid>
{
protected:
    void SetUp() override { grid.enableHeightTracking(true); }

    QGraphicsRectItem* append(double w, double h)
    {
        QGraphicsRectItem* item = addItem(w, h, 900, 900);
        grid.insertItem(StickyArea::StickyPoint(&grid, QPointF(900, 900), 0, -1), item, false);
        return item;
    }

    StickyGrid& grid = area;
};

TEST_F(StickyGridTest, EmptyGrid)
{
    grid.setOrigin(QPointF(3, 4));
    EXPECT_EQ(grid.direction(), StickyGrid::Rows);
    EXPECT_POINT(grid.findStickyPoint(QPointF(50, 50), nullptr), &grid, 3, 4, 0, 0);
    EXPECT_TRUE(grid.rect().isNull());
    EXPECT_TRUE(grid.size().isEmpty());
    EXPECT_DOUBLE_EQ(grid.width(), -1.0) << "the unset width";
    EXPECT_EQ(grid.itemAt(StickyArea::StickyPoint(&grid, {}, 0, 0)), nullptr);
    EXPECT_EQ(heightSpy.count(), 0);
}

TEST_F(StickyGridTest, RowsWrapBeforeOverflowing)
{
    QGraphicsRectItem* a = append(40, 20);
    QGraphicsRectItem* b = append(40, 30);
    QGraphicsRectItem* c = append(40, 20);
    EXPECT_EQ(countSpy.count(), 3);
    grid.setSpacing(QPointF(10, 10));
    heightSpy.clear();
    grid.setWidth(100);
    EXPECT_EQ(a->pos(), QPointF(0, 0));
    EXPECT_EQ(b->pos(), QPointF(50, 0));
    EXPECT_EQ(c->pos(), QPointF(0, 40)) << "next row: tallest of the row (30) + spacing";
    ASSERT_EQ(heightSpy.count(), 1);
    EXPECT_DOUBLE_EQ(heightSpy.at(0).at(0).toDouble(), 60.0);
    EXPECT_DOUBLE_EQ(grid.width(), 100.0);
    EXPECT_EQ(grid.rect(), QRectF(0, 0, 90, 60));
    EXPECT_EQ(grid.size(), QSizeF(90, 60));

    grid.setWidth(140);
    EXPECT_EQ(c->pos(), QPointF(100, 0)) << "exactly fits: 140 is not less than 40 + 100";
    EXPECT_EQ(heightSpy.count(), 2);
}

TEST_F(StickyGridTest, DefaultSizeOrAnItemWiderThanTheRowStillWraps)
{
    grid.setOrigin(QPointF(7, 100));
    QGraphicsRectItem* a = append(40, 20);
    QGraphicsRectItem* b = append(10, 30);
    grid.setSpacing(QPointF(3, 5));
    EXPECT_EQ(a->pos(), QPointF(7, 105)) << "unset width: wrapped although first of its row";
    EXPECT_EQ(b->pos(), QPointF(7, 130));
    a->setPos(0, 0);
    grid.setWidth(30); // a is wider than the row
    EXPECT_EQ(a->pos(), QPointF(7, 105));
    EXPECT_EQ(b->pos(), QPointF(7, 130));
}

TEST_F(StickyGridTest, ColumnsFillDownwards)
{
    grid.setDirection(StickyGrid::Columns);
    grid.setHeight(100);
    QGraphicsRectItem* a = append(20, 40);
    QGraphicsRectItem* b = append(30, 40);
    QGraphicsRectItem* c = append(20, 40);
    EXPECT_EQ(heightSpy.count(), 0) << "layouts of the empty grid kept height 0";
    grid.setSpacing(QPointF(10, 10));
    EXPECT_EQ(a->pos(), QPointF(0, 0));
    EXPECT_EQ(b->pos(), QPointF(0, 50));
    EXPECT_EQ(c->pos(), QPointF(40, 0)) << "next column: widest of the column (30) + spacing";
    ASSERT_EQ(heightSpy.count(), 1);
    EXPECT_DOUBLE_EQ(heightSpy.at(0).at(0).toDouble(), 90.0);

    b->setPos(7, 7);
    grid.setWidth(50);
    EXPECT_EQ(b->pos(), QPointF(7, 7)) << "setWidth of a column grid does not lay out";
    EXPECT_DOUBLE_EQ(grid.width(), 50.0);
    grid.setHeight(100);
    EXPECT_EQ(b->pos(), QPointF(0, 50));
    EXPECT_EQ(heightSpy.count(), 1) << "same height again";

    grid.setDirection(StickyGrid::Rows);
    EXPECT_EQ(b->pos(), QPointF(0, 50));
    EXPECT_EQ(c->pos(), QPointF(0, 100));
    c->setPos(1, 1);
    grid.setHeight(10);
    EXPECT_EQ(c->pos(), QPointF(1, 1)) << "setHeight of a row grid does not lay out";
}

TEST_F(StickyGridTest, SetDirectionAlwaysLaysOutSpacingOnlyOnChange)
{
    grid.setWidth(100);
    QGraphicsRectItem* a = append(40, 20);
    a->setPos(33, 33);
    grid.setDirection(StickyGrid::Rows);
    EXPECT_EQ(a->pos(), QPointF(0, 0)) << "same direction, still a layout";

    a->setPos(33, 33);
    grid.setSpacing(QPointF(1e-13, 0));
    EXPECT_EQ(a->pos(), QPointF(33, 33)) << "fuzzily equal spacing";
    grid.setSpacing(QPointF(0, 6));
    EXPECT_EQ(a->pos(), QPointF(0, 0));
    EXPECT_EQ(grid.spacing(), QPointF(0, 6));
}

TEST_F(StickyGridTest, AnUnknownDirectionMovesNothing)
{
    QGraphicsRectItem* a = append(40, 20);
    a->setPos(5, 6);
    grid.setDirection(static_cast<StickyGrid::Direction>(2));
    EXPECT_EQ(a->pos(), QPointF(5, 6));
}

// Origin (0, 0), which competes first; items at (100, 0), (200, 0), (100, 100); the second is dragged.
TEST_F(StickyGridTest, PicksTheNearestPlaceByManhattanLength)
{
    for (const QPointF& at : {QPointF(100, 0), QPointF(200, 0), QPointF(100, 100)})
        append(40, 40)->setPos(at);
    const struct
    {
        const char* name;
        QPointF drop;
        double x;
        double y;
        int index;
    } rows[] = {{"near the origin", {10, 10}, 0, 0, 0},
                {"on the dragged item", {200, 0}, 200, 0, 1},
                {"a tie keeps the earlier", {150, 0}, 100, 0, 0},
                {"second place", {160, 0}, 200, 0, 1},
                {"lower item", {100, 95}, 100, 100, 2},
                {"a tie with the origin goes to it", {50, 0}, 0, 0, 0},
                {"just past the tie with the origin", {51, 0}, 100, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_POINT(grid.findStickyPoint(row.drop, items().at(1)), &grid, row.x, row.y, 0, row.index);
    }
}

TEST_F(StickyGridTest, GroupDropSnapsTheGroupsTopLeft)
{
    QGraphicsRectItem* a = append(10, 10);
    QGraphicsRectItem* b = append(10, 10);
    a->setPos(10, 0);
    b->setPos(100, 0);
    QGraphicsRectItem* grabbed = addItem(10, 10, 500, 500);
    QGraphicsRectItem* other = addItem(10, 10, 420, 480);
    // Grabbed dropped at 120: the group's top-left lands at (40, -20), nearest to a.
    EXPECT_POINT(grid.findStickyPoint(QPointF(120, 0), grabbed, {grabbed, other}), &grid, 10, 0, 0, 0);
    EXPECT_POINT(grid.findStickyPoint(QPointF(120, 0), grabbed), &grid, 100, 0, 0, 1);
    EXPECT_POINT(grid.findStickyPoint(QPointF(120, 0), grabbed, {}), &grid, 100, 0, 0, 1);
}

TEST_F(StickyGridTest, InsertPlacesAtThePointAndMoveClamps)
{
    QGraphicsRectItem* a = append(10, 10);
    QGraphicsRectItem* b = append(10, 10);
    EXPECT_EQ(a->pos(), QPointF(900, 900)) << "inserting sets the position of the point, no layout";
    QGraphicsRectItem* c = addItem(10, 10);
    grid.insertItem(StickyArea::StickyPoint(&grid, QPointF(4, 5), 0, 1), c, false);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{a, c, b}));
    EXPECT_EQ(c->pos(), QPointF(4, 5));
    QGraphicsRectItem* d = addItem(10, 10);
    grid.insertItem(StickyArea::StickyPoint(&grid, QPointF(), 0, 3), d, false);
    EXPECT_EQ(items().last(), d) << "an index at the end appends";

    grid.moveItem(StickyArea::StickyPoint(&grid, QPointF(1, 2), 0, 50), a);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{c, b, d, a}));
    EXPECT_EQ(a->pos(), QPointF(1, 2));
    grid.moveItem(StickyArea::StickyPoint(&grid, QPointF(1, 2), 0, -3), d);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{d, c, b, a}));
    EXPECT_EQ(countSpy.count(), 4);

    TestSupport::LogCapture log;
    QGraphicsRectItem* stranger = addItem(10, 10, 8, 8);
    grid.moveItem(StickyArea::StickyPoint(&grid, QPointF(1, 2), 0, 0), stranger);
    EXPECT_EQ(stranger->pos(), QPointF(8, 8));
    EXPECT_EQ(grid.count(), 4u);
    EXPECT_TRUE(log.containsError("StickyGrid::moveItem"));
}

TEST_F(StickyGridTest, ItemPointAndClampedItemAt)
{
    QGraphicsRectItem* a = append(10, 10);
    QGraphicsRectItem* b = append(10, 10);
    EXPECT_POINT(grid.itemPoint(b), &grid, 900, 900, 0, 1);
    EXPECT_POINT(grid.itemPoint(addItem(1, 1, 2, 3)), &grid, 2, 3, 0, -1);
    EXPECT_EQ(grid.itemAt(StickyArea::StickyPoint(&grid, {}, 0, -1)), a);
    EXPECT_EQ(grid.itemAt(StickyArea::StickyPoint(&grid, {}, 0, 1)), b);
    EXPECT_EQ(grid.itemAt(StickyArea::StickyPoint(&grid, {}, 0, 9)), b);
    EXPECT_TRUE(grid.contains(a));
    grid.removeItem(a);
    EXPECT_FALSE(grid.contains(a));
}

TEST_F(StickyGridTest, GroupInsertKeepsTheGroupOrderAtTheIndex)
{
    QGraphicsRectItem* a = append(10, 10);
    QGraphicsRectItem* b = append(10, 10);
    QGraphicsRectItem* x = addItem(10, 10);
    QGraphicsRectItem* y = addItem(10, 10);
    QGraphicsRectItem* z = addItem(10, 10);
    countSpy.clear();
    grid.insertItems(StickyArea::StickyPoint(&grid, QPointF(5, 5), 0, 1), nullptr, {x, y, z});
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{a, x, y, z, b}));
    EXPECT_EQ(countSpy.count(), 3);
    EXPECT_EQ(y->pos(), QPointF(5, 5));
}

TEST_F(StickyGridTest, DraggedGroupIsFannedAsAPile)
{
    QList<QGraphicsItem*> inGrid;
    for (int i = 0; i < 7; ++i)
        inGrid.append(append(10, 10));
    QGraphicsRectItem* stranger = addItem(10, 10);
    QGraphicsItem* grabbed = inGrid.at(3);
    grabbed->setPos(100, 100);
    // Out of grid order, with an item that is not in the grid (it comes first).
    QList<QGraphicsItem*> pile{inGrid.at(6), inGrid.at(2), grabbed,      stranger,
                               inGrid.at(0), inGrid.at(5), inGrid.at(1), inGrid.at(4)};
    grid.alignItems(grabbed, pile);
    EXPECT_EQ(pile, (QList<QGraphicsItem*>{stranger, inGrid.at(0), inGrid.at(1), inGrid.at(2), grabbed, inGrid.at(4),
                                           inGrid.at(5), inGrid.at(6)}));
    const int steps[] = {1, 2, 3, 4, 5, 5, 5, 5};
    for (int k = 0; k < pile.size(); ++k)
        EXPECT_EQ(pile.at(k)->pos(), QPointF(100 + 5 * steps[k], 100 - 5 * steps[k])) << k;

    // The step follows the grabbed item's own transformation.
    grabbed->setPos(0, 0);
    grabbed->setScale(2);
    QList<QGraphicsItem*> two{grabbed, inGrid.at(0)};
    grid.alignItems(grabbed, two);
    EXPECT_EQ(inGrid.at(0)->pos(), QPointF(10, -10)) << "first in grid order";
    EXPECT_EQ(grabbed->pos(), QPointF(20, -20));

    QList<QGraphicsItem*> notGrabbed{inGrid.at(5)};
    inGrid.at(5)->setPos(1, 1);
    grid.alignItems(grabbed, notGrabbed);
    EXPECT_EQ(inGrid.at(5)->pos(), QPointF(1, 1));
}

TEST_F(StickyGridTest, SortItemsReordersWithoutLayout)
{
    QGraphicsRectItem* a = append(10, 10);
    QGraphicsRectItem* b = append(10, 10);
    QGraphicsRectItem* c = append(10, 10);
    a->setPos(5, 20);
    b->setPos(1, 20);
    c->setPos(9, 10);
    grid.sortItems(YXOrder());
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{c, b, a}));
    EXPECT_EQ(a->pos(), QPointF(5, 20));
    grid.sortItems(XOrder());
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{b, a, c}));

    TestSupport::LogCapture log;
    grid.sortItems({});
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{b, a, c}));
    EXPECT_TRUE(log.containsError("StickyGrid::sortItems"));
    EXPECT_EQ(heightSpy.count(), 0);
}

} // namespace
