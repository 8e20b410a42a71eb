#pragma once

#include <Util/Sticky/StickyArea.h>

#include <QList>
#include <QObject>
#include <QPointer>

#include <functional>

class QGraphicsItem;
class QGraphicsScene;
class StickyLinksSynchronizer;

// Drives one drag of one or several items across the areas it is given.
//
// startDrag takes the items out of their areas (remembering each one's point) and the areas
// close up. Every dragProcess moves the items with the cursor, keeping their offsets to the
// grabbed item, and looks for the target: the nearest answer of the areas to the grabbed
// item's new position; an area whose isAcceptable refuses the dragged items is no target. Only when the target (area,
// position, level or index) really changes is the placeholder moved, in areas that need one, and targetChanged emitted;
// a mouse move that keeps the target lays nothing out. While sticking, the items are shown at the target; while the
// snap modifier (Alt unless set otherwise) is held they follow the cursor freely on the line under it, and the target's
// x is the cursor's. With a snap distance, a sticking drag first moves the grabbed item so that its left or right edge
// meets the nearest edge within that distance: an edge of another item of the areas (not the dragged ones nor their
// slaves, and no placeholder) or a line of snapLines. finishDrag puts the items into the target area in one batch and
// emits dragFinished once; abortDrag (also Escape on the scene, or an area or a dragged QGraphicsObject destroyed
// mid-drag) puts every item back where it stood, with its level and index, and emits nothing.
//
// Linked items: with a synchronizer, the slaves of dragged masters follow them on screen
// during the drag and are placed beside them by the synchronizer when the drag finishes; an
// aborted drag leaves them and their links as they were.
class EDITORUTIL_EXPORT StickyMoveController : public QObject
{
    Q_OBJECT

public:
    // Makes the placeholder shown for a drag of `items` grabbed by `grabbed`; the controller
    // puts it in the grabbed item's scene and deletes it when the drag ends.
    using PlaceholderFactory =
        std::function<QGraphicsItem*(QGraphicsItem* grabbed, const QList<QGraphicsItem*>& items)>;

    explicit StickyMoveController(QObject* parent = nullptr);
    // Aborts a drag in progress.
    ~StickyMoveController() override;

    // Areas the items come from and may go to, nearest answer first, ties to the earlier area.
    void addArea(StickyArea* area);
    // Aborts a drag that involves the area.
    void removeArea(StickyArea* area);
    void setSynchronizer(StickyLinksSynchronizer* synchronizer);
    // Qt::NoModifier: never suspend snapping.
    void setSnapSuspendModifier(Qt::KeyboardModifiers modifier);
    // Scene units; 0 (the default): no snapping, the areas alone decide the x.
    void setSnapDistance(double distance);
    // The default is a grey rectangle the size of the grabbed item.
    void setPlaceholderFactory(PlaceholderFactory factory);

    // `grabbed` is the item under the cursor (added to `items` if missing). Refused with a log
    // line when a drag is in progress, there is no item, or an item stands in none of the areas.
    bool startDrag(QGraphicsItem* grabbed, const QList<QGraphicsItem*>& items, const QPointF& scenePos);
    void dragProcess(const QPointF& scenePos, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    // False (and the drag aborted) when no target was found.
    bool finishDrag();
    void abortDrag();

    bool isDragging() const;
    // The point the grabbed item would drop at; its area is nullptr before the first target.
    StickyArea::StickyPoint target() const;
    bool isSnapSuspended() const;
    // Whether the last move put an edge of the grabbed item on an edge or a snap line.
    bool isSnapped() const;

    // Further x's (scene) to snap to, a playhead or the start of the time; asked on every move.
    std::function<QList<double>()> snapLines;

signals:
    void dragStarted();
    void targetChanged();
    void dragFinished(QList<QGraphicsItem*> items);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Taken
    {
        QGraphicsItem* item = nullptr;
        QPointer<StickyArea> area;
        StickyArea::StickyPoint point; // itemPoint just before it was taken out
        QPointF pos;                   // scene position before the drag
        QPointF offset;                // to the grabbed item
    };
    struct Follower
    {
        QGraphicsItem* item = nullptr;
        QPointF pos;
    };

    StickyArea* areaHolding(const QGraphicsItem* item) const;
    StickyArea::StickyPoint findTarget(const QPointF& lead, bool free) const;
    QPointF snapped(const QPointF& lead);
    void showPlaceholder();
    void removePlaceholder();
    void restore();
    void end();
    void onAreaDestroyed(QObject* area);
    void onItemDestroyed(QGraphicsItem* item);

    QList<QPointer<StickyArea>> m_areas;
    QPointer<StickyLinksSynchronizer> m_synchronizer;
    Qt::KeyboardModifiers m_snapModifier = Qt::AltModifier;
    PlaceholderFactory m_placeholderFactory;

    bool m_dragging = false;
    QGraphicsItem* m_grabbed = nullptr;
    QList<QGraphicsItem*> m_items; // as given, the grabbed one included
    QList<Taken> m_taken;          // in the order they were taken out
    QList<Follower> m_followers;
    QPointF m_grabOffset; // grabbed item's position minus the cursor at the start
    QPointF m_lead;       // where the cursor puts the grabbed item now
    QPointF m_grabbedStart;
    bool m_suspended = false;
    double m_snapDistance = 0.0;
    bool m_snapped = false;
    StickyArea::StickyPoint m_target;
    QGraphicsItem* m_placeholder = nullptr;
    QPointer<StickyArea> m_placeholderArea;
    QPointer<QGraphicsScene> m_scene;
};
