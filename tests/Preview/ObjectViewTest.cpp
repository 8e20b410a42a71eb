#include <Util/Preview/ObjectView.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Logs the preview hooks in the order they come, naming targets and compositions by letter.
template <class X>
class RecordingPreviewView : public Preview::View<X>
{
public:
    using P = Preview::Object<X>;

    RecordingPreviewView(std::string name, std::vector<std::string>& log, const X* a, const X* b,
                         const Composition::Object* c, const Preview::Object<X>* preview = nullptr)
        : Preview::View<X>(preview), m_name(std::move(name)), m_log(log), m_a(a), m_b(b), m_c(c)
    {}

protected:
    void previewAdded(const P* p) override { write("added " + target(p->target)); }
    void previewChanged(const P* p, const P* previous, const P* current) override
    {
        write("changed3 " + target(previous->target) + "->" + target(current->target));
        Preview::View<X>::previewChanged(p, previous, current);
    }
    void previewChanged(const P* p, const P* previous) override
    {
        write("changed2 " + composition(previous->composition) + "->" + composition(p->composition));
    }
    void previewChanged(const P*) override { write("changed1"); }
    void previewRemoved(const P*) override { write("removed"); }
    void targetChanged(const P* p, const X* previous) override
    {
        write("targetChanged from " + target(previous) + " now " + target(p->target));
    }
    void compositionChanged(const P* p, const Composition::Object* previous) override
    {
        write("compositionChanged from " + composition(previous) + " now " + composition(p->composition));
    }

private:
    std::string target(const X* x) const { return x == m_a ? "a" : x == m_b ? "b" : x ? "?" : "-"; }
    std::string composition(const Composition::Object* c) const { return c == m_c ? "c" : c ? "?" : "-"; }
    void write(const std::string& line) { m_log.push_back(m_name + ": " + line); }

    std::string m_name;
    std::vector<std::string>& m_log;
    const X* m_a;
    const X* m_b;
    const Composition::Object* m_c;
};

template <class X>
class PreviewViewTest : public ::testing::Test
{
protected:
    RecordingPreviewView<X> makeView(const std::string& name, const Preview::Object<X>* preview = nullptr)
    {
        return RecordingPreviewView<X>(name, log, &a, &b, &composition, preview);
    }

    X a, b;
    Composition::Object composition;
    std::vector<std::string> log;
};

// Every kind the library builds previews of.
using PreviewKinds = ::testing::Types<Effect::Object, Transition::Object, Overlay::Preset, Quiz::Preset, Import::Object,
                                      Animation::TransformationItem>;
TYPED_TEST_SUITE(PreviewViewTest, PreviewKinds);

TYPED_TEST(PreviewViewTest, FirstChangeAddsThePreviewThenChangesReportTargetBeforeComposition)
{
    RecordingPreviewView<TypeParam> view(this->makeView("view"));
    EXPECT_EQ(view.preview(), nullptr);
    view.previewChange(view.preview())->target = &this->a; // no preview yet: this adds one
    const Preview::Object<TypeParam>* preview = view.preview();
    ASSERT_NE(preview, nullptr);
    EXPECT_TRUE(view.previewIsOwned(preview));
    EXPECT_THAT(view.previews(), ElementsAre(preview));
    EXPECT_THAT(this->log, ElementsAre("view: added a"));

    this->log.clear();
    {
        auto chain = view.previewChange(preview);
        chain->target = &this->b;
        chain->composition = &this->composition;
    }
    EXPECT_THAT(this->log,
                ElementsAre("view: changed3 a->b", "view: targetChanged from a now b",
                            "view: compositionChanged from - now c", "view: changed2 -->c", "view: changed1"));

    this->log.clear();
    view.previewChange(preview)->width = 320; // neither target nor composition
    EXPECT_THAT(this->log, ElementsAre("view: changed3 b->b", "view: changed2 c->c", "view: changed1"));
    EXPECT_EQ(preview->width, 320);
    EXPECT_EQ(preview->target, &this->b);
}

TYPED_TEST(PreviewViewTest, PreviewsAddedOwnedAndRemovedByHandAreAnnounced)
{
    RecordingPreviewView<TypeParam> view(this->makeView("view"));
    auto* made = new Preview::Object<TypeParam>;
    made->target = &this->b;
    view.previewOwn(made);
    view.previewAdd(new Preview::Object<TypeParam>)->target = &this->a;
    EXPECT_EQ(view.preview(), made); // the first record it added
    EXPECT_EQ(view.previews().size(), 2u);
    EXPECT_THAT(this->log, ElementsAre("view: added b", "view: added a"));
    RecordingPreviewView<TypeParam> other(this->makeView("other"));
    EXPECT_TRUE(other.previewObserve(made));
    EXPECT_FALSE(other.previewIsOwned(made));
    EXPECT_EQ(other.previewOwnerPointer(made), nullptr);

    this->log.clear();
    EXPECT_TRUE(other.previewRemove(made)); // asked of the owner
    EXPECT_THAT(this->log, ElementsAre("view: removed", "other: removed"));
    EXPECT_THAT(other.previews(), IsEmpty());
}

} // namespace
