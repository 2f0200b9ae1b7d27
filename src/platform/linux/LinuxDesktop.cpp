#include "LinuxDesktop.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

namespace corvane {

namespace {

Q_LOGGING_CATEGORY(lcDesktop, "com.vantorel.corvane.desktop")

// The Exec key's quoting rules of freedesktop.org desktop entries: an argument with a reserved
// character is quoted, and inside quotes ", `, $ and \ are escaped; % is doubled everywhere.
// The value is then a string value, whose own escape doubles each backslash.
QString execArgument(const QString& argument)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    QString text = argument;
    text.replace(u'%', QStringLiteral("%%"));
    const bool quote =
        std::any_of(text.cbegin(), text.cend(), [](QChar c) { return reserved.contains(c); });
    if (quote) {
        QString quoted;
        for (const QChar c : text) {
            if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
                quoted += u'\\';
            quoted += c;
        }
        text = u'"' + quoted + u'"';
    }
    return text.replace(u'\\', QStringLiteral("\\\\"));
}

// Whether a desktop entry's main group says Hidden=true.
bool isHidden(const QByteArray& entry)
{
    bool inMainGroup = false;
    for (const QByteArray& rawLine : entry.split('\n')) {
        const QByteArray line = rawLine.trimmed();
        if (line.startsWith('[')) {
            inMainGroup = line == "[Desktop Entry]";
            continue;
        }
        if (!inMainGroup)
            continue;
        const int equals = line.indexOf('=');
        if (equals > 0 && line.left(equals).trimmed() == "Hidden")
            return line.mid(equals + 1).trimmed() == "true";
    }
    return false;
}

} // namespace

LinuxDesktop::LinuxDesktop() : m_autostartFile(autostartFilePath()) {}

QString LinuxDesktop::autostartFilePath()
{
    // The same configuration folder as the settings file (UserDefaults::standardFilePath()).
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/corvane.desktop");
}

QByteArray LinuxDesktop::autostartEntry(const QString& executable)
{
    const QString text = QStringLiteral("[Desktop Entry]\n"
                                        "Type=Application\n"
                                        "Name=Corvane\n"
                                        "Comment=Every menu command and shortcut of the app in "
                                        "front, one held key away\n"
                                        "Exec=%1\n"
                                        "Icon=com.vantorel.Corvane\n"
                                        "Terminal=false\n"
                                        "X-GNOME-Autostart-enabled=true\n")
                             .arg(execArgument(executable));
    return text.toUtf8();
}

bool LinuxDesktop::launchesAtLogin() const
{
    QFile file(m_autostartFile);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    return !isHidden(file.read(64 * 1024));
}

bool LinuxDesktop::setLaunchAtLogin(bool enabled)
{
    if (!enabled) {
        QFile file(m_autostartFile);
        return !file.exists() || file.remove();
    }
    if (!QDir().mkpath(QFileInfo(m_autostartFile).absolutePath()))
        return false;
    QSaveFile file(m_autostartFile);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(autostartEntry(QCoreApplication::applicationFilePath()));
    return file.commit();
}

QList<QStringList> LinuxDesktop::accessibilitySettingsCommands()
{
    return {
        {QStringLiteral("gnome-control-center"), QStringLiteral("universal-access")},
        {QStringLiteral("systemsettings"), QStringLiteral("kcm_access")},
        {QStringLiteral("xfce4-accessibility-settings")},
    };
}

bool LinuxDesktop::openAccessibilitySettings()
{
    QStringList tried;
    for (const QStringList& command : accessibilitySettingsCommands()) {
        tried << command.first();
        const QString program = QStandardPaths::findExecutable(command.first());
        if (program.isEmpty())
            continue;
        if (QProcess::startDetached(program, command.mid(1)))
            return true;
        qCCritical(lcDesktop, "accessibility settings: %s did not start", qPrintable(program));
    }
    qCCritical(lcDesktop, "accessibility settings: none found (tried %s)",
               qPrintable(tried.join(QStringLiteral(", "))));
    return false;
}

QUrl LinuxDesktop::accessibilityHelpUrl()
{
    // Installed with the program: <prefix>/bin/corvane and <prefix>/share/doc/corvane/README.md.
    const QString readme =
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/doc/corvane/README.md");
    if (QFileInfo::exists(readme))
        return QUrl::fromLocalFile(QFileInfo(readme).canonicalFilePath());
    return QUrl(QStringLiteral("https://corvane.vantorel.com/#switching-accessibility-on"));
}

void LinuxDesktop::openAccessibilityHelp()
{
    const QUrl url = accessibilityHelpUrl();
    if (!QDesktopServices::openUrl(url))
        qCCritical(lcDesktop, "accessibility help: nothing opened %s", qPrintable(url.toString()));
}

} // namespace corvane
