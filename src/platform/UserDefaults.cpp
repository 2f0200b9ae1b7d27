#include "UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <cmath>

namespace corvane {

Q_LOGGING_CATEGORY(lcSettings, "com.vantorel.corvane.app")

namespace DefaultsText {

std::optional<double> toDouble(const QString& text)
{
    bool ok = false;
    const double value = text.trimmed().toDouble(&ok);
    // Non-finite values read as absent, so that the registered default applies.
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<bool> toBool(const QString& text)
{
    const QString t = text.trimmed();
    if (t == QLatin1String("true"))
        return true;
    if (t == QLatin1String("false"))
        return false;
    return std::nullopt;
}

std::optional<qint64> toInteger(const QString& text)
{
    bool ok = false;
    const qint64 value = text.trimmed().toLongLong(&ok, 10);
    if (!ok)
        return std::nullopt;
    return value;
}

std::optional<QDateTime> toDate(const QString& text)
{
    const QDateTime value = QDateTime::fromString(text.trimmed(), Qt::ISODateWithMs);
    if (!value.isValid())
        return std::nullopt;
    return value;
}

std::optional<QStringList> toStringList(const QString& text)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(text.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError || !doc.isArray())
        return std::nullopt;
    QStringList list;
    for (const QJsonValue& element : doc.array()) {
        if (!element.isString())
            return std::nullopt;
        list.append(element.toString());
    }
    return list;
}

QString fromDouble(double value)
{
    return QString::number(value, 'g', 17);
}
QString fromBool(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}
QString fromInteger(qint64 value)
{
    return QString::number(value);
}
QString fromDate(const QDateTime& value)
{
    return value.toUTC().toString(Qt::ISODateWithMs);
}

QString fromStringList(const QStringList& value)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonArray::fromStringList(value)).toJson(QJsonDocument::Compact));
}

std::optional<QString> fromVariant(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Double:
    case QMetaType::Float:
        return fromDouble(value.toDouble());
    case QMetaType::Bool:
        return fromBool(value.toBool());
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
        return fromInteger(value.toLongLong());
    case QMetaType::QDateTime:
        return fromDate(value.toDateTime());
    case QMetaType::QStringList:
        return fromStringList(value.toStringList());
    default:
        return std::nullopt;
    }
}

} // namespace DefaultsText

UserDefaults::UserDefaults(const QString& filePath)
    : m_settings(std::make_unique<QSettings>(filePath, QSettings::IniFormat))
{
    // QSettings reads the file on first use; its status tells only after that.
    (void)m_settings->allKeys();
    if (m_settings->status() == QSettings::FormatError)
        setAsideUnreadableFile();
}

void UserDefaults::setAsideUnreadableFile()
{
    const QString path = m_settings->fileName();
    QVariantMap readable;
    for (const QString& key : m_settings->allKeys())
        readable.insert(key, m_settings->value(key));
    m_settings.reset();

    QString kept = path + QStringLiteral(".corrupt");
    for (int n = 1; QFileInfo::exists(kept); ++n)
        kept = path + QStringLiteral(".corrupt.%1").arg(n);
    if (!QFile::rename(path, kept)) {
        qCCritical(lcSettings,
                   "settings: %s has a format error and cannot be set aside; changes will not "
                   "be saved",
                   qUtf8Printable(path));
        m_settings = std::make_unique<QSettings>(path, QSettings::IniFormat);
        return;
    }
    m_settings = std::make_unique<QSettings>(path, QSettings::IniFormat);
    for (auto it = readable.cbegin(); it != readable.cend(); ++it)
        m_settings->setValue(it.key(), it.value());
    m_settings->sync();
    qCCritical(lcSettings,
               "settings: %s has a format error; kept as %s, %lld readable values carried over",
               qUtf8Printable(path), qUtf8Printable(kept), qint64(readable.size()));
}

UserDefaults::~UserDefaults() = default;

QString UserDefaults::standardFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/corvane/corvane.conf");
}

UserDefaults& UserDefaults::standard()
{
    static UserDefaults instance(standardFilePath());
    return instance;
}

QString UserDefaults::filePath() const
{
    return m_settings->fileName();
}

void UserDefaults::registerDefaults(const QVariantMap& defaults)
{
    for (auto it = defaults.begin(); it != defaults.end(); ++it)
        m_registered.insert(it.key(), it.value());
}

bool UserDefaults::contains(const QString& key) const
{
    return storedText(key).has_value();
}

std::optional<QString> UserDefaults::storedText(const QString& key) const
{
    const QVariant value = m_settings->value(key);
    // Every value this program writes is text; anything QSettings parses into another type
    // (a bare list "a, b", an "@Variant(…)" blob) was written by someone else and is mistyped.
    if (value.typeId() != QMetaType::QString)
        return std::nullopt;
    return value.toString();
}

std::optional<QString> UserDefaults::registeredText(const QString& key) const
{
    const auto it = m_registered.constFind(key);
    if (it == m_registered.constEnd())
        return std::nullopt;
    return DefaultsText::fromVariant(*it);
}

template <typename T, typename Parse>
std::optional<T> UserDefaults::read(const QString& key, Parse parse) const
{
    if (const auto text = storedText(key))
        if (auto value = parse(*text))
            return value;
    if (const auto text = registeredText(key))
        return parse(*text);
    return std::nullopt;
}

std::optional<QString> UserDefaults::string(const QString& key) const
{
    return read<QString>(key, [](const QString& t) { return std::optional<QString>(t); });
}
std::optional<double> UserDefaults::doubleValue(const QString& key) const
{
    return read<double>(key, DefaultsText::toDouble);
}
std::optional<bool> UserDefaults::boolValue(const QString& key) const
{
    return read<bool>(key, DefaultsText::toBool);
}
std::optional<qint64> UserDefaults::integer(const QString& key) const
{
    return read<qint64>(key, DefaultsText::toInteger);
}
std::optional<QDateTime> UserDefaults::date(const QString& key) const
{
    return read<QDateTime>(key, DefaultsText::toDate);
}
std::optional<QStringList> UserDefaults::stringList(const QString& key) const
{
    return read<QStringList>(key, DefaultsText::toStringList);
}

bool UserDefaults::write(const QString& key, const std::optional<QString>& text)
{
    // QSettings keeps the error of a failed sync for good: every later write would fail too,
    // although the folder is writable again. A fresh one reads the file, which holds every
    // change that was stored (the refused ones were put back).
    if (m_settings->status() == QSettings::AccessError)
        m_settings = std::make_unique<QSettings>(m_settings->fileName(), QSettings::IniFormat);
    const QVariant previous = m_settings->value(key);
    const bool hadPrevious = m_settings->contains(key);
    const QString dir = QFileInfo(m_settings->fileName()).absolutePath();
    QDir().mkpath(dir);

    if (text)
        m_settings->setValue(key, *text);
    else
        m_settings->remove(key);
    m_settings->sync();
    if (m_settings->status() == QSettings::NoError)
        return true;

    // Nothing is lost: put the old value back so that reads keep showing what is on disk.
    if (hadPrevious)
        m_settings->setValue(key, previous);
    else
        m_settings->remove(key);
    return false;
}

bool UserDefaults::setString(const QString& key, const QString& value)
{
    return write(key, value);
}
bool UserDefaults::setDouble(const QString& key, double value)
{
    return write(key, DefaultsText::fromDouble(value));
}
bool UserDefaults::setBool(const QString& key, bool value)
{
    return write(key, DefaultsText::fromBool(value));
}
bool UserDefaults::setInteger(const QString& key, qint64 value)
{
    return write(key, DefaultsText::fromInteger(value));
}
bool UserDefaults::setDate(const QString& key, const QDateTime& value)
{
    return write(key, DefaultsText::fromDate(value));
}
bool UserDefaults::setStringList(const QString& key, const QStringList& value)
{
    return write(key, DefaultsText::fromStringList(value));
}
QStringList UserDefaults::keys(const QString& prefix) const
{
    QStringList found = m_settings->allKeys();
    found.removeIf([&prefix](const QString& key) { return !key.startsWith(prefix); });
    return found;
}

bool UserDefaults::remove(const QString& key)
{
    return write(key, std::nullopt);
}

} // namespace corvane
