#pragma once

#include <Util/Editor/TimelineEdits.h>
#include <Util/Import/DragAndDropHandler.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Sticky/StickyMoveController.h>
#include <Util/Sticky/StickyMultiLine.h>

#include <QGraphicsView>

#include <cmath>
#include <map>
#include <memory>
#include <optional>
#include <vector>

class QGraphicsLineItem;
class QUndoStack;
class StickyLinksSynchronizer;

namespace Sandbox {

class ClipItem;
class TrackArea;

// The timeline, built from the sticky engine: each run of neighbouring tracks of one kind
// (pictures, titles, sounds) is a multi-line whose levels are those tracks, a clip's linked
// sound is kept beside it by a links synchronizer, and a move controller drives every drag:
// within and between tracks of the clip's kind, edges snapping to other clips' edges, the
// playhead and the start (Alt held: no snapping), Escape restoring everything. The model is only
// changed when a drag ends, and every change of the timeline or of one of its clips rebuilds the
// picture; a clip shows its name and length, and below them its effects and its motion. Drops are
// answered by a DragAndDropHandler: a file dragged from the bin is placed by placeFile, files
// from the desktop are added by the handler (folders expanded, one question about failures).
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
    // Where a clip moved and an effect or a motion dropped on a clip go, so that Undo puts the
    // clip back as it was.
    void setUndoStack(QUndoStack* undo);

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
    // Takes the selected clip off the timeline with the clips tied to it (its sound, a title on
    // it), as one command; false when nothing is selected.
    bool removeSelected();
    // Cuts the selected clip at the playhead in two; the second half, or null when the playhead
    // is not inside it.
    const Timeline::Clip* splitSelected();
    bool dragging() const { return m_controller.isDragging(); }
    // The multi-line holding the track's row, and the synchronizer of the clips' links (both
    // are rebuilt with the picture).
    const TrackArea* areaOf(const Timeline::Track* track) const;
    const StickyLinksSynchronizer* links() const { return m_links; }

Q_SIGNALS:
    // The model's timeline changed (and the picture was rebuilt).
    void timelineChanged();
    void selectionChanged(const Timeline::Clip* clip);
    void playheadMoved(Types::Time time);
    // Files dragged from the bin, to be placed at `time` on `track`.
    void filesDropped(const QStringList& paths, Types::Time time, const Timeline::Track* track);
    // Files dropped from the desktop are on the timeline (`added` clips), after one question.
    void filesLanded(int added);
    void projectDropped(const QString& path);
    // Why the drag in progress cannot land where it is (empty while it can), or why a drop was refused.
    void dropStatus(const QString& status);
    void dropRefused(const QString& reason);
    // A drag ended: moved (or aborted), and whether an edge snapped.
    void dragEnded(const Timeline::Clip* clip, bool moved, bool snapped);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    // A press on a clip, and the drag it became once the mouse moved far enough.
    struct Press
    {
        ClipItem* item = nullptr;    // under the cursor
        ClipItem* dragged = nullptr; // the clip the controller drags: the item, or its master
        QPointF scene;
        bool snapped = false;
        std::optional<TimelineEdits::Edge> trim; // pressed on an edge: the drag trims the clip
    };
    // The edge of `item` within a few pixels of `sceneX`, if any.
    static std::optional<TimelineEdits::Edge> edgeAt(const ClipItem* item, double sceneX);

    class ClipWatch;

    void recordChanged(const Timeline::Object* object, const Timeline::Object* previous) override;
    void rebuild();
    void clearItems();
    void startDrag();
    void commitDrag(const Press& press);
    void endAborted();
    ClipItem* clipItemAt(const QPoint& viewportPos) const;
    DragAndDropHandler::Target dropTarget(const QPoint& viewportPos) const;

    Model::Host& m_host;
    const Timeline::Object* m_timeline = nullptr;
    std::vector<const Timeline::Track*> m_tracks; // one row each
    std::vector<TrackArea*> m_areas;
    StickyLinksSynchronizer* m_links = nullptr;
    StickyMoveController m_controller;
    std::unique_ptr<DragAndDropHandler> m_drops;
    QUndoStack* m_undo = nullptr;
    std::unique_ptr<ClipWatch> m_clipWatch; // a clip given an effect or a motion is drawn again
    std::map<const Timeline::Clip*, ClipItem*> m_items;
    QGraphicsLineItem* m_playheadLine = nullptr;
    QGraphicsLineItem* m_trimGuide = nullptr; // where a trimmed edge would land
    Types::Time m_playhead = 0;
    const Timeline::Clip* m_selected = nullptr;
    Press m_press;
};

// The tracks of one kind standing next to each other: level n is the area's n-th track. It
// takes only clips of its kind, and drops never open a level (the model's tracks are fixed).
class TrackArea : public StickyMultiLine
{
    Q_OBJECT

public:
    enum Kind
    {
        Pictures,
        Titles,
        Sounds
    };
    TrackArea(Kind kind, int firstRow, std::vector<const Timeline::Track*> tracks, QObject* parent);

    static Kind kindOf(const Timeline::Track* track);
    static Kind kindOf(const Timeline::Clip* clip);
    bool isAcceptable(const QList<QGraphicsItem*>& items) const override;
    Kind kind() const { return m_kind; }
    int firstRow() const { return m_firstRow; }
    const std::vector<const Timeline::Track*>& tracks() const { return m_tracks; }
    // The track the item stands on, null for an item the area does not hold.
    const Timeline::Track* trackOf(const QGraphicsItem* item) const;

private:
    Kind m_kind;
    int m_firstRow;
    std::vector<const Timeline::Track*> m_tracks;
};

} // namespace Sandbox

Q_DECLARE_METATYPE(const Timeline::Clip*)
Q_DECLARE_METATYPE(const Timeline::Track*)
