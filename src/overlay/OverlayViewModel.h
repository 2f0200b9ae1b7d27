#pragma once

// The overlay's observable state: the application shown, its sections, the search, the pin, the
// selection, the favourites and the display options, with the derived lists the views show and the
// two keyboard actions. Every assignment notifies, also of an equal value.

#include "menus/MenuCatalog.h"
#include "shortcuts/CommandFilter.h"

#include <QObject>
#include <QSet>
#include <QStringList>
#include <functional>
#include <memory>

namespace corvane {

class OverlayViewModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString appName READ appName WRITE setAppName NOTIFY appNameChanged)
    Q_PROPERTY(QString appIcon READ appIcon WRITE setAppIcon NOTIFY appIconChanged)
    Q_PROPERTY(QString query READ query WRITE setQuery NOTIFY queryChanged)
    Q_PROPERTY(bool pinned READ pinned WRITE setPinned NOTIFY pinnedChanged)
    Q_PROPERTY(qint64 selection READ selection WRITE setSelection NOTIFY selectionChanged)
    Q_PROPERTY(bool showDisabled READ showDisabled WRITE setShowDisabled NOTIFY showDisabledChanged)
    Q_PROPERTY(bool showNoShortcut READ showNoShortcut WRITE setShowNoShortcut NOTIFY
                   showNoShortcutChanged)
    Q_PROPERTY(bool glassy READ glassy WRITE setGlassy NOTIFY glassyChanged)
    Q_PROPERTY(
        QString triggerSymbol READ triggerSymbol WRITE setTriggerSymbol NOTIFY triggerSymbolChanged)
    Q_PROPERTY(QStringList favoriteOrder READ favoriteOrder WRITE setFavoriteOrder NOTIFY
                   favoriteOrderChanged)
    Q_PROPERTY(QString unreadableText READ unreadableText NOTIFY unreadableChanged)
    Q_PROPERTY(QStringList recentOrder READ recentOrder NOTIFY historyChanged)
    // A line the footer shows instead of its hint (where an export went).
    Q_PROPERTY(QString notice READ notice WRITE setNotice NOTIFY noticeChanged)

public:
    // Why the application's menus cannot be read, when they cannot: the empty panel says so
    // instead of waiting.
    enum class Unreadable { no, notOnBus, restartNeeded };

    explicit OverlayViewModel(QObject* parent = nullptr);
    ~OverlayViewModel() override;

    QString appName() const { return m_appName; }
    QString appIcon() const { return m_appIcon; } // an icon-theme name or an image URL
    const QList<MenuSection>& sections() const { return m_sections; }
    QString query() const { return m_query; }
    bool pinned() const { return m_pinned; }
    qint64 selection() const { return m_selection; }
    const QSet<QString>& favoriteIDs() const { return m_favoriteIDs; }
    bool showDisabled() const { return m_showDisabled; }
    bool showNoShortcut() const { return m_showNoShortcut; }
    bool glassy() const { return m_glassy; }
    QString triggerSymbol() const { return m_triggerSymbol; }
    QStringList favoriteOrder() const { return m_favoriteOrder; }
    Unreadable unreadable() const { return m_unreadable; }
    // The commands run most often and lately (ids, heaviest first) and every run command's
    // history weight, which lifts it in search.
    QStringList recentOrder() const { return m_recentOrder; }
    const CommandFilter::HistoryWeights& historyWeights() const { return m_historyWeights; }
    QString notice() const { return m_notice; }
    // The one sentence that says why, naming the application; empty while the menus may come.
    QString unreadableText() const;

    void setAppName(const QString& value);
    void setAppIcon(const QString& value);
    void setSections(const QList<MenuSection>& value);
    void setQuery(const QString& value);
    void setPinned(bool value);
    void setSelection(qint64 value);
    void setFavoriteIDs(const QSet<QString>& value);
    void setShowDisabled(bool value);
    void setShowNoShortcut(bool value);
    void setGlassy(bool value);
    void setTriggerSymbol(const QString& value);
    void setFavoriteOrder(const QStringList& value);
    void setUnreadable(Unreadable value);
    void setHistory(const CommandFilter::HistoryWeights& weights, const QStringList& recent);
    void setNotice(const QString& value);

    std::function<void(const MenuCommand&)> onExecute;
    std::function<void(const MenuCommand&)> onToggleFavorite;
    std::function<void()> onPinRequest;
    std::function<void()> onCloseRequest;
    std::function<void()> onExport;

    // Derived lists, always equal to a fresh computation from the properties.
    QList<MenuSection> visibleSections() const;
    QList<MenuCommand> allCommands() const;
    QList<MenuCommand> favoriteCommands() const;
    QList<MenuCommand> recentCommands() const;
    QList<MenuCommand> searchResults() const;
    bool isSearchActive() const;

    Q_INVOKABLE void moveSelection(qint64 delta);
    // A click on the search field of an unpinned overlay: calls onPinRequest if set.
    Q_INVOKABLE void requestPin();
    // "Export…" (Ctrl+E): calls onExport if set.
    Q_INVOKABLE void requestExport();
    Q_INVOKABLE void executeSelection();

Q_SIGNALS:
    void appNameChanged();
    void appIconChanged();
    void sectionsChanged();
    void queryChanged();
    void pinnedChanged();
    void selectionChanged();
    void favoriteIDsChanged();
    void showDisabledChanged();
    void showNoShortcutChanged();
    void glassyChanged();
    void unreadableChanged();
    void historyChanged();
    void noticeChanged();
    void triggerSymbolChanged();
    void favoriteOrderChanged();

private:
    // The filter's index over allCommands(), rebuilt after any change of what it depends on.
    const CommandFilter::Index& index() const;
    void invalidate() { m_index.reset(); }

    QString m_appName;
    QString m_appIcon;
    QList<MenuSection> m_sections;
    QString m_query;
    bool m_pinned = false;
    qint64 m_selection = 0;
    QSet<QString> m_favoriteIDs;
    bool m_showDisabled = true;
    bool m_showNoShortcut = true;
    bool m_glassy = true;
    Unreadable m_unreadable = Unreadable::no;
    QStringList m_recentOrder;
    QString m_notice;
    CommandFilter::HistoryWeights m_historyWeights;
    QString m_triggerSymbol = QStringLiteral("Ctrl");
    QStringList m_favoriteOrder;
    mutable std::unique_ptr<CommandFilter::Index> m_index;
};

} // namespace corvane
