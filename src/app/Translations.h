#pragma once

#include <QLocale>
#include <QString>
#include <QStringList>

namespace corvane {

// Corvane's translations (German and French, data/translations) for the system locale, the English
// plural forms, and Qt's own for the texts Qt draws (a text field's context menu). The compiled
// catalogs live in "corvane/translations" under a data folder: the XDG data folders
// ($XDG_DATA_HOME, $XDG_DATA_DIRS, so /usr/share and /usr/local/share), or "../share" beside the
// executable, which is where the build folder keeps them too.
class Translations {
public:
    // The folders searched, in order; only those that exist.
    static QStringList folders();

    // Installs the catalogs for `locale` in the running application. Returns the file of
    // Corvane's catalog it loaded for that language, or "" when there is none (English, the source
    // language, needs only the plural forms compiled into the program).
    static QString install(const QLocale& locale = QLocale());

    // The preview tools' --translation: installs this compiled catalog (.qm) instead of the
    // locale's; "" installs the locale's. False when the file cannot be loaded.
    static bool installFileOrLocale(const QString& qmFile);
};

} // namespace corvane
