#include "NotingEditor.h"
#include "SessionFixture.h"

#include <Util/Editor/ModelEditor.h>

#include <TestSupport.h>

#include <gmock/gmock.h>

#include <memory>

using testing::ElementsAre;

namespace {

// The panel: a ModelEditor with two participants below it, one of them with one of its own.
class EditSessionTest : public SessionFixture
{
protected:
    EditSessionTest()
    {
        root = std::make_unique<ModelEditor>(
            [this](const std::set<const Timeline::Clip*>& clips, const Timeline::Object* t) {
                journal.push_back("acceptor asked about " + std::to_string(clips.size()) + " clips of "
                                  + (t == timeline ? "the edited timeline" : "another timeline"));
                return clips.count(clip) != 0;
            },
            [this](std::set<const Timeline::Clip*>& clips, const Timeline::Object* t) {
                if (t == timeline)
                    clips.erase(clip);
            });
        QObject::connect(root.get(), &ModelEditor::editorStateChanged, &listenerContext,
                         [this](const Editor::Object* to, const Editor::Object* from) {
                             journal.push_back(std::string("state ") + (from->active ? "active" : "idle") + " -> "
                                               + (to->active ? "active" : "idle"));
                         });
        settings = std::make_unique<NotingEditor>(*root, host.editor(), "settings", journal);
        preview = std::make_unique<NotingEditor>(*root, host.editor(), "preview", journal);
        previewPart = std::make_unique<NotingEditor>(*preview, host.editor(), "preview part", journal);
    }

    std::unique_ptr<ModelEditor> root;
    std::unique_ptr<NotingEditor> settings;
    std::unique_ptr<NotingEditor> preview;
    std::unique_ptr<NotingEditor> previewPart;
};

// Beginning a session changes the state, then loads the tree top down; applying or resetting
// runs the tree before the session ends.
TEST_F(EditSessionTest, SessionStepsRunTheTreeTopDownAroundTheStateChange)
{
    ASSERT_TRUE(host.beginSession(timeline, clip));
    EXPECT_THAT(journal, ElementsAre("state idle -> active", "settings loads, editing a clip",
                                     "preview loads, editing a clip", "preview part loads, editing a clip"));

    journal.clear();
    EXPECT_TRUE(host.applySession());
    EXPECT_THAT(journal,
                ElementsAre("settings applies", "preview applies", "preview part applies", "state active -> idle"));

    TestSupport::LogCapture log;
    EXPECT_FALSE(host.beginSession(timeline, host.addClip(Timeline::Clip())));
    EXPECT_TRUE(log.containsError("the clip is not on the timeline"));
    host.beginSession(timeline, clip);
    journal.clear();
    EXPECT_TRUE(host.resetSession());
    EXPECT_THAT(journal,
                ElementsAre("settings resets", "preview resets", "preview part resets", "state active -> idle"));
}

// Within a session: an edit position is a state change (once), the acceptor decides about clips
// of the edited timeline and the filter narrows the clips in place.
TEST_F(EditSessionTest, PositionAcceptorAndFilterOfASession)
{
    host.beginSession(timeline, clip);
    journal.clear();

    host.setEditPosition(ClipStart + 10);
    host.setEditPosition(ClipStart + 10);
    EXPECT_THAT(journal, ElementsAre("state active -> active"));

    journal.clear();
    EXPECT_TRUE(host.canAcceptClips({clip}));
    EXPECT_FALSE(host.canAcceptClips({}));
    EXPECT_THAT(journal, ElementsAre("acceptor asked about 1 clips of the edited timeline",
                                     "acceptor asked about 0 clips of the edited timeline"));

    const Timeline::Clip* other = host.addClip(Timeline::Clip(Timeline::Clip::Audio));
    std::set<const Timeline::Clip*> clips{clip, other};
    host.filterClips(clips);
    EXPECT_THAT(clips, ElementsAre(other));
}

TEST_F(EditSessionTest, APanelThatIsGoneIsNoLongerTheWorker)
{
    EXPECT_EQ(host.editor()->worker, static_cast<Editor::Worker*>(root.get()));
    EXPECT_EQ(root->editorObject(), host.editor());

    previewPart.reset();
    preview.reset();
    settings.reset();
    root.reset();

    EXPECT_EQ(host.editor()->worker, nullptr);
    EXPECT_FALSE(host.loadSession());
    EXPECT_FALSE(host.applySession());
}

class ModelEditorFunctionsTest : public SessionFixture
{
};

TEST_F(ModelEditorFunctionsTest, WithoutAnAcceptorAskingThrows)
{
    ModelEditor::Acceptor acceptor;
    ModelEditor editor(acceptor, nullptr);
    host.beginSession(timeline, clip);

    EXPECT_THROW(host.canAcceptClips({clip}), std::bad_function_call);
}

TEST_F(ModelEditorFunctionsTest, WithoutAFilterTheClipsStayExactlyAsGiven)
{
    ModelEditor editor([](const auto&, const auto*) { return true; }, nullptr);
    host.beginSession(timeline, clip);
    const Timeline::Clip* other = host.addClip(Timeline::Clip(Timeline::Clip::Audio));
    std::set<const Timeline::Clip*> clips{clip, other};

    editor.filterClips(clips);

    EXPECT_THAT(clips, testing::UnorderedElementsAre(clip, other));
}

} // namespace
