// corvane-overlay-preview: the overlay for a catalog read from a JSON file (the format of
// `corvane-menus dump --json`), for designers, the README and the tests.
//
//   corvane-overlay-preview CATALOG.json [options]
//
// It shows the panel as Corvane would and quits when the panel closes (Escape when pinned, or
// closing the window), or saves a PNG of the panel with --png and quits.

#include "app/Translations.h"
#include "menus/MenuCatalogJson.h"
#include "overlay/OverlayPanelController.h"
#include "overlay/Palettes.h"
#include "overlay/ViewFactory.h"
#include "platform/linux/DisplaySession.h"

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QQuickItem>
#include <QTextStream>
#include <QTimer>

using namespace corvane;

namespace {

int fail(const QString& message, int status = 1)
{
    QTextStream(stderr) << "corvane-overlay-preview: " << message << "\n";
    return status;
}

} // namespace

int main(int argc, char** argv)
{
    if (!DisplaySession::prepare("corvane-overlay-preview", argc, argv))
        return 1;
    QGuiApplication app(argc, argv);
    QGuiApplication::setApplicationName(QStringLiteral("corvane-overlay-preview"));
    QGuiApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows Corvane's overlay for a menu catalog in JSON, the format of "
                       "`corvane-menus dump --json`."));
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("catalog"),
                                 QStringLiteral("The catalog (JSON file); \"-\" reads standard "
                                                "input. Without it the overlay shows the loading "
                                                "state."),
                                 QStringLiteral("[CATALOG.json]"));
    const QCommandLineOption pinned(QStringLiteral("pinned"), QStringLiteral("Pin the overlay."));
    const QCommandLineOption query(QStringLiteral("query"),
                                   QStringLiteral("Type TEXT into the search field (pins)."),
                                   QStringLiteral("TEXT"));
    const QCommandLineOption selection(QStringLiteral("selection"),
                                       QStringLiteral("Select result N (from 0)."),
                                       QStringLiteral("N"));
    const QCommandLineOption favorite(
        QStringLiteral("favorite"),
        QStringLiteral("Star the command at PATH, titles joined by \">\", each TITLE or "
                       "TITLE#N (repeatable), for example \"File>Open Recent>notes.txt\"."),
        QStringLiteral("PATH"));
    const QCommandLineOption hideDisabled(QStringLiteral("hide-disabled"),
                                          QStringLiteral("Leave out disabled commands."));
    const QCommandLineOption hideNoShortcut(QStringLiteral("hide-no-shortcut"),
                                            QStringLiteral("Leave out commands without a "
                                                           "shortcut."));
    const QCommandLineOption solid(QStringLiteral("solid"),
                                   QStringLiteral("No glassy background."));
    const QCommandLineOption theme(QStringLiteral("palette"),
                                   QStringLiteral("light, dark or system (the default)."),
                                   QStringLiteral("NAME"), QStringLiteral("system"));
    const QCommandLineOption size(QStringLiteral("size"),
                                  QStringLiteral("Panel size instead of the placement rule's."),
                                  QStringLiteral("WxH"));
    const QCommandLineOption trigger(QStringLiteral("trigger"),
                                     QStringLiteral("The trigger's name in the footer (default "
                                                    "Ctrl)."),
                                     QStringLiteral("NAME"), QStringLiteral("Ctrl"));
    const QCommandLineOption icon(QStringLiteral("app-icon"),
                                  QStringLiteral("The application's icon (theme name or file)."),
                                  QStringLiteral("ICON"));
    const QCommandLineOption appName(QStringLiteral("app-name"),
                                     QStringLiteral("The application's name (default: the "
                                                    "catalog's)."),
                                     QStringLiteral("NAME"));
    const QCommandLineOption recent(QStringLiteral("recent"),
                                    QStringLiteral("Show this command (titles joined by >) in the "
                                                   "Recent card (repeatable)."),
                                    QStringLiteral("PATH"));
    const QCommandLineOption notice(QStringLiteral("notice"),
                                    QStringLiteral("Show this line in the footer."),
                                    QStringLiteral("TEXT"));
    const QCommandLineOption unreadable(
        QStringLiteral("unreadable"),
        QStringLiteral("Show why the menus cannot be read: not-on-bus or restart-needed."),
        QStringLiteral("WHY"));
    const QCommandLineOption png(QStringLiteral("png"),
                                 QStringLiteral("Save a PNG of the panel to FILE and quit."),
                                 QStringLiteral("FILE"));
    const QCommandLineOption texts(QStringLiteral("texts"),
                                   QStringLiteral("Print every text the panel shows, one per line, "
                                                  "and quit."));
    const QCommandLineOption translation(QStringLiteral("translation"),
                                         QStringLiteral("Load this compiled translation (.qm) "
                                                        "instead of the system locale's."),
                                         QStringLiteral("FILE"));
    parser.addOptions({pinned, query, selection, favorite, hideDisabled, hideNoShortcut, solid,
                       theme, size, trigger, icon, appName, recent, notice, unreadable, png, texts,
                       translation});
    parser.process(app);

    // The given catalog, or the system locale's as Corvane loads it.
    if (!Translations::installFileOrLocale(parser.value(translation)))
        return fail(
            QStringLiteral("cannot load the translation %1").arg(parser.value(translation)));

    std::optional<MenuCatalog> catalog;
    if (!parser.positionalArguments().isEmpty()) {
        const QString path = parser.positionalArguments().constFirst();
        QFile file;
        const bool opened = path == QStringLiteral("-")
                                ? file.open(stdin, QIODevice::ReadOnly)
                                : (file.setFileName(path), file.open(QIODevice::ReadOnly));
        if (!opened)
            return fail(QStringLiteral("cannot read %1: %2").arg(path, file.errorString()));
        const MenuCatalogJson::ReadResult read = MenuCatalogJson::read(file.readAll());
        if (!read.catalog)
            return fail(QStringLiteral("%1: %2").arg(path, read.error));
        catalog = read.catalog;
    }

    const QString paletteName = parser.value(theme);
    if (paletteName == QStringLiteral("light") || paletteName == QStringLiteral("dark"))
        QGuiApplication::setPalette(previewPalette(paletteName == QStringLiteral("dark")));
    else if (paletteName != QStringLiteral("system"))
        return fail(
            QStringLiteral("--palette takes light, dark or system, not \"%1\"").arg(paletteName),
            2);

    // A command's id from its titles as written on the command line, joined by ">".
    const auto idOf = [](const QString& written) {
        return MenuCommand{pathFromTitles(written.split(u'>')), {}, true, false}.id();
    };
    QStringList favorites;
    for (const QString& written : parser.values(favorite))
        favorites << idOf(written);
    QStringList recentIds;
    CommandFilter::HistoryWeights weights;
    for (const QString& written : parser.values(recent)) {
        recentIds << idOf(written);
        weights.insert(recentIds.last(), 1.0);
    }

    QSize panelSize;
    if (parser.isSet(size)) {
        const QStringList wh = parser.value(size).split(u'x');
        bool w = false, h = false;
        if (wh.size() == 2)
            panelSize = QSize(wh[0].toInt(&w), wh[1].toInt(&h));
        if (!w || !h || panelSize.isEmpty())
            return fail(QStringLiteral("--size takes WIDTHxHEIGHT, for example 940x640"), 2);
    }
    qint64 selected = 0;
    if (parser.isSet(selection)) {
        bool valid = false;
        selected = parser.value(selection).toLongLong(&valid);
        if (!valid)
            return fail(QStringLiteral("--selection takes a number"), 2);
    }

    OverlayPanelController controller;
    OverlayViewModel& model = controller.viewModel();
    model.onCloseRequest = [&] { controller.dismiss(); };
    model.onPinRequest = [&] { controller.pin(); };
    model.onExecute = [](const MenuCommand& command) {
        QTextStream(stdout) << "run " << command.titles().join(QStringLiteral(" > ")) << Qt::endl;
    };
    model.onToggleFavorite = [&](const MenuCommand& command) {
        QStringList order = model.favoriteOrder();
        if (!order.removeOne(command.id()))
            order.append(command.id());
        model.setFavoriteOrder(order);
        model.setFavoriteIDs(QSet<QString>(order.begin(), order.end()));
    };
    QObject::connect(&controller, &OverlayPanelController::hidden, &app, &QGuiApplication::quit);

    RunningApp shown;
    shown.name = parser.isSet(appName) ? parser.value(appName)
                 : catalog             ? catalog->appName
                                       : QString();
    shown.appId = catalog ? std::optional(catalog->bundleID) : std::nullopt;
    shown.iconName = parser.value(icon);
    controller.present(shown, catalog, favorites, !parser.isSet(hideDisabled),
                       !parser.isSet(hideNoShortcut), !parser.isSet(solid), parser.value(trigger));
    if (panelSize.isValid())
        controller.panel()->resize(panelSize);
    if (parser.isSet(pinned) || parser.isSet(query))
        controller.pin();
    if (parser.isSet(query))
        model.setQuery(parser.value(query));
    model.setSelection(selected);
    model.setHistory(weights, recentIds);
    if (parser.isSet(notice))
        model.setNotice(parser.value(notice));
    if (parser.value(unreadable) == u"not-on-bus")
        model.setUnreadable(OverlayViewModel::Unreadable::notOnBus);
    else if (parser.value(unreadable) == u"restart-needed")
        model.setUnreadable(OverlayViewModel::Unreadable::restartNeeded);
    else if (parser.isSet(unreadable))
        return fail(QStringLiteral("--unreadable is not-on-bus or restart-needed"));

    if (parser.isSet(texts)) {
        QTimer::singleShot(400, &app, [&] {
            QTextStream out(stdout);
            for (const QString& text : shownTexts(controller.rootView()))
                out << text << "\n";
            app.quit();
        });
    } else if (parser.isSet(png)) {
        const QString file = parser.value(png);
        // After the fade-in has ended and the panel has drawn itself. The fade runs on its own
        // timer: on a loaded machine it can still be under way when this one fires.
        QTimer* grab = new QTimer(&app);
        QElapsedTimer waited;
        waited.start();
        QObject::connect(grab, &QTimer::timeout, &app, [&, grab] {
            if (controller.rootView()->opacity() < 1.0 && waited.elapsed() < 10000)
                return;
            grab->stop();
            const QImage image = controller.panel()->grabWindow();
            if (image.isNull() || !image.save(file)) {
                fail(QStringLiteral("cannot save %1").arg(file));
                app.exit(1);
                return;
            }
            app.quit();
        });
        grab->start(400);
    }
    return app.exec();
}
