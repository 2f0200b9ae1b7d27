#include "CorvaneProcess.h"

#include "SessionTools.h"

#include <QDir>
#include <QRect>
#include <QSettings>
#include <QTest>

namespace corvane::test {

CorvaneProcess::CorvaneProcess(const QString& program, const QVariantMap& settings, bool verbose,
                               QObject* parent)
    : QObject(parent), m_program(program), m_verbose(verbose)
{
    QDir(m_config.path()).mkpath("corvane");
    QSettings file(m_config.filePath("corvane/corvane.conf"), QSettings::IniFormat);
    // An account that ran this version before: no Welcome or What's New window at launch while
    // the permission is on, unless the test's settings say otherwise.
    QVariantMap all{{"launchedBefore", "true"},
                    {"whatsNew.lastSeenVersion", QStringLiteral(CORVANE_VERSION)}};
    all.insert(settings);
    for (auto it = all.cbegin(); it != all.cend(); ++it)
        file.setValue(it.key(), it.value());
    file.sync();
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setProcessEnvironment(environment());
    m_clock.start();
}

CorvaneProcess::~CorvaneProcess()
{
    stop();
}

QProcessEnvironment CorvaneProcess::environment() const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("XDG_CONFIG_HOME", m_config.path());
    environment.insert("TMPDIR", m_temporary.path());
    if (m_verbose)
        environment.insert("QT_LOGGING_RULES", "com.vantorel.corvane.*=true");
    return environment;
}

void CorvaneProcess::start()
{
    m_process.start(m_program, {});
    if (!m_process.waitForStarted(10000))
        qFatal("%s did not start", qPrintable(m_program));
    if (!waitForLine(" started: ", 1, 0, 20000))
        qFatal("Corvane did not report its start:\n%s", qPrintable(log()));
}

bool CorvaneProcess::terminate(int timeoutMs)
{
    if (m_process.state() == QProcess::NotRunning)
        return false;
    m_process.terminate();
    if (!m_process.waitForFinished(timeoutMs)) {
        stop();
        return false;
    }
    read();
    return m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
}

void CorvaneProcess::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(5000);
}

void CorvaneProcess::read()
{
    m_partial += m_process.readAll();
    qsizetype end = 0;
    while ((end = m_partial.indexOf('\n')) >= 0) {
        const QString text = QString::fromUtf8(m_partial.left(end));
        m_partial.remove(0, end + 1);
        m_lines.append({m_clock.elapsed(), text});
        m_log += text + u'\n';
    }
}

QList<CorvaneProcess::Line> CorvaneProcess::linesContaining(const QString& text, qsizetype from)
{
    read();
    QList<Line> found;
    for (qsizetype i = from; i < m_lines.size(); ++i)
        if (m_lines.at(i).text.contains(text))
            found.append(m_lines.at(i));
    return found;
}

bool CorvaneProcess::waitForLine(const QString& text, int count, qsizetype from, int timeoutMs)
{
    return QTest::qWaitFor([&] { return linesContaining(text, from).size() >= count; }, timeoutMs);
}

QStringList CorvaneProcess::windows(const QString& title) const
{
    return xdotool({"search", "--all", "--onlyvisible", "--pid", QString::number(pid()), "--name",
                    title},
                   false)
        .split(u'\n', Qt::SkipEmptyParts);
}

bool CorvaneProcess::panelVisible() const
{
    return !windows("^Corvane$").isEmpty();
}

QRect CorvaneProcess::panelGeometry() const
{
    const QString window = windows("^Corvane$").value(0);
    if (window.isEmpty())
        return {};
    return shellGeometry(xdotool({"getwindowgeometry", "--shell", window}, false).split(u'\n'));
}

} // namespace corvane::test
