#pragma once

// A dotted numeric version with a strict parser, zero-padding order and text form.

#include <QList>
#include <QString>
#include <optional>

namespace corvane {

class AppVersion {
public:
    AppVersion() = default;
    explicit AppVersion(QList<qint64> components) : components(std::move(components)) {}

    // Absent when the text is not a valid version.
    static std::optional<AppVersion> parse(const QString& text);
    // The running version: QCoreApplication::applicationVersion(), parsed; absent when it is
    // missing or malformed.
    static std::optional<AppVersion> current();
    static std::optional<AppVersion> current(const QString& bundleVersion)
    {
        return parse(bundleVersion);
    }

    QString description() const;

    QList<qint64> components;

    // Equality does not pad with zeros; the ordering does: "1.0" and "1.0.0" are different records
    // of what was installed, yet neither is newer than the other.
    friend bool operator==(const AppVersion& a, const AppVersion& b)
    {
        return a.components == b.components;
    }
    friend bool operator<(const AppVersion& a, const AppVersion& b);
    friend bool operator>(const AppVersion& a, const AppVersion& b) { return b < a; }
    friend bool operator<=(const AppVersion& a, const AppVersion& b) { return !(b < a); }
    friend bool operator>=(const AppVersion& a, const AppVersion& b) { return !(a < b); }
};

size_t qHash(const AppVersion& version, size_t seed = 0);

} // namespace corvane
