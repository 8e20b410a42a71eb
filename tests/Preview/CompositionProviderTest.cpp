#include <Util/Preview/CompositionProvider.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;

namespace {

class CompositionProviderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QObject::connect(&provider, &CompositionProvider::activated, [this] { journal.push_back("activated"); });
        QObject::connect(&provider, &CompositionProvider::deactivated, [this] { journal.push_back("deactivated"); });
        QObject::connect(&provider, &CompositionProvider::restartRequested,
                         [this] { journal.push_back("restartRequested"); });
    }

    std::vector<std::string> journal;
    CompositionProvider provider{nullptr};
    // Compositions are told apart by address only; any two distinct addresses will do.
    const Composition::Object* first = reinterpret_cast<const Composition::Object*>(&journal);
    const Composition::Object* second = reinterpret_cast<const Composition::Object*>(&provider);
};

TEST_F(CompositionProviderTest, SettingACompositionActivatesEveryTimeEvenTheSameOne)
{
    provider.setComposition(first);
    provider.setComposition(first);
    provider.setComposition(second);

    EXPECT_THAT(journal, ElementsAre("activated", "activated", "activated"));
    EXPECT_EQ(provider.composition(), second);
}

TEST_F(CompositionProviderTest, ClearingDeactivatesEvenWhenNothingWasSetAndAnnouncingKeepsTheComposition)
{
    provider.setComposition(nullptr);
    EXPECT_THAT(journal, ElementsAre("deactivated"));

    provider.setComposition(first);
    provider.deactivate();
    provider.activate();
    EXPECT_EQ(provider.composition(), first);
    provider.setComposition(nullptr);
    EXPECT_THAT(journal, ElementsAre("deactivated", "activated", "deactivated", "activated", "deactivated"));
    EXPECT_EQ(provider.composition(), nullptr);
}

} // namespace
