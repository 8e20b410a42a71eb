#pragma once

#include <Util/Sticky/StickyListArea.h>

// One horizontal line of items, each at its own x, kept in left-to-right order (XOrder). A
// dropped item keeps the x it was dropped at (never left of the origin) and takes the y of
// its point; its neighbours do not move. Items are expected to be top-level scene items.
class EDITORUTIL_EXPORT StickyFreeLine : public StickyListArea
{
    Q_OBJECT

public:
    explicit StickyFreeLine(QObject* parent = nullptr);
    ~StickyFreeLine() override;

    using StickyArea::findStickyPoint;
    // index: how many leading items lie strictly left of pos.x; pos: (pos.x, origin.y). A
    // bisection of the ordered list: an item moved by hand (not through moveItem) counts at
    // its list place until the next updateLayout re-sorts.
    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item) override;
    StickyPoint itemPoint(QGraphicsItem* item) override;
    // nullptr when point.index is outside 0 ... count - 1.
    QGraphicsItem* itemAt(const StickyPoint& point) override;

protected:
    void insertItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void moveItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void removeItemInternal(QGraphicsItem* item) override;
    // Shifts every item by the change of origin since the last layout and re-sorts the list.
    void updateLayoutInner(QGraphicsItem* item) override;

private:
    void placeItem(const StickyPoint& point, QGraphicsItem* item) const;
    void sortAfterMoveOf(QGraphicsItem* item);
    void sortItems();

    QPointF m_appliedOrigin;
};
