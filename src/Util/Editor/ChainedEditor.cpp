#include "ChainedEditor.h"

ChainedEditor::ChainedEditor(AbstractEditor& parent, const Editor::Object* editor)
    : AbstractEditor(nullptr), m_parent(&parent), m_editor(editor)
{
    connect(&parent, SIGNAL(load()), this, SLOT(onLoad()));
    connect(&parent, SIGNAL(apply()), this, SLOT(onApply()));
    connect(&parent, SIGNAL(reset()), this, SLOT(onReset()));
}

ChainedEditor::~ChainedEditor() = default;

AbstractEditor* ChainedEditor::parentEditor() const { return m_parent; }

const Editor::Object* ChainedEditor::editor() const { return m_editor; }

void ChainedEditor::onLoad() { emit load(); }

void ChainedEditor::onApply() { emit apply(); }

void ChainedEditor::onReset() { emit reset(); }
