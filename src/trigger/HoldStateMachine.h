#pragma once

// The pure decision core of hold-to-peek: four states, seven events, and for every event an ordered
// list of effects for the driver (HoldDetector) to carry out.

#include <QList>
#include <QMetaType>

namespace corvane {

class HoldStateMachine {
public:
    enum class State { idle, arming, peeking, pinned };
    enum class Effect { startTimer, cancelTimer, show, pin, hide };

    struct Event {
        enum class Kind {
            triggerDown,
            triggerUp,
            interrupted,
            timerFired,
            pinRequest,
            closeRequest
        };
        Kind kind;
        bool overPanel = false; // meaningful for triggerUp only

        static Event triggerDown() { return {Kind::triggerDown}; }
        static Event triggerUp(bool overPanel) { return {Kind::triggerUp, overPanel}; }
        static Event interrupted() { return {Kind::interrupted}; }
        static Event timerFired() { return {Kind::timerFired}; }
        static Event pinRequest() { return {Kind::pinRequest}; }
        static Event closeRequest() { return {Kind::closeRequest}; }
    };

    using Effects = QList<Effect>;

    State state = State::idle;

    // Applies the transition table; an ignored event returns an empty list and keeps the state.
    Effects handle(const Event& event);

    friend bool operator==(const HoldStateMachine&, const HoldStateMachine&) = default;
};

const char* nameOf(HoldStateMachine::State state);
const char* nameOf(HoldStateMachine::Effect effect);
const char* nameOf(HoldStateMachine::Event::Kind kind);

} // namespace corvane

Q_DECLARE_METATYPE(corvane::HoldStateMachine::Effect)
