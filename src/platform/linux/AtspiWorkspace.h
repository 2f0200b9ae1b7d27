#pragma once

// The workspace on a Wayland session, where no client can ask which window is active: the
// application whose window the accessibility bus last said was activated (GTK 3 and Qt 5 send
// window:activate and window:deactivate, Corvane's own windows too), named by the sender's process
// id and then by the same identity rules as on X11. An application whose window was deactivated
// with none activated after it is no longer in front (a GTK 4 window, which says nothing, may be).

#include "platform/Workspace.h"

#include <QDBusMessage>
#include <QHash>

namespace corvane {

class AtspiWorkspace : public Workspace {
    Q_OBJECT

public:
    explicit AtspiWorkspace(QObject* parent = nullptr);

    bool isAvailable() const { return m_available; }
    std::optional<RunningApp> frontmostApplication() const override { return m_front; }
    // The applications seen in front since Corvane started whose process still runs, one per
    // application id, by name; Corvane itself left out.
    QList<RunningApp> seenApplications() const;

    // While GNOME Shell's companion tells every focus change (`follow`), the bus's activations,
    // which only some toolkits send, are left aside.
    void followCompanion(bool follow) { m_followsCompanion = follow; }
    // The focused window's process (0: none) and the application id the Shell gave it.
    void companionFocused(qint64 pid, const QString& appId);

private Q_SLOTS:
    void activated(const QDBusMessage& signal);
    void deactivated(const QDBusMessage& signal);

private:
    // The process behind a bus name, asked once per name, answered later on this thread.
    void withProcessOf(const QString& sender, std::function<void(qint64 pid)> then);
    void setFront(const RunningApp& app);

    bool m_available = false;
    std::optional<RunningApp> m_front;
    QList<RunningApp> m_seen;
    QHash<QString, qint64> m_processes; // bus name → process id
    quint64 m_activations = 0;          // so that a late answer never overrides a newer one
    bool m_followsCompanion = false;
};

} // namespace corvane
