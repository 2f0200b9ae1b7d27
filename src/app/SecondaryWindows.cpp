#include "SecondaryWindows.h"

#include "AppDelegate.h"
#include "platform/UserDefaults.h"

#include <QMessageBox>

namespace corvane {

void SecondaryWindow::show(const QString& title, const QString& text, const QString& detail)
{
    if (!m_window) {
        m_window = new QMessageBox(QMessageBox::Information, title, text, QMessageBox::Close);
        m_window->setAttribute(Qt::WA_DeleteOnClose);
        m_window->setInformativeText(detail);
        m_window->setModal(false);
    }
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

SettingsWindowPresenter& SettingsWindowPresenter::shared()
{
    static SettingsWindowPresenter presenter;
    return presenter;
}

void SettingsWindowPresenter::show()
{
    SecondaryWindow::show(
        tr("Corvane Settings"), tr("The settings window is on its way."),
        tr("Until it arrives, Corvane's settings are kept in %1 (keys \"holdDelay\", "
           "\"triggerModifier\", \"showDisabledItems\", \"showItemsWithoutShortcut\", "
           "\"glassyBackground\"); restart Corvane after editing it.")
            .arg(UserDefaults::standard().filePath()));
}

WelcomeWindowController& WelcomeWindowController::shared()
{
    static WelcomeWindowController controller;
    return controller;
}

void WelcomeWindowController::show()
{
    const bool trusted = AppDelegate::shared && AppDelegate::shared->isTrusted();
    SecondaryWindow::show(
        tr("Welcome to Corvane"), tr("Welcome to Corvane"),
        trusted ? tr("Accessibility is on. Hold %1 alone for a moment to see the shortcuts of "
                     "the application in front.")
                      .arg(AppDelegate::shared->triggerSymbol())
                : tr("Corvane reads menus through the desktop's accessibility bus, which is "
                     "off. Switch on assistive technologies in your desktop's accessibility "
                     "settings, then restart the applications you want to peek at."));
}

WhatsNewWindowController& WhatsNewWindowController::shared()
{
    static WhatsNewWindowController controller;
    return controller;
}

void WhatsNewWindowController::show(const QList<WhatsNewRelease>& releases)
{
    QStringList lines;
    for (const auto& release : releases)
        for (const auto& feature : release.features)
            lines << QStringLiteral("%1 — %2").arg(release.version.description(), feature.title);
    SecondaryWindow::show(tr("What's New in Corvane"), tr("What's New in Corvane"),
                          lines.join(u'\n'));
}

} // namespace corvane
