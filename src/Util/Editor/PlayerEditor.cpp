#include "PlayerEditor.h"

#include <glog/logging.h>

PlayerEditor::PlayerEditor(AbstractEditor& parent, const Editor::Object* editor, ExclusiveClient* parentClient)
    : ChainedEditor(parent, editor), m_client(new ExclusiveClient(nullptr, this)), m_parentClient(parentClient)
{
    if (!parentClient) {
        LOG(ERROR) << "PlayerEditor: no client of the enclosing editor; the player is not tied to it";
        return;
    }
    connect(parentClient, SIGNAL(intercepted()), m_client, SLOT(finalize()));
    connect(parentClient, SIGNAL(otherClientAppeared()), m_client, SLOT(finalize()));
    connect(m_client, &ExclusiveClient::released, parentClient, &ExclusiveClient::finalize);
}

PlayerEditor::~PlayerEditor() = default;

ExclusiveClient* PlayerEditor::playerClient() { return m_client; }

const ExclusiveClient* PlayerEditor::playerClient() const { return m_client; }

void PlayerEditor::setPlayerService(ExclusiveService* service) { m_client->setService(service); }

// The player follows the exclusive-use connections, not the session's steps.
void PlayerEditor::onLoad() { ChainedEditor::onLoad(); }

void PlayerEditor::onApply() { ChainedEditor::onApply(); }

void PlayerEditor::onReset() { ChainedEditor::onReset(); }
