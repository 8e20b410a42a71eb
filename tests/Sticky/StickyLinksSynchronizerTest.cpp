#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyLinksSynchronizer.h>
#include <Util/Sticky/StickyMagneticLine.h>
#include <Util/Sticky/StickyMultiLine.h>

#include <QGraphicsWidget>

namespace {

using CountingMultiLine = CountingLayouts<StickyMultiLine>;

// A master on level 0 at x 100, its slaves on levels 1 (offset 0) and 2 (offset 20).
class StickyLinksSynchronizerTest : public StickySceneTest
{
protected:
    void SetUp() override
    {
        for (int level = 0; level < 3; ++level) {
            QGraphicsItem* e = addItem(30, 40);
            line.insertItem(StickyArea::StickyPoint(&line, QPointF(level == 2 ? 50 : 100, 0), -1 - level), e, false);
            (level == 0 ? master : level == 1 ? slave : slave2) = e;
        }
        sync.watch(&line);
        ASSERT_TRUE(sync.link(master, slave));
        ASSERT_TRUE(sync.link(master, slave2, 20));
        line.layouts = 0;
    }

    CountingMultiLine line;
    StickyLinksSynchronizer sync;
    QGraphicsItem* master = nullptr;
    QGraphicsItem* slave = nullptr;
    QGraphicsItem* slave2 = nullptr;
};

TEST_F(StickyLinksSynchronizerTest, LinkingPlacesTheSlaveAtOnce) { EXPECT_DOUBLE_EQ(slave2->x(), 120); }

TEST_F(StickyLinksSynchronizerTest, SlavesFollowEveryMoveOfTheMasterInOneLayout)
{
    struct Row
    {
        const char* name;
        QPointF drop;
        double masterX;
    };
    const Row rows[] = {{"right", {300, 10}, 300}, {"left", {40, 10}, 40}, {"left_of_the_origin", {-80, 10}, 0}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        line.layouts = 0;
        sync.moveItem(line.findStickyPoint(row.drop, master), master);
        EXPECT_DOUBLE_EQ(master->x(), row.masterX);
        EXPECT_EQ(slave->pos(), QPointF(row.masterX, 48));
        EXPECT_EQ(slave2->pos(), QPointF(row.masterX + 20, 96));
        EXPECT_EQ(line.layouts, 1);
        EXPECT_EQ(sync.indicator(slave), nullptr);
        EXPECT_FALSE(line.isLocked());
    }
}

TEST_F(StickyLinksSynchronizerTest, RemovingTheMasterLeavesTheSlavesUnlinkedWhereTheyStand)
{
    QList<QGraphicsItem*> broken;
    QObject::connect(&sync, &StickyLinksSynchronizer::linkBroken,
                     [&broken](QGraphicsItem* s, QGraphicsItem* m) { broken << s << m; });
    line.removeItem(master);
    EXPECT_EQ(broken, (QList<QGraphicsItem*>{slave, master, slave2, master}));
    EXPECT_EQ(sync.masterOf(slave), nullptr);
    line.insertItem(line.findStickyPoint(QPointF(400, 10), master), master, false);
    EXPECT_EQ(slave->pos(), QPointF(100, 48));
    EXPECT_EQ(slave2->pos(), QPointF(120, 96));
}

TEST_F(StickyLinksSynchronizerTest, AMasterInsertedIntoAWatchedAreaPullsItsSlaves)
{
    StickyMultiLine other;
    QGraphicsItem* outside = addItem(10, 40, 0, 300);
    ASSERT_TRUE(sync.link(outside, slave, 0) == false); // already has a master
    sync.unlink(slave);
    ASSERT_TRUE(sync.link(outside, slave, 5));
    EXPECT_EQ(slave->pos(), QPointF(100, 48)); // the master stands in no watched area yet
    sync.watch(&other);
    other.insertItem(other.findStickyPoint(QPointF(70, 0), outside), outside, false);
    EXPECT_EQ(slave->pos(), QPointF(75, 48));
}

TEST_F(StickyLinksSynchronizerTest, APackedLineShowsTheDriftItCannotHonour)
{
    StickyMagneticLine strip;
    strip.setOrigin(QPointF(0, 200));
    sync.watch(&strip);
    QGraphicsItem* first = addItem(60, 10);
    QGraphicsItem* packed = addItem(60, 10);
    strip.insertItem(strip.findStickyPoint({0, 200}, first), first, false);
    strip.insertItem(strip.findStickyPoint({100, 200}, packed), packed, false);
    strip.updateLayout(nullptr);
    int made = 0;
    sync.setIndicatorFactory([&made](QGraphicsItem*) {
        ++made;
        return new QGraphicsRectItem(0, 0, 2, 2);
    });
    ASSERT_TRUE(sync.link(master, packed, 0));
    EXPECT_DOUBLE_EQ(packed->x(), 60); // the only edges are 0, 60 and 120
    EXPECT_DOUBLE_EQ(sync.drift(packed), -40);
    ASSERT_NE(sync.indicator(packed), nullptr);
    EXPECT_EQ(sync.indicator(packed)->scenePos(), packed->scenePos());
    sync.moveItem(line.findStickyPoint(QPointF(60, 10), master), master);
    EXPECT_EQ(sync.indicator(packed), nullptr);
    EXPECT_EQ(made, 1);
}

TEST_F(StickyLinksSynchronizerTest, BadLinksAreRefusedAndDeletedItemsForgotten)
{
    TestSupport::LogCapture log;
    EXPECT_FALSE(sync.link(master, master));
    EXPECT_FALSE(sync.link(slave, addItem(5)));  // a slave cannot lead
    EXPECT_FALSE(sync.link(addItem(5), master)); // a master cannot follow
    EXPECT_FALSE(sync.link(nullptr, slave));
    EXPECT_EQ(log.errors().size(), 4u);

    auto* widget = new QGraphicsWidget;
    widget->resize(10, 10);
    scene.addItem(widget);
    line.insertItem(line.findStickyPoint(QPointF(0, 60), widget), widget, false);
    ASSERT_TRUE(sync.link(master, widget));
    line.removeItem(widget);
    delete widget;
    EXPECT_EQ(sync.slavesOf(master), (QList<QGraphicsItem*>{slave, slave2}));
    sync.moveItem(line.findStickyPoint(QPointF(10, 10), master), master);
    EXPECT_DOUBLE_EQ(slave->x(), 10);
}

} // namespace
