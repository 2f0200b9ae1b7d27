#include "OverlayViewModel.h"

#include "shortcuts/TextFolding.h"

namespace corvane {

OverlayViewModel::OverlayViewModel(QObject* parent) : QObject(parent) {}
OverlayViewModel::~OverlayViewModel() = default;

// Every assignment notifies, also when the value is unchanged: a view that reset its own state
// (scroll, hover) hears the assignment that a new presentation makes.
void OverlayViewModel::setAppName(const QString& value)
{
    m_appName = value;
    Q_EMIT appNameChanged();
}
void OverlayViewModel::setAppIcon(const QString& value)
{
    m_appIcon = value;
    Q_EMIT appIconChanged();
}
void OverlayViewModel::setSections(const QList<MenuSection>& value)
{
    // The search index is a cache of the visible commands: the same catalog again (another peek
    // at the same application) keeps it. Every assignment still notifies.
    if (!(value == m_sections)) {
        m_sections = value;
        invalidate();
    }
    Q_EMIT sectionsChanged();
}
void OverlayViewModel::setQuery(const QString& value)
{
    m_query = value;
    Q_EMIT queryChanged();
}
void OverlayViewModel::setPinned(bool value)
{
    m_pinned = value;
    Q_EMIT pinnedChanged();
}
void OverlayViewModel::setSelection(qint64 value)
{
    m_selection = value;
    Q_EMIT selectionChanged();
}
void OverlayViewModel::setFavoriteIDs(const QSet<QString>& value)
{
    m_favoriteIDs = value;
    Q_EMIT favoriteIDsChanged();
}
void OverlayViewModel::setShowDisabled(bool value)
{
    if (value != m_showDisabled) {
        m_showDisabled = value;
        invalidate();
    }
    Q_EMIT showDisabledChanged();
}
void OverlayViewModel::setShowNoShortcut(bool value)
{
    if (value != m_showNoShortcut) {
        m_showNoShortcut = value;
        invalidate();
    }
    Q_EMIT showNoShortcutChanged();
}
QString OverlayViewModel::unreadableText() const
{
    switch (m_unreadable) {
    case Unreadable::no:
        break;
    case Unreadable::notOnBus:
        return tr("%1 is not on the accessibility bus: if it was started before accessibility "
                  "was switched on, quit and reopen it.")
            .arg(m_appName);
    case Unreadable::restartNeeded:
        return tr("%1 started without accessibility: quit and reopen it to see its menus.")
            .arg(m_appName);
    }
    return {};
}

void OverlayViewModel::setHistory(const CommandFilter::HistoryWeights& weights,
                                  const QStringList& recent)
{
    if (weights == m_historyWeights && recent == m_recentOrder)
        return; // another peek at the same application, nothing run since
    m_historyWeights = weights;
    m_recentOrder = recent;
    Q_EMIT historyChanged();
}

void OverlayViewModel::setUnreadable(Unreadable value)
{
    m_unreadable = value;
    Q_EMIT unreadableChanged();
}

void OverlayViewModel::setGlassy(bool value)
{
    m_glassy = value;
    Q_EMIT glassyChanged();
}
void OverlayViewModel::setTriggerSymbol(const QString& value)
{
    m_triggerSymbol = value;
    Q_EMIT triggerSymbolChanged();
}
void OverlayViewModel::setFavoriteOrder(const QStringList& value)
{
    m_favoriteOrder = value;
    Q_EMIT favoriteOrderChanged();
}

QList<MenuSection> OverlayViewModel::visibleSections() const
{
    QList<MenuSection> result;
    for (const MenuSection& section : m_sections) {
        MenuSection kept{section.title, {}};
        for (const MenuCommand& command : section.commands) {
            // Only the key decides: modifiers with an empty key count as no shortcut.
            if ((m_showDisabled || command.enabled) &&
                (m_showNoShortcut || !command.shortcut.key.isEmpty()))
                kept.commands.append(command);
        }
        if (!kept.commands.isEmpty())
            result.append(kept);
    }
    return result;
}

QList<MenuCommand> OverlayViewModel::allCommands() const
{
    return index().commands();
}

namespace {

// The visible commands with these ids, in the order of `ids` (an id listed twice yields its
// command twice), found without building the search index.
QList<MenuCommand> commandsByIds(const QList<MenuSection>& sections, const QStringList& ids)
{
    if (ids.isEmpty())
        return {};
    const QSet<QString> wanted(ids.cbegin(), ids.cend());
    QHash<QString, MenuCommand> byId;
    for (const MenuSection& section : sections) {
        for (const MenuCommand& command : section.commands) {
            const QString id = command.id();
            if (wanted.contains(id) && !byId.contains(id)) // the first of equal ids keeps it
                byId.insert(id, command);
        }
    }
    QList<MenuCommand> result;
    for (const QString& id : ids)
        if (const auto it = byId.constFind(id); it != byId.constEnd())
            result.append(*it);
    return result;
}

} // namespace

QList<MenuCommand> OverlayViewModel::favoriteCommands() const
{
    return commandsByIds(visibleSections(), m_favoriteOrder);
}

QList<MenuCommand> OverlayViewModel::recentCommands() const
{
    return commandsByIds(visibleSections(), m_recentOrder);
}

QList<MenuCommand> OverlayViewModel::searchResults() const
{
    // Without a search the filter returns the commands unchanged: no need to build the index.
    if (!isSearchActive())
        return allCommands();
    return index().rank(m_query, m_favoriteIDs, m_historyWeights);
}

bool OverlayViewModel::isSearchActive() const
{
    return TextFolding::isSearchActive(m_query);
}

const CommandFilter::Index& OverlayViewModel::index() const
{
    if (!m_index) {
        QList<MenuCommand> commands;
        for (const MenuSection& section : visibleSections())
            commands.append(section.commands);
        m_index = std::make_unique<CommandFilter::Index>(commands);
    }
    return *m_index;
}

void OverlayViewModel::moveSelection(qint64 delta)
{
    const qint64 n = searchResults().size();
    if (n == 0) {
        setSelection(0);
        return;
    }
    qint64 s = 0;
    if (qAddOverflow(m_selection, delta, &s))
        qFatal("overlay selection overflowed"); // a counter that overflows is a bug, not a case
    setSelection(s > 0 ? std::min(s, n - 1) : 0);
}

void OverlayViewModel::executeSelection()
{
    if (!isSearchActive())
        return;
    const QList<MenuCommand> results = searchResults();
    // Deliberately not checking `enabled`: the keyboard path hands a disabled command on too.
    if (m_selection >= 0 && m_selection < results.size() && onExecute)
        onExecute(results[m_selection]);
}

void OverlayViewModel::requestExport()
{
    if (onExport)
        onExport();
}

void OverlayViewModel::setNotice(const QString& value)
{
    m_notice = value;
    Q_EMIT noticeChanged();
}

void OverlayViewModel::requestPin()
{
    if (onPinRequest)
        onPinRequest();
}

} // namespace corvane
