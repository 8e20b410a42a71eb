#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QUndoCommand>

// What a clip was given (its effects, filters and transition, its animation or pan and zoom)
// changed as one step of an undo stack: the command holds the clip's content before and after
// the change and puts one or the other back; the clip's name, media and place stay as they are
// then. It is pushed after the change was made, so the first redo does nothing. A clip gone
// from the model by then is left alone (logged).
//
//   const Timeline::Clip before = *clip;
//   ... edit the clip's effects ...
//   if (!ClipContentCommand::sameContent(before, *clip))
//       undoStack.push(new ClipContentCommand(tr("Add effect"), clip, before, *clip));
class EDITORUTIL_EXPORT ClipContentCommand : public QUndoCommand
{
public:
    ClipContentCommand(const QString& text, const Timeline::Clip* clip, Timeline::Clip before, Timeline::Clip after,
                       QUndoCommand* parent = nullptr);

    // Whether two copies of a clip hold the same effects (in order, with their parameters) and
    // the same motion.
    static bool sameContent(const Timeline::Clip& a, const Timeline::Clip& b);

    void undo() override;
    void redo() override;

private:
    void put(const Timeline::Clip& content);

    const Timeline::Clip* m_clip;
    Timeline::Clip m_before;
    Timeline::Clip m_after;
    bool m_pushed = true;
};
