#pragma once

// One list of commands as the QML views show it: a section card's rows, the favourites or the
// search results. Rows carry the texts the rows draw as roles; a click and a star click go back to
// the view model's callbacks.

#include "menus/MenuCatalog.h"

#include <QAbstractListModel>

namespace corvane {

class OverlayViewModel;

class CommandListModel : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    // Per row: 1 when it has a breadcrumb, + 2 when it has a shortcut key. The section cards lay
    // their rows out from these without making them (the grid makes only visible rows).
    Q_PROPERTY(QList<int> rowKinds READ rowKinds NOTIFY commandsChanged)
    // Changes whenever any row's data may have changed, for views that read rows with rowData().
    Q_PROPERTY(int revision READ revision NOTIFY commandsChanged)

public:
    enum Role {
        TitleRole = Qt::UserRole + 1, // the last step's title, "" for an empty path
        BreadcrumbRole,               // the titles between the menu and the command
        LocationRole,                 // first title and breadcrumb, for search rows
        IsCheckedRole,
        EnabledRole,
        ModifiersRole, // QStringList
        KeyRole,       // "" when the command has no shortcut
        CommandIdRole,
        IsFavoriteRole,
    };

    CommandListModel(OverlayViewModel* model, const QString& title, QObject* parent = nullptr);

    QString title() const { return m_title; }
    int count() const { return int(m_commands.size()); }
    const QList<MenuCommand>& commands() const { return m_commands; }
    void setCommands(const QList<MenuCommand>& commands);
    void refreshFavorites(); // after the view model's favourite ids changed
    QList<int> rowKinds() const;
    int revision() const { return m_revision; }
    // One row's roles by name, for views that place rows themselves.
    Q_INVOKABLE QVariantMap rowData(int row) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    // A click on a row: runs an enabled command, ignores a disabled one.
    Q_INVOKABLE void click(int row);
    // A click on the row's star: toggles the favourite, enabled or not.
    Q_INVOKABLE void toggleFavorite(int row);

Q_SIGNALS:
    void countChanged();
    void commandsChanged();

private:
    OverlayViewModel* m_model;
    QString m_title;
    QList<MenuCommand> m_commands;
    int m_revision = 0;
};

} // namespace corvane
