#include <Core/Application.h>

#include <gtest/gtest.h>

using namespace Dravik::App;

TEST(CustomizationManager, ApplicationInstallsItsOwnAndCanReturnToTheDefault)
{
    auto manager = std::make_shared<CustomizationManager>();
    manager->SetSupportMailLink("mailto:help@video.test");
    manager->SetPaidEdition(true);
    manager->SetPurchaseLink(CustomizationManager::FullVersionLinkId, "https://shop.test/full");
    Application::SetCustomizationManager(manager);

    EXPECT_EQ(Application::GetCustomizationManager().GetSupportMailLink(), "mailto:help@video.test");
    EXPECT_TRUE(Application::GetCustomizationManager().HasPaidEdition());
    EXPECT_EQ(Application::GetCustomizationManager().GetPurchaseLink(59), "https://shop.test/full");
    EXPECT_EQ(Application::GetCustomizationManager().GetPurchaseLink(60), "");

    Application::SetCustomizationManager(nullptr);
    EXPECT_FALSE(Application::GetCustomizationManager().HasPaidEdition());
    EXPECT_EQ(Application::GetCustomizationManager().GetSupportMailLink().rfind("mailto:", 0), 0u);
}
