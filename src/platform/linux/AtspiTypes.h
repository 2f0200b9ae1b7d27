#pragma once

// D-Bus types and constants of AT-SPI 2, as at-spi2-core 2.46, GTK 3.24 and Qt answer them.

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QList>
#include <QMetaType>
#include <QString>

namespace corvane::atspi {

// An accessible object: the unique bus name of its application and its object path.
struct Reference {
    QString service;
    QDBusObjectPath path;

    bool isNull() const
    {
        return service.isEmpty() || path.path().isEmpty() || path.path() == u"/org/a11y/atspi/null";
    }
};

QDBusArgument& operator<<(QDBusArgument& argument, const Reference& reference);
const QDBusArgument& operator>>(const QDBusArgument& argument, Reference& reference);

struct ActionInfo {
    QString name;
    QString description;
    QString keyBinding;
};

QDBusArgument& operator<<(QDBusArgument& argument, const ActionInfo& action);
const QDBusArgument& operator>>(const QDBusArgument& argument, ActionInfo& action);

// One object of org.a11y.atspi.Cache.GetItems: a((so)(so)(so)iiassusau).
struct CacheItem {
    Reference object;
    Reference application;
    Reference parent;
    int indexInParent = 0;
    int childCount = 0;
    QStringList interfaces;
    QString name;
    uint role = 0;
    QString description;
    QList<uint> states;
};

QDBusArgument& operator<<(QDBusArgument& argument, const CacheItem& item);
const QDBusArgument& operator>>(const QDBusArgument& argument, CacheItem& item);

void registerTypes();

inline const QString registryService = QStringLiteral("org.a11y.atspi.Registry");
inline const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
inline const QString accessibleInterface = QStringLiteral("org.a11y.atspi.Accessible");
inline const QString actionInterface = QStringLiteral("org.a11y.atspi.Action");
inline const QString applicationInterface = QStringLiteral("org.a11y.atspi.Application");
inline const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
inline const QString cacheInterface = QStringLiteral("org.a11y.atspi.Cache");
inline const QString cachePath = QStringLiteral("/org/a11y/atspi/cache");

enum Role : uint {
    roleCheckMenuItem = 8,
    roleFrame = 23,
    roleMenu = 33,
    roleMenuBar = 34,
    roleMenuItem = 35,
    roleRadioMenuItem = 45,
    rolePopupMenu = 41,
    roleSeparator = 50,
    roleApplication = 75,
};

enum State : int {
    stateActive = 1,
    stateChecked = 4,
    stateEnabled = 8,
    stateSensitive = 24,
    stateShowing = 25,
    stateVisible = 30,
};

inline bool hasState(quint64 states, State state)
{
    return (states >> int(state)) & 1;
}

} // namespace corvane::atspi

Q_DECLARE_METATYPE(corvane::atspi::Reference)
Q_DECLARE_METATYPE(corvane::atspi::ActionInfo)
Q_DECLARE_METATYPE(corvane::atspi::CacheItem)
