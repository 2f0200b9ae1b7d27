#pragma once

// The workspace service on X11: the frontmost application is the owner (_NET_WM_PID) of
// _NET_ACTIVE_WINDOW; an activation is a PropertyNotify of _NET_ACTIVE_WINDOW whose new owner is
// another process than the last one.

#include "platform/Workspace.h"

#include <optional>

class QSocketNotifier;
typedef struct _XDisplay Display;

namespace corvane {

class X11Workspace : public Workspace {
    Q_OBJECT

public:
    explicit X11Workspace(QObject* parent = nullptr);
    ~X11Workspace() override;

    bool isAvailable() const { return m_display != nullptr; }
    std::optional<RunningApp> frontmostApplication() const override;

Q_SIGNALS:
    // Workspace::applicationActivated(), for processes other than this one.
    void otherApplicationActivated(const corvane::RunningApp& app);

private:
    void readEvents();
    std::optional<qint64> activeWindowOwner() const;
    // The identity of `pid`, resolved once per active window (resolving reads every client
    // window's properties; the trigger asks for the frontmost application three times a peek).
    RunningApp identity(qint64 pid) const;

    Display* m_display = nullptr;
    QSocketNotifier* m_notifier = nullptr;
    unsigned long m_activeAtom = 0;
    qint64 m_lastOwner = 0;
    mutable unsigned long m_activeWindow = 0; // as of the last activeWindowOwner()
    mutable std::optional<std::pair<unsigned long, RunningApp>> m_identity; // by active window
};

} // namespace corvane

Q_DECLARE_METATYPE(corvane::RunningApp)
