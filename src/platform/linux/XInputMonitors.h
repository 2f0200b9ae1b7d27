#pragma once

// InputMonitors on X11: XInput 2.2 raw key and button events on the root window, on an X connection
// of the monitor's own, delivered on the main thread. The modifier state is the set of modifier
// keys down (a release can arrive twice), seeded from the keyboard state.

#include "platform/InputMonitors.h"

#include <QHash>
#include <QObject>
#include <QRectF>
#include <QSet>
#include <functional>

class QSocketNotifier;
typedef struct _XDisplay Display;

namespace corvane {

class XInputMonitors : public QObject, public InputMonitors {
    Q_OBJECT

public:
    explicit XInputMonitors(QObject* parent = nullptr);
    ~XInputMonitors() override;

    // False, with a reason, when the X server or XInput 2.2 is missing; every add() then refuses.
    bool isAvailable(QString* whyNot = nullptr) const;

    std::optional<Token> add(Kind kind, Handler handler) override;
    void remove(Token token) override;
    QPointF pointerPosition() const override;

    // Input meant for Corvane's own panel never reaches the handlers: key events are dropped
    // while this answers true (the panel holds the keyboard), button events while the pointer is
    // inside the rectangle it gives (the visible panel).
    std::function<bool()> keyboardHeldByUs = [] { return false; };
    std::function<std::optional<QRectF>()> ownPanelFrame = [] { return std::optional<QRectF>(); };

    std::uint64_t currentModifierFlags() const;

private:
    void open();
    void select();
    void readEvents();
    void seedModifiers();
    void deliver(Kind kind);

    Display* m_display = nullptr;
    int m_opcode = 0;
    QString m_whyNot;
    QSocketNotifier* m_notifier = nullptr;
    MonitorHandlers m_handlers;
    QHash<int, std::uint64_t> m_modifierKeysDown; // keycode → the flag it sets
};

} // namespace corvane
