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

// Setting a composition activates every time, even the same one; clearing deactivates even when
// nothing was set; announcing keeps the composition.
TEST_F(CompositionProviderTest, SettingActivatesEveryTimeClearingDeactivatesAndAnnouncingKeepsTheComposition)
{
    provider.setComposition(nullptr);
    provider.setComposition(first);
    provider.setComposition(first);
    provider.setComposition(second);
    EXPECT_THAT(journal, ElementsAre("deactivated", "activated", "activated", "activated"));
    EXPECT_EQ(provider.composition(), second);

    journal.clear();
    provider.deactivate();
    provider.activate();
    EXPECT_EQ(provider.composition(), second);
    provider.setComposition(nullptr);
    EXPECT_THAT(journal, ElementsAre("deactivated", "activated", "deactivated"));
    EXPECT_EQ(provider.composition(), nullptr);
}

} // namespace
