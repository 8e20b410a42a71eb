#include "NotingEditor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// root -> panel (works) -> pass-through (plain ChainedEditor) -> leaf (works)
//                       -> sibling (works)
class EditorTreeTest : public testing::Test
{
protected:
    EditorTreeTest()
        : root(nullptr),
          panel(root, nullptr, "panel", journal),
          passThrough(panel, nullptr),
          leaf(passThrough, nullptr, "leaf", journal),
          sibling(panel, nullptr, "sibling", journal)
    {}

    std::vector<std::string> journal;
    AbstractEditor root;
    NotingEditor panel;
    ChainedEditor passThrough;
    NotingEditor leaf;
    NotingEditor sibling;
};

// An editor that overrides nothing still passes every step on; a step started in the middle
// reaches only the branch below.
TEST_F(EditorTreeTest, StepsPassThroughEveryLinkAndOnlyDownwards)
{
    emit root.load();
    emit root.apply();
    emit root.reset();
    EXPECT_THAT(journal, ElementsAre("panel loads", "leaf loads", "sibling loads", "panel applies", "leaf applies",
                                     "sibling applies", "panel resets", "leaf resets", "sibling resets"));

    journal.clear();
    emit panel.load();
    EXPECT_THAT(journal, ElementsAre("leaf loads", "sibling loads"));
}

TEST(ChainedEditorLifetime, DestroyingALinkCutsItsBranchOffAndForgetsTheParent)
{
    std::vector<std::string> journal;
    auto root = std::make_unique<AbstractEditor>(nullptr);
    auto middle = std::make_unique<ChainedEditor>(*root, nullptr);
    NotingEditor leaf(*middle, nullptr, "leaf", journal);

    middle.reset();
    emit root->load();
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_EQ(leaf.parentEditor(), nullptr);

    NotingEditor orphan(*root, nullptr, "orphan", journal);
    root.reset();
    EXPECT_EQ(orphan.parentEditor(), nullptr);
}

TEST(ChainedEditorLifetime, StepsAreReachableByTheirSignatures)
{
    // Panels wire editors of their own by signature ("2load()" to "1onLoad()").
    std::vector<std::string> journal;
    AbstractEditor root(nullptr);
    AbstractEditor other(nullptr);
    NotingEditor editor(root, nullptr, "editor", journal);

    ASSERT_TRUE(QObject::connect(&other, SIGNAL(apply()), &editor, SLOT(onApply())));
    emit other.apply();
    EXPECT_THAT(journal, ElementsAre("editor applies"));
}

} // namespace
