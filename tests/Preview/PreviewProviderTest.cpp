#include <Util/Interfaces/EditorSettings.h>
#include <Util/Preview/AnimationPreviewProvider.h>
#include <Util/Preview/CalloutPreviewProvider.h>
#include <Util/Preview/ColorFilterPreviewProvider.h>
#include <Util/Preview/EffectPreviewProvider.h>
#include <Util/Preview/ImportPreviewProvider.h>
#include <Util/Preview/PanZoomPreviewProvider.h>
#include <Util/Preview/QuizPreviewProvider.h>
#include <Util/Preview/TitlePreviewProvider.h>
#include <Util/Preview/TransitionPreviewProvider.h>

#include <QImageReader>
#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString StockFolder = QStringLiteral(EDITORUTIL_TEST_SOURCE_DIR "/share/EditorUtil/preview");

// Points the settings at the stock pictures of the source tree for the test's lifetime.
class StockPictures
{
public:
    StockPictures() { Settings::setPreviewImageFolder(StockFolder); }
    ~StockPictures() { Settings::setPreviewImageFolder(QString()); }
};

template <class Provider>
std::unique_ptr<CompositionProvider> make()
{
    return std::make_unique<Provider>(nullptr);
}

// The stock media of a provider's preview record, read through its own view.
template <class X>
QStringList stockOf(const CompositionProvider& provider, Types::Time* duration)
{
    const auto& view = dynamic_cast<const Preview::View<X>&>(provider);
    QStringList paths;
    if (!view.preview())
        return paths;
    for (const Media::File& file : view.preview()->identity.media)
        paths << file.path().toQString();
    *duration = view.preview()->identity.duration;
    return paths;
}

QStringList stockOfAny(const CompositionProvider& provider, Types::Time* duration)
{
    if (dynamic_cast<const Preview::View<Effect::Object>*>(&provider))
        return stockOf<Effect::Object>(provider, duration);
    if (dynamic_cast<const Preview::View<Transition::Object>*>(&provider))
        return stockOf<Transition::Object>(provider, duration);
    if (dynamic_cast<const Preview::View<Overlay::Preset>*>(&provider))
        return stockOf<Overlay::Preset>(provider, duration);
    if (dynamic_cast<const Preview::View<Quiz::Preset>*>(&provider))
        return stockOf<Quiz::Preset>(provider, duration);
    if (dynamic_cast<const Preview::View<Import::Object>*>(&provider))
        return stockOf<Import::Object>(provider, duration);
    return stockOf<Animation::TransformationItem>(provider, duration);
}

// Each provider builds its preview around the stock pictures of the settings.
TEST(ProviderStockTest, BuildsItsPreviewAroundTheStockPicturesOfTheSettings)
{
    StockPictures stock;
    using Timeline::Clip;
    const QString transitionA = Settings::transitionPreviewImageAPath();
    const QString background = Settings::animationBackgroundPreviewImagePath();
    const Types::Time calloutLength = Clip::DEFAULT_CALLOUT_CLIP_DURATION;
    const struct
    {
        const char* name;
        std::unique_ptr<CompositionProvider> (*make)();
        QStringList stockImages;
        Types::Time duration;
    } rows[] = {
        {"effect", make<EffectPreviewProvider>, {Settings::effectPreviewImagePath()}, 0},
        {"colour filter", make<ColorFilterPreviewProvider>, {Settings::effectPreviewImagePath()}, 0},
        {"transition", make<TransitionPreviewProvider>, {transitionA, Settings::transitionPreviewImageBPath()}, 0},
        {"title", make<TitlePreviewProvider>, {Settings::titlePreviewImagePath()}, Clip::DEFAULT_TITLE_CLIP_DURATION},
        {"callout", make<CalloutPreviewProvider>, {Settings::calloutPreviewImagePath()}, calloutLength},
        {"quiz", make<QuizPreviewProvider>, {Settings::quizPreviewImagePath()}, Clip::DEFAULT_QUIZ_CLIP_DURATION},
        {"pan zoom", make<PanZoomPreviewProvider>, {Settings::panZoomPreviewImagePath()}, 0},
        {"animation", make<AnimationPreviewProvider>, {background, Settings::animationIconPreviewImagePath()}, 0},
        {"import", make<ImportPreviewProvider>, {}, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Types::Time duration = -1;
        const QStringList paths = stockOfAny(*row.make(), &duration);
        EXPECT_EQ(paths, row.stockImages);
        EXPECT_EQ(duration, row.duration);
        for (const QString& path : paths) {
            EXPECT_TRUE(path.startsWith(StockFolder)) << path.toStdString();
            EXPECT_FALSE(QImageReader(path).read().isNull()) << "stock picture missing: " << path.toStdString();
        }
    }
}

// Stands for the preview player: it follows a provider's record and tells what it sees.
template <class X>
class PreviewWatcher : public Preview::View<X>
{
public:
    explicit PreviewWatcher(const Preview::Object<X>* preview, std::vector<std::string>& journal)
        : Preview::View<X>(preview), m_journal(journal)
    {}

    // Draws the preview in `composition` (a change request to the provider, the owner).
    void drawIn(const Composition::Object* composition)
    {
        auto chain = this->previewChange(this->preview());
        chain->composition = composition;
    }

    std::vector<std::pair<std::int64_t, const X*>> seen; // position and target of each change

protected:
    void targetChanged(const Preview::Object<X>* preview, const X* previous) override
    {
        m_journal.push_back(std::string("target ") + (previous ? "replaced" : "set")
                            + (preview->target ? "" : " to none"));
    }
    void compositionChanged(const Preview::Object<X>*, const Composition::Object* previous) override
    {
        m_journal.push_back(std::string("composition ") + (previous ? "replaced" : "set"));
    }
    void previewChanged(const Preview::Object<X>* preview, const Preview::Object<X>* previous) override
    {
        seen.emplace_back(preview->position, preview->target);
        Preview::View<X>::previewChanged(preview, previous);
    }
    using Preview::View<X>::previewChanged;

private:
    std::vector<std::string>& m_journal;
};

class EffectPreviewTest : public testing::Test
{
protected:
    EffectPreviewTest()
    {
        QObject::connect(&provider, &CompositionProvider::activated, [this] { journal.push_back("activated"); });
        QObject::connect(&provider, &CompositionProvider::deactivated, [this] { journal.push_back("deactivated"); });
        QObject::connect(&provider, &CompositionProvider::restartRequested, [this] { journal.push_back("restart"); });
    }

    StockPictures stock;
    std::vector<std::string> journal;
    EffectPreviewProvider provider{nullptr};
    PreviewWatcher<Effect::Object> player{provider.preview(), journal};
    Effect::Object blur{EditorCollection::CollectionID::EFFECTS_VIDEO, "blur"};
    Effect::Object sepia{EditorCollection::CollectionID::EFFECTS_VIDEO, "sepia"};
    Composition::Object composition;
};

// A new preview has the default size and nothing to show; then each step of its life, in order:
// what the player and the provider's signals see.
TEST_F(EffectPreviewTest, RunsOnlyWhileThePlayerDrawsAndRestartsOnEachTarget)
{
    ASSERT_NE(provider.preview(), nullptr);
    EXPECT_TRUE(provider.previewIsOwned(provider.preview()));
    EXPECT_EQ(provider.preview()->width, 800);
    EXPECT_EQ(provider.preview()->height, 450);
    EXPECT_EQ(provider.preview()->target, nullptr);
    EXPECT_EQ(provider.composition(), nullptr);

    const auto step = [this](const char* what, const std::function<void()>& act) {
        SCOPED_TRACE(what);
        journal.clear();
        act();
        return journal;
    };

    EXPECT_THAT(step("target without composition", [this] { provider.setTarget(&blur); }),
                ElementsAre("deactivated", "target set"));
    EXPECT_EQ(provider.preview()->target, &blur);
    EXPECT_THAT(step("player draws", [this] { player.drawIn(&composition); }),
                ElementsAre("activated", "restart", "composition set"));
    EXPECT_EQ(provider.composition(), &composition);
    EXPECT_THAT(step("new target", [this] { provider.setTarget(&sepia); }),
                ElementsAre("activated", "restart", "target replaced"));
    EXPECT_THAT(step("target cleared", [this] { provider.setTarget(nullptr); }),
                ElementsAre("activated", "restart", "target replaced to none"));
    EXPECT_THAT(step("player leaves", [this] { player.drawIn(nullptr); }),
                ElementsAre("deactivated", "composition replaced"));
    EXPECT_EQ(provider.composition(), nullptr);
}

TEST(ColorFilterPreviewTest, CopiesAReadyPreviewIntoARecordOfItsOwn)
{
    Effect::Object filter(EditorCollection::CollectionID::EFFECTS_VIDEO, "warm");
    Composition::Object composition;
    Preview::Object<Effect::Object> ready;
    ready.target = &filter;
    ready.composition = &composition;
    ready.width = 320;
    ready.height = 180;

    ColorFilterPreviewProvider provider(ready, nullptr);

    ASSERT_NE(provider.preview(), nullptr);
    EXPECT_NE(provider.preview(), &ready);
    EXPECT_TRUE(provider.previewIsOwned(provider.preview()));
    EXPECT_EQ(provider.preview()->target, &filter);
    EXPECT_EQ(provider.preview()->composition, &composition);
    EXPECT_EQ(provider.preview()->width, 320);
    EXPECT_EQ(provider.preview()->height, 180);
}

TEST(AnimationPreviewTest, PositionAndTargetChangeInTwoSteps)
{
    StockPictures stock;
    std::vector<std::string> journal;
    AnimationPreviewProvider provider(nullptr);
    PreviewWatcher<Animation::TransformationItem> player(provider.preview(), journal);
    Animation::TransformationItem first;
    Animation::TransformationItem second;
    provider.setTarget(&first, 10);
    player.seen.clear();
    journal.clear();

    provider.setTarget(&second, 250);

    EXPECT_THAT(player.seen,
                ElementsAre(std::make_pair(std::int64_t(250), &first), std::make_pair(std::int64_t(250), &second)));
    EXPECT_THAT(journal, ElementsAre("target replaced"));
}

TEST(TransitionPreviewTest, ShowsTheGivenTransition)
{
    StockPictures stock;
    TransitionPreviewProvider provider(nullptr);
    Transition::Object fade("fade");
    Composition::Object composition;
    QSignalSpy restart(&provider, &CompositionProvider::restartRequested);
    PreviewWatcher<Transition::Object>::SetterChain(provider.previewChange(provider.preview()))->composition =
        &composition;

    provider.setTarget(&fade);

    EXPECT_EQ(provider.preview()->target, &fade);
    EXPECT_EQ(restart.count(), 2);
}

} // namespace
