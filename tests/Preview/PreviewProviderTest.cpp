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
#include <ostream>
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

// What each provider builds its preview around.
struct ProviderCase
{
    const char* name;
    std::function<std::unique_ptr<CompositionProvider>()> make;
    std::function<QStringList()> stockImages;
    Types::Time duration;
};

// Rows are named by meaning in the test names and in failure messages.
void PrintTo(const ProviderCase& row, std::ostream* out) { *out << row.name; }

template <class Provider>
std::function<std::unique_ptr<CompositionProvider>()> maker()
{
    return [] { return std::make_unique<Provider>(nullptr); };
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

class ProviderStockTest : public testing::TestWithParam<ProviderCase>
{
protected:
    StockPictures stock;
};

TEST_P(ProviderStockTest, BuildsItsPreviewAroundTheStockPicturesOfTheSettings)
{
    const std::unique_ptr<CompositionProvider> provider = GetParam().make();
    Types::Time duration = -1;

    const QStringList paths = stockOfAny(*provider, &duration);

    EXPECT_EQ(paths, GetParam().stockImages());
    EXPECT_EQ(duration, GetParam().duration);
    for (const QString& path : paths) {
        EXPECT_TRUE(path.startsWith(StockFolder)) << path.toStdString();
        EXPECT_FALSE(QImageReader(path).read().isNull()) << "stock picture missing: " << path.toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(
    Providers, ProviderStockTest,
    testing::Values(
        ProviderCase{"effect", maker<EffectPreviewProvider>(),
                     [] { return QStringList{Settings::effectPreviewImagePath()}; }, 0},
        ProviderCase{"colour_filter", maker<ColorFilterPreviewProvider>(),
                     [] { return QStringList{Settings::effectPreviewImagePath()}; }, 0},
        ProviderCase{
            "transition", maker<TransitionPreviewProvider>(),
            [] {
                return QStringList{Settings::transitionPreviewImageAPath(), Settings::transitionPreviewImageBPath()};
            },
            0},
        ProviderCase{"title", maker<TitlePreviewProvider>(),
                     [] { return QStringList{Settings::titlePreviewImagePath()}; },
                     Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION},
        ProviderCase{"callout", maker<CalloutPreviewProvider>(),
                     [] { return QStringList{Settings::calloutPreviewImagePath()}; },
                     Timeline::Clip::DEFAULT_CALLOUT_CLIP_DURATION},
        ProviderCase{"quiz", maker<QuizPreviewProvider>(), [] { return QStringList{Settings::quizPreviewImagePath()}; },
                     Timeline::Clip::DEFAULT_QUIZ_CLIP_DURATION},
        ProviderCase{"pan_zoom", maker<PanZoomPreviewProvider>(),
                     [] { return QStringList{Settings::panZoomPreviewImagePath()}; }, 0},
        ProviderCase{"animation", maker<AnimationPreviewProvider>(),
                     [] {
                         return QStringList{Settings::animationBackgroundPreviewImagePath(),
                                            Settings::animationIconPreviewImagePath()};
                     },
                     0},
        ProviderCase{"import", maker<ImportPreviewProvider>(), [] { return QStringList(); }, 0}),
    [](const testing::TestParamInfo<ProviderCase>& info) { return std::string(info.param.name); });

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

TEST_F(EffectPreviewTest, ANewPreviewHasTheDefaultSizeAndNothingToShow)
{
    ASSERT_NE(provider.preview(), nullptr);
    EXPECT_TRUE(provider.previewIsOwned(provider.preview()));
    EXPECT_EQ(provider.preview()->width, 800);
    EXPECT_EQ(provider.preview()->height, 450);
    EXPECT_EQ(provider.preview()->target, nullptr);
    EXPECT_EQ(provider.composition(), nullptr);
}

// Each step of a preview's life, in order: what the player and the provider's signals see.
TEST_F(EffectPreviewTest, RunsOnlyWhileThePlayerDrawsAndRestartsOnEachTarget)
{
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
