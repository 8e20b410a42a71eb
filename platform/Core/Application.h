#pragma once

#include <map>
#include <memory>
#include <string>

namespace Dravik {
namespace App {

// What a customized build of the editor says about itself: where users get support and
// whether a paid edition exists to link to.
class ICustomizationManager
{
public:
    virtual ~ICustomizationManager() = default;
    // A "mailto:" link.
    virtual std::string GetSupportMailLink() const = 0;
    virtual bool HasPaidEdition() const = 0;
    // Web address for a purchase link identifier (59 is the full-version upgrade); empty
    // when the build has none.
    virtual std::string GetPurchaseLink(int linkId) const = 0;
};

// The configurable manager an application fills at start-up.
class CustomizationManager : public ICustomizationManager
{
public:
    static constexpr int FullVersionLinkId = 59;

    std::string GetSupportMailLink() const override { return m_supportMailLink; }
    bool HasPaidEdition() const override { return m_paidEdition; }
    std::string GetPurchaseLink(int linkId) const override;

    void SetSupportMailLink(std::string link) { m_supportMailLink = std::move(link); }
    void SetPaidEdition(bool paid) { m_paidEdition = paid; }
    void SetPurchaseLink(int linkId, std::string url) { m_purchaseLinks[linkId] = std::move(url); }

private:
    std::string m_supportMailLink = "mailto:support@example.org";
    bool m_paidEdition = false;
    std::map<int, std::string> m_purchaseLinks;
};

class Application
{
public:
    // The process-wide manager: a CustomizationManager with default values until the
    // application installs its own. Call from the GUI thread.
    static ICustomizationManager& GetCustomizationManager();
    // Installs `manager`; a null pointer restores the default one.
    static void SetCustomizationManager(std::shared_ptr<ICustomizationManager> manager);
};

} // namespace App
} // namespace Dravik
