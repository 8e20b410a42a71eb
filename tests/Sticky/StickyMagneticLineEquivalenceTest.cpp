// The magnetic line answers drops from cached, binary-searched edges; the reference builds an
// ordered set of edges for every query. They must agree on every drop.
#include "ReferenceMagneticLine.h"
#include "StickyTestSupport.h"

#include <random>

namespace {

class MagneticEquivalenceTest : public StickySceneTest
{
protected:
    // Applies the same change to both lines.
    template <typename F>
    void both(F&& change)
    {
        change(static_cast<StickyArea&>(fast));
        change(static_cast<StickyArea&>(reference));
    }

    void expectSameAnswer(const QPointF& pos, QGraphicsItem* item, const QList<QGraphicsItem*>& group)
    {
        const auto f = fast.findStickyPoint(pos, item, group);
        const auto r = reference.findStickyPoint(pos, item, group);
        ASSERT_EQ(f.area, &fast);
        ASSERT_EQ(r.area, &reference);
        ASSERT_EQ(f.index, r.index) << "drop at " << pos.x();
        ASSERT_EQ(f.pos.x(), r.pos.x()) << "drop at " << pos.x();
        ASSERT_EQ(f.pos.y(), r.pos.y());
        ASSERT_EQ(f.level, r.level);
        ++compared;
    }

    StickyMagneticLine fast;
    ReferenceMagneticLine reference;
    int compared = 0;
};

TEST_F(MagneticEquivalenceTest, RandomDropsGiveIdenticalPoints)
{
    std::mt19937 random(2024);
    // Repeated widths give ties, zero widths give collapsing edges.
    const double widths[] = {0.0, 0.0, 2.5, 5.0, 10.0, 10.0, 10.0, 33.25};
    std::uniform_int_distribution<int> pickWidth(0, 7);
    std::uniform_int_distribution<int> chance(0, 9);

    for (int round = 0; round < 12; ++round) {
        both([](StickyArea& a) { a.clear(); });
        const QPointF origin(std::uniform_real_distribution<double>(-50, 50)(random), round * 10.0);
        both([&](StickyArea& a) { a.setOrigin(origin); });
        QList<QGraphicsItem*> items;
        const int n = std::uniform_int_distribution<int>(0, 40)(random);
        for (int i = 0; i < n; ++i) {
            QGraphicsRectItem* item = addItem(widths[pickWidth(random)]);
            const bool placeholder = chance(random) == 0;
            const int index = std::uniform_int_distribution<int>(-1, i)(random);
            both([&](StickyArea& a) { a.insertItem(StickyArea::StickyPoint(&a, {}, 0, index), item, placeholder); });
            items.append(item);
        }
        // Half the rounds query before any layout, the other half after one.
        if (round % 2)
            both([](StickyArea& a) { a.updateLayout(nullptr); });

        const double right = fast.width() + 20.0;
        std::uniform_real_distribution<double> dropX(origin.x() - 20.0, right);
        for (int drop = 0; drop < 40; ++drop) {
            QGraphicsItem* dragged = items.isEmpty() ? nullptr : items.at(drop % items.size());
            double x = dropX(random);
            if (drop % 4 == 0 && dragged)
                x = dragged->scenePos().x(); // exactly on a packed edge after a layout
            if (drop % 8 == 1)
                x = origin.x();
            expectSameAnswer(QPointF(x, 3.0), dragged, {});
            if (items.size() >= 2)
                expectSameAnswer(QPointF(x, 3.0), items.at(1), {items.at(0), items.at(1)});
        }

        // A random move and removal between queries must not leave stale edges behind.
        if (!items.isEmpty()) {
            QGraphicsItem* moved = items.at(0);
            const int to = std::uniform_int_distribution<int>(0, items.size() - 1)(random);
            both([&](StickyArea& a) { a.moveItem(StickyArea::StickyPoint(&a, {}, 0, to), moved); });
            expectSameAnswer(QPointF(dropX(random), 0), moved, {});
            both([&](StickyArea& a) { a.removeItem(items.last()); });
            expectSameAnswer(QPointF(dropX(random), 0), moved, {});
        }
    }
    EXPECT_GT(compared, 300);
}

} // namespace
