// Corvane's entry point: everything else lives in the subsystem libraries.

#include "app/TriggerSettings.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Corvane"));
    QCoreApplication::setApplicationVersion(QStringLiteral(CORVANE_VERSION));

    auto& defaults = corvane::UserDefaults::standard();
    corvane::TriggerSettings::registerDefaults(defaults);
    const QString trigger = corvane::TriggerSettings::triggerSetting(defaults);
    QTextStream(stdout)
        << "Corvane " << QCoreApplication::applicationVersion() << ": settings in "
        << defaults.filePath() << "; trigger "
        << (trigger == u"off" ? QStringLiteral("off")
                              : corvane::TriggerSettings::triggerSymbol(trigger))
        << ", hold delay " << corvane::TriggerSettings::holdDelay(defaults)
        << " s.\nThe tray icon and the overlay arrive with the application shell.\n";
    return 0;
}
