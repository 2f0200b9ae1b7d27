#include "OverlayLists.h"

#include "OverlayViewModel.h"

namespace corvane {

OverlayLists::OverlayLists(OverlayViewModel* model, QObject* parent)
    : QObject(parent), m_model(model), m_favorites(model, tr("Favorites")),
      m_recent(model, tr("Recent")), m_results(model, {})
{
    for (auto signal : {&OverlayViewModel::sectionsChanged, &OverlayViewModel::showDisabledChanged,
                        &OverlayViewModel::showNoShortcutChanged})
        connect(model, signal, this, &OverlayLists::sectionsAssigned);
    connect(model, &OverlayViewModel::favoriteOrderChanged, this, &OverlayLists::favoritesAssigned);
    connect(model, &OverlayViewModel::favoriteIDsChanged, this, &OverlayLists::favoritesAssigned);
    connect(model, &OverlayViewModel::queryChanged, this, &OverlayLists::queryAssigned);
    // The history fills the Recent list (built beside the favourites) and lifts commands in
    // search; no section's rows change (refreshing them all cost a peek 12 ms on the main
    // thread).
    connect(model, &OverlayViewModel::historyChanged, this, [this] {
        m_favoritesStale = true;
        if (!m_deferred)
            refreshFavorites();
        queryAssigned();
    });
    m_searchActive = model->isSearchActive();
}

void OverlayLists::setDeferred(bool deferred)
{
    m_deferred = deferred;
    if (deferred)
        return;
    if (m_sectionsStale)
        Q_EMIT sectionsChanged();
    refreshFavorites();
    refreshResults();
    queryAssigned();
}

void OverlayLists::sectionsAssigned()
{
    m_favoritesStale = m_resultsStale = true;
    // The same catalog and filters again (another peek at the same application): the section
    // lists stay as they are, and so do the cards showing them.
    const SectionInputs inputs{m_model->sections(), m_model->showDisabled(),
                               m_model->showNoShortcut()};
    if (!m_sectionsStale && inputs == m_sectionInputs) {
        if (!m_deferred) {
            refreshFavorites();
            refreshResults();
        }
        return;
    }
    m_sectionInputs = inputs;
    m_sectionsStale = true;
    if (m_deferred)
        return;
    Q_EMIT sectionsChanged();
    // The favourites and the results keep their identity, so they are reset at once; the
    // section list is rebuilt when a view reads it again.
    refreshFavorites();
    refreshResults();
}

void OverlayLists::favoritesAssigned()
{
    m_favoritesStale = true;
    if (m_deferred)
        return;
    refreshFavorites();
    for (QObject* section : std::as_const(m_sections))
        static_cast<CommandListModel*>(section)->refreshFavorites();
    m_recent.refreshFavorites();
    m_results.refreshFavorites();
}

void OverlayLists::queryAssigned()
{
    m_resultsStale = true;
    if (m_deferred)
        return;
    refreshResults();
    const bool active = m_model->isSearchActive();
    if (active != m_searchActive) {
        m_searchActive = active;
        Q_EMIT searchActiveChanged();
    }
}

QList<QObject*> OverlayLists::sections()
{
    refreshSections();
    return m_sections;
}

CommandListModel* OverlayLists::favorites()
{
    refreshFavorites();
    return &m_favorites;
}

CommandListModel* OverlayLists::recent()
{
    refreshFavorites();
    return &m_recent;
}

CommandListModel* OverlayLists::results()
{
    refreshResults();
    return &m_results;
}

int OverlayLists::commandCount()
{
    refreshSections();
    return m_commandCount;
}

bool OverlayLists::searchActive() const
{
    return m_searchActive;
}

bool OverlayLists::hasSections() const
{
    return !m_model->sections().isEmpty();
}

void OverlayLists::refreshSections()
{
    if (!m_sectionsStale)
        return;
    m_sectionsStale = false;
    for (QObject* old : std::as_const(m_sections))
        old->deleteLater(); // a view may still hold it until its bindings have been updated
    m_sections.clear();
    m_commandCount = 0;
    for (const MenuSection& section : m_model->visibleSections()) {
        auto* list = new CommandListModel(m_model, section.title, this);
        list->setCommands(section.commands);
        m_commandCount += list->count();
        m_sections.append(list);
    }
}

void OverlayLists::refreshFavorites()
{
    if (!m_favoritesStale)
        return;
    m_favoritesStale = false;
    m_favorites.setCommands(m_model->favoriteCommands());
    m_recent.setCommands(m_model->recentCommands());
}

void OverlayLists::refreshResults()
{
    if (!m_resultsStale)
        return;
    m_resultsStale = false;
    // Without a search the list is hidden and keeps the last search's rows: the next search
    // rebinds them in place instead of making them again (the first keystroke's frame).
    if (m_model->isSearchActive())
        m_results.setCommands(m_model->searchResults());
}

} // namespace corvane
