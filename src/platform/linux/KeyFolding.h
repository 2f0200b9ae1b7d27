#pragma once

// The modifier keys held, from key events as toolkits report them to the accessibility bus, where
// a held key repeats: GTK 3 sends the press again (every 40 ms after 600 ms), Qt 5 a release
// followed by a press some 20 ms later. A press of a key already down changes nothing, and a
// release is held back for `pairWindow`: a press of the same key within it makes both a repeat,
// otherwise the release takes effect when the window ends. Another key pressed is reported once
// per press (a repeat of it only says again that a key was pressed while the trigger is held).
// Pure, with the time passed in, so that both styles can be checked without a keyboard.

#include <QHash>
#include <QList>
#include <chrono>
#include <cstdint>
#include <optional>

namespace corvane {

// The watched modifier bit of an X keysym (Ctrl → command, Alt and Meta → option, Super and Hyper
// → control, Shift → shift); 0 for any other key.
std::uint64_t modifierFlagForKeysym(unsigned long keysym);
// Caps Lock, Num Lock, AltGr and the like: neither a modifier that is watched nor a key that
// breaks a hold (a lock left on must not disable the trigger).
bool isIgnoredKeysym(unsigned long keysym);

class KeyFolding {
public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds pairWindow{60};

    struct Change {
        enum class Kind { modifiers, keyPress } kind;
        std::uint64_t flags = 0; // the modifier flags after the change
        friend bool operator==(const Change&, const Change&) = default;
    };

    QList<Change> press(unsigned long keysym, Clock::time_point at);
    QList<Change> release(unsigned long keysym, Clock::time_point at);
    // Applies the releases whose window has ended by `now`.
    QList<Change> advance(Clock::time_point now);
    // When the next held-back release takes effect, if one is pending.
    std::optional<Clock::time_point> nextDeadline() const;
    std::uint64_t flags() const;

private:
    QHash<unsigned long, std::uint64_t> m_down;                // modifier keysym → its flag
    QHash<unsigned long, Clock::time_point> m_pendingReleases; // keysym → when it was released
    QList<unsigned long> m_otherKeysDown;
};

} // namespace corvane
