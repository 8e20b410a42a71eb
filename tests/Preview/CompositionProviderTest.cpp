#include <Util/Preview/CompositionProvider.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class CompositionProviderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QObject::connect(
            &provider, &CompositionProvider::activated, [this] { journal.push_back("activated"); });
        QObject::connect(
            &provider, &CompositionProvider::deactivated, [this] { journal.push_back("deactivated"); });
        QObject::connect(&provider, &CompositionProvider::restartRequested,
            [this] { journal.push_back("restartRequested"); });
    }

    std::vector<std::string> journal;
    CompositionProvider provider { nullptr };
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

TEST_F(CompositionProviderTest, ClearingDeactivatesEvenWhenNothingWasSet)
{
    provider.setComposition(nullptr);
    EXPECT_THAT(journal, ElementsAre("deactivated"));

    provider.setComposition(first);
    provider.setComposition(nullptr);
    EXPECT_THAT(journal, ElementsAre("deactivated", "activated", "deactivated"));
    EXPECT_EQ(provider.composition(), nullptr);
}

TEST_F(CompositionProviderTest, ActivateAndDeactivateOnlyAnnounce)
{
    provider.setComposition(first);
    journal.clear();

    provider.deactivate();
    provider.activate();

    EXPECT_THAT(journal, ElementsAre("deactivated", "activated"));
    EXPECT_EQ(provider.composition(), first);
}

TEST_F(CompositionProviderTest, FlagsAreStoredSilently)
{
    EXPECT_FALSE(provider.isPrimary());
    EXPECT_FALSE(provider.isUsing());

    provider.setPrimary(true);
    provider.setUsing(true);

    EXPECT_TRUE(provider.isPrimary());
    EXPECT_TRUE(provider.isUsing());
    EXPECT_THAT(journal, IsEmpty());
}

} // namespace
