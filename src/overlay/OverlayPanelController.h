#pragma once

// Owns the floating panel, fills the view model for each presentation, places the panel on the
// screen under the pointer, fades it in and out, and while pinned handles the four keys that drive
// the overlay.

#include "OverlayLists.h"
#include "OverlayViewModel.h"
#include "PeekPanel.h"
#include "menus/MenuCatalog.h"
#include "platform/RunningApp.h"

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <memory>
#include <optional>

class QQmlComponent;
class QQmlEngine;
class QTimeLine;

namespace corvane {

class OverlayPanelController : public QObject {
    Q_OBJECT

public:
    explicit OverlayPanelController(QObject* parent = nullptr);
    ~OverlayPanelController() override;

    OverlayViewModel& viewModel() { return m_viewModel; }
    OverlayLists& lists() { return m_lists; }
    PeekPanel* panel() const { return m_panel.get(); }
    qint64 fadeGeneration() const { return m_fadeGeneration; }
    bool keyMonitorInstalled() const { return m_keyMonitor; }
    QQuickItem* rootView() const { return m_root; } // made with the panel, kept with it

    void present(const RunningApp& app, const std::optional<MenuCatalog>& catalog,
                 const QStringList& favorites, bool showDisabled, bool showNoShortcut, bool glassy,
                 const QString& triggerSymbol);
    // Fills the hidden panel with what present() with the same arguments would show, so that
    // its views are made and laid out ahead (the shell stages an application's catalog when the
    // hold's prefetch brings it, before the hold delay ends). present() then finds them ready.
    // Does nothing while the panel is visible.
    void stage(const RunningApp& app, const std::optional<MenuCatalog>& catalog,
               const QStringList& favorites, bool showDisabled, bool showNoShortcut, bool glassy,
               const QString& triggerSymbol);
    // Makes the panel and its root view ahead of the first presentation (present() makes them
    // on first use otherwise); nothing is shown.
    void prepare();
    void pin();
    // While one of Corvane's dialogs is open over the pinned panel, the panel lets the keyboard
    // go, and takes it back after.
    void lendKeyboard(bool lend);
    void dismiss();
    void update(const MenuCatalog& catalog);

    // Whether the panel's transparent parts are composited (the glass is then translucent).
    // Set by the shell from the platform, before prepare() and at each presentation; false
    // draws the card solid on an opaque window. A change makes the hidden panel again.
    void setTranslucent(bool translucent);

Q_SIGNALS:
    void hidden(); // after a fade-out ordered the panel out
    // A panel window was made: the first one, or a new one after setTranslucent(). Requests
    // to the window (a blur behind it) and connections to its frames go to the new one.
    void panelCreated(PeekPanel* panel);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void createPanel();
    // Steps 2 and 4 of a presentation: the view model and fresh view state (the panel exists).
    void fill(const RunningApp& app, const std::optional<MenuCatalog>& catalog,
              const QStringList& favorites, bool showDisabled, bool showNoShortcut, bool glassy,
              const QString& triggerSymbol);
    void place();
    void installKeyMonitor();
    void removeKeyMonitor();
    bool handleKey(QKeyEvent* event); // true: consumed
    void fade(qreal to, int milliseconds, std::function<void()> completion);
    void stopFade();
    qint64 nextGeneration();
    void grabKeyboardWhenViewable(int attemptsLeft);

    OverlayViewModel m_viewModel;
    OverlayLists m_lists{&m_viewModel};
    std::unique_ptr<PeekPanel> m_panel;
    bool m_keyMonitor = false; // the event filter on the panel is installed
    qint64 m_fadeGeneration = 0;

    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<QQmlComponent> m_rootComponent;
    QPointer<QQuickItem> m_root;
    QPointer<QTimeLine> m_fade;
    bool m_translucent = false;   // for the next panel made; the panel's own is isTranslucent()
    bool m_sectionsDrawn = false; // the sections shown have been drawn once, on or off screen
};

} // namespace corvane
