#pragma once

#include <Util/Sticky/StickyListArea.h>

#include <QRectF>
#include <QSizeF>

#include <functional>
#include <vector>

// Flows its items in list order into rows (or columns) of a fixed extent, wrapping to the next
// row (column) when an item would overflow, with a spacing between items and between rows
// (columns). A drop lands on the place of the nearest item; a dragged group is shown as a
// small fanned pile.
class EDITORUTIL_EXPORT StickyGrid : public StickyListArea
{
    Q_OBJECT

public:
    enum Direction : int
    {
        Columns = 0, // down, wrapping to a new column past the grid's height
        Rows = 1     // right, wrapping to a new row past the grid's width
    };

    explicit StickyGrid(QObject* parent = nullptr);
    ~StickyGrid() override;

    // The group's top-left corner snaps, not the grabbed item.
    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item,
                                const QList<QGraphicsItem*>& items) override;
    // The place of the item nearest to pos (Manhattan length); the origin competes first, with
    // index 0, and ties keep the earlier candidate. Answered from an index of the rows (items
    // of equal y, by x) searched outwards from pos.y, rebuilt on the first drop after a change;
    // while updates are locked the items are walked instead, and an item moved by hand is
    // seen after the next updateLayout.
    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item) override;
    StickyPoint itemPoint(QGraphicsItem* item) override;
    // The item at point.index clamped to the list; nullptr only when the grid is empty.
    QGraphicsItem* itemAt(const StickyPoint& point) override;
    // All at the same point, last first, so the group keeps its own order there.
    void insertItems(const StickyPoint& point, QGraphicsItem* item, const QList<QGraphicsItem*>& items) override;
    // Sorts `items` by grid order and fans the first five out up and right from `item`.
    void alignItems(QGraphicsItem* item, QList<QGraphicsItem*>& items) const override;
    // The width set with setWidth, not measured from the items.
    double width() const override;

    Direction direction() const;
    // Lays out every time, also when the direction is unchanged.
    void setDirection(Direction d);
    // Lays out only for a row-filling grid.
    void setWidth(double w);
    // Lays out only for a column-filling grid.
    void setHeight(double h);
    QPointF spacing() const;
    void setSpacing(const QPointF& s);

    // Union of the items' bounding rectangles in parent coordinates; null when empty.
    QRectF rect();
    // Extent actually covered by the items.
    QSizeF size();
    // Does not lay out; callers call updateLayout.
    void sortItems(const std::function<bool(QGraphicsItem*, QGraphicsItem*)>& less);

protected:
    void insertItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void moveItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void removeItemInternal(QGraphicsItem* item) override;
    void updateLayoutInner(QGraphicsItem* item) override;

private:
    struct Place
    {
        double x;
        int index; // the first item at this x of the row
    };
    struct Row
    {
        double y;
        std::vector<Place> places; // by x, distinct
    };
    void buildRows();

    std::vector<Row> m_rows; // by y, distinct
    bool m_rowsValid = false;
    Direction m_direction = Rows;
    QSizeF m_size;
    QPointF m_spacing;
};
