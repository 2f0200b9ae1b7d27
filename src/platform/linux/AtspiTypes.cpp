#include "AtspiTypes.h"

#include <QDBusMetaType>

namespace corvane::atspi {

QDBusArgument& operator<<(QDBusArgument& argument, const Reference& reference)
{
    argument.beginStructure();
    argument << reference.service << reference.path;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Reference& reference)
{
    argument.beginStructure();
    argument >> reference.service >> reference.path;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const ActionInfo& action)
{
    argument.beginStructure();
    argument << action.name << action.description << action.keyBinding;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, ActionInfo& action)
{
    argument.beginStructure();
    argument >> action.name >> action.description >> action.keyBinding;
    argument.endStructure();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const CacheItem& item)
{
    argument.beginStructure();
    argument << item.object << item.application << item.parent << item.indexInParent
             << item.childCount << item.interfaces << item.name << item.role << item.description
             << item.states;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, CacheItem& item)
{
    argument.beginStructure();
    argument >> item.object >> item.application >> item.parent >> item.indexInParent >>
        item.childCount >> item.interfaces >> item.name >> item.role >> item.description >>
        item.states;
    argument.endStructure();
    return argument;
}

void registerTypes()
{
    static const bool registered = [] {
        qDBusRegisterMetaType<Reference>();
        qDBusRegisterMetaType<QList<Reference>>();
        qDBusRegisterMetaType<ActionInfo>();
        qDBusRegisterMetaType<QList<ActionInfo>>();
        qDBusRegisterMetaType<CacheItem>();
        qDBusRegisterMetaType<QList<CacheItem>>();
        return true;
    }();
    Q_UNUSED(registered)
}

} // namespace corvane::atspi
