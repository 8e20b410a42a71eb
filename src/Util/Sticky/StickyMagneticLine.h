#pragma once

#include <Util/Sticky/StickyListArea.h>

#include <vector>

// Items packed edge to edge along one line, in list order, from the origin: there are never
// gaps, so a drop chooses a slot between two items (an edge), not a free x. The list keeps the
// order of insertions and moves; updateLayout re-packs the whole line.
//
// The edges a drop chooses from are cached and rebuilt on the first query after the line
// changed (insert, move, remove, layout, origin), and measured afresh on every query while
// updates are locked. Outside a locked batch, a change of an item's width is seen by drops
// after the next updateLayout(item), which callers run after every change anyway.
class EDITORUTIL_EXPORT StickyMagneticLine : public StickyListArea
{
    Q_OBJECT

public:
    explicit StickyMagneticLine(QObject* parent = nullptr);
    ~StickyMagneticLine() override;

    // The left edge of the whole group, not the grabbed item, snaps to an edge.
    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item,
                                const QList<QGraphicsItem*>& items) override;
    // The greatest edge <= pos.x (the first edge left of all edges); index counts distinct
    // edges, so zero-width items and placeholders add no slot.
    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item) override;
    StickyPoint itemPoint(QGraphicsItem* item) override;
    // The item at point.index clamped to the list; nullptr only when the line is empty.
    QGraphicsItem* itemAt(const StickyPoint& point) override;
    // Inserts the group packed one after the other from point, each through point.area.
    void insertItems(const StickyPoint& point, QGraphicsItem* item, const QList<QGraphicsItem*>& items) override;
    // Lays a dragged group out as a packed strip around the grabbed item, at its y.
    void alignItems(QGraphicsItem* item, QList<QGraphicsItem*>& items) const override;
    // Scene x of the line's right end (origin.x + total duration), not a length; 0.0 when empty.
    double width() const override;

protected:
    void insertItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void moveItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void removeItemInternal(QGraphicsItem* item) override;
    void updateLayoutInner(QGraphicsItem* item) override;

    // Horizontal extent of an item; by default the width of its bounding rectangle.
    virtual double itemDuration(QGraphicsItem* item) const;

private:
    const std::vector<double>& edges();

    std::vector<double> m_edges; // sorted, distinct
    double m_edgesOriginX = 0.0;
    bool m_edgesValid = false;
};
