#pragma once

// Corvane's settings store: an INI file read and written through QSettings, registered defaults
// held in memory only, and typed reads in which a missing or mistyped value reads as absent.

#include <QDateTime>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <memory>
#include <optional>

namespace corvane {

class UserDefaults {
public:
    // The settings file at `filePath`; it and its folder are created on the first write.
    explicit UserDefaults(const QString& filePath);
    ~UserDefaults();

    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    // $XDG_CONFIG_HOME/corvane/corvane.conf (XDG_CONFIG_HOME defaults to ~/.config).
    static QString standardFilePath();
    // The process-wide store over standardFilePath(), created on first use (main thread).
    static UserDefaults& standard();

    QString filePath() const;

    // Fallbacks for absent or mistyped values; kept in memory and never written.
    void registerDefaults(const QVariantMap& defaults);

    std::optional<QString> string(const QString& key) const;
    std::optional<double> doubleValue(const QString& key) const;
    std::optional<bool> boolValue(const QString& key) const;
    std::optional<qint64> integer(const QString& key) const;
    std::optional<QDateTime> date(const QString& key) const;
    std::optional<QStringList> stringList(const QString& key) const;

    // Each write is flushed at once. On failure (the file or its folder is not writable) the
    // previous value is kept, in memory as on disk, and false is returned.
    bool setString(const QString& key, const QString& value);
    bool setDouble(const QString& key, double value);
    bool setBool(const QString& key, bool value);
    bool setInteger(const QString& key, qint64 value);
    bool setDate(const QString& key, const QDateTime& value);
    bool setStringList(const QString& key, const QStringList& value);
    bool remove(const QString& key);

    // Whether a value is stored in the file (registered defaults do not count).
    bool contains(const QString& key) const;
    // The stored keys that start with `prefix`.
    QStringList keys(const QString& prefix) const;

private:
    // A file QSettings cannot parse would never be written again, so every change would fail:
    // it is kept beside as "NAME.corrupt" (nothing is lost) and a new file starts from the values
    // that could be read, with an error in the log.
    void setAsideUnreadableFile();
    std::optional<QString> storedText(const QString& key) const;
    std::optional<QString> registeredText(const QString& key) const;
    template <typename T, typename Parse>
    std::optional<T> read(const QString& key, Parse parse) const;
    bool write(const QString& key, const std::optional<QString>& text);

    std::unique_ptr<QSettings> m_settings;
    QVariantMap m_registered;
};

// The text forms used in the file, shared with the typed reads so that both sides agree.
namespace DefaultsText {
std::optional<double> toDouble(const QString& text);
std::optional<bool> toBool(const QString& text);
std::optional<qint64> toInteger(const QString& text);
std::optional<QDateTime> toDate(const QString& text);
std::optional<QStringList> toStringList(const QString& text);
QString fromDouble(double value);
QString fromBool(bool value);
QString fromInteger(qint64 value);
QString fromDate(const QDateTime& value);
QString fromStringList(const QStringList& value);
// The text form of a registered default of any supported QVariant type.
std::optional<QString> fromVariant(const QVariant& value);
} // namespace DefaultsText

} // namespace corvane
