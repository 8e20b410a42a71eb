#include "ModelEditor.h"

ModelEditor::ModelEditor(Acceptor acceptor, Filter filter)
    : AbstractEditor(nullptr), Editor::WorkerView(true), m_acceptor(std::move(acceptor)), m_filter(std::move(filter))
{
    qRegisterMetaType<const Editor::Object*>();
}

ModelEditor::~ModelEditor() = default;

void ModelEditor::onLoad() { emit load(); }

void ModelEditor::onApply() { emit apply(); }

void ModelEditor::onReset() { emit reset(); }

const Timeline::Object* ModelEditor::editedTimeline() const
{
    const Editor::Object* editor = editorObject();
    return editor ? editor->timeline : nullptr;
}

bool ModelEditor::canAccept(const std::set<const Timeline::Clip*>& clips) const
{
    return m_acceptor(clips, editedTimeline());
}

void ModelEditor::filterClips(std::set<const Timeline::Clip*>& clips) const
{
    if (!m_filter)
        return;
    m_filter(clips, editedTimeline());
}

void ModelEditor::editorChanged(const Editor::Object* current, const Editor::Object* previous)
{
    emit editorStateChanged(current, previous);
}
