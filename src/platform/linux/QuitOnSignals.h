#pragma once

// Ends the application through its event loop when the session or the user asks it to
// (SIGTERM at logout or from `kill`, SIGINT from a terminal, SIGHUP when the terminal goes), so
// that what ends with it ends properly: open windows are closed and what they hold is let go,
// the tray icon is withdrawn. The signal handler only writes the signal's number to a pipe; the
// event loop reads it and quits (signal(7): almost nothing else is safe in a handler). A second
// signal of the same kind ends the process at once, in case the quit hangs.

#include <QObject>

class QSocketNotifier;

namespace corvane {

class QuitOnSignals : public QObject {
    Q_OBJECT

public:
    // Installs the handlers; one instance per process, living as long as the event loop.
    explicit QuitOnSignals(QObject* parent = nullptr);
    ~QuitOnSignals() override;

private:
    void readSignal();

    QSocketNotifier* m_notifier = nullptr;
};

} // namespace corvane
