#pragma once

// The overlay's window on X11: a frameless window above all others that the window manager leaves
// alone (no taskbar entry, no activation) and that can take the keyboard for typing while the
// application in front stays active. Translucent (an alpha channel) where a compositor blends it
// with what lies behind; opaque and cut to the card's shape where nothing does.
//
// On Wayland a client can neither grab the keyboard nor keep a shown window from taking it: the
// compositor places the panel (WaylandWindows) and gives it the keyboard, so the trigger's release
// and the typing come to it; taking the keyboard is asking for activation. Nor is there a global
// pointer: the panel knows whether the pointer is over it.

#include <QQuickWindow>
#include <optional>

namespace corvane {

class PeekPanel : public QQuickWindow {
    Q_OBJECT

public:
    // `translucent` is fixed for the window's life: X chooses its visual when it is made.
    explicit PeekPanel(bool translucent);

    bool isTranslucent() const { return m_translucent; }

    // Shows and raises the panel and sends that to the X server at once, rather than when the
    // event loop next waits: the window manager maps it while the caller goes on.
    void showNow();

    // The pin's "make key without activating": take the keyboard (an X11 grab) and accept
    // focus; `false` gives both back. Returns whether the keyboard is ours.
    bool takeKeyboard(bool take);
    bool hasKeyboard() const { return m_hasKeyboard; }
    // Whether the pointer is over the panel (from the panel's own enter and leave events).
    bool isHovered() const { return m_hovered; }

    // The card's corner radius (OverlayRoot.qml).
    static constexpr int cornerRadius = 22;

    // Cuts an opaque window to the card's rounded shape (an X shape) for its size, so that its
    // corners show what lies behind; a translucent one draws its corners transparent itself.
    void cutToCard();

protected:
    bool event(QEvent* event) override;

private:
    const bool m_translucent;
    const bool m_wayland;
    bool m_hasKeyboard = false;
    bool m_hovered = false;
    std::optional<QSize> m_cutSize; // the size the mask was made for
};

} // namespace corvane
