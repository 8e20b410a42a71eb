// Behaviour every layout inherits from StickyArea, observed through a free line (whose
// layout keeps positions, so only the base's own work shows).
#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyFreeLine.h>

namespace {

using CountingLine = CountingLayouts<StickyFreeLine>;

class StickyAreaTest : public StickyAreaFixture<CountingLine>
{
protected:
    // Places an item through the line, at scene x / y as given.
    QGraphicsRectItem* put(double x, double y, double w = 10.0, double h = 10.0)
    {
        QGraphicsRectItem* item = addItem(w, h);
        line.insertItem(StickyArea::StickyPoint(&line, QPointF(x, y), 0, 0), item, false);
        return item;
    }

    CountingLine& line = area;
};

TEST_F(StickyAreaTest, StartsEmptyUnlockedWithoutTracking)
{
    EXPECT_EQ(line.verticalDirection(), StickyArea::Down);
    EXPECT_FALSE(line.isLocked());
    EXPECT_FALSE(line.heightTracking());
    EXPECT_TRUE(line.isEmptyLevelsAllowed());
    EXPECT_TRUE(line.empty());
    EXPECT_DOUBLE_EQ(line.height(), 0.0);
    EXPECT_DOUBLE_EQ(line.width(), 0.0);
    EXPECT_TRUE(line.isAcceptable({addItem(5)}));
    EXPECT_FALSE(line.isMovingHolded(QRectF(0, 0, 10, 10)));
    EXPECT_POINT(StickyArea::StickyPoint(), nullptr, 0, 0, 0, -1);
    EXPECT_POINT(line.itemPoint(addItem(10, 10, 7, 8)), &line, 7, 8, 0, -1);
}

TEST_F(StickyAreaTest, OnDirectionComparesStrictlyAgainstTheOrigin)
{
    const struct
    {
        const char* name;
        StickyArea::VerticalDirection direction;
        double y;
        bool expected;
    } rows[] = {
        {"down below", StickyArea::Down, 101, true},         {"down on the base line", StickyArea::Down, 100, false},
        {"down above", StickyArea::Down, 99, false},         {"up above", StickyArea::Up, 99, true},
        {"up on the base line", StickyArea::Up, 100, false}, {"up below", StickyArea::Up, 101, false}};
    line.setOrigin(QPointF(3, 100));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        line.setVerticalDirection(row.direction);
        EXPECT_EQ(line.onDirection(QPointF(-50, row.y)), row.expected);
    }
}

TEST_F(StickyAreaTest, HeightKeepsTheSignedExtentOfTheFurthestItem)
{
    // Two items of height 10 at these scene y (the first is left of the second).
    const struct
    {
        const char* name;
        StickyArea::VerticalDirection direction;
        double originY;
        double firstY;
        double secondY;
        double expected;
    } rows[] = {{"down: bottom edge counts", StickyArea::Down, 0, 0, 30, 40},
                {"down: item above the origin is negative", StickyArea::Down, 100, 80, 95, -10},
                {"down: on a tie the first in order wins (negative)", StickyArea::Down, 50, 0, 80, -40},
                {"down: on a tie the first in order wins (positive)", StickyArea::Down, 50, 80, 0, 40},
                {"up: top edge counts", StickyArea::Up, 100, 70, 50, 50},
                {"up: item below the origin is negative", StickyArea::Up, 100, 120, 95, -20}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        StickyFreeLine other;
        other.setVerticalDirection(row.direction);
        other.setOrigin(QPointF(0, row.originY));
        other.insertItem(StickyArea::StickyPoint(&other, QPointF(0, row.firstY)), addItem(10), false);
        other.insertItem(StickyArea::StickyPoint(&other, QPointF(20, row.secondY)), addItem(10), false);
        EXPECT_DOUBLE_EQ(other.height(), row.expected);
    }
}

TEST_F(StickyAreaTest, WidthIsTheRightmostEdgeFromTheOrigin)
{
    line.setOrigin(QPointF(100, 0));
    put(100, 0, 10);
    put(110, 0, 20);
    put(105, 0, 3);
    EXPECT_DOUBLE_EQ(line.width(), 30.0);
}

TEST_F(StickyAreaTest, HeightTrackingSignalsOnlyRealChanges)
{
    line.updateLayout(nullptr);
    EXPECT_EQ(heightSpy.count(), 0) << "tracking is off";

    line.enableHeightTracking(true);
    EXPECT_TRUE(line.heightTracking());
    EXPECT_EQ(heightSpy.count(), 0) << "enabling computes nothing";
    line.updateLayout(nullptr);
    EXPECT_EQ(heightSpy.count(), 0) << "an empty area is already at height 0";

    QGraphicsRectItem* item = put(0, 0, 10, 25);
    EXPECT_EQ(heightSpy.count(), 0) << "insertItem does not lay out";
    line.updateLayout(nullptr);
    ASSERT_EQ(heightSpy.count(), 1);
    EXPECT_DOUBLE_EQ(heightSpy.at(0).at(0).toDouble(), 25.0);

    line.updateLayout(item);
    EXPECT_EQ(heightSpy.count(), 1) << "same height";

    item->setPos(0, 25.0 * 1e-14); // below the relative tolerance
    line.updateLayout(nullptr);
    EXPECT_EQ(heightSpy.count(), 1);

    item->setPos(0, 5);
    line.updateLayout(nullptr);
    ASSERT_EQ(heightSpy.count(), 2);
    EXPECT_DOUBLE_EQ(heightSpy.at(1).at(0).toDouble(), 30.0);

    line.removeItem(item);
    line.updateLayout(nullptr);
    ASSERT_EQ(heightSpy.count(), 3);
    EXPECT_DOUBLE_EQ(heightSpy.at(2).at(0).toDouble(), 0.0);

    line.enableHeightTracking(false);
    put(0, 50);
    line.updateLayout(nullptr);
    EXPECT_EQ(heightSpy.count(), 3);
}

TEST_F(StickyAreaTest, LockSuppressesLayoutAndHeightUntilTheNextUpdate)
{
    line.enableHeightTracking(true);
    QGraphicsRectItem* item = put(10, 0);
    line.lockUpdate();
    EXPECT_TRUE(line.isLocked());

    line.updateLayout(nullptr);
    line.setOrigin(QPointF(50, 0));
    line.setVerticalDirection(StickyArea::Up);
    EXPECT_EQ(line.layouts, 0);
    EXPECT_EQ(line.origin(), QPointF(50, 0)) << "fields still change";
    EXPECT_EQ(line.verticalDirection(), StickyArea::Up);
    EXPECT_EQ(item->pos(), QPointF(10, 0));
    EXPECT_EQ(heightSpy.count(), 0);

    line.lockUpdate(); // a flag, not a counter
    line.unlockUpdate();
    EXPECT_FALSE(line.isLocked());
    EXPECT_EQ(line.layouts, 0) << "unlocking alone does not lay out";
    EXPECT_EQ(item->pos(), QPointF(10, 0));

    line.setVerticalDirection(StickyArea::Down);
    EXPECT_EQ(line.layouts, 1);
    EXPECT_EQ(item->pos(), QPointF(60, 0)) << "the origin change is applied by the next layout";
    EXPECT_EQ(heightSpy.count(), 1);
}

TEST_F(StickyAreaTest, OriginAndDirectionRelayoutOnlyOnRealChange)
{
    QGraphicsRectItem* item = put(10, 0);
    line.setOrigin(QPointF(1e-13, 0));
    EXPECT_EQ(line.layouts, 0) << "fuzzily equal origin";
    line.setVerticalDirection(StickyArea::Down);
    EXPECT_EQ(line.layouts, 0) << "same direction";

    line.setOrigin(QPointF(50, 0));
    EXPECT_EQ(line.layouts, 1);
    EXPECT_EQ(item->pos(), QPointF(60, 0));
    line.setOrigin(QPointF(50 + 50 * 1e-14, 0));
    EXPECT_EQ(line.layouts, 1);
    line.setVerticalDirection(StickyArea::Up);
    EXPECT_EQ(line.layouts, 2);
    EXPECT_EQ(item->pos(), QPointF(60, 0));
}

TEST_F(StickyAreaTest, InsertAndRemoveSignalTheCount)
{
    QGraphicsRectItem* a = put(0, 0);
    EXPECT_EQ(countSpy.count(), 1);
    QGraphicsRectItem* b = put(20, 0);
    EXPECT_EQ(countSpy.count(), 2);
    EXPECT_EQ(line.count(), 2u);
    EXPECT_FALSE(line.empty());

    line.moveItem(StickyArea::StickyPoint(&line, QPointF(40, 0)), a);
    EXPECT_EQ(countSpy.count(), 2) << "moving does not signal";
    EXPECT_EQ(line.itemPoint(a).index, 1);

    line.removeItem(addItem(5));
    EXPECT_EQ(countSpy.count(), 3) << "also for an item the area does not hold";
    EXPECT_EQ(line.count(), 2u);

    line.removeItem(b);
    EXPECT_EQ(countSpy.count(), 4);
    EXPECT_FALSE(line.contains(b));
    EXPECT_EQ(b->scene(), &scene) << "the area never removes items from the scene";
    EXPECT_EQ(heightSpy.count(), 0);
}

TEST_F(StickyAreaTest, ClearRemovesEachItemOnce)
{
    put(0, 0);
    put(20, 0);
    QGraphicsRectItem* twice = put(40, 0);
    line.insertItem(StickyArea::StickyPoint(&line, QPointF(40, 0), 0, 0), twice, false);
    ASSERT_EQ(line.count(), 4u);
    countSpy.clear();

    line.clear();
    EXPECT_TRUE(line.empty());
    EXPECT_EQ(countSpy.count(), 3) << "one signal per distinct item";
    line.clear();
    EXPECT_EQ(countSpy.count(), 3);
}

TEST_F(StickyAreaTest, ListFormWithoutOverrideGivesTheSingleAnswer)
{
    QGraphicsRectItem* a = put(10, 0);
    QGraphicsRectItem* b = put(30, 0);
    QGraphicsRectItem* dragged = addItem(10, 10, 200, 200);
    StickyArea& area = line;
    for (double x : {0.0, 10.0, 25.0, 31.0, 100.0}) {
        const auto single = area.findStickyPoint(QPointF(x, 7), dragged);
        EXPECT_POINT(area.findStickyPoint(QPointF(x, 7), dragged, {a, b, dragged}), single.area, single.pos.x(),
                     single.pos.y(), single.level, single.index);
    }
}

TEST_F(StickyAreaTest, GroupInsertKeepsOffsetsToTheLeadingItem)
{
    QGraphicsRectItem* lead = addItem(10, 10, 100, 0);
    QGraphicsRectItem* right = addItem(10, 10, 130, 5);
    QGraphicsRectItem* outsider = addItem(10, 10, 0, 0);
    line.setOrigin(QPointF(0, 20));
    countSpy.clear();

    // The leading item is inserted only as an element of the list.
    line.insertItems(StickyArea::StickyPoint(&line, QPointF(40, 0)), lead, {right, outsider});
    EXPECT_EQ(countSpy.count(), 2);
    EXPECT_FALSE(line.contains(lead));
    // Each element sticks where the line answers for its shifted position: x kept, y the base line.
    EXPECT_EQ(right->pos(), QPointF(70, 20));
    EXPECT_EQ(outsider->pos(), QPointF(0, 20)) << "shifted left of the origin, clamped to it";
    EXPECT_EQ(line.itemAt(StickyArea::StickyPoint(&line, {}, 0, 0)), outsider);

    line.moveItems(StickyArea::StickyPoint(&line, QPointF(100, 0)), right, {right, outsider});
    EXPECT_EQ(countSpy.count(), 2) << "moving does not signal";
    EXPECT_EQ(right->pos(), QPointF(100, 20));
    EXPECT_EQ(outsider->pos(), QPointF(30, 20));
}

TEST_F(StickyAreaTest, NullItemsAreRefusedWithAnError)
{
    TestSupport::LogCapture log;
    QGraphicsRectItem* a = put(0, 0);
    countSpy.clear();

    line.insertItem(StickyArea::StickyPoint(&line), nullptr, true);
    EXPECT_TRUE(log.containsError("StickyArea::insertItem"));
    line.moveItem(StickyArea::StickyPoint(&line), nullptr);
    EXPECT_TRUE(log.containsError("StickyArea::moveItem"));
    line.insertItems(StickyArea::StickyPoint(&line), nullptr, {a});
    line.insertItems(StickyArea::StickyPoint(&line), a, {nullptr});
    line.moveItems(StickyArea::StickyPoint(&line), nullptr, {a});
    EXPECT_EQ(line.count(), 1u);
    EXPECT_EQ(countSpy.count(), 0);

    line.removeItem(nullptr);
    EXPECT_EQ(countSpy.count(), 1) << "like any item the area does not hold";
    EXPECT_EQ(line.count(), 1u);
}

} // namespace
