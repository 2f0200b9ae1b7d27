#pragma once

// The workspace service: which application is frontmost, and every activation of an application.
// The X11 implementation is X11Workspace.

#include "RunningApp.h"

#include <QCoreApplication>
#include <QObject>
#include <optional>

namespace corvane {

class Workspace : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual std::optional<RunningApp> frontmostApplication() const = 0;
    static qint64 thisProcessId() { return QCoreApplication::applicationPid(); }

Q_SIGNALS:
    // Every change of the frontmost application, this process included (the shell decides).
    void applicationActivated(const corvane::RunningApp& app);
};

} // namespace corvane
