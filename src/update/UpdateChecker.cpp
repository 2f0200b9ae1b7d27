#include "UpdateChecker.h"

#include "whatsnew/AppVersion.h"

#include <QDesktopServices>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QPointer>
#include <QPushButton>

namespace corvane {

QString UpdateChecker::host()
{
    return QStringLiteral("corvane.vantorel.com");
}

QUrl UpdateChecker::feedURL()
{
    static const QUrl url = [] {
        const QUrl u(QStringLiteral("https://") + host() + QStringLiteral("/appcast.json"),
                     QUrl::StrictMode);
        if (!u.isValid())
            qFatal("UpdateChecker::feedURL is not a valid address");
        return u;
    }();
    return url;
}

QString UpdateChecker::currentVersion()
{
    const QString version = QCoreApplication::applicationVersion();
    return version.isEmpty() ? QStringLiteral("1.0") : version;
}

QNetworkAccessManager& UpdateChecker::network()
{
    static QNetworkAccessManager* manager = new QNetworkAccessManager(QCoreApplication::instance());
    return *manager;
}

UpdateChecker::Result UpdateChecker::decide(const QByteArray& body, const QString& currentVersion)
{
    const Result cannotParse{false, std::nullopt, QStringLiteral("cannotParseResponse")};
    QJsonParseError parseError;
    const QJsonDocument doc = QJsonDocument::fromJson(body, &parseError);
    if (parseError.error != QJsonParseError::NoError || !doc.isObject())
        return cannotParse;
    const QJsonObject feed = doc.object();
    const QJsonValue version = feed.value(QLatin1String("version"));
    const QJsonValue download = feed.value(QLatin1String("download"));
    if (!version.isString() || !download.isString())
        return cannotParse;
    // An absolute web address: the download button opens it in the browser, so nothing else
    // (file:, javascript:, a relative path) is accepted from the network.
    const QUrl downloadURL(download.toString(), QUrl::StrictMode);
    if (!downloadURL.isValid() || downloadURL.host().isEmpty() ||
        (downloadURL.scheme() != QLatin1String("https") &&
         downloadURL.scheme() != QLatin1String("http")))
        return cannotParse;

    const auto feedVersion = AppVersion::parse(version.toString());
    if (!feedVersion)
        return {true, std::nullopt, {}};
    const AppVersion running = AppVersion::parse(currentVersion).value_or(*feedVersion);
    if (running < *feedVersion)
        return {true, Update{version.toString(), downloadURL}, {}};
    return {true, std::nullopt, {}};
}

void UpdateChecker::check(std::function<void(const Result&)> completion)
{
    check(std::move(completion), Options{});
}

void UpdateChecker::check(std::function<void(const Result&)> completion, const Options& options)
{
    QNetworkRequest request(options.feedURL);
    request.setTransferTimeout(options.timeoutMs);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::NoLessSafeRedirectPolicy);
    QNetworkReply* reply = network().get(request);

    auto delivered = std::make_shared<bool>(false);
    auto deliver = [completion, delivered](const Result& result) {
        if (*delivered)
            return;
        *delivered = true;
        completion(result);
    };

    const qint64 maxBytes = options.maxBytes;
    auto oversized = std::make_shared<bool>(false);
    QObject::connect(reply, &QNetworkReply::downloadProgress, reply,
                     [reply, maxBytes, oversized](qint64 received, qint64) {
                         if (received > maxBytes && !*oversized) {
                             *oversized = true;
                             reply->abort();
                         }
                     });
    const QString current = options.currentVersion;
    QObject::connect(reply, &QNetworkReply::finished, reply,
                     [reply, deliver, current, maxBytes, oversized] {
                         reply->deleteLater();
                         if (*oversized) {
                             deliver({false, std::nullopt, QStringLiteral("response too large")});
                             return;
                         }
                         // The HTTP status is not looked at: any answer with the right shape is
                         // accepted, and an error page is a parse failure like any other body.
                         const bool answered =
                             reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
                         if (reply->error() != QNetworkReply::NoError && !answered) {
                             deliver({false, std::nullopt, reply->errorString()});
                             return;
                         }
                         const QByteArray body = reply->read(maxBytes + 1);
                         if (body.size() > maxBytes) {
                             deliver({false, std::nullopt, QStringLiteral("response too large")});
                             return;
                         }
                         deliver(decide(body, current));
                     });
}

void UpdateChecker::checkAndPresent()
{
    checkAndPresent(Options());
}

void UpdateChecker::checkAndPresent(const Options& options)
{
    const QString current = options.currentVersion;
    check(
        [current](const Result& result) {
            QMessageBox alert;
            // Not "Corvane": that title is how the window managers' rules tell the panel, which
            // they keep above and centred, from Corvane's other windows.
            alert.setWindowTitle(tr("Software Update"));
            QPushButton* download = nullptr;
            if (!result.succeeded) {
                alert.setText(tr("Couldn't check for updates."));
                alert.setInformativeText(
                    tr("Try again in a minute, or grab the newest version at %1.").arg(host()));
                alert.addButton(tr("OK"), QMessageBox::AcceptRole);
            } else if (result.update) {
                alert.setText(tr("Version %1 is available.").arg(result.update->version));
                alert.setInformativeText(tr("You have %1. The update is a quick download from %2.")
                                             .arg(current, host()));
                download = alert.addButton(tr("Download"), QMessageBox::AcceptRole);
                alert.addButton(tr("Later"), QMessageBox::RejectRole);
                alert.setDefaultButton(download);
            } else {
                alert.setText(tr("You're up to date."));
                alert.setInformativeText(tr("Corvane %1 is the latest version.").arg(current));
                alert.addButton(tr("OK"), QMessageBox::AcceptRole);
            }
            alert.show();
            alert.raise();
            alert.activateWindow();
            alert.exec();
            if (download && alert.clickedButton() == download)
                QDesktopServices::openUrl(result.update->downloadURL);
        },
        options);
}

} // namespace corvane
