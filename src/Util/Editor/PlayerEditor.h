#pragma once

#include <Util/Editor/ChainedEditor.h>
#include <Util/Interfaces/DQtUtil.h>

// The participant of an edit session that borrows the editor's player. Its own client of
// the player's exclusive-use service is tied to the client of the enclosing editor: when
// the outer client is taken over (or another client appears while it waits), this one ends
// its use; when this one lets the player go, the outer client is finalized too.
class EDITORUTIL_EXPORT PlayerEditor : public ChainedEditor
{
    Q_OBJECT

public:
    PlayerEditor(AbstractEditor& parent, const Editor::Object* editor, ExclusiveClient* parentClient);
    ~PlayerEditor() override;

    ExclusiveClient* playerClient();
    const ExclusiveClient* playerClient() const;

    void setPlayerService(ExclusiveService* service);

private slots:
    void onLoad() override;
    void onApply() override;
    void onReset() override;

private:
    ExclusiveClient* m_client;
    ExclusiveClient* m_parentClient;
};
