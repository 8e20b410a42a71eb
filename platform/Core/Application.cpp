#include "Application.h"

namespace Dravik {
namespace App {

std::string CustomizationManager::GetPurchaseLink(int linkId) const
{
    const auto it = m_purchaseLinks.find(linkId);
    return it == m_purchaseLinks.end() ? std::string() : it->second;
}

namespace {
std::shared_ptr<ICustomizationManager>& managerSlot()
{
    static std::shared_ptr<ICustomizationManager> slot = std::make_shared<CustomizationManager>();
    return slot;
}
} // namespace

ICustomizationManager& Application::GetCustomizationManager() { return *managerSlot(); }

void Application::SetCustomizationManager(std::shared_ptr<ICustomizationManager> manager)
{
    managerSlot() = manager ? std::move(manager) : std::make_shared<CustomizationManager>();
}

} // namespace App
} // namespace Dravik
