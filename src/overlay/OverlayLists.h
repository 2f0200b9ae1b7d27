#pragma once

// The view model's derived lists as list models for the QML views: one per visible section, the
// favourites, the recent commands and the search results. Each is rebuilt only when something it is
// derived from was assigned. The results list holds the search results while a search is active,
// and the last search's results after it (it is shown only during a search; the next search changes
// its rows in place).

#include "CommandListModel.h"

#include <QObject>
#include <QPointer>

namespace corvane {

class OverlayViewModel;

class OverlayLists : public QObject {
    Q_OBJECT
    Q_PROPERTY(QList<QObject*> sections READ sections NOTIFY sectionsChanged)
    Q_PROPERTY(CommandListModel* favorites READ favorites CONSTANT)
    Q_PROPERTY(CommandListModel* recent READ recent CONSTANT)
    Q_PROPERTY(CommandListModel* results READ results CONSTANT)
    Q_PROPERTY(int commandCount READ commandCount NOTIFY sectionsChanged)
    // The raw sections, before filtering: none means no catalog yet (the loading state).
    Q_PROPERTY(bool hasSections READ hasSections NOTIFY sectionsChanged)
    Q_PROPERTY(bool searchActive READ searchActive NOTIFY searchActiveChanged)

public:
    explicit OverlayLists(OverlayViewModel* model, QObject* parent = nullptr);

    QList<QObject*> sections();
    CommandListModel* favorites();
    CommandListModel* recent();
    CommandListModel* results();
    int commandCount();
    bool searchActive() const;
    bool hasSections() const;

    // While deferred, assignments to the view model only mark the lists stale; they are
    // refreshed once when deferring ends (the controller fills a dozen properties at once).
    void setDeferred(bool deferred);

Q_SIGNALS:
    void sectionsChanged();
    void searchActiveChanged();

private:
    void sectionsAssigned();
    void favoritesAssigned();
    void queryAssigned();
    void refreshSections();
    void refreshFavorites();
    void refreshResults();

    OverlayViewModel* m_model;
    QList<QObject*> m_sections; // CommandListModel, one per visible section
    CommandListModel m_favorites;
    CommandListModel m_recent;
    CommandListModel m_results;
    int m_commandCount = 0;
    bool m_searchActive = false;
    bool m_sectionsStale = true;
    bool m_favoritesStale = true;
    bool m_resultsStale = true;
    bool m_deferred = false;
    // What the section lists were last made from.
    struct SectionInputs {
        QList<MenuSection> sections;
        bool showDisabled = true;
        bool showNoShortcut = true;
        friend bool operator==(const SectionInputs&, const SectionInputs&) = default;
    };
    SectionInputs m_sectionInputs;
};

} // namespace corvane
