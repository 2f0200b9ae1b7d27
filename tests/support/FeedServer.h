#pragma once

// The update tests' real HTTP server on 127.0.0.1 (tests/update/feed_server.py): started with
// python3, its port read from its first line, stopped by process id when this goes.

#include <QDeadlineTimer>
#include <QProcess>

namespace corvane::test {

class FeedServer {
public:
    ~FeedServer()
    {
        if (m_process.processId() > 0) {
            m_process.kill();
            m_process.waitForFinished(5000);
        }
    }

    // Starts the server; false with the reason in `why` when it does not listen in 10 s.
    // `arguments` go to the script (--tls CERT KEY serves HTTPS).
    bool start(const QString& script, QString* why, const QStringList& arguments = {})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start("python3", QStringList{script} + arguments);
        if (!m_process.waitForStarted(5000)) {
            *why = "python3 did not start";
            return false;
        }
        const QDeadlineTimer deadline(10000);
        while (!m_process.canReadLine() && !deadline.hasExpired())
            m_process.waitForReadyRead(100);
        const QByteArray line = m_process.readLine().trimmed();
        if (!line.startsWith("PORT ")) {
            *why = QStringLiteral("the feed server said \"%1\"").arg(QString::fromUtf8(line));
            return false;
        }
        m_port = line.mid(5).toInt();
        return m_port > 0;
    }

    int port() const { return m_port; }

private:
    QProcess m_process;
    int m_port = 0;
};

} // namespace corvane::test
