#include "StickyTestSupport.h"

#include <TestSupport.h>

#include <Util/Sticky/StickyLinksSynchronizer.h>
#include <Util/Sticky/StickyMagneticLine.h>
#include <Util/Sticky/StickyMoveController.h>
#include <Util/Sticky/StickyMultiLine.h>

#include <QGraphicsWidget>
#include <QKeyEvent>
#include <QSignalSpy>

#include <memory>

namespace {

// A timeline of three levels (bands 0-40, 48-88, 96-136) holding clips a (x 0) and b (x 100)
// on level 0, c (x 0, linked to a) on level 1 and one at x 300 on level 2, with placeholders;
// a packed strip of two clips from y 400. Each test row builds its own.
struct Timeline
{
    explicit Timeline(bool allowEmpty = true)
    {
        line.setPlaceholderNeeded(true);
        line.setAllowEmptyLevels(allowEmpty);
        a = put(0, 10, 0);
        b = put(100, 10, 0);
        c = put(0, 60, 1);
        put(300, 110, 2);
        strip.setOrigin(QPointF(0, 400));
        for (int i = 0; i < 2; ++i) {
            QGraphicsItem* e = addItem(50, 20);
            strip.insertItem(strip.findStickyPoint(QPointF(500, 400), e), e, false);
        }
        strip.updateLayout(nullptr);
        sync.watch(&line);
        sync.watch(&strip);
        sync.link(a, c);
        controller.addArea(&line);
        controller.addArea(&strip);
        controller.setSynchronizer(&sync);
        QObject::connect(&controller, &StickyMoveController::dragFinished,
                         [this](const QList<QGraphicsItem*>& items) { finished.append(items); });
    }
    QGraphicsRectItem* addItem(double w, double h = 10.0)
    {
        auto* item = new QGraphicsRectItem(0.0, 0.0, w, h);
        item->setPen(Qt::NoPen);
        scene.addItem(item);
        return item;
    }

    QGraphicsItem* put(double x, double y, int level)
    {
        QGraphicsItem* e = addItem(40, 40);
        const StickyArea::StickyPoint p = line.findStickyPoint(QPointF(x, y), e);
        line.insertItem(StickyArea::StickyPoint(&line, p.pos, line.levelCount() > level ? level : -1 - level), e,
                        false);
        return e;
    }

    // Everything a user could see of the areas: each item's position and level, the levels,
    // the link and the scene's items.
    QString state()
    {
        QString s;
        for (QGraphicsItem* e : scene.items(Qt::AscendingOrder))
            s += QStringLiteral("(%1,%2,%3)").arg(e->x()).arg(e->y()).arg(line.itemLevel(e));
        return s
               + QStringLiteral(" levels %1 strip %2 linked %3")
                     .arg(line.levelCount())
                     .arg(strip.count())
                     .arg(sync.masterOf(c) == a);
    }

    QGraphicsScene scene;
    StickyMultiLine line;
    StickyMagneticLine strip;
    StickyLinksSynchronizer sync;
    StickyMoveController controller;
    QSignalSpy started{&controller, &StickyMoveController::dragStarted};
    QSignalSpy changed{&controller, &StickyMoveController::targetChanged};
    QList<QList<QGraphicsItem*>> finished; // what each dragFinished carried
    QGraphicsItem* a = nullptr;
    QGraphicsItem* b = nullptr;
    QGraphicsItem* c = nullptr;
};

TEST(StickyMoveControllerTest, DropsOnEachLevelAndBetweenLevels)
{
    struct Row
    {
        const char* name;
        bool allowEmpty;
        QPointF to; // cursor; b was grabbed at its top-left corner
        QPointF landed;
        int level;
        int levels;
    };
    const Row rows[] = {
        {"same_level_further_right", true, {200, 5}, {200, 0}, 0, 3},
        {"onto_level_1", true, {150, 50}, {150, 48}, 1, 3},
        {"onto_level_2", true, {150, 100}, {150, 96}, 2, 3},
        {"between_levels_opens_one", true, {150, 44}, {150, 48}, 1, 4},
        {"past_the_last_opens_one", true, {150, 200}, {150, 144}, 3, 4},
        {"spacing_near_level_1_without_empty_levels", false, {150, 46}, {150, 48}, 1, 3},
        {"past_the_last_without_empty_levels", false, {150, 200}, {150, 96}, 2, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Timeline w(row.allowEmpty);
        ASSERT_TRUE(w.controller.startDrag(w.b, {w.b}, w.b->scenePos()));
        w.controller.dragProcess(row.to);
        ASSERT_TRUE(w.controller.finishDrag());
        EXPECT_EQ(w.b->pos(), row.landed);
        EXPECT_EQ(w.line.itemLevel(w.b), row.level);
        EXPECT_EQ(w.line.levelCount(), row.levels);
        EXPECT_EQ(w.finished.size(), 1);
    }
}

TEST(StickyMoveControllerTest, SignalsCountOnlyRealChanges)
{
    Timeline w;
    ASSERT_TRUE(w.controller.startDrag(w.b, {w.b}, QPointF(110, 10)));
    w.controller.dragProcess(QPointF(110, 10)); // first target
    w.controller.dragProcess(QPointF(110, 30)); // same level, same x: no change
    w.controller.dragProcess(QPointF(110, 12));
    w.controller.dragProcess(QPointF(130, 12)); // new x
    w.controller.dragProcess(QPointF(130, 60)); // level 1
    w.controller.dragProcess(QPointF(130, 70));
    ASSERT_TRUE(w.controller.finishDrag());
    EXPECT_EQ(w.started.count(), 1);
    EXPECT_EQ(w.changed.count(), 3);
    ASSERT_EQ(w.finished.size(), 1);
    EXPECT_EQ(w.finished.at(0), QList<QGraphicsItem*>{w.b});
    EXPECT_EQ(w.b->pos(), QPointF(120, 48));
    EXPECT_EQ(w.scene.items().size(), 6); // no placeholder left
}

TEST(StickyMoveControllerTest, HoldingTheModifierSuspendsSnappingUntilReleased)
{
    Timeline w;
    QGraphicsItem* dragged = w.addItem(20, 20);
    w.strip.insertItem(w.strip.findStickyPoint(QPointF(500, 400), dragged), dragged, false);
    w.strip.updateLayout(nullptr);
    w.controller.setSnapSuspendModifier(Qt::ShiftModifier);
    ASSERT_TRUE(w.controller.startDrag(dragged, {dragged}, dragged->scenePos()));
    w.controller.dragProcess(QPointF(37, 405), Qt::AltModifier); // not the chosen key: snaps
    EXPECT_EQ(dragged->pos(), QPointF(0, 400));
    w.controller.dragProcess(QPointF(37, 405), Qt::ShiftModifier);
    EXPECT_TRUE(w.controller.isSnapSuspended());
    EXPECT_EQ(dragged->pos(), QPointF(37, 400));
    w.controller.dragProcess(QPointF(61, 405), Qt::ShiftModifier);
    EXPECT_EQ(dragged->pos(), QPointF(61, 400));
    w.controller.dragProcess(QPointF(61, 405));
    EXPECT_EQ(dragged->pos(), QPointF(50, 400));
    EXPECT_EQ(w.changed.count(), 4);
    ASSERT_TRUE(w.controller.finishDrag());
    EXPECT_EQ(*std::next(w.strip.begin()), dragged);
}

TEST(StickyMoveControllerTest, AbortRestoresEverythingExactly)
{
    struct Row
    {
        const char* name;
        bool allowEmpty;
        QPointF to;
        bool escape;
    };
    const Row rows[] = {
        {"over_a_new_level", true, {30, 50}, false},
        {"onto_the_strip", true, {30, 405}, false},
        {"escape_key", true, {30, 60}, true},
        {"level_closed_by_taking_out", false, {30, 300}, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Timeline w(row.allowEmpty);
        const QString before = w.state();
        // a and the lone clip on level 2 leave; c follows a as its slave.
        QGraphicsItem* lone = w.line.levelItems(2).first();
        ASSERT_TRUE(w.controller.startDrag(w.a, {w.a, lone}, QPointF(5, 5)));
        w.controller.dragProcess(row.to);
        w.controller.dragProcess(row.to + QPointF(7, 0));
        EXPECT_NE(w.state(), before);
        if (row.escape) {
            QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
            QCoreApplication::sendEvent(&w.scene, &escape);
        } else {
            w.controller.abortDrag();
        }
        EXPECT_FALSE(w.controller.isDragging());
        EXPECT_EQ(w.state(), before);
        EXPECT_EQ(w.finished.size(), 0);
    }
}

TEST(StickyMoveControllerTest, AnEdgeSnapsWithinTheDistanceToOtherItemsAndSnapLines)
{
    struct Row
    {
        const char* name;
        bool grabA; // else b (a drags its slave c along)
        QPointF to; // cursor = the grabbed item's top-left
        Qt::KeyboardModifiers modifiers;
        double landed;
        bool snapped;
    };
    const Row rows[] = {
        {"left_edge_to_a_right_edge", false, {43, 5}, Qt::NoModifier, 40, true},
        {"right_edge_to_a_left_edge", false, {255, 5}, Qt::NoModifier, 260, true},
        {"left_edge_to_a_snap_line", false, {193, 5}, Qt::NoModifier, 200, true},
        {"just_out_of_reach", false, {148, 5}, Qt::NoModifier, 148, false},
        {"alt_suspends_snapping", false, {43, 5}, Qt::AltModifier, 43, false},
        // Its slave and its placeholder move along: neither is an edge to snap to.
        {"nothing_in_reach_of_a", true, {221, 5}, Qt::NoModifier, 221, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Timeline w;
        w.controller.setSnapDistance(10);
        w.controller.snapLines = [] { return QList<double>{200}; };
        QGraphicsItem* grabbed = row.grabA ? w.a : w.b;
        ASSERT_TRUE(w.controller.startDrag(grabbed, {grabbed}, grabbed->scenePos()));
        w.controller.dragProcess(row.to - QPointF(1, 0), row.modifiers);
        w.controller.dragProcess(row.to, row.modifiers);
        EXPECT_DOUBLE_EQ(grabbed->x(), row.landed);
        EXPECT_EQ(w.controller.isSnapped(), row.snapped);
        ASSERT_TRUE(w.controller.finishDrag());
        EXPECT_DOUBLE_EQ(grabbed->x(), row.landed);
        EXPECT_FALSE(w.controller.isSnapped());
    }
}

// Takes nothing: a track of another kind.
class RefusingLine : public StickyMultiLine
{
public:
    bool isAcceptable(const QList<QGraphicsItem*>&) const override { return false; }
};

TEST(StickyMoveControllerTest, AnAreaThatRefusesTheItemsIsNoTarget)
{
    Timeline w;
    RefusingLine refusing;
    refusing.setOrigin(QPointF(0, 600));
    refusing.setLevelCount(1);
    w.controller.addArea(&refusing);
    ASSERT_TRUE(w.controller.startDrag(w.b, {w.b}, w.b->scenePos()));
    w.controller.dragProcess(QPointF(50, 605));
    EXPECT_EQ(w.controller.target().area, &w.strip);
    ASSERT_TRUE(w.controller.finishDrag());
    EXPECT_TRUE(w.strip.contains(w.b));
    EXPECT_EQ(refusing.count(), 0u);
}

TEST(StickyMoveControllerTest, GroupsKeepTheirOffsetsAndSlavesFollowTheirMaster)
{
    Timeline w;
    ASSERT_TRUE(w.controller.startDrag(w.a, {w.a, w.b}, QPointF(0, 0)));
    w.controller.dragProcess(QPointF(20, 50));
    EXPECT_DOUBLE_EQ(w.c->x(), 20); // on screen already
    ASSERT_TRUE(w.controller.finishDrag());
    EXPECT_EQ(w.a->pos(), QPointF(20, 48));
    EXPECT_EQ(w.b->pos(), QPointF(120, 48));
    EXPECT_EQ(w.c->pos(), QPointF(20, 48)); // beside its master, on its own level
    EXPECT_EQ(w.line.itemLevel(w.c), 1);
    EXPECT_EQ(w.sync.masterOf(w.c), w.a);
}

TEST(StickyMoveControllerTest, BadInputIsLoggedAndLosesNothing)
{
    Timeline w;
    TestSupport::LogCapture log;
    EXPECT_FALSE(w.controller.startDrag(nullptr, {}, {}));
    EXPECT_FALSE(w.controller.startDrag(w.addItem(5), {}, {}));
    w.controller.dragProcess({});
    EXPECT_FALSE(w.controller.finishDrag());
    w.controller.abortDrag();
    EXPECT_EQ(log.errors().size(), 5u);
    EXPECT_EQ(w.started.count(), 0);

    ASSERT_TRUE(w.controller.startDrag(w.b, {w.b}, {}));
    EXPECT_FALSE(w.controller.startDrag(w.a, {w.a}, {}));
    w.controller.dragProcess({250, 5});
    EXPECT_TRUE(w.controller.finishDrag());
    EXPECT_FALSE(w.controller.finishDrag());
    EXPECT_EQ(log.errors().size(), 7u);

    // A dragged item destroyed mid-drag: the others go back, the drag ends.
    auto* widget = new QGraphicsWidget;
    widget->resize(40, 40);
    w.scene.addItem(widget);
    w.line.insertItem(w.line.findStickyPoint(QPointF(150, 100), widget), widget, false);
    const QPointF bAt = w.b->pos();
    ASSERT_TRUE(w.controller.startDrag(widget, {widget, w.b}, {}));
    w.controller.dragProcess({400, 60});
    delete widget;
    EXPECT_FALSE(w.controller.isDragging());
    EXPECT_EQ(w.b->pos(), bAt);
    EXPECT_TRUE(w.line.contains(w.b));
    EXPECT_EQ(w.line.count(), 4u);

    // An area destroyed mid-drag: the drag ends, the items of the live areas go back.
    auto doomed = std::make_unique<StickyMultiLine>();
    QGraphicsItem* e = w.addItem(10);
    doomed->insertItem(doomed->findStickyPoint({0, 0}, e), e, false);
    w.controller.addArea(doomed.get());
    ASSERT_TRUE(w.controller.startDrag(e, {e, w.b}, {}));
    doomed.reset();
    EXPECT_FALSE(w.controller.isDragging());
    EXPECT_TRUE(w.line.contains(w.b));
    EXPECT_EQ(w.finished.size(), 1);
    EXPECT_TRUE(log.containsError("destroyed during"));
}

} // namespace
