#pragma once

#include <Util/Sticky/StickyListArea.h>

#include <QMap>

// An area made of other areas (its slots), each a sub-area with a root graphics item. A drop
// is offered to every slot that accepts the item and the nearest answer wins; the item then
// lives in that sub-area while the composite remembers it too. Points made by the composite
// carry the composite as area and a slot number as index.
//
// The composite owns neither its sub-areas nor their roots; a sub-area that is destroyed
// leaves its slot.
class EDITORUTIL_EXPORT StickyCompositeArea : public StickyListArea
{
    Q_OBJECT

public:
    explicit StickyCompositeArea(QObject* parent = nullptr);
    ~StickyCompositeArea() override;

    bool isAcceptable(const QList<QGraphicsItem*>& items) const override;
    using StickyArea::findStickyPoint;
    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item) override;
    StickyPoint itemPoint(QGraphicsItem* item) override;
    QGraphicsItem* itemAt(const StickyPoint& point) override;

    // The new slot's number is 0 for the first, else the highest number + 1. No relayout. An
    // area that is, or holds, this composite is refused.
    void addStickySlot(StickyArea* area, QGraphicsItem* root);
    // Items of the sub-area stay in the composite's list.
    void removeStickySlot(StickyArea* area);
    // The root of the slot holding `item`, nullptr when no sub-area holds it.
    QGraphicsItem* rootOf(QGraphicsItem* item);

protected:
    void insertItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void moveItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void removeItemInternal(QGraphicsItem* item) override;
    void updateLayoutInner(QGraphicsItem* item) override;

private:
    StickyArea* itemSlot(QGraphicsItem* item) const;
    // Whether `area` is `composite` or holds it in a slot at any depth.
    static bool reaches(const StickyArea* area, const StickyCompositeArea* composite);
    void forgetArea(QObject* area);

    QMap<int, StickyArea*> m_slots;
    QMap<StickyArea*, int> m_slotOf;
    QMap<int, QGraphicsItem*> m_roots;
};
