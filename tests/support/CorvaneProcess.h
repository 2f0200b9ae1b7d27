#pragma once

// The real Corvane program, started by a session test or benchmark with its own settings file
// and its log captured line by line (with the time each line arrived); stopped by process id.

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariantMap>

namespace corvane::test {

class CorvaneProcess : public QObject {
public:
    struct Line {
        qint64 atMs; // since the process object was made
        QString text;
    };

    // `settings` are written to the settings file before the start (for example holdDelay).
    // `verbose` turns every log category on; without it the program runs with the environment
    // a desktop session gives it (its own settings and temporary folders aside).
    explicit CorvaneProcess(const QString& program, const QVariantMap& settings = {},
                            bool verbose = true, QObject* parent = nullptr);
    ~CorvaneProcess() override;

    // Starts it and waits for its "started" line; fatal on failure.
    void start();
    // Kills it (the tests' way to end it, as a crash would).
    void stop();
    // Sends it SIGTERM, as the session does at logout, and waits up to `timeoutMs` for it to
    // end; true when it ended by itself with status 0.
    bool terminate(int timeoutMs = 5000);
    qint64 pid() const { return m_process.processId(); }
    // Its temporary folder (TMPDIR), its own so that what it leaves there can be seen.
    QString temporaryFolder() const { return m_temporary.path(); }
    // The environment it runs with (a second start must share it).
    QProcessEnvironment environment() const;

    const QList<Line>& lines() { return read(), m_lines; }
    // Lines containing `text`, from line `from` on.
    QList<Line> linesContaining(const QString& text, qsizetype from = 0);
    // Waits until `count` lines from `from` on contain `text`.
    bool waitForLine(const QString& text, int count = 1, qsizetype from = 0, int timeoutMs = 10000);
    QString log() { return read(), m_log; }

    // Its mapped windows whose title matches the regular expression `title`.
    QStringList windows(const QString& title) const;
    // Its overlay panel (the frameless window titled "Corvane") is mapped. One probe on a loaded
    // machine can miss a mapped window: assert that it shows with QTRY_VERIFY.
    bool panelVisible() const;
    // The panel's geometry in root coordinates, or an empty rectangle.
    QRect panelGeometry() const;

private:
    void read();

    QString m_program;
    bool m_verbose;
    QTemporaryDir m_config;
    QTemporaryDir m_temporary;
    QProcess m_process;
    QElapsedTimer m_clock;
    QList<Line> m_lines;
    QString m_log;
    QByteArray m_partial;
};

} // namespace corvane::test
