#pragma once

// The manual update check: fetch the JSON feed, compare its version with the running one, and
// present the result in one of three alerts.

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

class QNetworkAccessManager;

namespace corvane {

class UpdateChecker {
    Q_DECLARE_TR_FUNCTIONS(UpdateChecker)

public:
    struct Update {
        QString version; // the feed's text exactly as received
        QUrl downloadURL;
    };

    struct Result {
        bool succeeded = false;
        std::optional<Update> update; // success: present when a newer version exists
        QString error;                // failure: for diagnostics only; never shown to the user
    };

    struct Options {
        QUrl feedURL = UpdateChecker::feedURL();
        QString currentVersion = UpdateChecker::currentVersion();
        int timeoutMs = 15000;         // a feed that never answers fails after this long
        qint64 maxBytes = 1024 * 1024; // a larger answer is not a feed
    };

    static QString host();
    static QUrl feedURL();
    // The compiled-in version, or "1.0" when there is none.
    static QString currentVersion();

    // Starts the check and returns at once; `completion` is called exactly once, later, on the
    // thread that called check() (the main thread).
    static void check(std::function<void(const Result&)> completion);
    static void check(std::function<void(const Result&)> completion, const Options& options);

    // Runs check() and presents the result: update found (Download / Later), up to date, or
    // failure; "Download" opens the download address in the browser.
    static void checkAndPresent();
    static void checkAndPresent(const Options& options);

    // Decides the result from a response body (step 2.2 onwards of the check).
    static Result decide(const QByteArray& body, const QString& currentVersion);

private:
    static QNetworkAccessManager& network();
};

} // namespace corvane
