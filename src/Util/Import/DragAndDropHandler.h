#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Interfaces/PubSub.h>

#include <QObject>
#include <QPointF>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class QDragEnterEvent;
class QDragLeaveEvent;
class QDragMoveEvent;
class QDropEvent;
class QMimeData;
class QUndoStack;

// Turns drops onto a timeline (a track and a time) and onto the scene (a point of the
// composition at a time) into changes of the timeline:
//   - files from the desktop ("text/uri-list"): folders are expanded (hidden entries skipped,
//     symbolic links to folders not followed), everything in natural name order ("clip2" before
//     "clip10"), each path once. The files are added to a shadow copy of the timeline, opened,
//     and the failures of the whole drop settled with one question (TimelineFileOpenHandler);
//     then what is kept lands on the timeline in one edit. SVG files become titles; the first
//     project or package file of a drop is announced instead (projectDropped, packageDropped)
//     and nothing else of that drop is added;
//   - the library's own drags: titles and callouts (Overlay::Preset::mimeType, see
//     MimeUtils::makeOverlayPresetList), quizzes (Quiz::Preset::mimeType, the questions as
//     Quiz::Utils JSON), effects, transitions, animations and pan-and-zoom presets dropped on a
//     clip (an animation starts where it is dropped, a pan and zoom spans the clip), and clips
//     moved within the timeline (with their linked clips), each packed by the pack functions below.
// Where the drop lands is the caller's to say (a Target, from the view's own geometry). The
// acceptance of a drag is answered exactly: assess() tells whether the drag can land at the
// target, and if not, why, for a status line; the drag events are accepted or ignored to match.
//
// Showing the landing place is optional: a caller that builds its timeline from sticky areas
// sets showLanding/hideLanding to drive its drag controller (a placeholder at the landing slot);
// without them nothing is shown. Leaving the view hides the landing place and forgets the drag.
//
//   DragAndDropHandler drops(timeline);
//   void TimelineView::dragMoveEvent(QDragMoveEvent* e) { drops.dragMoveEvent(e, targetAt(e->pos())); }
//   void TimelineView::dropEvent(QDropEvent* e) { drops.dropEvent(e, targetAt(e->pos())); }
class EDITORUTIL_EXPORT DragAndDropHandler
    : public QObject,
      public PubSub::Publisher<Timeline::OverlayAddRequest, Timeline::QuizAddRequest, Timeline::TransitionAddRequest,
                               Timeline::AnimationAddRequest, Timeline::PanAndZoomAddRequest>
{
    Q_OBJECT

public:
    using RequestPublisher =
        PubSub::Publisher<Timeline::OverlayAddRequest, Timeline::QuizAddRequest, Timeline::TransitionAddRequest,
                          Timeline::AnimationAddRequest, Timeline::PanAndZoomAddRequest>;

    // Where a drop lands.
    struct Target
    {
        const Timeline::Track* track = nullptr; // null: each kind picks its own track
        Types::Time position = -1;              // -1: after the last clip
        const Timeline::Clip* clip = nullptr;   // the clip under the cursor, if any
        std::optional<QPointF> scenePoint;      // set for drops onto the scene

        static Target onTimeline(const Timeline::Track* track, Types::Time position,
                                 const Timeline::Clip* clip = nullptr);
        static Target onScene(const QPointF& point, Types::Time position, const Timeline::Clip* clip = nullptr);
    };

    enum class Kind
    {
        None,
        Files,
        Project,
        Package,
        Overlay,
        Quiz,
        Effect,
        Transition,
        Animation,
        PanAndZoom,
        Clip,
    };

    struct Assessment
    {
        Kind kind = Kind::None;
        bool accepted = false;
        QString reason; // why it cannot land there (empty when accepted)
    };

    // A drop of more files than this is refused as a whole.
    static constexpr int maxFilesPerDrop = 100000;

    explicit DragAndDropHandler(const Timeline::Object* timeline, QObject* parent = nullptr);
    ~DragAndDropHandler() override;

    const Timeline::Object* timeline() const;

    // Whether `data` can land at `target`, and what it is.
    Assessment assess(const QMimeData* data, const Target& target) const;
    // Performs the drop; false (with droppedRefused) when nothing was asked of the model.
    bool drop(const QMimeData* data, const Target& target);

    void dragEnterEvent(QDragEnterEvent* event, const Target& target);
    void dragMoveEvent(QDragMoveEvent* event, const Target& target);
    void dragLeaveEvent(QDragLeaveEvent* event);
    void dropEvent(QDropEvent* event, const Target& target);

    // Optional: the stack a drop onto a clip (an effect, a transition, an animation, a pan and
    // zoom) and a clip moved are pushed onto, each as one command ("Add effect", "Move clip",
    // ...) whose undo puts the clip back as it was (null: none; not owned).
    void setUndoStack(QUndoStack* stack);
    QUndoStack* undoStack() const;

    // The status line for the drag in progress: empty while it can land, else the reason.
    QString status() const;
    // Drops of files still opening.
    int pendingImports() const;

    // Optional: show and hide where the drag would land (a sticky drag controller's placeholder).
    std::function<void(const Target& target, Kind kind)> showLanding;
    std::function<void()> hideLanding;

    // Mime formats of the library's own drags, and their packing.
    static QString effectFormat();     // "application/x-editor-effect"
    static QString transitionFormat(); // "application/x-editor-transition"
    static QString animationFormat();  // "application/x-editor-animation"
    static QString panAndZoomFormat(); // "application/x-editor-pan-and-zoom"
    static QString clipFormat();       // "application/x-editor-clip"
    static void packEffect(QMimeData* data, const Effect::Object& effect);
    static void packTransition(QMimeData* data, const Transition::Object& transition);
    static void packAnimation(QMimeData* data, const Animation::TransformationItem& animation);
    static void packPanAndZoom(QMimeData* data, const Animation::TransformationItem& panAndZoom);
    static void packClip(QMimeData* data, const Timeline::Clip* clip);
    static void packQuiz(QMimeData* data, const Quiz::Preset& quiz);

    // The files a drop of `paths` adds: folders expanded, hidden entries skipped, natural order,
    // each once. Nothing (and the reason) past maxFilesPerDrop.
    static std::optional<QStringList> expandDroppedPaths(const QStringList& paths, QString* error = nullptr);
    // Natural order of names: digit runs compare as numbers, letters without case.
    static bool naturalLess(const QString& a, const QString& b);

Q_SIGNALS:
    void statusChanged(const QString& status);
    void projectDropped(const QString& path);
    void packageDropped(const QString& path);
    // A drop was refused, or asked nothing of the model, and why.
    void dropRefused(const QString& reason);
    // The files of a drop are on the timeline: `added` clips kept (failed ones the user kept
    // included), after the one question about failures.
    void filesLanded(int added);

protected:
    // The kind of what a drag carries, whatever the target; the reason when it is unusable.
    virtual Assessment classify(const QMimeData* data) const;
    // Whether a drag of `kind` can land at `target`.
    virtual QString refusalAt(Kind kind, const QMimeData* data, const Target& target) const;

private:
    class Import;
    class TimelineWatch;

    void setStatus(const QString& status);
    void refuse(const QString& reason);
    void answerDrag(const QMimeData* data, const Target& target, QEvent* event);
    void finishImport(Import* import, int added);
    bool dropFiles(const QMimeData* data, const Target& target);
    bool dropOverlays(const QMimeData* data, const Target& target);
    bool dropQuiz(const QMimeData* data, const Target& target);
    bool dropEffect(const QMimeData* data, const Target& target);
    bool dropTransition(const QMimeData* data, const Target& target);
    bool dropMotion(Kind kind, const QMimeData* data, const Target& target);
    bool dropClip(const QMimeData* data, const Target& target);
    bool dropOnClip(Kind kind, const QMimeData* data, const Target& target);
    const Timeline::Clip* draggedClip(const QMimeData* data) const;
    void timelineGone();

    const Timeline::Object* m_timeline;
    std::unique_ptr<TimelineWatch> m_watch;
    std::vector<std::unique_ptr<Import>> m_imports;
    QString m_status;
    QPointer<QUndoStack> m_undoStack;
    // The classification of the drag in progress (dragMoveEvent reuses it).
    QPointer<const QMimeData> m_dragData;
    Assessment m_dragContent;
};
