// The settings reader (UserDefaults over an INI file) on any file contents:
// never crashes; every typed read of a stored key gives a value or absence; a write succeeds and
// reads back while the other keys keep what they read before.

#include "FuzzInput.h"
#include "platform/UserDefaults.h"

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corvane;
    static QTemporaryDir folder;
    // The set-aside message would print for every broken input.
    static const bool quiet = [] {
        QLoggingCategory::setFilterRules("com.vantorel.corvane.*=false");
        return true;
    }();
    (void)quiet;
    const QString path = folder.filePath("corvane.conf");
    // Files set aside by an earlier input go: each input starts alone.
    for (const QString& name : QDir(folder.path()).entryList(QDir::Files))
        QFile::remove(folder.filePath(name));
    {
        QFile file(path);
        fuzz::require(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "scratch file");
        file.write(reinterpret_cast<const char*>(data), qint64(size));
    }
    const QStringList keys{"triggerKey",     "holdDelay",       "showDisabled",
                           "launchedBefore", "favorites.geany", "whatsNew.lastSeenVersion",
                           "lastUpdateCheck"};
    QStringList before;
    {
        UserDefaults defaults(path);
        for (const QString& key : keys) {
            const auto text = defaults.string(key);
            before << text.value_or("<absent>");
            (void)defaults.doubleValue(key);
            (void)defaults.boolValue(key);
            (void)defaults.integer(key);
            (void)defaults.date(key);
            (void)defaults.stringList(key);
        }
        fuzz::require(defaults.setBool("glassy", true), "a write succeeds");
    }
    UserDefaults reopened(path);
    fuzz::require(reopened.boolValue("glassy") == true, "the write reads back");
    for (qsizetype i = 0; i < keys.size(); ++i)
        fuzz::require(reopened.string(keys[i]).value_or("<absent>") == before[i],
                      "other keys keep their values");
    return 0;
}
