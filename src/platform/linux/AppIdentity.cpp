#include "AppIdentity.h"

#include <QFile>
#include <QFileInfo>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <unistd.h>

namespace corvane::AppIdentity {

namespace {

QString stripDesktop(QString id)
{
    if (id.endsWith(QLatin1String(".desktop")))
        id.chop(8);
    const qsizetype slash = id.lastIndexOf(u'/');
    return slash >= 0 ? id.mid(slash + 1) : id;
}

// GIO_LAUNCHED_DESKTOP_FILE, when GIO_LAUNCHED_DESKTOP_FILE_PID names this process.
QString launchedDesktopFile(qint64 pid)
{
    QFile environ(QStringLiteral("/proc/%1/environ").arg(pid));
    if (!environ.open(QIODevice::ReadOnly))
        return {};
    QString file, launchedPid;
    for (const QByteArray& variable : environ.read(1024 * 1024).split('\0')) {
        if (variable.startsWith("GIO_LAUNCHED_DESKTOP_FILE="))
            file = QString::fromUtf8(variable.mid(26));
        else if (variable.startsWith("GIO_LAUNCHED_DESKTOP_FILE_PID="))
            launchedPid = QString::fromUtf8(variable.mid(30));
    }
    return launchedPid == QString::number(pid) ? file : QString();
}

RunningApp fromEntry(qint64 pid, const QString& id, const std::optional<DesktopEntry>& entry,
                     const QString& fallback)
{
    return RunningApp{pid, id, entry && !entry->name.isEmpty() ? entry->name : fallback,
                      entry ? entry->icon : QString()};
}

} // namespace

QString executableOf(qint64 pid)
{
    return QFileInfo(QStringLiteral("/proc/%1/exe").arg(pid)).canonicalFilePath();
}

std::optional<double> secondsSinceStart(qint64 pid)
{
    // Field 22 of /proc/PID/stat, in clock ticks since boot; the name before it (field 2, in
    // parentheses) may hold spaces and parentheses of its own, so fields count from the last ')'.
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    QFile uptime(QStringLiteral("/proc/uptime"));
    if (!stat.open(QIODevice::ReadOnly) || !uptime.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray line = stat.read(4096);
    const qsizetype close = line.lastIndexOf(')');
    const QList<QByteArray> fields = line.mid(close + 2).split(' ');
    bool startOk = false, uptimeOk = false;
    const double startTicks = close < 0 || fields.size() < 20 ? 0 : fields[19].toDouble(&startOk);
    const double now = uptime.read(64).split(' ').value(0).toDouble(&uptimeOk);
    const long ticksPerSecond = sysconf(_SC_CLK_TCK);
    if (!startOk || !uptimeOk || ticksPerSecond <= 0)
        return std::nullopt;
    return std::max(0.0, now - startTicks / double(ticksPerSecond));
}

RunningApp resolve(qint64 pid, const std::optional<WindowHints>& window,
                   const DesktopEntries& entries, const QString& fallbackName,
                   const QString& executable)
{
    const QString className = window ? window->wmClass : QString();
    const QString fallback = !className.isEmpty() ? className : fallbackName;
    if (window && !window->gtkApplicationId.isEmpty())
        return fromEntry(pid, window->gtkApplicationId, entries.byId(window->gtkApplicationId),
                         fallback);
    if (window && !window->kdeDesktopFile.isEmpty()) {
        const QString id = stripDesktop(window->kdeDesktopFile);
        return fromEntry(pid, id, entries.byId(id), fallback);
    }
    if (const QString launched = launchedDesktopFile(pid); !launched.isEmpty()) {
        const QString id = stripDesktop(launched);
        return fromEntry(pid, id, entries.byId(id), fallback);
    }
    if (const auto entry = entries.byWindowClass(className, executable))
        return fromEntry(pid, entry->id, entry, fallback);
    if (!className.isEmpty())
        return RunningApp{pid, className, className, {}};
    // No window and no class: the program itself, through the entry that runs it or by name.
    if (const auto entry = entries.byExecutable(executable))
        return fromEntry(pid, entry->id, entry, fallbackName);
    if (!executable.isEmpty()) {
        const QString name = QFileInfo(executable).fileName();
        return RunningApp{pid, name, fallbackName.isEmpty() ? name : fallbackName, {}};
    }
    return RunningApp{pid, std::nullopt, fallbackName, {}}; // nothing to name it by
}

namespace {

QByteArray windowProperty(Display* display, Window w, Atom name, Atom type, long maxLength)
{
    Atom actualType = None;
    int format = 0;
    unsigned long count = 0, after = 0;
    unsigned char* data = nullptr;
    QByteArray bytes;
    if (XGetWindowProperty(display, w, name, 0, maxLength, False, type, &actualType, &format,
                           &count, &after, &data) == Success &&
        data) {
        if (actualType == type || type == AnyPropertyType) {
            // Xlib returns 32-bit items as longs and 16-bit items as shorts.
            const qsizetype itemSize = format == 32   ? qsizetype(sizeof(long))
                                       : format == 16 ? 2
                                                      : 1;
            bytes = QByteArray(reinterpret_cast<const char*>(data), qsizetype(count) * itemSize);
        }
        XFree(data);
    }
    return bytes;
}

// The window manager's client windows with the process id each carries (0 when none).
QList<std::pair<Window, qint64>> clientWindows(Display* display)
{
    const Atom clientList = XInternAtom(display, "_NET_CLIENT_LIST", False);
    const Atom wmPid = XInternAtom(display, "_NET_WM_PID", False);
    const QByteArray windows =
        windowProperty(display, DefaultRootWindow(display), clientList, XA_WINDOW, 4096);
    const auto* ids = reinterpret_cast<const unsigned long*>(windows.constData());
    QList<std::pair<Window, qint64>> result;
    for (qsizetype i = 0; i < windows.size() / qsizetype(sizeof(unsigned long)); ++i) {
        const QByteArray owner = windowProperty(display, ids[i], wmPid, XA_CARDINAL, 1);
        const qint64 pid = owner.size() < qsizetype(sizeof(unsigned long))
                               ? 0
                               : qint64(*reinterpret_cast<const unsigned long*>(owner.constData()));
        result.append({Window(ids[i]), pid});
    }
    return result;
}

} // namespace

std::optional<WindowHints> windowHints(qint64 pid)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return std::nullopt;
    const Atom utf8 = XInternAtom(display, "UTF8_STRING", False);
    std::optional<WindowHints> hints;
    for (const auto& [client, owner] : clientWindows(display)) {
        if (owner != pid)
            continue;
        const Window window = client; // clang before 16 cannot capture a structured binding
        const auto text = [&](const char* name) {
            return QString::fromUtf8(
                windowProperty(display, window, XInternAtom(display, name, False), utf8, 1024));
        };
        WindowHints h;
        h.gtkApplicationId = text("_GTK_APPLICATION_ID");
        h.kdeDesktopFile = text("_KDE_NET_WM_DESKTOP_FILE");
        const QList<QByteArray> wmClass =
            windowProperty(display, window, XA_WM_CLASS, XA_STRING, 1024).split('\0');
        h.wmClass = wmClass.size() >= 2 ? QString::fromLatin1(wmClass[1]) : QString();
        hints = h;
        break;
    }
    XCloseDisplay(display);
    return hints;
}

QList<quint32> topLevelWindows(qint64 pid)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return {};
    QList<quint32> windows;
    for (const auto& [window, owner] : clientWindows(display))
        if (owner == pid)
            windows.append(quint32(window));
    XCloseDisplay(display);
    return windows;
}

QList<RunningApp> runningApplications(qint64 except)
{
    QList<qint64> pids;
    if (Display* display = XOpenDisplay(nullptr)) {
        for (const auto& [window, pid] : clientWindows(display))
            if (pid > 0 && pid != except && !pids.contains(pid))
                pids.append(pid);
        XCloseDisplay(display);
    }
    QList<RunningApp> apps;
    for (const qint64 pid : std::as_const(pids)) {
        const RunningApp app = forProcess(pid);
        const bool known = std::any_of(apps.cbegin(), apps.cend(), [&app](const RunningApp& a) {
            return a.appId == app.appId;
        });
        if (app.appId && !known)
            apps.append(app);
    }
    std::sort(apps.begin(), apps.end(), [](const RunningApp& a, const RunningApp& b) {
        return QString::localeAwareCompare(a.name, b.name) < 0;
    });
    return apps;
}

RunningApp describe(const QString& appId)
{
    const std::optional<DesktopEntry> entry = DesktopEntries::installed().byId(appId);
    return fromEntry(0, appId, entry, appId);
}

} // namespace corvane::AppIdentity
