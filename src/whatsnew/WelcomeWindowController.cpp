#include "WelcomeWindowController.h"

#include "platform/AccessibilityTrust.h"
#include "platform/DesktopCompanion.h"
#include "platform/DesktopIntegration.h"

namespace corvane {

WelcomeModel::WelcomeModel(const WindowServices& services, std::function<void()> close)
    : m_services(services), m_close(std::move(close)), m_trigger(services.triggerNameForTexts()),
      m_globalInputWatched(services.globalInputWatched), m_permission(services.trust)
{
    connect(&m_permission, &PermissionWatch::changed, this, &WelcomeModel::trustedChanged);
    if (services.companion)
        connect(services.companion, &DesktopCompanion::stateChanged, this,
                &WelcomeModel::companionStateChanged);
}

void WelcomeModel::turnOnCompanion()
{
    if (m_services.companion)
        m_services.companion->turnOn();
}

void WelcomeModel::grantAccess()
{
    if (m_services.trust)
        m_services.trust->requestTrust();
}

void WelcomeModel::openAccessibilitySettings()
{
    if (m_services.desktop)
        m_services.desktop->openAccessibilitySettings();
}

void WelcomeModel::openAccessibilityHelp()
{
    if (m_services.desktop)
        m_services.desktop->openAccessibilityHelp();
}

void WelcomeModel::close()
{
    if (m_close)
        m_close();
}

WelcomeWindowController& WelcomeWindowController::shared()
{
    static WelcomeWindowController controller;
    return controller;
}

void WelcomeWindowController::show()
{
    if (!window()) {
        auto* model = new WelcomeModel(WindowServices::shared(), [] { shared().close(); });
        create(QStringLiteral("Corvane.Windows"), QStringLiteral("WelcomeView"),
               tr("Welcome to Corvane"), Buttons::closeOnly, {}, model);
    }
    bringForward();
}

} // namespace corvane
