#include "WaylandWindows.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>
#include <wayland-client.h>

namespace corvane::WaylandWindows {

namespace {

bool writeAll(int fd, const QByteArray& bytes)
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.constData() + sent, size_t(bytes.size() - sent));
        if (n <= 0)
            return false;
        sent += n;
    }
    return true;
}

QByteArray readExactly(int fd, qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    qsizetype got = 0;
    while (got < size) {
        const ssize_t n = ::read(fd, bytes.data() + got, size_t(size - got));
        if (n <= 0)
            return {};
        got += n;
    }
    return bytes;
}

} // namespace

QByteArray swayCommand(const QByteArray& socketPath, const QByteArray& command)
{
    sockaddr_un address{};
    if (socketPath.isEmpty() || size_t(socketPath.size()) >= sizeof address.sun_path)
        return {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.constData(), size_t(socketPath.size()));
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return {};
    // The compositor answers at once; a wedged one must not hold Corvane's start for long.
    const timeval limit{0, 500'000};
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    QByteArray reply;
    if (::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) {
        // "i3-ipc", the payload's length and the message type (0: RUN_COMMAND), native order.
        QByteArray message("i3-ipc");
        const quint32 header[2] = {quint32(command.size()), 0};
        message.append(reinterpret_cast<const char*>(header), sizeof header);
        message.append(command);
        const QByteArray head = writeAll(fd, message) ? readExactly(fd, 14) : QByteArray();
        if (head.startsWith("i3-ipc")) {
            quint32 length = 0;
            std::memcpy(&length, head.constData() + 6, sizeof length);
            if (length < 1024 * 1024)
                reply = readExactly(fd, qsizetype(length));
        }
    }
    ::close(fd);
    return reply;
}

namespace {

Q_LOGGING_CATEGORY(lcWindows, "com.vantorel.corvane.windows")

QByteArray kwinScript(qint64 pid)
{
    // The window in front is remembered as it changes: when the panel maps, it may already be
    // the active one. KWin may still place the panel by its own rules after it is added, so it is
    // centred again whenever it moves.
    return QByteArrayLiteral(R"(const corvane = )") + QByteArray::number(pid) + R"(;
let front = workspace.activeClient;
workspace.clientActivated.connect(c => { if (c && c.pid !== corvane) front = c; });
workspace.clientRemoved.connect(c => { if (c === front) front = null; });
function centre(c) {
    const area = workspace.clientArea(KWin.PlacementArea, front || c);
    const frame = c.frameGeometry;
    const x = area.x + Math.round((area.width - frame.width) / 2);
    const y = area.y + Math.round((area.height - frame.height) / 2);
    if (frame.x !== x || frame.y !== y)
        c.frameGeometry = {x: x, y: y, width: frame.width, height: frame.height};
}
workspace.clientAdded.connect(c => {
    if (c.pid !== corvane)
        return;
    centre(c);
    if (c.caption !== ")" +
           panelTitle + R"(")
        return;
    c.keepAbove = true;
    c.frameGeometryChanged.connect(() => centre(c));
});
)";
}

const QString kwinService = QStringLiteral("org.kde.KWin");
const QString kwinScriptName = QStringLiteral("corvane-placement");

QDBusPendingCall kwinScripting(const QString& method, const QVariantList& arguments)
{
    QDBusMessage call =
        QDBusMessage::createMethodCall(kwinService, QStringLiteral("/Scripting"),
                                       QStringLiteral("org.kde.kwin.Scripting"), method);
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().asyncCall(call, 2000);
}

// Then `then` with the reply, on this thread.
void whenAnswered(const QDBusPendingCall& call, std::function<void(const QDBusMessage&)> then)
{
    auto* watcher = new QDBusPendingCallWatcher(call);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [watcher, then = std::move(then)] {
                         watcher->deleteLater();
                         then(watcher->reply());
                     });
}

// A script of an earlier Corvane is unloaded first: KWin keeps a name loaded once.
void arrangeOnKWin(qint64 pid)
{
    whenAnswered(
        kwinScripting(QStringLiteral("unloadScript"), {kwinScriptName}),
        [pid](const QDBusMessage& unloaded) {
            if (unloaded.type() == QDBusMessage::ErrorMessage) {
                qCInfo(lcWindows, "windows: placed by the compositor");
                return;
            }
            const QString folder =
                QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
            auto file = std::make_shared<QFile>(
                QDir(folder.isEmpty() ? QDir::tempPath() : folder)
                    .filePath(QStringLiteral("corvane-kwin-%1.js").arg(pid)));
            if (!file->open(QIODevice::WriteOnly) || file->write(kwinScript(pid)) < 0 ||
                !file->flush()) {
                qCWarning(lcWindows, "windows: KWin places them, off centre: %s",
                          qPrintable(file->errorString()));
                return;
            }
            file->close();
            whenAnswered(
                kwinScripting(QStringLiteral("loadScript"), {file->fileName(), kwinScriptName}),
                [file](const QDBusMessage& loaded) {
                    if (loaded.type() == QDBusMessage::ErrorMessage ||
                        loaded.arguments().value(0).toInt() < 0) {
                        file->remove();
                        qCWarning(lcWindows, "windows: KWin did not load the placement script (%s)",
                                  qPrintable(loaded.errorMessage()));
                        return;
                    }
                    // KWin reads the file on a thread of its own some time after the script
                    // starts: it stays until Corvane quits.
                    if (auto* app = QCoreApplication::instance())
                        QObject::connect(app, &QCoreApplication::aboutToQuit,
                                         [file] { file->remove(); });
                    whenAnswered(
                        kwinScripting(QStringLiteral("start"), {}),
                        [](const QDBusMessage& started) {
                            if (started.type() == QDBusMessage::ErrorMessage)
                                qCWarning(lcWindows,
                                          "windows: KWin did not start the placement script (%s)",
                                          qPrintable(started.errorMessage()));
                            else
                                qCInfo(lcWindows,
                                       "windows: KWin centres them and keeps the panel above");
                        });
                });
        });
}

} // namespace

void arrange(qint64 pid)
{
    const QByteArray sway = qgetenv("SWAYSOCK");
    if (sway.isEmpty()) {
        arrangeOnKWin(pid);
        return;
    }
    // sway answers at once, within half a second at worst. Only the panel goes without sway's
    // frame: the other windows keep their title bar, to be moved and closed by.
    const QByteArray criteria = QByteArrayLiteral("for_window [pid=") + QByteArray::number(pid);
    const QByteArray reply =
        swayCommand(sway, criteria + "] floating enable, move position center; " + criteria +
                              " title=\"^" + panelTitle + "$\"] border none");
    if (reply.count("\"success\": true") + reply.count("\"success\":true") == 2)
        qCInfo(lcWindows, "windows: sway floats them");
    else
        qCInfo(lcWindows, "windows: sway did not take the rule (%s)", reply.left(200).constData());
}

bool compositorDrawsFrames()
{
    wl_display* display = wl_display_connect(nullptr);
    if (!display)
        return true;
    // Frames drawn by the compositor are a protocol of their own among the display's globals.
    static const wl_registry_listener listener = {
        .global =
            [](void* found, wl_registry*, uint32_t, const char* interface, uint32_t) {
                if (std::strcmp(interface, "zxdg_decoration_manager_v1") == 0)
                    *static_cast<bool*>(found) = true;
            },
        .global_remove = [](void*, wl_registry*, uint32_t) {},
    };
    bool found = false;
    wl_registry* registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &listener, &found);
    wl_display_roundtrip(display);
    wl_registry_destroy(registry);
    wl_display_disconnect(display);
    return found;
}

} // namespace corvane::WaylandWindows
