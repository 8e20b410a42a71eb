#pragma once

#include <Util/Editor/ChainedEditor.h>

#include <string>
#include <vector>

// A participant of an edit session that notes each step it runs in a journal, then passes
// the step on. With a model editing state it also notes whether a clip is being edited.
class NotingEditor : public ChainedEditor
{
    Q_OBJECT

public:
    NotingEditor(AbstractEditor& parent, const Editor::Object* editor, std::string name,
                 std::vector<std::string>& journal)
        : ChainedEditor(parent, editor), m_name(std::move(name)), m_journal(journal)
    {}

private slots:
    void onLoad() override
    {
        const std::string what = editor() ? (editor()->canEdit() ? ", editing a clip" : ", editing nothing") : "";
        m_journal.push_back(m_name + " loads" + what);
        ChainedEditor::onLoad();
    }
    void onApply() override
    {
        m_journal.push_back(m_name + " applies");
        ChainedEditor::onApply();
    }
    void onReset() override
    {
        m_journal.push_back(m_name + " resets");
        ChainedEditor::onReset();
    }

private:
    std::string m_name;
    std::vector<std::string>& m_journal;
};
