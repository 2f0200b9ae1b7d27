#pragma once

// Global input monitors (XInput 2 raw events on X11): modifier changes, key presses, mouse-button
// presses and scrolling delivered to other applications, and the pointer position. Input meant for
// Corvane's own windows never reaches the handlers.

#include <QHash>
#include <QPointF>
#include <QRectF>
#include <cstdint>
#include <functional>
#include <optional>

namespace corvane {

// Whether the pointer is over the panel: a rectangle contains a point on its left and top edges,
// not on its right and bottom edges.
inline bool containsPoint(const QRectF& frame, const QPointF& point)
{
    return point.x() >= frame.left() && point.x() < frame.left() + frame.width() &&
           point.y() >= frame.top() && point.y() < frame.top() + frame.height();
}

class InputMonitors {
public:
    enum class Kind { modifierChange, keyPress, mousePress, scroll };

    struct Event {
        Kind kind;
        std::uint64_t modifierFlags = 0; // the device-independent modifier bits after the event
    };

    using Token = std::uint64_t;
    using Handler = std::function<void(const Event&)>;

    virtual ~InputMonitors() = default;

    // Absent when the platform refuses the monitor (for example without XInput 2).
    virtual std::optional<Token> add(Kind kind, Handler handler) = 0;
    virtual void remove(Token token) = 0;
    // Global logical coordinates, origin top left.
    virtual QPointF pointerPosition() const = 0;
};

// An implementation's handlers by token, each called for the events of its kind.
class MonitorHandlers {
public:
    InputMonitors::Token add(InputMonitors::Kind kind, InputMonitors::Handler handler)
    {
        m_handlers.insert(++m_next, {kind, std::move(handler)});
        return m_next;
    }
    void remove(InputMonitors::Token token) { m_handlers.remove(token); }
    void deliver(const InputMonitors::Event& event) const
    {
        const auto handlers = m_handlers; // a handler may remove or add monitors
        for (const auto& [kind, handler] : handlers)
            if (kind == event.kind)
                handler(event);
    }

private:
    QHash<InputMonitors::Token, std::pair<InputMonitors::Kind, InputMonitors::Handler>> m_handlers;
    InputMonitors::Token m_next = 0;
};

} // namespace corvane
