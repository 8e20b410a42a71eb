#pragma once

#include <Util/Interfaces/EditorModel.h>
#include <Util/Sticky/StickyCompositeArea.h>

#include <QGraphicsView>

#include <cmath>
#include <map>
#include <vector>

class QGraphicsLineItem;
class QGraphicsRectItem;
class QMimeData;
class StickyFreeLine;

namespace Sandbox {

class ClipItem;

// The timeline: one sticky free line per track of the model's timeline, joined in a
// composite area that picks the track nearest a drop. Clips are dragged within and between
// tracks of their kind; edges snap to other clips' edges, the playhead and the start (Alt
// held: no snapping); Escape aborts a drag; a clip's linked sound moves with it. The model is
// only changed when a drag ends, and every change of the timeline rebuilds the picture.
class TimelineView : public QGraphicsView, private Model::View<Timeline::Object>
{
    Q_OBJECT

public:
    static constexpr double pixelsPerSecond = 80.0;
    static constexpr double trackHeight = 46.0;
    static constexpr double rulerHeight = 24.0;
    static constexpr double snapDistance = 10.0; // pixels
    static constexpr double headerWidth = 120.0; // track names, left of time 0

    TimelineView(Model::Host& host, QWidget* parent = nullptr);
    ~TimelineView() override;

    void setTimeline(const Timeline::Object* timeline);
    const Timeline::Object* timeline() const { return m_timeline; }

    // Puts a clip of `file` (its first video stream, else its first audio stream) at
    // `position` on `track`, with its sound on the native audio track, linked to it.
    const Timeline::Clip* placeFile(const Media::File* file, Types::Time position, const Timeline::Track* track);

    static double xOf(Types::Time time)
    {
        return headerWidth + double(time) * pixelsPerSecond / Types::TimeUnitsPerSecond;
    }
    static Types::Time timeOf(double x)
    {
        return Types::Time(std::llround((x - headerWidth) * Types::TimeUnitsPerSecond / pixelsPerSecond));
    }
    // The track drawn at row `row`, and the row's middle in scene coordinates.
    const Timeline::Track* trackAt(int row) const;
    int rowOf(const Timeline::Track* track) const;
    double rowCenter(int row) const { return rulerHeight + (row + 0.5) * trackHeight; }
    // Where a point of the scene is in the viewport (for drops and scripted drags).
    QPoint viewportPoint(const QPointF& scenePoint) const { return mapFromScene(scenePoint); }
    // The point of the viewport over `clip`, `fraction` of its length from its start.
    QPoint clipPoint(const Timeline::Clip* clip, double fraction = 0.5) const;

    Types::Time playhead() const { return m_playhead; }
    void setPlayhead(Types::Time time);
    const Timeline::Clip* selectedClip() const { return m_selected; }
    void selectClip(const Timeline::Clip* clip);
    bool dragging() const { return m_drag.item != nullptr; }

Q_SIGNALS:
    // The model's timeline changed (and the picture was rebuilt).
    void timelineChanged();
    void selectionChanged(const Timeline::Clip* clip);
    void playheadMoved(Types::Time time);
    // Media dropped from the bin or the desktop, to be placed at `time` on `track`.
    void filesDropped(const QStringList& paths, Types::Time time, const Timeline::Track* track);
    // A drag ended: moved (or aborted), and whether an edge snapped.
    void dragEnded(const Timeline::Clip* clip, bool moved, bool snapped);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    struct Lane
    {
        const Timeline::Track* track;
        StickyFreeLine* line;
        QGraphicsRectItem* background;
    };
    struct Drag
    {
        ClipItem* item = nullptr;
        QPointF pressScene;
        QPointF startPos;
        bool moved = false;
        bool snapped = false;
        std::vector<std::pair<ClipItem*, QPointF>> followers; // linked clips and their start
    };

    void recordChanged(const Timeline::Object* object, const Timeline::Object* previous) override;
    void rebuild();
    void clearItems();
    void moveDrag(const QPointF& scenePos, bool snapping);
    double snapX(double x, double width, bool& snapped) const;
    void finishDrag(bool commit);
    ClipItem* clipItemAt(const QPoint& viewportPos) const;
    bool acceptsDrop(const QMimeData* data) const;

    Model::Host& m_host;
    const Timeline::Object* m_timeline = nullptr;
    StickyCompositeArea m_composite;
    std::vector<Lane> m_lanes;
    std::map<int, std::size_t> m_laneOfSlot;
    std::map<const Timeline::Clip*, ClipItem*> m_items;
    QGraphicsLineItem* m_playheadLine = nullptr;
    Types::Time m_playhead = 0;
    const Timeline::Clip* m_selected = nullptr;
    Drag m_drag;
};

} // namespace Sandbox

Q_DECLARE_METATYPE(const Timeline::Clip*)
Q_DECLARE_METATYPE(const Timeline::Track*)
