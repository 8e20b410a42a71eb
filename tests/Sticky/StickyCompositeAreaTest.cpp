#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyCompositeArea.h>
#include <Util/Sticky/StickyFreeLine.h>
#include <Util/Sticky/StickyGrid.h>
#include <Util/Sticky/StickyMagneticLine.h>

#include <QSignalSpy>

namespace {

// A free line that takes no drags.
class ClosedLine : public StickyFreeLine
{
public:
    bool isAcceptable(const QList<QGraphicsItem*>&) const override { return false; }
};

// A magnetic line at y 0, a free line at y 100 and a row grid at y 200, in slots 0, 1, 2.
class StickyCompositeAreaTest : public StickySceneTest
{
protected:
    void SetUp() override
    {
        freeLine.setOrigin(QPointF(0, 100));
        grid.setOrigin(QPointF(0, 200));
        grid.setWidth(300);
        composite.addStickySlot(&magnetic, magneticRoot);
        composite.addStickySlot(&freeLine, freeRoot);
        composite.addStickySlot(&grid, gridRoot);
    }

    // Drops an item through the composite, as a drag controller would, and lays out.
    QGraphicsRectItem* drop(const QPointF& at, double w = 20)
    {
        QGraphicsRectItem* item = addItem(w, 10, at.x(), at.y());
        composite.insertItem(composite.findStickyPoint(at, item), item, false);
        composite.updateLayout(item);
        return item;
    }

    QGraphicsRectItem* magneticRoot = addItem(400, 50);
    QGraphicsRectItem* freeRoot = addItem(400, 50);
    QGraphicsRectItem* gridRoot = addItem(400, 50);
    StickyMagneticLine magnetic;
    StickyFreeLine freeLine;
    StickyGrid grid;
    StickyCompositeArea composite;
    QSignalSpy countSpy{&composite, &StickyArea::itemsCountChanged};
    QSignalSpy magneticSpy{&magnetic, &StickyArea::itemsCountChanged};
    QSignalSpy freeSpy{&freeLine, &StickyArea::itemsCountChanged};
};

TEST(StickyCompositeAreaEmpty, WithoutSlotsThereIsNoPlace)
{
    QGraphicsScene scene;
    auto* item = scene.addRect(0, 0, 10, 10);
    StickyCompositeArea composite;
    QSignalSpy countSpy(&composite, &StickyArea::itemsCountChanged);
    EXPECT_POINT(composite.findStickyPoint(QPointF(30, 40), item), &composite, 0, 0, 0, -1);
    EXPECT_POINT(composite.findStickyPoint(QPointF(30, 40), nullptr), &composite, 0, 0, 0, -1);
    EXPECT_FALSE(composite.isAcceptable({item}));
    EXPECT_EQ(composite.itemAt(StickyArea::StickyPoint(&composite, {}, 0, 0)), nullptr);
    EXPECT_EQ(composite.rootOf(item), nullptr);

    composite.insertItem(composite.findStickyPoint(QPointF(30, 40), item), item, false);
    EXPECT_TRUE(composite.empty()) << "no slot takes it";
    EXPECT_EQ(countSpy.count(), 1);
}

TEST_F(StickyCompositeAreaTest, TheNearestSubAreaAnswerWins)
{
    drop(QPointF(0, 0), 30); // magnetic edges 0, 30
    drop(QPointF(250, 200)); // grid item at (0, 200)
    const struct
    {
        const char* name;
        QPointF drop;
        int slot;
        QPointF pos;
    } rows[] = {{"magnetic edge", {40, 10}, 0, {30, 0}},
                {"free line keeps x", {40, 90}, 1, {40, 100}},
                {"grid item", {40, 190}, 2, {0, 200}},
                {"a tie goes to the lower slot", {30, 50}, 0, {30, 0}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_POINT(composite.findStickyPoint(row.drop, addItem(10)), &composite, row.pos.x(), row.pos.y(), 0,
                     row.slot);
        EXPECT_EQ(composite.findStickyPoint(row.drop, nullptr).index, row.slot) << "no item: every slot is asked";
    }
}

TEST_F(StickyCompositeAreaTest, InsertLandsInTheSubAreaAndInTheComposite)
{
    QGraphicsRectItem* a = drop(QPointF(35, 95));
    EXPECT_TRUE(composite.contains(a));
    EXPECT_TRUE(freeLine.contains(a));
    EXPECT_FALSE(magnetic.contains(a));
    EXPECT_EQ(a->pos(), QPointF(35, 100));
    EXPECT_EQ(countSpy.count(), 1);
    EXPECT_EQ(freeSpy.count(), 1);
    EXPECT_EQ(magneticSpy.count(), 0);

    QGraphicsRectItem* b = drop(QPointF(80, 4), 15);
    QGraphicsRectItem* c = drop(QPointF(80, 4), 25);
    EXPECT_EQ(b->pos(), QPointF(0, 0)) << "packed by the magnetic line";
    EXPECT_EQ(c->pos(), QPointF(15, 0));
    EXPECT_EQ(countSpy.count(), 3);
    EXPECT_EQ(magneticSpy.count(), 2);

    EXPECT_POINT(composite.itemPoint(a), &composite, 35, 100, 0, 1);
    EXPECT_POINT(composite.itemPoint(c), &composite, 15, 0, 0, 0);
    QGraphicsRectItem* stranger = addItem(5, 5, 3, 3);
    EXPECT_POINT(composite.itemPoint(stranger), &composite, 3, 3, 0, 0);
    EXPECT_EQ(composite.rootOf(a), freeRoot);
    EXPECT_EQ(composite.rootOf(c), magneticRoot);
    EXPECT_EQ(composite.rootOf(stranger), nullptr);
    EXPECT_DOUBLE_EQ(composite.width(), 55.0) << "right edge of a, from the composite's origin";
    EXPECT_DOUBLE_EQ(composite.height(), 110.0);
}

TEST_F(StickyCompositeAreaTest, ItemAtAsksTheSlotsOwnDropAnswer)
{
    QGraphicsRectItem* a = drop(QPointF(0, 0), 30);
    QGraphicsRectItem* b = drop(QPointF(100, 0), 30);
    EXPECT_EQ(composite.itemAt(StickyArea::StickyPoint(&composite, QPointF(45, 0), 0, 0)), b);
    EXPECT_EQ(composite.itemAt(StickyArea::StickyPoint(&composite, QPointF(5, 0), 0, 0)), a);
    EXPECT_EQ(composite.itemAt(StickyArea::StickyPoint(&composite, QPointF(5, 0), 0, 1)), nullptr)
        << "the free line has nothing before x 5";
    EXPECT_EQ(composite.itemAt(StickyArea::StickyPoint(&composite, QPointF(5, 0), 0, 7)), nullptr);
}

TEST_F(StickyCompositeAreaTest, MovingBetweenSlotsRemovesAndInserts)
{
    QGraphicsRectItem* a = drop(QPointF(10, 0));
    magneticSpy.clear();
    countSpy.clear();
    composite.moveItem(composite.findStickyPoint(QPointF(60, 98), a), a);
    EXPECT_FALSE(magnetic.contains(a));
    EXPECT_TRUE(freeLine.contains(a));
    EXPECT_TRUE(composite.contains(a));
    EXPECT_EQ(composite.count(), 1u);
    EXPECT_EQ(a->pos(), QPointF(60, 100));
    EXPECT_EQ(magneticSpy.count(), 1);
    EXPECT_EQ(freeSpy.count(), 1);
    EXPECT_EQ(countSpy.count(), 0) << "a move of the composite does not signal";

    composite.removeItem(a);
    EXPECT_FALSE(freeLine.contains(a));
    EXPECT_TRUE(composite.empty());
    EXPECT_EQ(freeSpy.count(), 2);
    EXPECT_EQ(countSpy.count(), 1);
}

TEST_F(StickyCompositeAreaTest, AcceptanceAsksTheSlots)
{
    QGraphicsRectItem* item = addItem(10);
    EXPECT_TRUE(composite.isAcceptable({item}));
    EXPECT_FALSE(composite.isAcceptable({item, addItem(10)})) << "only single items";
    EXPECT_FALSE(composite.isAcceptable({}));

    StickyCompositeArea closed;
    ClosedLine refusing;
    StickyFreeLine open;
    open.setOrigin(QPointF(0, 500));
    closed.addStickySlot(&refusing, nullptr);
    EXPECT_FALSE(closed.isAcceptable({item}));
    EXPECT_POINT(closed.findStickyPoint(QPointF(10, 0), item), &closed, 0, 0, 0, -1);
    // Without an item the refusing slot is asked too.
    EXPECT_POINT(closed.findStickyPoint(QPointF(10, 0), nullptr), &closed, 10, 0, 0, 0);
    closed.addStickySlot(&open, nullptr);
    EXPECT_TRUE(closed.isAcceptable({item}));
    EXPECT_POINT(closed.findStickyPoint(QPointF(10, 0), item), &closed, 10, 500, 0, 1);
}

TEST_F(StickyCompositeAreaTest, SlotNumbersAreReusedOnlyFromTheTop)
{
    StickyFreeLine extra;
    extra.setOrigin(QPointF(0, 1000));
    composite.removeStickySlot(&grid);
    composite.addStickySlot(&extra, nullptr);
    EXPECT_EQ(composite.findStickyPoint(QPointF(0, 990), nullptr).index, 2) << "the top number comes back";

    composite.removeStickySlot(&magnetic);
    StickyFreeLine another;
    another.setOrigin(QPointF(0, 2000));
    composite.addStickySlot(&another, nullptr);
    EXPECT_EQ(composite.findStickyPoint(QPointF(0, 1990), nullptr).index, 3) << "a lower gap is not reused";
    EXPECT_EQ(composite.findStickyPoint(QPointF(0, -50), nullptr).index, 1) << "the magnetic line is gone";

    composite.removeStickySlot(&magnetic); // not a slot any more: nothing happens
    EXPECT_EQ(composite.findStickyPoint(QPointF(0, 990), nullptr).index, 2);
}

TEST_F(StickyCompositeAreaTest, RemovedSlotLeavesItsItemsInTheComposite)
{
    QGraphicsRectItem* a = drop(QPointF(10, 0));
    composite.removeStickySlot(&magnetic);
    EXPECT_TRUE(composite.contains(a));
    EXPECT_TRUE(magnetic.contains(a));
    EXPECT_EQ(composite.rootOf(a), nullptr);
    composite.removeItem(a);
    EXPECT_TRUE(magnetic.contains(a)) << "no slot holds it any more";
    EXPECT_TRUE(composite.empty());
}

TEST_F(StickyCompositeAreaTest, LayoutRunsOnlyWhenTheCompositeHoldsItems)
{
    QGraphicsRectItem* direct = addItem(20);
    magnetic.insertItem(StickyArea::StickyPoint(&magnetic), direct, false);
    direct->setPos(77, 77);
    composite.updateLayout(nullptr);
    EXPECT_EQ(direct->pos(), QPointF(77, 77)) << "empty composite: sub-areas are not laid out";

    drop(QPointF(30, 100));
    EXPECT_EQ(direct->pos(), QPointF(0, 0));
}

TEST_F(StickyCompositeAreaTest, ADestroyedSubAreaLeavesItsSlot)
{
    auto* temporary = new StickyFreeLine;
    temporary->setOrigin(QPointF(0, 50));
    composite.addStickySlot(temporary, nullptr);
    EXPECT_EQ(composite.findStickyPoint(QPointF(0, 50), nullptr).index, 3);
    delete temporary;
    EXPECT_EQ(composite.findStickyPoint(QPointF(0, 50), nullptr).index, 0);
    QGraphicsRectItem* a = drop(QPointF(10, 60));
    EXPECT_TRUE(freeLine.contains(a));
}

TEST_F(StickyCompositeAreaTest, UnknownSlotNumbersAndNullItemsChangeNothing)
{
    QGraphicsRectItem* a = drop(QPointF(35, 95));
    countSpy.clear();
    freeSpy.clear();
    for (int slot : {-1, 3, 99}) {
        QGraphicsRectItem* item = addItem(10, 10, 5, 6);
        composite.insertItem(StickyArea::StickyPoint(&composite, QPointF(5, 6), 0, slot), item, false);
        EXPECT_FALSE(composite.contains(item)) << slot;
        EXPECT_EQ(item->pos(), QPointF(5, 6)) << slot;
        EXPECT_EQ(composite.itemAt(StickyArea::StickyPoint(&composite, QPointF(35, 100), 0, slot)), nullptr);
    }
    EXPECT_EQ(countSpy.count(), 3) << "insertItem signals also when no slot takes the item";
    EXPECT_EQ(composite.count(), 1u);
    EXPECT_EQ(freeSpy.count(), 0);
    EXPECT_EQ(magneticSpy.count(), 0);

    EXPECT_POINT(composite.itemPoint(nullptr), &composite, 0, 0, 0, 0);
    EXPECT_EQ(composite.rootOf(nullptr), nullptr);
    EXPECT_TRUE(composite.isAcceptable({nullptr})) << "every slot is asked, as for a drop without an item";
    composite.addStickySlot(nullptr, nullptr);
    composite.removeStickySlot(nullptr);
    EXPECT_EQ(composite.findStickyPoint(QPointF(35, 95), a).index, 1);
    EXPECT_EQ(composite.itemAt(StickyArea::StickyPoint(&composite, QPointF(30, 100), 0, 1)), a);
}

TEST_F(StickyCompositeAreaTest, AnAreaThatWouldHoldItselfIsRefused)
{
    TestSupport::LogCapture log;
    composite.addStickySlot(&composite, nullptr);
    EXPECT_TRUE(log.containsError("StickyCompositeArea::addStickySlot"));

    // Through a nested composite as well.
    StickyCompositeArea outer;
    outer.addStickySlot(&composite, nullptr);
    log.clear();
    composite.addStickySlot(&outer, nullptr);
    EXPECT_TRUE(log.containsError("StickyCompositeArea::addStickySlot"));

    QGraphicsRectItem* item = addItem(10);
    EXPECT_TRUE(composite.isAcceptable({item}));
    EXPECT_POINT(composite.findStickyPoint(QPointF(40, 90), item), &composite, 40, 100, 0, 1);
    EXPECT_POINT(outer.findStickyPoint(QPointF(40, 90), item), &outer, 40, 100, 0, 0);

    // Slot numbers are unchanged by the refusals: the next one is 3.
    StickyFreeLine extra;
    extra.setOrigin(QPointF(0, 1000));
    composite.addStickySlot(&extra, nullptr);
    EXPECT_EQ(composite.findStickyPoint(QPointF(0, 990), nullptr).index, 3);
}

} // namespace
