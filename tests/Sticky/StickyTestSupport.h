#pragma once

#include <Util/Sticky/StickyArea.h>

#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QPen>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <ostream>

inline void PrintTo(const StickyArea::StickyPoint& p, std::ostream* os)
{
    *os << "{area " << static_cast<const void*>(p.area) << ", pos (" << p.pos.x() << ", " << p.pos.y() << "), level "
        << p.level << ", index " << p.index << "}";
}

// An area of any layout that counts the relayouts the base asks for.
template <typename Area>
class CountingLayouts : public Area
{
public:
    int layouts = 0;

protected:
    void updateLayoutInner(QGraphicsItem* item) override
    {
        ++layouts;
        Area::updateLayoutInner(item);
    }
};

// A real scene whose rectangles measure exactly their given size (no pen margin).
class StickySceneTest : public ::testing::Test
{
protected:
    QGraphicsRectItem* addItem(double w, double h = 10.0, double x = 0.0, double y = 0.0)
    {
        auto* item = new QGraphicsRectItem(0.0, 0.0, w, h);
        item->setPen(Qt::NoPen);
        item->setPos(x, y);
        scene.addItem(item);
        return item;
    }

    QGraphicsScene scene;
};

// A scene and one area of a layout, with spies on the area's height and item count.
template <typename Area>
class StickyAreaFixture : public StickySceneTest
{
protected:
    QList<QGraphicsItem*> items() const { return QList<QGraphicsItem*>(area.begin(), area.end()); }

    Area area;
    QSignalSpy heightSpy{&area, &StickyArea::heightChanged};
    QSignalSpy countSpy{&area, &StickyArea::itemsCountChanged};
};

// Every field of a point; the arguments may be any expressions.
#define EXPECT_POINT(point, expectedArea, expectedX, expectedY, expectedLevel, expectedIndex)                          \
    do {                                                                                                               \
        const StickyArea::StickyPoint actual_ = (point);                                                               \
        EXPECT_EQ(actual_.area, (expectedArea));                                                                       \
        EXPECT_DOUBLE_EQ(actual_.pos.x(), (expectedX));                                                                \
        EXPECT_DOUBLE_EQ(actual_.pos.y(), (expectedY));                                                                \
        EXPECT_EQ(actual_.level, (expectedLevel));                                                                     \
        EXPECT_EQ(actual_.index, (expectedIndex));                                                                     \
    } while (false)
