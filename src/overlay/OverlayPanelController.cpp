#include "OverlayPanelController.h"

#include "PanelPlacement.h"
#include "SymbolImageProvider.h"
#include "ViewFactory.h"

#include <QCursor>
#include <QKeyEvent>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickItem>
#include <QTimeLine>
#include <QTimer>

namespace corvane {

namespace {
const QUrl rootViewUrl(QStringLiteral("qrc:/qt/qml/Corvane/Overlay/OverlayRoot.qml"));
constexpr int fadeInMs = 130;
constexpr int fadeOutMs = 120;
constexpr int fadeFrameMs = 33;
// The window manager maps the panel a moment after `show()`; the grab needs it mapped.
constexpr int grabAttempts = 25;
constexpr int grabRetryMs = 20;
} // namespace

OverlayPanelController::OverlayPanelController(QObject* parent) : QObject(parent)
{
    // The software scene graph, chosen before the first window: no GPU driver in a process that
    // lives all day. (graphicsApi() keeps answering OpenGL after this; the backend's name tells.)
    if (QQuickWindow::sceneGraphBackend() != QStringLiteral("software"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    // A window asked to redraw waits 5 ms by default (Qt gathers requests before drawing);
    // the overlay draws a frame at once: a presentation or a keystroke shows ~4 ms sooner
    // (bench_overlay). Animations still draw at the animation timer's pace. Read at the first
    // update request of the process; a value the user set is kept.
    if (!qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME"))
        qputenv("QT_QPA_UPDATE_IDLE_TIME", "1");
    connect(&m_lists, &OverlayLists::sectionsChanged, this, [this] { m_sectionsDrawn = false; });
}

OverlayPanelController::~OverlayPanelController()
{
    delete m_root; // before the engine that made it
}

void OverlayPanelController::prepare()
{
    if (!m_panel)
        createPanel();
}

void OverlayPanelController::createPanel()
{
    if (m_panel) { // replaced while hidden (setTranslucent)
        removeKeyMonitor();
        stopFade();
        delete m_root; // before the engine that made it
        m_panel.reset();
        m_rootComponent.reset();
        m_engine.reset();
    }
    m_panel = std::make_unique<PeekPanel>(m_translucent);
    m_sectionsDrawn = false;
    m_engine = makeViewEngine();
    m_rootComponent = std::make_unique<QQmlComponent>(m_engine.get(), rootViewUrl,
                                                      QQmlComponent::PreferSynchronous);
    connect(m_panel.get(), &QQuickWindow::frameSwapped, this, [this] { m_sectionsDrawn = true; });
    m_root = createViewIn(*m_rootComponent, *m_panel,
                          {{QStringLiteral("model"), QVariant::fromValue(&m_viewModel)},
                           {QStringLiteral("lists"), QVariant::fromValue(&m_lists)},
                           {QStringLiteral("translucent"), m_translucent}});
    QQmlProperty(m_root, QStringLiteral("anchors.fill"))
        .write(QVariant::fromValue(m_panel->contentItem()));
    Q_EMIT panelCreated(m_panel.get());
}

void OverlayPanelController::setTranslucent(bool translucent)
{
    m_translucent = translucent;
    // X chooses a window's visual (with an alpha channel or without) when it is made: after a
    // compositor started or stopped, the hidden panel is made again. A visible one is kept
    // until the first presentation after it hides.
    if (m_panel && m_panel->isTranslucent() != translucent && !m_panel->isVisible())
        createPanel();
}

qint64 OverlayPanelController::nextGeneration()
{
    if (m_fadeGeneration == std::numeric_limits<qint64>::max())
        qFatal("overlay: fade generation overflow");
    return ++m_fadeGeneration;
}

void OverlayPanelController::present(const RunningApp& app,
                                     const std::optional<MenuCatalog>& catalog,
                                     const QStringList& favorites, bool showDisabled,
                                     bool showNoShortcut, bool glassy, const QString& triggerSymbol)
{
    if (!m_panel)
        createPanel();
    // A fade-out still running can no longer hide the panel.
    const qint64 generation = nextGeneration();
    stopFade();
    m_root->setOpacity(0);
    const bool onScreen = m_panel->isExposed(); // presented again during its fade-out
    // Placed and mapped first: the window manager maps the panel (several milliseconds) while
    // the views are filled. The first frame is drawn once it is mapped, after the fill.
    place();
    m_panel->showNow(); // does not take activation (PeekPanel)
    fill(app, catalog, favorites, showDisabled, showNoShortcut, glassy, triggerSymbol);
    if (onScreen) {
        fade(1.0, fadeInMs, {});
        return;
    }
    // The fade starts with the first frame on screen, drawn at alpha 0, and then runs its whole
    // length where the user sees it; the window manager's mapping would otherwise take the
    // first few milliseconds of it.
    connect(
        m_panel.get(), &QQuickWindow::frameSwapped, this,
        [this, generation] {
            if (m_fadeGeneration == generation)
                fade(1.0, fadeInMs, {});
        },
        Qt::SingleShotConnection);
}

void OverlayPanelController::stage(const RunningApp& app, const std::optional<MenuCatalog>& catalog,
                                   const QStringList& favorites, bool showDisabled,
                                   bool showNoShortcut, bool glassy, const QString& triggerSymbol)
{
    if (m_panel && m_panel->isVisible())
        return;
    if (!m_panel)
        createPanel();
    place();
    fill(app, catalog, favorites, showDisabled, showNoShortcut, glassy, triggerSymbol);
    if (!std::exchange(m_sectionsDrawn, true)) {
        // New sections: a frame drawn off screen makes their scene graph nodes (text layouts,
        // glyphs) now; the first frame on screen then only paints.
        m_root->setOpacity(1);
        m_panel->grabWindow();
    }
}

void OverlayPanelController::fill(const RunningApp& app, const std::optional<MenuCatalog>& catalog,
                                  const QStringList& favorites, bool showDisabled,
                                  bool showNoShortcut, bool glassy, const QString& triggerSymbol)
{
    m_lists.setDeferred(true);
    m_viewModel.setAppName(!app.name.isEmpty() ? app.name : app.appId.value_or(QString()));
    m_viewModel.setAppIcon(app.iconName);
    m_viewModel.setSections(catalog ? catalog->sections : QList<MenuSection>{});
    m_viewModel.setUnreadable(OverlayViewModel::Unreadable::no);
    m_viewModel.setNotice({});
    m_viewModel.setQuery({});
    m_viewModel.setSelection(0);
    m_viewModel.setPinned(false);
    m_viewModel.setFavoriteOrder(favorites);
    m_viewModel.setFavoriteIDs(QSet<QString>(favorites.begin(), favorites.end()));
    m_viewModel.setShowDisabled(showDisabled);
    m_viewModel.setShowNoShortcut(showNoShortcut);
    m_viewModel.setGlassy(glassy);
    m_viewModel.setTriggerSymbol(triggerSymbol);
    m_lists.setDeferred(false);

    // The root view is made once; every presentation resets its own state (search focus, scroll
    // positions), so that every presentation starts as a fresh view would. Hover follows the
    // pointer by itself. Making a new view each time costs a frame and more.
    QMetaObject::invokeMethod(m_root, "reset");
}

void OverlayPanelController::place()
{
    int mainScreen = -1;
    const QList<ScreenFrames> frames = currentScreens(&mainScreen);
    const std::optional<QRectF> frame = panelFrame(frames, mainScreen, QCursor::pos());
    if (!frame)
        return; // no screens: the panel keeps its frame
    m_panel->setGeometry(frame->toRect());
    // A hidden window hears of a new size only once shown; its views are laid out for the
    // panel's size at once (a staged presentation is laid out before it shows).
    m_panel->contentItem()->setSize(m_panel->size());
    m_panel->cutToCard();
}

void OverlayPanelController::stopFade()
{
    if (!m_fade)
        return;
    m_fade->stop(); // a stopped fade runs no completion
    m_fade->deleteLater();
}

void OverlayPanelController::fade(qreal to, int milliseconds, std::function<void()> completion)
{
    stopFade(); // a stopped fade runs no completion
    auto* fade = new QTimeLine(milliseconds, this);
    // A frame every 33 ms: each frame of a fade draws every card anew, and four steps in 130 ms
    // look as smooth as eight (half a peek's drawing).
    fade->setUpdateInterval(fadeFrameMs);
    fade->setEasingCurve(QEasingCurve::Linear);
    const qreal from = m_root ? m_root->opacity() : 0.0;
    QPointer<QQuickItem> root = m_root;
    connect(fade, &QTimeLine::valueChanged, this, [root, from, to](qreal progress) {
        if (root)
            root->setOpacity(from + (to - from) * progress);
    });
    connect(fade, &QTimeLine::finished, fade, &QObject::deleteLater);
    if (completion)
        connect(fade, &QTimeLine::finished, this, std::move(completion));
    m_fade = fade;
    fade->start();
}

void OverlayPanelController::pin()
{
    if (!m_panel || !m_panel->isVisible())
        return;
    m_viewModel.setPinned(true); // the root view focuses and enables the search field
    grabKeyboardWhenViewable(grabAttempts);
    installKeyMonitor();
}

void OverlayPanelController::lendKeyboard(bool lend)
{
    if (!m_panel || !m_panel->isVisible() || !m_viewModel.pinned())
        return;
    if (lend)
        m_panel->takeKeyboard(false);
    else
        grabKeyboardWhenViewable(grabAttempts);
}

void OverlayPanelController::grabKeyboardWhenViewable(int attemptsLeft)
{
    if (!m_viewModel.pinned() || !m_panel || !m_panel->isVisible())
        return;
    if (m_panel->takeKeyboard(true))
        return;
    if (attemptsLeft <= 0) {
        qWarning("overlay: the panel could not take the keyboard; typing stays with the "
                 "application in front");
        return;
    }
    QTimer::singleShot(grabRetryMs, this,
                       [this, attemptsLeft] { grabKeyboardWhenViewable(attemptsLeft - 1); });
}

void OverlayPanelController::installKeyMonitor()
{
    if (m_keyMonitor)
        return;
    m_panel->installEventFilter(this);
    m_keyMonitor = true;
}

void OverlayPanelController::removeKeyMonitor()
{
    if (m_keyMonitor && m_panel)
        m_panel->removeEventFilter(this);
    m_keyMonitor = false;
}

bool OverlayPanelController::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress && m_panel && watched == m_panel.get())
        return handleKey(static_cast<QKeyEvent*>(event));
    return QObject::eventFilter(watched, event);
}

bool OverlayPanelController::handleKey(QKeyEvent* event)
{
    if (!m_viewModel.pinned())
        return false;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter: // keypad Enter
        if (!m_viewModel.isSearchActive())
            return false; // the search field gets it, and nothing happens
        m_viewModel.executeSelection();
        return true;
    case Qt::Key_Escape:
        if (m_viewModel.onCloseRequest)
            m_viewModel.onCloseRequest();
        return true;
    case Qt::Key_E:
        if (event->modifiers() != Qt::ControlModifier)
            return false;
        m_viewModel.requestExport();
        return true;
    case Qt::Key_Down:
        m_viewModel.moveSelection(1);
        return true;
    case Qt::Key_Up:
        m_viewModel.moveSelection(-1);
        return true;
    default:
        return false; // typing goes to the search field
    }
}

void OverlayPanelController::dismiss()
{
    removeKeyMonitor();
    m_viewModel.setPinned(false);
    m_viewModel.setQuery({});
    if (m_panel)
        m_panel->takeKeyboard(false);
    if (!m_panel || !m_panel->isVisible())
        return;
    const qint64 generation = nextGeneration();
    // A fade-out overtaken by a new presentation must not hide it: the generation check makes a
    // late completion harmless.
    fade(0.0, fadeOutMs, [this, generation] {
        if (m_fadeGeneration != generation || !m_panel)
            return;
        m_panel->hide();
        // What this presentation's views left behind goes now, while nobody is waiting.
        m_engine->collectGarbage();
        Q_EMIT hidden();
    });
}

void OverlayPanelController::update(const MenuCatalog& catalog)
{
    m_viewModel.setSections(catalog.sections);
    if (m_viewModel.selection() >= m_viewModel.searchResults().size())
        m_viewModel.setSelection(0);
}

} // namespace corvane
