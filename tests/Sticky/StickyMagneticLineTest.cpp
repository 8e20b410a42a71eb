#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyFreeLine.h>
#include <Util/Sticky/StickyMagneticLine.h>

namespace {

class StickyMagneticLineTest : public StickyAreaFixture<StickyMagneticLine>
{
protected:
    void SetUp() override { line.enableHeightTracking(true); }

    // Appends an item of width w to a line (this one by default) and re-packs it.
    QGraphicsRectItem* append(double w, bool placeholder = false, double h = 10.0, StickyArea* to = nullptr)
    {
        StickyArea& target = to ? *to : line;
        QGraphicsRectItem* item = addItem(w, h, 500, 500);
        target.insertItem(StickyArea::StickyPoint(&target, {}, 0, -1), item, placeholder);
        target.updateLayout(item);
        return item;
    }

    StickyMagneticLine& line = area;
};

TEST_F(StickyMagneticLineTest, EmptyLineAnswersTheOrigin)
{
    line.setOrigin(QPointF(100, 30));
    EXPECT_POINT(line.findStickyPoint(QPointF(250, 0), nullptr), &line, 100, 30, 0, 0);
    EXPECT_POINT(line.findStickyPoint(QPointF(250, 0), nullptr, {}), &line, 100, 30, 0, 0);
    EXPECT_DOUBLE_EQ(line.width(), 0.0);
    EXPECT_EQ(line.itemAt(StickyArea::StickyPoint(&line, {}, 0, 0)), nullptr);
    EXPECT_EQ(heightSpy.count(), 0);
}

// Items of widths 10 and 20 from origin x 100: edges 100, 110, 130. A placeholder of width 50
// between them packs but adds no edge, and a zero-width item adds no distinct edge.
TEST_F(StickyMagneticLineTest, DropChoosesTheGreatestEdgeNotRightOfIt)
{
    const struct
    {
        const char* name;
        double x;
        double edge;
        int index;
    } rows[] = {{"left of the line", 95, 100, 0},
                {"on the origin", 100, 100, 0},
                {"inside the first item", 109.99, 100, 0},
                {"on the first edge", 110, 110, 1},
                {"inside the second item", 125, 110, 1},
                {"on the end", 130, 130, 2},
                {"far right", 500, 130, 2}};
    line.setOrigin(QPointF(100, 40));
    for (bool withExtras : {false, true}) {
        line.clear();
        QGraphicsRectItem* first = append(10);
        if (withExtras) {
            append(50, true);
            append(0);
        }
        append(20);
        SCOPED_TRACE(withExtras ? "with placeholder and zero-width item" : "two items");
        for (const auto& row : rows) {
            SCOPED_TRACE(row.name);
            EXPECT_POINT(line.findStickyPoint(QPointF(row.x, -300), first), &line, row.edge, 40, 0, row.index);
        }
    }
}

TEST_F(StickyMagneticLineTest, LayoutPacksItemsInListOrder)
{
    line.setOrigin(QPointF(100, 40));
    QGraphicsRectItem* a = append(10, false, 30);
    QGraphicsRectItem* placeholder = append(50, true);
    QGraphicsRectItem* b = append(20);
    EXPECT_EQ(a->pos(), QPointF(100, 40));
    EXPECT_EQ(placeholder->pos(), QPointF(110, 40)) << "a placeholder takes its room";
    EXPECT_EQ(b->pos(), QPointF(160, 40));
    EXPECT_DOUBLE_EQ(line.width(), 180.0) << "the scene x of the right end, not a length";
    EXPECT_EQ(countSpy.count(), 3);
    ASSERT_EQ(heightSpy.count(), 1) << "one real change of height (30) over three layouts";
    EXPECT_DOUBLE_EQ(heightSpy.at(0).at(0).toDouble(), 30.0);

    // A drop at x 170 picks edge 130 (index 2): the placeholder is not an edge. Moving b there
    // keeps the list order (b is already last).
    line.moveItem(line.findStickyPoint(QPointF(170, 0), b), b);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{a, placeholder, b}));
    line.removeItem(placeholder);
    line.updateLayout(nullptr);
    EXPECT_EQ(b->pos(), QPointF(110, 40));
    EXPECT_DOUBLE_EQ(line.width(), 130.0);
    EXPECT_EQ(countSpy.count(), 4);
    EXPECT_EQ(heightSpy.count(), 1);
}

TEST_F(StickyMagneticLineTest, InsertAtAnEdgeOpensTheSlot)
{
    QGraphicsRectItem* a = append(10);
    QGraphicsRectItem* b = append(20);
    QGraphicsRectItem* c = addItem(5);
    line.insertItem(line.findStickyPoint(QPointF(12, 0), c), c, false);
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{a, c, b}));
    EXPECT_EQ(b->pos(), QPointF(10, 0)) << "inserting does not lay out";
    line.updateLayout(c);
    EXPECT_EQ(c->pos(), QPointF(10, 0));
    EXPECT_EQ(b->pos(), QPointF(15, 0));
    EXPECT_EQ(line.findStickyPoint(QPointF(15, 0), nullptr).index, 2) << "edges follow the new layout";
}

TEST_F(StickyMagneticLineTest, IndicesAreClampedOrAppended)
{
    const struct
    {
        const char* name;
        int index;
        int expectedAt; // position in the list of three items
    } rows[] = {{"minus one", -1, 0}, {"very negative", -40, 0}, {"first", 0, 0},    {"middle", 1, 1},
                {"last", 2, 2},       {"one past", 3, 2},        {"far past", 99, 2}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        StickyMagneticLine three;
        const QList<QGraphicsItem*> placed{append(10, false, 10, &three), append(10, false, 10, &three),
                                           append(10, false, 10, &three)};
        const auto listed = [&] { return QList<QGraphicsItem*>(three.begin(), three.end()); };
        EXPECT_EQ(three.itemAt(StickyArea::StickyPoint(&three, {}, 0, row.index)), placed.at(row.expectedAt));

        three.moveItem(StickyArea::StickyPoint(&three, {}, 0, row.index), placed.at(1));
        EXPECT_EQ(listed().indexOf(placed.at(1)), row.expectedAt) << "moves clamp";

        QGraphicsRectItem* extra = addItem(10);
        three.insertItem(StickyArea::StickyPoint(&three, {}, 0, row.index), extra, false);
        EXPECT_EQ(listed().indexOf(extra), (row.index < 0 || row.index >= 3) ? 3 : row.index)
            << "inserts append past either end";
    }
}

TEST_F(StickyMagneticLineTest, ItemPointReportsTheListPosition)
{
    append(10);
    QGraphicsRectItem* b = append(20);
    EXPECT_POINT(line.itemPoint(b), &line, 10, 0, 0, 1);
    EXPECT_POINT(line.itemPoint(addItem(3, 3, 7, 9)), &line, 7, 9, 0, -1);
}

TEST_F(StickyMagneticLineTest, MovingAStrangerChangesNothing)
{
    TestSupport::LogCapture log;
    QGraphicsRectItem* a = append(10);
    line.moveItem(StickyArea::StickyPoint(&line, {}, 0, 0), addItem(5));
    EXPECT_EQ(items(), QList<QGraphicsItem*>{a});
    EXPECT_TRUE(log.containsError("StickyMagneticLine::moveItem"));
    EXPECT_EQ(countSpy.count(), 1);
}

TEST_F(StickyMagneticLineTest, GroupDropSnapsTheGroupsLeftEdge)
{
    append(10); // edges 0, 10, 30, 60
    append(20);
    append(30);
    // A dragged group whose leftmost item is 12 left of the grabbed one.
    QGraphicsRectItem* left = addItem(10, 10, 188, 300);
    QGraphicsRectItem* grabbed = addItem(10, 10, 200, 290);
    const QList<QGraphicsItem*> group{grabbed, left};
    EXPECT_POINT(line.findStickyPoint(QPointF(40, 0), grabbed, group), &line, 10, 0, 0, 1);
    EXPECT_POINT(line.findStickyPoint(QPointF(40, 0), grabbed), &line, 30, 0, 0, 2);
    EXPECT_POINT(line.findStickyPoint(QPointF(40, 0), grabbed, {}), &line, 30, 0, 0, 2);
}

TEST_F(StickyMagneticLineTest, GroupInsertPacksTheGroupFromThePoint)
{
    QGraphicsRectItem* a = append(10);
    QGraphicsRectItem* b = append(20);
    QGraphicsRectItem* x = addItem(15);
    QGraphicsRectItem* y = addItem(5);
    countSpy.clear();
    line.insertItems(line.findStickyPoint(QPointF(12, 0), nullptr), nullptr, {x, y});
    EXPECT_EQ(countSpy.count(), 2) << "one signal per inserted item";
    // x goes to edge 10 (index 1); y is asked at 10 + 15 = 25, the edge right after x.
    EXPECT_EQ(items(), (QList<QGraphicsItem*>{a, x, y, b}));

    // Through point.area: the group lands in the area named by the point.
    StickyFreeLine other;
    QGraphicsRectItem* z = addItem(15);
    QGraphicsRectItem* w = addItem(5);
    line.insertItems(StickyArea::StickyPoint(&other, QPointF(100, 7)), nullptr, {z, w});
    EXPECT_EQ(z->pos(), QPointF(100, 0));
    EXPECT_EQ(w->pos(), QPointF(115, 0));
    EXPECT_EQ(other.count(), 2u);
    EXPECT_EQ(line.count(), 4u);
    EXPECT_EQ(countSpy.count(), 2);
}

TEST_F(StickyMagneticLineTest, AlignLaysTheGroupOutAsAStrip)
{
    QGraphicsRectItem* a = addItem(10, 10, 0, 0);
    QGraphicsRectItem* b = addItem(20, 10, 0, 0);
    QGraphicsRectItem* grabbed = addItem(5, 10, 100, 33);
    QGraphicsRectItem* c = addItem(7, 10, 0, 0);
    QGraphicsRectItem* d = addItem(1, 10, 0, 0);
    QList<QGraphicsItem*> group{a, b, grabbed, c, d};
    line.alignItems(grabbed, group);
    EXPECT_EQ(b->pos(), QPointF(80, 33));
    EXPECT_EQ(a->pos(), QPointF(70, 33));
    EXPECT_EQ(grabbed->pos(), QPointF(100, 33));
    EXPECT_EQ(c->pos(), QPointF(105, 33));
    EXPECT_EQ(d->pos(), QPointF(112, 33));
    EXPECT_TRUE(line.empty()) << "the line itself is untouched";

    QList<QGraphicsItem*> without{a, b};
    line.alignItems(grabbed, without);
    EXPECT_EQ(a->pos(), QPointF(70, 33)) << "the grabbed item is not in the group: nothing moves";
}

// A line measuring its items by a duration of its own (twice the width).
class DoubledLine : public StickyMagneticLine
{
protected:
    double itemDuration(QGraphicsItem* item) const override { return 2 * StickyMagneticLine::itemDuration(item); }
};

TEST_F(StickyMagneticLineTest, ItemDurationDecidesPackingEdgesAndWidth)
{
    DoubledLine doubled;
    QGraphicsRectItem* a = addItem(10);
    QGraphicsRectItem* b = addItem(20);
    doubled.insertItem(StickyArea::StickyPoint(&doubled), a, false);
    doubled.insertItem(StickyArea::StickyPoint(&doubled), b, false);
    doubled.updateLayout(nullptr);
    EXPECT_EQ(b->pos(), QPointF(20, 0));
    EXPECT_DOUBLE_EQ(doubled.width(), 60.0);
    EXPECT_POINT(doubled.findStickyPoint(QPointF(59, 0), nullptr), &doubled, 20, 0, 0, 1);

    QList<QGraphicsItem*> strip{a, b};
    doubled.alignItems(a, strip);
    EXPECT_EQ(b->pos(), QPointF(20, 0));
}

} // namespace

TEST_F(StickyMagneticLineTest, DropsSeeResizesInsideALockedBatchAndAfterALayout)
{
    // Widths 10 and 20: edges 0, 10, 30.
    QGraphicsRectItem* a = append(10);
    append(20);
    EXPECT_POINT(line.findStickyPoint(QPointF(25, 0), nullptr), &line, 10, 0, 0, 1);

    // Inside a locked batch the first item grows to 30: edges 0, 30, 50 before any layout.
    line.lockUpdate();
    a->setRect(0, 0, 30, 10);
    EXPECT_POINT(line.findStickyPoint(QPointF(25, 0), nullptr), &line, 0, 0, 0, 0);
    EXPECT_POINT(line.findStickyPoint(QPointF(45, 0), nullptr), &line, 30, 0, 0, 1);
    line.setOrigin(QPointF(1000, 5));
    EXPECT_POINT(line.findStickyPoint(QPointF(1035, 0), nullptr), &line, 1030, 5, 0, 1); // the origin is read at once
    line.setOrigin(QPointF(0, 0));
    line.unlockUpdate();
    EXPECT_EQ(countSpy.count(), 2);
    EXPECT_EQ(heightSpy.count(), 1) << "asking signals nothing";

    // Outside a batch the resize is announced with updateLayout(item), as every caller does.
    a->setRect(0, 0, 5, 10);
    line.updateLayout(a);
    EXPECT_POINT(line.findStickyPoint(QPointF(7, 0), nullptr), &line, 5, 0, 0, 1);
}
