#pragma once

#include <Util/Editor/AbstractEditor.h>
#include <Util/Interfaces/EditorModel.h>

#include <QPointer>

// A link of the editor tree: follows a parent editor and announces each of its steps to
// its own children after doing its own work. Subclasses override onLoad(), onApply() or
// onReset() and call the base version last, so a tree runs its work top-down.
// Made without a Qt parent: whoever creates it owns it.
class EDITORUTIL_EXPORT ChainedEditor : public AbstractEditor
{
    Q_OBJECT

public:
    ChainedEditor(AbstractEditor& parent, const Editor::Object* editor);
    ~ChainedEditor() override;

    // The editor this one follows; null once it is gone.
    AbstractEditor* parentEditor() const;

protected:
    const Editor::Object* editor() const;

protected slots:
    // Each re-emits this editor's own signal; an override does its work first, then calls
    // the base version.
    virtual void onLoad();
    virtual void onApply();
    virtual void onReset();

private:
    QPointer<AbstractEditor> m_parent;
    const Editor::Object* m_editor;
};
