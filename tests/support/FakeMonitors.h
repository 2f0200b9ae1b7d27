#pragma once

// InputMonitors driven by the test: handlers are kept, events are sent by hand.

#include "platform/InputMonitors.h"

#include <QHash>
#include <QList>

namespace corvane::test {

class FakeMonitors : public InputMonitors {
public:
    std::optional<Token> add(Kind kind, Handler handler) override
    {
        if (refuse.contains(kind))
            return std::nullopt;
        handlers.insert(++next, {kind, std::move(handler)});
        ++added;
        return next;
    }
    void remove(Token token) override { handlers.remove(token); }
    QPointF pointerPosition() const override { return pointer; }

    void emit(Kind kind, std::uint64_t flags = 0)
    {
        const auto copy = handlers; // a handler may stop and start the monitors
        for (const auto& [k, handler] : copy)
            if (k == kind)
                handler(Event{kind, flags});
    }
    void modifiers(std::uint64_t flags) { emit(Kind::modifierChange, flags); }

    QHash<Token, std::pair<Kind, Handler>> handlers;
    QList<Kind> refuse;
    QPointF pointer{0, 0};
    Token next = 0;
    int added = 0;
};

} // namespace corvane::test
