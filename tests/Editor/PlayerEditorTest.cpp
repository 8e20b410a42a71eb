#include <Util/Editor/PlayerEditor.h>

#include <TestSupport.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// The editor's player (service) is borrowed by the panel's client; inside the panel the
// PlayerEditor's own client holds the panel's player view (a service of its own). A
// timeline client stands for the rest of the editor taking the player back.
class PlayerEditorTest : public testing::Test
{
protected:
    // The journal hears each client before the editor's own connections run, so it shows
    // the order in which things happen.
    PlayerEditorTest()
    {
        watch(&panelClient, "panel");
        watch(&timelineClient, "timeline");
        editorPtr = std::make_unique<PlayerEditor>(root, nullptr, &panelClient);
        watch(editorPtr->playerClient(), "player editor");
        editorPtr->setPlayerService(&panelPlayer);
    }

    void watch(ExclusiveClient* client, const std::string& name)
    {
        QObject::connect(client, &ExclusiveClient::intercepted, &context,
                         [this, name] { journal.push_back(name + " intercepted"); });
        QObject::connect(client, &ExclusiveClient::otherClientAppeared, &context,
                         [this, name] { journal.push_back(name + " sees another client"); });
        QObject::connect(client, &ExclusiveClient::released, &context,
                         [this, name] { journal.push_back(name + " released"); });
    }

    void startSession()
    {
        ASSERT_TRUE(panelClient.acquire());
        ASSERT_TRUE(editorPtr->playerClient()->acquire());
        journal.clear();
    }

    std::vector<std::string> journal;
    QObject context;
    ExclusiveService player;
    ExclusiveService panelPlayer;
    ExclusiveClient panelClient{&player};
    ExclusiveClient timelineClient{&player};
    AbstractEditor root{nullptr};
    std::unique_ptr<PlayerEditor> editorPtr;
};

// Session steps pass through without touching the player; taking the player from the panel
// ends the editor's use first.
TEST_F(PlayerEditorTest, TakingThePlayerFromThePanelEndsTheEditorsUseFirst)
{
    startSession();
    emit root.load();
    emit root.apply();
    emit root.reset();
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_TRUE(editorPtr->playerClient()->isInUse());

    timelineClient.acquire();

    EXPECT_THAT(journal, ElementsAre("panel intercepted", "player editor released", "panel released"));
    EXPECT_FALSE(editorPtr->playerClient()->isInUse());
    EXPECT_FALSE(panelClient.isInUse());
    EXPECT_EQ(player.holder(), &timelineClient);
}

TEST_F(PlayerEditorTest, AnotherClientAppearingWhileThePanelWaitsEndsTheEditorsUse)
{
    ASSERT_TRUE(editorPtr->playerClient()->acquire());
    journal.clear();

    timelineClient.acquire();

    EXPECT_THAT(journal, ElementsAre("panel sees another client", "player editor released"));
    EXPECT_TRUE(panelPlayer.isFree());
}

TEST_F(PlayerEditorTest, GivingThePlayerBackFinalizesThePanelToo)
{
    startSession();

    editorPtr->playerClient()->finalize();

    // The panel is finalized from the editor client's released(), so it is released before
    // listeners connected after the editor was built hear the editor's own release.
    EXPECT_THAT(journal, ElementsAre("panel released", "player editor released"));
    EXPECT_TRUE(player.isFree());
}

TEST_F(PlayerEditorTest, AnEditorThatDiesHoldingThePlayerGivesItBack)
{
    AbstractEditor otherRoot(nullptr);
    auto* inner = new PlayerEditor(otherRoot, nullptr, &panelClient);
    inner->setPlayerService(&panelPlayer);
    panelClient.acquire();
    inner->playerClient()->acquire();

    delete inner;

    EXPECT_TRUE(panelPlayer.isFree());
    EXPECT_TRUE(player.isFree());
}

TEST(PlayerEditorWithoutParentClient, WorksAloneAndSaysTheTieIsMissing)
{
    TestSupport::LogCapture log;
    AbstractEditor root(nullptr);
    ExclusiveService service;

    PlayerEditor editor(root, nullptr, nullptr);
    editor.setPlayerService(&service);

    EXPECT_TRUE(log.containsError("PlayerEditor"));
    EXPECT_TRUE(editor.playerClient()->acquire());
    editor.playerClient()->finalize();
    EXPECT_TRUE(service.isFree());
}

} // namespace
