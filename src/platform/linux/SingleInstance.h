#pragma once

// One Corvane per session: the first instance owns the session-bus name "com.vantorel.Corvane"; a
// second start asks it to show its settings and exits, and `corvane --peek` asks it to peek.

#include <QObject>

namespace corvane {

class SingleInstance : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.vantorel.Corvane")

public:
    static inline const QString serviceName = QStringLiteral("com.vantorel.Corvane");
    static inline const QString objectPath = QStringLiteral("/com/vantorel/Corvane");

    enum class Claim {
        first,  // this process owns the name and answers ShowSettings
        second, // another instance owns it
        noBus,  // no session bus: nothing to coordinate with, run alone
    };

    explicit SingleInstance(QObject* parent = nullptr);
    Claim claim();
    // For a second start: asks the first to show its settings. False when it did not answer.
    static bool askFirstToShowSettings();
    // For `corvane --peek`: asks the running instance to peek at the application in front. False
    // when none answered.
    static bool askFirstToPeek();

public Q_SLOTS:
    Q_SCRIPTABLE void ShowSettings();
    Q_SCRIPTABLE void Peek();

Q_SIGNALS:
    void showSettingsRequested();
    void peekRequested();
};

} // namespace corvane
