#pragma once

// The spec's PeekPanel on X11 (PLATFORM.md): a frameless, always-on-top, transparent tool
// window that skips the taskbar, is shown without taking activation and can take the keyboard
// for typing while the application in front stays active.

#include <QQuickWindow>
#include <optional>

namespace corvane {

class PeekPanel : public QQuickWindow {
    Q_OBJECT

public:
    PeekPanel();

    // The pin's "make key without activating": take the keyboard (an X11 grab) and accept
    // focus; `false` gives both back. Returns whether the keyboard is ours.
    bool takeKeyboard(bool take);
    bool hasKeyboard() const { return m_hasKeyboard; }

    // The card's corner radius (OverlayRoot.qml).
    static constexpr int cornerRadius = 22;

    // Cuts the window to the card's rounded shape (an X shape) when nothing composites its
    // transparent corners, which would otherwise show black; `false` removes the cut.
    void cutToCard(bool cut);

private:
    bool m_hasKeyboard = false;
    std::optional<QSize> m_cutSize; // the size the mask was made for; none while uncut
};

} // namespace corvane
