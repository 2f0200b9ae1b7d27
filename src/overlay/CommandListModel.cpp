#include "CommandListModel.h"

#include "OverlayViewModel.h"

namespace corvane {

CommandListModel::CommandListModel(OverlayViewModel* model, const QString& title, QObject* parent)
    : QAbstractListModel(parent), m_model(model), m_title(title)
{}

void CommandListModel::setCommands(const QList<MenuCommand>& commands)
{
    // Rows are changed in place and only the tail is inserted or removed, never a reset: a
    // list view keeps its delegates and rebinds the rows that changed (a keystroke re-ranks
    // the search results; making their rows again would cost the frame).
    const qsizetype before = m_commands.size(), after = commands.size();
    const bool countChanges = after != before;
    if (after < before) {
        beginRemoveRows({}, int(after), int(before - 1));
        m_commands.resize(after);
        endRemoveRows();
    }
    qsizetype firstChanged = -1, lastChanged = -1;
    for (qsizetype row = 0; row < std::min(before, after); ++row) {
        if (m_commands[row] == commands[row])
            continue;
        m_commands[row] = commands[row];
        if (firstChanged < 0)
            firstChanged = row;
        lastChanged = row;
    }
    if (firstChanged >= 0)
        Q_EMIT dataChanged(index(int(firstChanged)), index(int(lastChanged)));
    if (after > before) {
        beginInsertRows({}, int(before), int(after - 1));
        m_commands.append(commands.sliced(before));
        endInsertRows();
    }
    ++m_revision;
    Q_EMIT commandsChanged();
    if (countChanges)
        Q_EMIT countChanged();
}

void CommandListModel::refreshFavorites()
{
    if (m_commands.isEmpty())
        return;
    Q_EMIT dataChanged(index(0), index(count() - 1), {IsFavoriteRole});
    ++m_revision;
    Q_EMIT commandsChanged();
}

QList<int> CommandListModel::rowKinds() const
{
    QList<int> kinds;
    kinds.reserve(m_commands.size());
    for (const MenuCommand& command : m_commands)
        kinds.append((command.breadcrumb().isEmpty() ? 0 : 1) |
                     (command.shortcut.key.isEmpty() ? 0 : 2));
    return kinds;
}

QVariantMap CommandListModel::rowData(int row) const
{
    QVariantMap values;
    if (row < 0 || row >= count())
        return values;
    const QModelIndex at = index(row);
    const QHash<int, QByteArray> names = roleNames();
    for (auto it = names.begin(); it != names.end(); ++it)
        values.insert(QString::fromLatin1(it.value()), data(at, it.key()));
    return values;
}

int CommandListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

QVariant CommandListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const MenuCommand& command = m_commands.at(index.row());
    switch (role) {
    case TitleRole:
        return command.path.isEmpty() ? QString() : command.path.last().title;
    case BreadcrumbRole:
        return command.breadcrumb();
    case LocationRole: {
        // "File ▸ Open Recent" for File ▸ Open Recent ▸ notes.txt, "File" for File ▸ Save.
        QStringList parts;
        if (!command.path.isEmpty())
            parts << command.path.first().title;
        if (const QString breadcrumb = command.breadcrumb(); !breadcrumb.isEmpty())
            parts << breadcrumb;
        return parts.join(breadcrumbSeparator);
    }
    case IsCheckedRole:
        return command.isChecked;
    case EnabledRole:
        return command.enabled;
    case ModifiersRole:
        return command.shortcut.modifiers;
    case KeyRole:
        return command.shortcut.key;
    case CommandIdRole:
        return command.id();
    case IsFavoriteRole:
        return m_model->favoriteIDs().contains(command.id());
    default:
        return {};
    }
}

QHash<int, QByteArray> CommandListModel::roleNames() const
{
    return {
        {TitleRole, "title"},
        {BreadcrumbRole, "breadcrumb"},
        {LocationRole, "location"},
        {IsCheckedRole, "isChecked"},
        {EnabledRole, "isEnabled"},
        {ModifiersRole, "modifiers"},
        {KeyRole, "key"},
        {CommandIdRole, "commandId"},
        {IsFavoriteRole, "isFavorite"},
    };
}

void CommandListModel::click(int row)
{
    if (row < 0 || row >= count())
        return;
    const MenuCommand command = m_commands.at(row); // the callback may replace the list
    if (command.enabled && m_model->onExecute)
        m_model->onExecute(command);
}

void CommandListModel::toggleFavorite(int row)
{
    if (row < 0 || row >= count())
        return;
    const MenuCommand command = m_commands.at(row);
    if (m_model->onToggleFavorite)
        m_model->onToggleFavorite(command);
}

} // namespace corvane
