#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QUndoCommand>

#include <optional>
#include <vector>

// Clips placed, moved, retimed or taken off a timeline as one step of an undo stack: the command
// holds where each clip of the change stood before it and stands after it (its timing and its tie
// to a master, or nothing when it is not on the timeline) and puts the one or the other back in
// one edit of the timeline. Only the clips of the change are touched, so an edit that is not on
// the stack (an import, say) is left as it is. It is pushed after the change was made, so the
// first redo does nothing; a timeline gone from the model by then is left alone (logged).
//
//   const auto before = ClipPlacementCommand::placementsOf(timeline, {clip, sound});
//   ... move the clip and its sound in one edit ...
//   undoStack.push(new ClipPlacementCommand(tr("Move clip"), timeline, before));
class EDITORUTIL_EXPORT ClipPlacementCommand : public QUndoCommand
{
public:
    struct Placement
    {
        const Timeline::Clip* clip = nullptr;
        std::optional<Timeline::ClipTiming> timing; // none: not on the timeline
        std::optional<Timeline::Link> link;         // its tie to a master, if it has one
    };
    using Placements = std::vector<Placement>;

    // Where `clips` stand on `timeline` now.
    static Placements placementsOf(const Timeline::Object* timeline, const std::vector<const Timeline::Clip*>& clips);

    // `before`: where the clips of the change stood before it (a clip the change added is listed
    // with no timing); where they stand after it is read from the timeline now.
    ClipPlacementCommand(const QString& text, const Timeline::Object* timeline, Placements before,
                         QUndoCommand* parent = nullptr);

    void undo() override;
    void redo() override;

private:
    void put(const Placements& placements);

    const Timeline::Object* m_timeline;
    Placements m_before;
    Placements m_after;
    bool m_pushed = true;
};
