#include "app/Translations.h"

#include "app/AppLog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QStandardPaths>
#include <QTranslator>

namespace corvane {

QStringList Translations::folders()
{
    QStringList candidates = QStandardPaths::locateAll(QStandardPaths::GenericDataLocation,
                                                       QStringLiteral("corvane/translations"),
                                                       QStandardPaths::LocateDirectory);
    candidates << QDir::cleanPath(QCoreApplication::applicationDirPath() +
                                  QStringLiteral("/../share/corvane/translations"));
    QStringList found;
    for (const QString& folder : std::as_const(candidates)) {
        const QString canonical = QFileInfo(folder).canonicalFilePath();
        if (!canonical.isEmpty() && !found.contains(canonical))
            found << canonical;
    }
    return found;
}

QString Translations::install(const QLocale& locale)
{
    // Owned by the application: they stay installed until it ends.
    auto* qt = new QTranslator(QCoreApplication::instance());
    if (qt->load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(qt);
    else
        delete qt;

    // English, the source language, needs a catalog only for its plural forms ("%n command(s)"
    // reads "1 command"); it is compiled into the program and installed first, so that the
    // locale's own catalog, installed after it, is asked first.
    auto* english = new QTranslator(QCoreApplication::instance());
    if (english->load(QStringLiteral(":/corvane/translations/corvane_en.qm")))
        QCoreApplication::installTranslator(english);
    else
        delete english;
    if (locale.language() == QLocale::English || locale.language() == QLocale::C)
        return {};

    auto* own = new QTranslator(QCoreApplication::instance());
    for (const QString& folder : folders()) {
        if (own->load(locale, QStringLiteral("corvane"), QStringLiteral("_"), folder)) {
            QCoreApplication::installTranslator(own);
            return own->filePath();
        }
    }
    delete own;
    qCInfo(lcApp, "no translation for %s; the texts stay English", qPrintable(locale.name()));
    return {};
}

bool Translations::installFileOrLocale(const QString& qmFile)
{
    if (qmFile.isEmpty()) {
        install();
        return true;
    }
    auto* translator = new QTranslator(QCoreApplication::instance());
    if (!translator->load(qmFile)) {
        delete translator;
        return false;
    }
    QCoreApplication::installTranslator(translator);
    return true;
}

} // namespace corvane
