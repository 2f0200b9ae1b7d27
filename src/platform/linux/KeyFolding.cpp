#include "KeyFolding.h"

#include "trigger/ModifierFlags.h"

#include <X11/keysym.h>
#include <algorithm>

namespace corvane {

std::uint64_t modifierFlagForKeysym(unsigned long keysym)
{
    // Ctrl sets command, Alt (and Meta) option, Super (and Hyper) control: the bits keep their
    // stored names, the keys are the ones a Linux keyboard has.
    switch (keysym) {
    case XK_Control_L:
    case XK_Control_R:
        return ModifierFlags::command;
    case XK_Alt_L:
    case XK_Alt_R:
    case XK_Meta_L:
    case XK_Meta_R:
        return ModifierFlags::option;
    case XK_Super_L:
    case XK_Super_R:
    case XK_Hyper_L:
    case XK_Hyper_R:
        return ModifierFlags::control;
    case XK_Shift_L:
    case XK_Shift_R:
        return ModifierFlags::shift;
    default:
        return 0;
    }
}

bool isIgnoredKeysym(unsigned long keysym)
{
    return keysym == XK_Caps_Lock || keysym == XK_Shift_Lock || keysym == XK_Num_Lock ||
           keysym == XK_ISO_Level3_Shift || keysym == XK_ISO_Level5_Shift ||
           keysym == XK_Mode_switch;
}

std::uint64_t KeyFolding::flags() const
{
    std::uint64_t flags = 0;
    for (const std::uint64_t flag : m_down)
        flags |= flag;
    return flags;
}

QList<KeyFolding::Change> KeyFolding::press(unsigned long keysym, Clock::time_point at)
{
    QList<Change> changes = advance(at);
    if (isIgnoredKeysym(keysym))
        return changes;
    const std::uint64_t flag = modifierFlagForKeysym(keysym);
    if (!flag) {
        if (!m_otherKeysDown.contains(keysym)) {
            m_otherKeysDown.append(keysym);
            changes.append({Change::Kind::keyPress, flags()});
        }
        return changes;
    }
    // The press that follows a held-back release: the pair was a repeat.
    if (m_pendingReleases.remove(keysym) || m_down.contains(keysym))
        return changes;
    m_down.insert(keysym, flag);
    changes.append({Change::Kind::modifiers, flags()});
    return changes;
}

QList<KeyFolding::Change> KeyFolding::release(unsigned long keysym, Clock::time_point at)
{
    QList<Change> changes = advance(at);
    if (!modifierFlagForKeysym(keysym)) {
        m_otherKeysDown.removeAll(keysym);
        return changes;
    }
    if (m_down.contains(keysym) && !m_pendingReleases.contains(keysym))
        m_pendingReleases.insert(keysym, at);
    return changes;
}

QList<KeyFolding::Change> KeyFolding::advance(Clock::time_point now)
{
    // In the order the keys were released.
    QList<std::pair<Clock::time_point, unsigned long>> due;
    for (auto it = m_pendingReleases.cbegin(); it != m_pendingReleases.cend(); ++it)
        if (now - it.value() >= pairWindow)
            due.append({it.value(), it.key()});
    std::sort(due.begin(), due.end());
    QList<Change> changes;
    for (const auto& [released, keysym] : due) {
        m_pendingReleases.remove(keysym);
        m_down.remove(keysym);
        changes.append({Change::Kind::modifiers, flags()});
    }
    return changes;
}

std::optional<KeyFolding::Clock::time_point> KeyFolding::nextDeadline() const
{
    std::optional<Clock::time_point> next;
    for (const Clock::time_point released : m_pendingReleases)
        if (!next || released + pairWindow < *next)
            next = released + pairWindow;
    return next;
}

} // namespace corvane
