#include "HoldStateMachine.h"

namespace corvane {

using State = HoldStateMachine::State;
using Effect = HoldStateMachine::Effect;
using Kind = HoldStateMachine::Event::Kind;

HoldStateMachine::Effects HoldStateMachine::handle(const Event& event)
{
    // Each case is one state's transitions; an event a state does not name is ignored (state
    // unchanged, no effects).
    switch (state) {
    case State::idle:
        switch (event.kind) {
        case Kind::triggerDown:
            state = State::arming;
            return {Effect::startTimer};
        case Kind::pinRequest:
            state = State::pinned;
            return {Effect::show, Effect::pin};
        default:
            return {};
        }
    case State::arming:
        switch (event.kind) {
        case Kind::triggerUp: // overPanel does not matter before anything was shown (rule 2)
        case Kind::interrupted:
        case Kind::closeRequest:
            state = State::idle;
            return {Effect::cancelTimer};
        case Kind::timerFired: // the one-shot timer has just fired: nothing to cancel (rule 3)
            state = State::peeking;
            return {Effect::show};
        case Kind::pinRequest:
            state = State::pinned;
            return {Effect::cancelTimer, Effect::show, Effect::pin};
        default:
            return {};
        }
    case State::peeking:
        switch (event.kind) {
        case Kind::triggerUp:
            if (event.overPanel) {
                state = State::pinned;
                return {Effect::pin};
            }
            state = State::idle;
            return {Effect::hide};
        case Kind::interrupted:
        case Kind::closeRequest:
            state = State::idle;
            return {Effect::hide};
        case Kind::pinRequest:
            state = State::pinned;
            return {Effect::pin};
        default:
            return {};
        }
    case State::pinned:
        // The trigger and interruptions are ignored; a second pin request toggles (rule 7).
        switch (event.kind) {
        case Kind::pinRequest:
        case Kind::closeRequest:
            state = State::idle;
            return {Effect::hide};
        default:
            return {};
        }
    }
    return {};
}

const char* nameOf(HoldStateMachine::State state)
{
    switch (state) {
    case State::idle:
        return "idle";
    case State::arming:
        return "arming";
    case State::peeking:
        return "peeking";
    case State::pinned:
        return "pinned";
    }
    return "?";
}

const char* nameOf(HoldStateMachine::Effect effect)
{
    switch (effect) {
    case Effect::startTimer:
        return "startTimer";
    case Effect::cancelTimer:
        return "cancelTimer";
    case Effect::show:
        return "show";
    case Effect::pin:
        return "pin";
    case Effect::hide:
        return "hide";
    }
    return "?";
}

const char* nameOf(HoldStateMachine::Event::Kind kind)
{
    switch (kind) {
    case Kind::triggerDown:
        return "triggerDown";
    case Kind::triggerUp:
        return "triggerUp";
    case Kind::interrupted:
        return "interrupted";
    case Kind::timerFired:
        return "timerFired";
    case Kind::pinRequest:
        return "pinRequest";
    case Kind::closeRequest:
        return "closeRequest";
    }
    return "?";
}

} // namespace corvane
