#include <Core/Application.h>

#include <gtest/gtest.h>

using namespace Dravik::App;

// What the application installs is read through by the error texts (tested there).
TEST(CustomizationManager, ApplicationCanReturnToTheDefault)
{
    auto manager = std::make_shared<CustomizationManager>();
    manager->SetPaidEdition(true);
    manager->SetPurchaseLink(CustomizationManager::FullVersionLinkId, "https://shop.test/full");
    Application::SetCustomizationManager(manager);
    EXPECT_EQ(Application::GetCustomizationManager().GetPurchaseLink(60), "");

    Application::SetCustomizationManager(nullptr);
    EXPECT_FALSE(Application::GetCustomizationManager().HasPaidEdition());
    EXPECT_EQ(Application::GetCustomizationManager().GetSupportMailLink().rfind("mailto:", 0), 0u);
}
