#include "SecondaryWindow.h"

#include "LoopingPlayer.h"
#include "ReleaseNotes.h"
#include "WindowPlacement.h"
#include "overlay/ViewFactory.h"
#include "platform/AccessibilityTrust.h"
#include "platform/DesktopCompanion.h"

#include <QCoreApplication>
#include <QEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickItem>

namespace corvane {

WindowServices& WindowServices::shared()
{
    static WindowServices services;
    return services;
}

QString WindowServices::companionState() const
{
    if (!companion)
        return {};
    switch (companion->state()) {
    case DesktopCompanion::State::notNeeded:
        return {};
    case DesktopCompanion::State::notInstalled:
        return QStringLiteral("notInstalled");
    case DesktopCompanion::State::needsRestart:
        return QStringLiteral("needsRestart");
    case DesktopCompanion::State::off:
        return QStringLiteral("off");
    case DesktopCompanion::State::failed:
        return QStringLiteral("failed");
    case DesktopCompanion::State::on:
        return QStringLiteral("on");
    }
    return {};
}

QString WindowServices::triggerNameForTexts() const
{
    return ReleaseNotes::triggerNameInTexts(triggerName ? triggerName() : QString());
}

PermissionWatch::PermissionWatch(AccessibilityTrust* trust, QObject* parent)
    : QObject(parent), m_trust(trust), m_trusted(trust && trust->isTrusted())
{
    m_timer.setInterval(1000);
    connect(&m_timer, &QTimer::timeout, this, &PermissionWatch::check);
    m_timer.start();
}

void PermissionWatch::check()
{
    if (!m_trust)
        return;
    // Asked for, never waited on: the answer arrives later on the main thread.
    m_trust->refresh([self = QPointer<PermissionWatch>(this)](bool trusted) {
        if (!self || self->m_trusted == trusted)
            return;
        self->m_trusted = trusted;
        Q_EMIT self->changed();
    });
}

bool SecondaryView::event(QEvent* event)
{
    if (event->type() == QEvent::Close)
        Q_EMIT willClose();
    return QQuickWindow::event(event);
}

QQmlEngine& secondaryWindowEngine()
{
    static QQmlEngine* engine = [] {
        qmlRegisterType<LoopingPlayer>("Corvane.Windows", 1, 0, "LoopingPlayer");
        QQmlEngine* made = makeViewEngine().release();
        made->setParent(qApp);
        return made;
    }();
    return *engine;
}

SecondaryWindow::~SecondaryWindow()
{
    // The shared presenters end after the application; then the process is ending anyway.
    if (!QCoreApplication::instance())
        return;
    dismantle();
}

void SecondaryWindow::dismantle()
{
    delete m_window;
    delete m_model; // unless it went with the window
}

QQuickItem* SecondaryWindow::view() const
{
    return m_view;
}

void SecondaryWindow::create(const QString& module, const QString& type, const QString& title,
                             Buttons buttons, const QVariantMap& properties, QObject* model)
{
    QQmlEngine& engine = secondaryWindowEngine();
    // The module's files sit under its URI in the resources (qt_add_qml_module).
    QString folder = module;
    folder.replace(u'.', u'/');
    QQmlComponent component(&engine,
                            QUrl(QStringLiteral("qrc:/qt/qml/%1/%2.qml").arg(folder, type)),
                            QQmlComponent::PreferSynchronous);
    auto* window = new SecondaryView;
    QVariantMap initial = properties;
    initial.insert(QStringLiteral("model"), QVariant::fromValue(model));
    initial.insert(QStringLiteral("ownTitleBar"), WindowServices::shared().ownTitleBar);
    initial.insert(QStringLiteral("minimizable"), buttons == Buttons::closeAndMinimize);
    QQuickItem* item = createViewIn(component, *window, initial);
    // The view goes with its window; the model after them, so that no binding sees it vanish.
    item->setParent(window);

    Qt::WindowFlags flags =
        Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;
    if (buttons == Buttons::closeAndMinimize)
        flags |= Qt::WindowMinimizeButtonHint;
    window->setFlags(flags);
    window->setTitle(title);
    m_window = window;
    m_view = item;
    m_model = model;
    // Quitting with the window open: the window, its view and the model go before the
    // application does (the shared presenters outlive it, so their destructor cannot). A playing
    // clip goes with them, and with it the copy Qt Multimedia made of it in the temporary folder.
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, window, [this] { dismantle(); });
    // The window follows its content's size: a longer translation grows it instead of cutting the
    // text.
    const auto fit = [window, item] { fitToContent(*window, item); };
    QObject::connect(item, &QQuickItem::implicitHeightChanged, window, fit);
    QObject::connect(item, &QQuickItem::implicitWidthChanged, window, fit);
    QObject::connect(window, &SecondaryView::willClose, window, [this] { willClose(); });
    // Placed before the window manager framed it, the window is centred again by its real frame
    // once it is on screen (only the first window of a session moves).
    QObject::connect(
        window, &QQuickWindow::frameSwapped, window,
        [window, item] {
            if (!window->frameMargins().isNull())
                centerOnActiveScreen(*window, item);
        },
        Qt::SingleShotConnection);
}

void SecondaryWindow::willClose()
{
    // The view (and a playing clip) and the model go, the fields are cleared, so that the next show
    // builds a fresh view; the window itself is deleted once its close has been handled.
    SecondaryView* window = m_window;
    QObject* model = m_model;
    m_window = nullptr;
    m_view = nullptr;
    m_model = nullptr;
    if (window)
        window->deleteLater();
    if (model)
        model->deleteLater(); // after the window and its view
}

void SecondaryWindow::close()
{
    if (m_window)
        m_window->close();
}

void SecondaryWindow::bringForward()
{
    if (!m_window)
        return;
    centerOnActiveScreen(*m_window, m_view);
    m_window->show();
    m_window->raise();
    m_window->requestActivate();
}

} // namespace corvane
