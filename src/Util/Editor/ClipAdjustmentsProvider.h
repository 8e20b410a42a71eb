#pragma once

#include <Util/Editor/Adjustment.h>
#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QList>
#include <QObject>
#include <QStringList>

class QUndoStack;

#include <functional>
#include <memory>

// The adjustments panel of a clip: the normalization, reverse, speed, stabilization and filter
// entries with their values read from the model, whether each applies to the clip's media, and
// their changes, each one edit of one record (undoable as one step):
//   - reverse and speed change the clip's timing, and that of its native audio clip with it, in
//     one edit of the timeline: the preview plays the clip backward or faster
//     (MediaEngine::frameRequestAt), and a clip at 2x lasts half as long;
//   - normalization, stabilization and the filter are effects of the clip ("normalization" of
//     the audio effects, "stabilization" of the video effects, one of the colour filters), in
//     one edit of the clip.
// A change refused (a value out of range, an entry that does not apply) edits nothing, logs
// why and tells the user why through changeRefused(); a change to the value the clip already
// has edits nothing and succeeds. With an undo stack, every change that edits is pushed onto it
// as one command named after its entry, whose undo puts the clips' timings or the clip's
// effects back as they were. What was dropped on the clip (effects, a transition, an animation or
// a pan and zoom) is listed by contentNames() and taken off one by one, undoably too. The
// provider follows the clip, its timeline and its media file and announces every change of them.
//
//   ClipAdjustmentsProvider adjustments;
//   adjustments.setClip(timeline, clip);
//   for (const Adjustment& a : adjustments.adjustments()) panel.addEntry(a);
//   adjustments.setUndoStack(&undoStack);
//   adjustments.setSpeed(2.0); // undoStack.undo() plays it at its old speed again
class EDITORUTIL_EXPORT ClipAdjustmentsProvider : public QObject
{
    Q_OBJECT

public:
    static constexpr double minSpeed = 0.1;
    static constexpr double maxSpeed = 10.0;
    static const std::string normalizationEffect; // of EditorCollection::CollectionID::EFFECTS_AUDIO
    static const std::string stabilizationEffect; // of EditorCollection::CollectionID::EFFECTS_VIDEO

    explicit ClipAdjustmentsProvider(QObject* parent = nullptr);
    ~ClipAdjustmentsProvider() override;

    // The clip shown and the timeline that holds it; null for none.
    void setClip(const Timeline::Object* timeline, const Timeline::Clip* clip);
    const Timeline::Object* timeline() const;
    const Timeline::Clip* clip() const;

    // Normalization, Reverse, Speed, Stabilization, Filter, in that order.
    QList<Adjustment> adjustments() const;
    Adjustment adjustment(Adjustment::Kind kind) const;

    bool setNormalized(bool on);
    bool setReversed(bool on);
    // From minSpeed to maxSpeed; 0, negatives, NaN and infinities are refused.
    bool setSpeed(double speed);
    bool setStabilized(bool on);
    // A colour filter id, or an empty one to take the filter off.
    bool setFilter(const QString& filterId);

    // Takes one effect (a filter, a transition, any effect dropped on the clip) or the clip's
    // animation or pan and zoom off the clip, as one command named after it ("Remove Blur",
    // "Remove motion"). False, logged, when the clip shown has no such effect or no motion.
    bool removeEffect(const QString& effectId);
    bool removeMotion();

    // What a clip was given, as its panel lists it: its effects in the order they apply, then its
    // motion ("Blur", "Crossfade", "Close-up"; an unnamed motion is "Motion"). Empty for none.
    static QStringList contentNames(const Timeline::Clip* clip);
    // An effect's id as a title: "blur" is "Blur".
    static QString effectTitle(const QString& effectId);

    // The stack each change is pushed onto from now on (null: none; not owned).
    void setUndoStack(QUndoStack* stack);
    QUndoStack* undoStack() const;

Q_SIGNALS:
    // The clip, its timing or its media changed, or another clip is shown.
    void adjustmentsChanged();
    // A change was refused; `reason` says why, in the user's language.
    void changeRefused(Adjustment::Kind kind, const QString& reason);

protected:
    // Whether an entry applies to the clip; the reason when it does not.
    virtual QString unavailableReason(Adjustment::Kind kind) const;

private:
    class Watch;
    bool checkAvailable(Adjustment::Kind kind, const char* operation);
    bool setEffect(Adjustment::Kind kind, const std::string& collection, const std::string& id, bool on);
    bool editTiming(Adjustment::Kind kind, const std::function<void(Timeline::Object&, const Timeline::Clip*)>& change);
    bool editEffects(const QString& text, const std::function<void(Timeline::Clip&)>& change);

    const Timeline::Object* m_timeline = nullptr;
    const Timeline::Clip* m_clip = nullptr;
    std::unique_ptr<Watch> m_watch;
    QUndoStack* m_undoStack = nullptr;
};
