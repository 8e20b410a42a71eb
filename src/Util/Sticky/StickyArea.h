#pragma once

#include <Util/EditorUtilExport.h>

#include <QList>
#include <QObject>
#include <QPointF>
#include <QSet>

#include <cstdint>

class QGraphicsItem;
class QRectF;

// An area of a QGraphicsScene that owns a set of graphics items and decides where each of
// them stands: it maps a drop position to a StickyPoint, places items at such points, keeps
// them laid out and reports its height and item count.
//
// The area never owns its items nor adds them to a scene; whoever deletes an item removes it
// from the area first. Callers bracket batches with lockUpdate() ... unlockUpdate() and then
// call updateLayout(nullptr) once.
class EDITORUTIL_EXPORT StickyArea : public QObject
{
    Q_OBJECT

public:
    enum VerticalDirection : int
    {
        Down = 1, // grows downwards from the origin, along the scene's y axis
        Up = -1
    };

    // Where an item dropped at some scene position would stick.
    struct StickyPoint
    {
        StickyPoint() = default;
        explicit StickyPoint(StickyArea* owner, const QPointF& p = QPointF(), int lvl = 0, int idx = -1)
            : area(owner), pos(p), level(lvl), index(idx)
        {}

        StickyArea* area = nullptr;
        QPointF pos;    // value for the item's QGraphicsItem::pos
        int level = 0;  // line (row) inside the area
        int index = -1; // place in the area's ordered list; -1: not in the area / no place
    };

    explicit StickyArea(QObject* parent = nullptr);
    ~StickyArea() override;

    virtual bool onDirection(const QPointF& p) const;
    virtual bool isAcceptable(const QList<QGraphicsItem*>& items) const;
    virtual bool contains(const QGraphicsItem* item) const = 0;
    virtual QList<QGraphicsItem*>::const_iterator begin() const = 0;
    virtual QList<QGraphicsItem*>::iterator begin() = 0;
    virtual QList<QGraphicsItem*>::const_iterator end() const = 0;
    virtual QList<QGraphicsItem*>::iterator end() = 0;
    // Drop of a group: `item` is the one under the cursor, `items` the whole group.
    virtual StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item,
                                        const QList<QGraphicsItem*>& items);
    virtual StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item) = 0;
    virtual StickyPoint itemPoint(QGraphicsItem* item) = 0;
    virtual QGraphicsItem* itemAt(const StickyPoint& point) = 0;
    virtual void insertItems(const StickyPoint& point, QGraphicsItem* item, const QList<QGraphicsItem*>& items);
    virtual void moveItems(const StickyPoint& point, QGraphicsItem* item, const QList<QGraphicsItem*>& items);
    virtual void alignItems(QGraphicsItem* item, QList<QGraphicsItem*>& items) const;
    // Right edge of the rightmost item, measured from origin().x(); 0.0 when empty.
    virtual double width() const;
    virtual bool placeholderNeeded() const;
    virtual bool isMovingHolded(const QRectF& rect) const;
    virtual void storeKeyState();
    virtual void resetKeyState();

    // Does not lay out; the layout's insertItemInternal decides that, already seeing a
    // placeholder among placeholders(). Emits itemsCountChanged().
    void insertItem(const StickyPoint& point, QGraphicsItem* item, bool placeholder);
    void moveItem(const StickyPoint& point, QGraphicsItem* item);
    // Emits itemsCountChanged(), also for an item the area does not hold.
    void removeItem(QGraphicsItem* item);
    void clear();
    std::uint64_t count() const;
    bool empty() const;

    // `item` names the item that changed; nullptr means the whole area.
    void updateLayout(QGraphicsItem* item);
    void lockUpdate();
    // Only clears the flag (it is not a counter) and does not lay out.
    void unlockUpdate();
    bool isLocked() const;

    QPointF origin() const;
    void setOrigin(const QPointF& p);
    VerticalDirection verticalDirection() const;
    void setVerticalDirection(VerticalDirection d);

    // Signed extent of the item reaching furthest from the origin in the vertical direction.
    double height() const;
    void enableHeightTracking(bool enabled);
    bool heightTracking() const;

    void setPlaceholderNeeded(bool needed);
    void setAllowEmptyLevels(bool allow);
    bool isEmptyLevelsAllowed() const;

signals:
    void heightChanged(double height);
    void itemsCountChanged();

protected:
    virtual void insertItemInternal(const StickyPoint& point, QGraphicsItem* item) = 0;
    virtual void moveItemInternal(const StickyPoint& point, QGraphicsItem* item) = 0;
    virtual void removeItemInternal(QGraphicsItem* item) = 0;
    virtual void updateLayoutInner(QGraphicsItem* item) = 0;
    // What height() answers; by default the signed extent of the item reaching furthest.
    virtual double heightInner() const;

    const QSet<QGraphicsItem*>& placeholders() const;

    // The point every findStickyPoint and itemPoint starts from.
    StickyPoint defaultPoint() { return StickyPoint(this); }
    // Where the top-left corner of a dragged group lands when `item` is dropped at pos; pos
    // itself for an empty group.
    static QPointF groupDropPosition(const QPointF& pos, QGraphicsItem* item, const QList<QGraphicsItem*>& items);
    // The item's scene position and its first place in `items` (-1 when absent).
    StickyPoint listItemPoint(const QList<QGraphicsItem*>& items, QGraphicsItem* item);

private:
    void updateHeight();
    double itemExtent(const QGraphicsItem* item) const;

    QPointF m_origin;
    VerticalDirection m_verticalDirection = Down;
    QSet<QGraphicsItem*> m_placeholders;
    bool m_locked = false;
    bool m_heightTracking = false;
    double m_trackedHeight = 0.0;
    bool m_placeholderNeeded = false;
    bool m_allowEmptyLevels = true;
};
