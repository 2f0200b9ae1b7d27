// corvane-menus: what Corvane sees of the running applications' menus, for users and benchmarks.
//
//   corvane-menus list [--ids]
//   corvane-menus dump PID|APPID [--json | --markdown | --html]
//   corvane-menus press PID|APPID TITLE[#N]...
//
// Every accessibility request runs on the crawl thread, as in Corvane itself.

#include "menus/MenuCatalogJson.h"
#include "menus/MenuCrawler.h"
#include "platform/linux/AccessibilitySwitch.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/AtspiClient.h"
#include "platform/linux/DBusMenu.h"
#include "shortcuts/ShortcutSheet.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTextStream>

using namespace corvane;

namespace {

enum Exit {
    ok = 0,
    pressFailed = 1,
    usageError = 2,
    noBus = 3,
    accessibilityOff = 4,
    noSuchApp = 5,
    noMenus = 6
};

const char* usage = "usage: corvane-menus list [--ids]\n"
                    "       corvane-menus dump PID|APPID [--json | --markdown | --html]\n"
                    "       corvane-menus press PID|APPID TITLE[#N]...\n";
// What `man corvane-menus` says at length.
const char* help =
    "\nReads the running applications' menus as Corvane does (PID: a process id, APPID: an\n"
    "application id).\n"
    "  list    the running applications: process id, application id, name, where their menus are\n"
    "          (--ids: their application ids only, one a line, at once)\n"
    "  dump    an application's menus and shortcuts: text, --json, or a --markdown or --html "
    "sheet\n"
    "  press   presses the menu item named by its titles from the menu bar down (TITLE#N: the\n"
    "          N-th of several with that title)\n\n"
    "Exit status: 0 done, 1 the press failed, 2 wrong arguments, 3 no accessibility bus,\n"
    "4 accessibility is switched off, 5 no such application, 6 no menus could be read.\n";

struct Target {
    RunningApp app;
    QString error;
};

// The running application named by a process id or an application id.
Target findTarget(const QString& which)
{
    auto bus = atspi::accessibilityBus();
    WalkBudget budget(std::chrono::seconds(5));
    auto session = std::make_shared<atspi::Session>(*bus, budget);
    bool isPid = false;
    const qint64 pid = which.toLongLong(&isPid);
    for (const atspi::ApplicationEntry& entry : atspi::applications(session)) {
        if (isPid && entry.pid != pid)
            continue;
        const RunningApp app = AppIdentity::forProcess(entry.pid, entry.name);
        if (isPid || app.appId == which)
            return {app, {}};
    }
    // Off the accessibility bus, an application with a window may still be read another way.
    for (const RunningApp& app : AppIdentity::runningApplications(0))
        if ((isPid && app.pid == pid) || (!isPid && app.appId == which))
            return {isPid ? AppIdentity::forProcess(pid) : app, {}};
    return {{},
            QStringLiteral(
                "no application %1 %2 is on the accessibility bus (is it running, and was it "
                "started after accessibility was switched on?)")
                .arg(isPid ? QStringLiteral("with process id") : QStringLiteral("with id"), which)};
}

QString shortcutText(const ShortcutKeys& keys)
{
    if (keys.key.isEmpty())
        return {};
    return (keys.modifiers + QStringList{keys.key}).join(u'+');
}

int list(QTextStream& out, bool idsOnly)
{
    auto bus = atspi::accessibilityBus();
    WalkBudget budget(std::chrono::seconds(5));
    auto session = std::make_shared<atspi::Session>(*bus, budget);
    if (idsOnly) {
        // For shell completion: no menu is read.
        QStringList ids;
        for (const atspi::ApplicationEntry& entry : atspi::applications(session))
            ids << AppIdentity::forProcess(entry.pid, entry.name).appId.value_or(QString());
        for (const RunningApp& app : AppIdentity::runningApplications(0))
            ids << app.appId.value_or(QString());
        ids.removeAll(QString());
        ids.removeDuplicates();
        for (const QString& id : std::as_const(ids))
            out << id << "\n";
        return ok;
    }
    out << QStringLiteral("%1  %2  %3  %4\n")
               .arg("PID", -7)
               .arg("APPLICATION ID", -32)
               .arg("NAME", -24)
               .arg("MENU BAR");
    const auto sources = desktopMenuSources([] { return false; });
    QList<qint64> listed;
    const auto row = [&](qint64 pid, const RunningApp& app) {
        WalkBudget perApp(MenuCrawler::crawlDeadline);
        const auto bar = sources->menuBar(pid, perApp);
        QString found = QStringLiteral("no (%1)").arg(describe(MenuBarError(bar.error)));
        if (bar.node)
            found = qstrcmp(bar.source, "accessibility") == 0
                        ? QStringLiteral("yes")
                        : QStringLiteral("yes, through %1").arg(QLatin1String(bar.source));
        out << QStringLiteral("%1  %2  %3  %4\n")
                   .arg(pid, -7)
                   .arg(app.appId.value_or(QStringLiteral("-")), -32)
                   .arg(app.name, -24)
                   .arg(found);
        listed << pid;
    };
    for (const atspi::ApplicationEntry& entry : atspi::applications(session))
        row(entry.pid, AppIdentity::forProcess(entry.pid, entry.name));
    // Applications with a window that are not on the accessibility bus.
    for (const RunningApp& app : AppIdentity::runningApplications(0))
        if (!listed.contains(app.pid))
            row(app.pid, app);
    return ok;
}

enum class Format { text, json, markdown, html };

int dump(QTextStream& out, QTextStream& err, const QString& which, Format format)
{
    const Target target = findTarget(which);
    if (!target.error.isEmpty()) {
        err << "corvane-menus: " << target.error << "\n";
        return noSuchApp;
    }
    const auto catalog = MenuCrawler(desktopMenuSources([] { return false; })).crawl(target.app);
    if (!catalog) {
        err << "corvane-menus: no menus could be read from " << target.app.name << " (process "
            << target.app.pid << "); see the log line above\n";
        return noMenus;
    }
    switch (format) {
    case Format::json:
        out << QString::fromUtf8(MenuCatalogJson::write(*catalog));
        return ok;
    case Format::markdown:
        out << ShortcutSheet::markdown(*catalog);
        return ok;
    case Format::html:
        out << ShortcutSheet::html(*catalog);
        return ok;
    case Format::text:
        break;
    }
    int count = 0;
    for (const MenuSection& s : catalog->sections)
        count += int(s.commands.size());
    out << catalog->appName << " (" << catalog->bundleID << "): " << catalog->sections.size()
        << " menus, " << count << " commands\n";
    for (const MenuSection& section : catalog->sections) {
        out << "\n" << section.title << "\n";
        for (const MenuCommand& command : section.commands) {
            QString title = command.titles().mid(1).join(QStringLiteral(" \u25B8 "));
            if (!command.enabled)
                title += QStringLiteral("  (disabled)");
            if (command.isChecked)
                title = QStringLiteral("\u2713 ") + title;
            out << "  "
                << QStringLiteral("%1 %2\n").arg(title, -56).arg(shortcutText(command.shortcut));
        }
    }
    return ok;
}

int press(QTextStream& out, QTextStream& err, const QString& which, const QStringList& titles)
{
    const Target target = findTarget(which);
    if (!target.error.isEmpty()) {
        err << "corvane-menus: " << target.error << "\n";
        return noSuchApp;
    }
    const PressOutcome outcome = MenuCrawler(desktopMenuSources([] {
                                     return false;
                                 })).press(pathFromTitles(titles), target.app.pid);
    switch (outcome) {
    case PressOutcome::pressed:
        out << "pressed\n";
        return ok;
    case PressOutcome::assumedFired:
        out << "assumedFired\n";
        return ok;
    case PressOutcome::failed:
        out << "failed\n";
        return pressFailed;
    }
    return pressFailed;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("corvane-menus"));
    QStringList args = app.arguments().mid(1);
    QTextStream out(stdout), err(stderr);
    if (args.contains(u"--help") || args.contains(u"-h")) {
        out << usage << help;
        return ok;
    }
    if (args.contains(u"--version") || args.contains(u"-v")) {
        out << "corvane-menus " CORVANE_VERSION "\n";
        return ok;
    }
    const bool idsOnly = args.removeAll(QStringLiteral("--ids")) > 0;
    Format format = Format::text;
    for (const auto& [option, chosen] :
         {std::pair{"--json", Format::json}, std::pair{"--markdown", Format::markdown},
          std::pair{"--html", Format::html}})
        if (args.removeAll(QLatin1String(option)) > 0)
            format = chosen;
    const QString command = args.value(0);
    if (command.isEmpty() || (command != u"list" && args.size() < 2) ||
        (command == u"press" && args.size() < 3) ||
        (command != u"list" && command != u"dump" && command != u"press")) {
        err << usage;
        return usageError;
    }

    int status = ok;
    MenuCrawler::queue().post([&] {
        // On the crawl thread: no accessibility request is ever made on the main thread.
        QTextStream out(stdout), err(stderr);
        QString why;
        const auto enabled = AccessibilitySwitch::isEnabled(&why);
        if (!enabled) {
            err << "corvane-menus: no accessibility bus: " << why << "\n";
            status = noBus;
        } else if (!*enabled) {
            err << "corvane-menus: accessibility is switched off (org.a11y.Status IsEnabled is "
                   "false); switch it on "
                   "in your desktop's accessibility settings\n";
            status = accessibilityOff;
        } else if (!atspi::accessibilityBus(&why)) {
            err << "corvane-menus: no accessibility bus: " << why << "\n";
            status = noBus;
        } else if (command == u"list") {
            status = list(out, idsOnly);
        } else if (command == u"dump") {
            status = dump(out, err, args[1], format);
        } else {
            status = press(out, err, args[1], args.mid(2));
        }
        out.flush();
        QMetaObject::invokeMethod(
            qApp, [] { QCoreApplication::exit(); }, Qt::QueuedConnection);
    });
    app.exec();
    return status;
}
