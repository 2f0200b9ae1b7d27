#include "Desktop.h"

#include "SessionTools.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryFile>
#include <QTest>

namespace corvane::test {

namespace {

QByteArray run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(10000))
        qFatal("%s %s did not finish", qPrintable(program), qPrintable(arguments.join(u' ')));
    return process.readAllStandardOutput();
}

QRect rectangle(const QJsonValue& r)
{
    return {r["x"].toInt(), r["y"].toInt(), r["width"].toInt(), r["height"].toInt()};
}

// The scripted desktops answer with a list of {pid, title, frame, focused}, bottom to top.
QList<Desktop::Window> windowsFrom(const QJsonDocument& answer)
{
    QList<Desktop::Window> windows;
    for (const QJsonValue w : answer.array())
        windows.append({qint64(w["pid"].toDouble()), w["title"].toString(), rectangle(w["frame"]),
                        w["focused"].toBool()});
    return windows;
}

// openbox, GNOME Shell and KWin as X11 window managers: their client list in stacking order on
// the root window, xdotool (XTEST) for the rest.
class X11Desktop : public Desktop {
public:
    explicit X11Desktop(const QString& name) : Desktop(name) {}

    QList<Window> windows() override
    {
        const qint64 active = xdotool({"getactivewindow"}, false).toLongLong();
        QList<Window> shown;
        const auto add = [&](const QString& id) {
            // The name, the process and the geometry (WINDOW=, X=, Y=, WIDTH=, HEIGHT=), a line
            // each.
            const QStringList lines = xdotool({"getwindowname", id, "getwindowpid", id,
                                               "getwindowgeometry", "--shell", id},
                                              false)
                                          .split(u'\n');
            if (lines.size() >= 7)
                shown.append({lines[1].toLongLong(), lines[0], shellGeometry(lines.mid(2)),
                              lines[2].section(u'=', 1).toLongLong() == active});
        };
        for (const QString& id : rootProperty("_NET_CLIENT_LIST_STACKING"))
            add(id);
        // Corvane's panel is no window manager's (override-redirect): above them all.
        for (const QString& id :
             xdotool({"search", "--onlyvisible", "--name", "^Corvane$"}, false).split(u'\n'))
            if (!id.isEmpty())
                add(id);
        return shown;
    }

    QRect workArea() override
    {
        // KWin publishes no work area without panels: the whole screen.
        const QStringList area = rootProperty("_NET_WORKAREA");
        const QStringList screen = xdotool({"getdisplaygeometry"}).split(u' ');
        return area.size() >= 4
                   ? QRect(area[0].toInt(), area[1].toInt(), area[2].toInt(), area[3].toInt())
                   : QRect(0, 0, screen.value(0).toInt(), screen.value(1).toInt());
    }

    void movePointer(QPoint to) override
    {
        xdotool({"mousemove", QString::number(to.x()), QString::number(to.y())});
    }

protected:
    void focus(qint64 pid) override { activateWindowOf(pid); }
    void key(const QString& key, bool down) override { xdotool({down ? "keydown" : "keyup", key}); }

private:
    // A list property of the root window as xprop prints it: "NAME(CARDINAL) = a, b, …" or
    // "NAME(WINDOW): window id # a, b, …"; "NAME:  not found." when it is not set.
    static QStringList rootProperty(const char* name)
    {
        const QString text = QString::fromUtf8(run("xprop", {"-root", name}));
        QStringList items = text.section(u')', 1).split(u',', Qt::SkipEmptyParts);
        for (QString& item : items)
            item = item.trimmed().section(u' ', -1);
        return items;
    }
};

// The injection a Wayland compositor offers (KWin's fake input, the wlroots virtual pointer),
// through one helper process that lives as long as this object.
class WaylandInput {
public:
    WaylandInput()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QStringLiteral(WAYLAND_INPUT), {});
        if (!m_process.waitForReadyRead(10000) || !m_process.readLine().startsWith("ready"))
            qFatal("the Wayland input helper did not start");
    }
    ~WaylandInput()
    {
        m_process.kill();
        m_process.waitForFinished(5000);
    }

    void send(const QString& command)
    {
        m_process.write(command.toUtf8() + '\n');
        if (!QTest::qWaitFor([this] { return m_process.canReadLine(); }, 5000))
            qFatal("the Wayland input helper did not answer %s", qPrintable(command));
        m_process.readLine();
    }

private:
    QProcess m_process;
};

// sway: its IPC (swaymsg) for windows and focus, wtype's virtual keyboard for keys (one process
// per gesture, which holds its keyboard for the whole of it), a virtual pointer. sway has no
// stacking order: floating windows are above tiled ones.
class SwayDesktop : public Desktop {
public:
    SwayDesktop() : Desktop(QStringLiteral("sway")) {}

    QList<Window> windows() override
    {
        QList<Window> tiled, floating;
        collect(QJsonDocument::fromJson(run("swaymsg", {"-t", "get_tree", "-r"})).object(), false,
                tiled, floating);
        return tiled + floating;
    }

    QRect workArea() override
    {
        return rectangle(
            QJsonDocument::fromJson(run("swaymsg", {"-t", "get_outputs", "-r"}))[0]["rect"]);
    }

    // Each new wtype moves the keyboard focus for a moment: it waits for that first.
    void hold(const QString& key, int ms) override
    {
        m_hold = std::make_unique<QProcess>();
        m_hold->start("wtype", {"-s", "300", "-P", key, "-s", QString::number(ms), "-p", key});
    }
    void finishHold() override
    {
        if (m_hold && m_hold->state() != QProcess::NotRunning && !m_hold->waitForFinished(30000))
            qFatal("wtype did not finish");
        m_hold.reset();
    }
    void tap(const QString& key) override { run("wtype", {"-s", "300", "-k", key}); }
    void type(const QString& text) override { run("wtype", {"-s", "300", "-d", "40", text}); }
    void movePointer(QPoint to) override
    {
        const QRect screen = workArea();
        m_pointer.send(QStringLiteral("move %1 %2 %3 %4")
                           .arg(to.x())
                           .arg(to.y())
                           .arg(screen.width())
                           .arg(screen.height()));
    }

protected:
    void focus(qint64 pid) override { run("swaymsg", {QStringLiteral("[pid=%1] focus").arg(pid)}); }
    void key(const QString&, bool) override {}

private:
    static void collect(const QJsonObject& node, bool isFloating, QList<Window>& tiled,
                        QList<Window>& floating)
    {
        if (node.contains("app_id") && node.value("visible").toBool(true))
            (isFloating ? floating : tiled)
                .append({qint64(node["pid"].toDouble()), node["name"].toString(),
                         rectangle(node["rect"]), node["focused"].toBool()});
        for (const QJsonValue child : node["nodes"].toArray())
            collect(child.toObject(), isFloating, tiled, floating);
        for (const QJsonValue child : node["floating_nodes"].toArray())
            collect(child.toObject(), true, tiled, floating);
    }

    std::unique_ptr<QProcess> m_hold;
    WaylandInput m_pointer;
};

// GNOME Shell on Wayland: JavaScript in the Shell, and the virtual keyboard and pointer the
// session's extension made when the Shell started.
class GnomeDesktop : public Desktop {
public:
    GnomeDesktop() : Desktop(QStringLiteral("gnome-wayland")) {}

    QList<Window> windows() override
    {
        return windowsFrom(shellEval(
            "global.display.sort_windows_by_stacking(global.display.list_all_windows())"
            ".filter(w => w.showing_on_its_workspace() && w.get_frame_rect().width > 0)"
            ".map(w => ({pid: w.get_pid(), title: w.get_title(), frame: rect(w.get_frame_rect()),"
            " focused: w.has_focus()}))"));
    }

    QRect workArea() override
    {
        return rectangle(shellEval("rect(Main.layoutManager.getWorkAreaForMonitor("
                                   "global.display.get_primary_monitor()))")
                             .object());
    }

    void movePointer(QPoint to) override
    {
        shellEval(QStringLiteral("global.corvanePointer.notify_absolute_motion("
                                 "imports.gi.GLib.get_monotonic_time(), %1, %2)")
                      .arg(to.x())
                      .arg(to.y()));
    }

protected:
    void focus(qint64 pid) override
    {
        shellEval(QStringLiteral("global.display.list_all_windows().find(w => w.get_pid() == %1)"
                                 ".activate(global.display.get_current_time_roundtrip())")
                      .arg(pid));
    }
    void key(const QString& key, bool down) override
    {
        shellEval(QStringLiteral("const C = imports.gi.Clutter; global.corvaneKeyboard"
                                 ".notify_keyval(imports.gi.GLib.get_monotonic_time(), C.KEY_%1, "
                                 "C.KeyState.%2)")
                      .arg(key, down ? "PRESSED" : "RELEASED"));
    }
};

// KWin on Wayland: scripts loaded over D-Bus, whose output appears in KWin's log; keys and the
// pointer through KWin's fake input.
class KwinDesktop : public Desktop {
public:
    KwinDesktop() : Desktop(QStringLiteral("kwin-wayland")) {}

    QList<Window> windows() override
    {
        return windowsFrom(
            script("workspace.clientList().filter(c => !c.minimized)"
                   ".sort((a, b) => a.stackingOrder - b.stackingOrder).map(c => ({pid: c.pid, "
                   "title: c.caption, frame: c.frameGeometry, focused: c.active}))"));
    }

    QRect workArea() override
    {
        return rectangle(script("workspace.clientArea(KWin.PlacementArea, workspace.activeScreen, "
                                "workspace.currentDesktop)")
                             .object());
    }

    void movePointer(QPoint to) override
    {
        m_input.send(QStringLiteral("move %1 %2 0 0").arg(to.x()).arg(to.y()));
    }

protected:
    void focus(qint64 pid) override
    {
        script(QStringLiteral("!!(workspace.activeClient = workspace.clientList().find(c => c.pid "
                              "== %1))")
                   .arg(pid));
    }
    void key(const QString& key, bool down) override
    {
        // Linux input codes: the keys by keyboard row, then the others tests type.
        static const QString rows[] = {"qwertyuiop", "asdfghjkl", "zxcvbnm"};
        int code = 0;
        for (int row = 0; row < 3 && !code; ++row)
            if (key.size() == 1 && rows[row].contains(key))
                code = QList<int>{16, 30, 44}[row] + int(rows[row].indexOf(key));
        code = code ? code
                    : QHash<QString, int>{{"Control_L", 29},
                                          {"Return", 28},
                                          {"Escape", 1},
                                          {"space", 57}}
                          .value(key);
        if (!code)
            qFatal("no key code for %s", qPrintable(key));
        m_input.send(QStringLiteral("key %1 %2").arg(code).arg(down ? 1 : 0));
    }

private:
    // Runs `expression` in a KWin script and returns its value, which the script prints.
    QJsonDocument script(const QString& expression)
    {
        const QString marker = QStringLiteral("corvane-desktop-%1:").arg(++m_scripts);
        QTemporaryFile file(QDir::tempPath() + "/corvane-kwin-XXXXXX.js");
        if (!file.open())
            qFatal("no temporary file for a KWin script");
        file.write(
            QStringLiteral("print(\"%1\" + JSON.stringify(%2));").arg(marker, expression).toUtf8());
        file.close();
        const auto scripting = [](const QString& method, const QVariantList& arguments) {
            QDBusMessage call = QDBusMessage::createMethodCall("org.kde.KWin", "/Scripting",
                                                               "org.kde.kwin.Scripting", method);
            call.setArguments(arguments);
            QDBusConnection::sessionBus().call(call, QDBus::Block, 10000);
        };
        scripting("loadScript", {file.fileName(), marker});
        scripting("start", {});
        QByteArray answer;
        const QByteArray key = marker.toUtf8();
        const bool answered = QTest::qWaitFor(
            [&] {
                QFile log(qEnvironmentVariable("CORVANE_KWIN_LOG"));
                const QByteArray text = log.open(QIODevice::ReadOnly) ? log.readAll() : "";
                const qsizetype at = text.indexOf(key, m_logRead);
                const qsizetype end = at < 0 ? -1 : text.indexOf('\n', at);
                if (end >= 0) {
                    answer = text.mid(at + key.size(), end - at - key.size());
                    m_logRead = end;
                }
                return end >= 0;
            },
            10000);
        scripting("unloadScript", {marker});
        if (!answered)
            qFatal("KWin did not run %s", qPrintable(expression));
        return QJsonDocument::fromJson(answer);
    }

    WaylandInput m_input;
    int m_scripts = 0;
    qint64 m_logRead = 0;
};

} // namespace

std::unique_ptr<Desktop> Desktop::current()
{
    const QString name = qEnvironmentVariable("CORVANE_DESKTOP");
    if (name == u"sway")
        return std::make_unique<SwayDesktop>();
    if (name == u"gnome-wayland")
        return std::make_unique<GnomeDesktop>();
    if (name == u"kwin-wayland")
        return std::make_unique<KwinDesktop>();
    if (name == u"openbox" || name == u"gnome-x11" || name == u"kwin-x11")
        return std::make_unique<X11Desktop>(name);
    qFatal("run under tools/test-session.sh (CORVANE_DESKTOP is \"%s\")", qPrintable(name));
}

QJsonDocument Desktop::shellEval(const QString& script)
{
    QDBusMessage call = QDBusMessage::createMethodCall("org.gnome.Shell", "/org/gnome/Shell",
                                                       "org.gnome.Shell", "Eval");
    // The Shell's rectangles are boxed values, which JSON would print as {}.
    call << "const rect = r => ({x: r.x, y: r.y, width: r.width, height: r.height}); " + script;
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 10000);
    if (reply.type() != QDBusMessage::ReplyMessage || !reply.arguments().value(0).toBool())
        qFatal("GNOME Shell did not run %s: %s", qPrintable(script),
               qPrintable(reply.arguments().value(1).toString() + reply.errorMessage()));
    const QByteArray json = reply.arguments().value(1).toString().toUtf8();
    return QJsonDocument::fromJson(json.startsWith('[') || json.startsWith('{') ? json
                                                                                : "[" + json + "]");
}

std::optional<Desktop::Window> Desktop::window(qint64 pid, const QString& title)
{
    for (const Window& w : windows())
        if (w.pid == pid && w.title.contains(title))
            return w;
    return std::nullopt;
}

std::optional<Desktop::Window> Desktop::panel(qint64 pid)
{
    const auto w = window(pid, QStringLiteral("Corvane"));
    return w && w->title == u"Corvane" ? w : std::nullopt;
}

bool Desktop::panelCentred(qint64 pid, const QRect& area)
{
    const auto shown = panel(pid);
    return shown && (shown->frame.center() - area.center()).manhattanLength() <= 2;
}

bool Desktop::activate(qint64 pid)
{
    focus(pid);
    return QTest::qWaitFor([&] { return window(pid).value_or(Window{}).focused; }, 5000);
}

void Desktop::hold(const QString& key, int ms)
{
    this->key(key, true);
    m_held = key;
    m_releaseAt = QDateTime::currentMSecsSinceEpoch() + ms;
}

void Desktop::finishHold()
{
    if (m_held.isEmpty())
        return;
    QTest::qWait(int(qMax(0LL, m_releaseAt - QDateTime::currentMSecsSinceEpoch())));
    key(std::exchange(m_held, QString()), false);
}

void Desktop::tap(const QString& key)
{
    this->key(key, true);
    this->key(key, false);
}

void Desktop::type(const QString& text)
{
    for (const QChar c : text) {
        tap(c == u' ' ? QStringLiteral("space") : QString(c));
        QTest::qWait(40);
    }
}

} // namespace corvane::test
