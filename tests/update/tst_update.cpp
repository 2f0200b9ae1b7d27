// The update check: the feed's rules, the transport against a real HTTP(S) server on 127.0.0.1
// (feed_server.py, stopped by process id), and the alerts shown for real under the test session,
// answered through the real keyboard and pointer. "Download" is seen where a browser would be:
// the desktop's handler for https addresses, replaced here by a recorder.

#include "SessionTools.h"
#include "update/UpdateChecker.h"

#include <QApplication>
#include <QDesktopServices>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace corvane;
using Result = UpdateChecker::Result;

namespace {

QString describe(const Result& result)
{
    if (!result.succeeded)
        return "failure";
    return result.update ? result.update->version + u' ' + result.update->downloadURL.toString()
                         : "none";
}

} // namespace

class TestUpdate : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void openUrl(const QUrl& url) { m_opened << url; }

private Q_SLOTS:
    void initTestCase()
    {
        QDesktopServices::setUrlHandler("https", this, "openUrl");
        m_port = startServer();
        QCOMPARE(UpdateChecker::feedURL(), QUrl("https://corvane.vantorel.com/appcast.json"));
        QCoreApplication::setApplicationVersion(QString());
        QCOMPARE(UpdateChecker::currentVersion(), "1.0"); // a build without one
    }

    void decide_data()
    {
        QTest::addColumn<QByteArray>("feed");
        QTest::addColumn<QString>("running");
        QTest::addColumn<QString>("expected");
        const auto feed = [](const char* version,
                             const char* download = "https://corvane.vantorel.com/d") {
            return QStringLiteral(R"({"version":%1,"download":"%2","notes":[1]})")
                .arg(QString::fromUtf8(version), QString::fromUtf8(download))
                .toUtf8();
        };
        const QList<std::tuple<const char*, QByteArray, const char*, const char*>> rows{
            {"newer: offered as written", feed(R"("2.0.0")"), "1.9.9",
             "2.0.0 https://corvane.vantorel.com/d"},
            {"1.4 and 1.4.0 are the same", feed(R"("1.4")"), "1.4.0", "none"},
            {"older: never offered", feed(R"("1.4")"), "1.9.9", "none"},
            {"2.0-beta is no version: up to date", feed(R"("2.0-beta")"), "1.0", "none"},
            {"version is a number", feed("2.0"), "1.0", "failure"},
            {"download missing", R"({"version":"2.0"})", "1.0", "failure"},
            {"download not a web address", feed(R"("2.0")", "ftp://corvane.vantorel.com/d"), "1.0",
             "failure"},
            {"an HTML page", "<!doctype html><p>Hello", "1.0", "failure"},
        };
        for (const auto& [name, body, running, expected] : rows)
            QTest::newRow(name) << body << running << expected;
    }

    void decide()
    {
        QFETCH(QByteArray, feed);
        QFETCH(QString, running);
        QFETCH(QString, expected);
        QCOMPARE(describe(UpdateChecker::decide(feed, running)), expected);
    }

    void transport_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("expected");
        const QString offered = "2.0 https://corvane.vantorel.com/download";
        QTest::newRow("a feed") << "/update-2.0" << offered;
        QTest::newRow("a feed with status 404 is still a feed") << "/feed-404" << offered;
        QTest::newRow("an error page") << "/html-404"
                                       << "failure";
        QTest::newRow("more than a feed could be") << "/big"
                                                   << "failure";
        QTest::newRow("a server that never answers, within its time-out") << "/hang"
                                                                          << "failure";
        QTest::newRow("a refused connection") << "refused"
                                              << "failure";
    }

    void transport()
    {
        QFETCH(QString, path);
        QFETCH(QString, expected);
        QElapsedTimer clock;
        clock.start();
        const Result result =
            run(path == u"refused" ? QUrl("http://127.0.0.1:1/appcast.json") : url(path), 1500);
        QCOMPARE(describe(result), expected);
        QVERIFY2(clock.elapsed() < 3000, qPrintable(QString::number(clock.elapsed())));
    }

    void untrustedCertificateIsRefused()
    {
        // An HTTPS server with a certificate nobody signed: the check fails on the certificate,
        // and succeeds once the test trusts that very one (so the failure was the check, not the
        // set-up).
        QTemporaryDir dir;
        const QString cert = dir.filePath("cert.pem"), key = dir.filePath("key.pem");
        QVERIFY(test::output("openssl",
                             {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
                              "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1",
                              "-keyout", key, "-out", cert},
                             30000)
                    .succeeded);
        // Two servers with the same certificate: no connection is reused from one check to the
        // next.
        const auto check = [&] {
            const int port = startServer({"--tls", cert, key});
            return run(QUrl(QStringLiteral("https://127.0.0.1:%1/update-2.0").arg(port)));
        };
        const Result untrusted = check();
        QVERIFY2(!untrusted.succeeded &&
                     (untrusted.error.contains("certificate", Qt::CaseInsensitive) ||
                      untrusted.error.contains("SSL", Qt::CaseInsensitive)),
                 qPrintable(untrusted.error));
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        const QSslConfiguration before = configuration;
        configuration.addCaCertificates(QSslCertificate::fromPath(cert));
        QSslConfiguration::setDefaultConfiguration(configuration);
        const Result trusted = check();
        QSslConfiguration::setDefaultConfiguration(before);
        QVERIFY2(trusted.update, qPrintable(trusted.error));
    }

    void alerts_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("running"); // "" a build without a version
        QTest::addColumn<QString>("answer");  // a key, or the label of the button to click
        QTest::addColumn<QString>("texts");   // title, text, informative text, buttons
        QTest::addColumn<bool>("downloads");
        const QString host = "corvane.vantorel.com";
        const QString available =
            "Software Update|Version 2.0 is available.|You have %1. The update is a quick "
            "download from " +
            host + ".|Download* Later";
        QTest::newRow("Return downloads") << "/update-2.0"
                                          << "1.9.9"
                                          << "Return" << available.arg("1.9.9") << true;
        QTest::newRow("Escape does nothing; no version compares as 1.0")
            << "/update-2.0"
            << ""
            << "Escape" << available.arg("1.0") << false;
        QTest::newRow("up to date")
            << "/update-2.0"
            << "2.0"
            << "Return"
            << "Software Update|You're up to date.|Corvane 2.0 is the latest version.|OK*" << false;
        QTest::newRow("failed")
            << "/html-404"
            << "1.0"
            << "OK"
            << "Software Update|Couldn't check for updates.|Try again in a minute, or grab "
               "the newest version at " +
                   host + ".|OK*"
            << false;
    }

    void alerts()
    {
        QFETCH(QString, path);
        QFETCH(QString, running);
        QFETCH(QString, answer);
        QFETCH(QString, texts);
        QFETCH(bool, downloads);
        m_opened.clear();
        QCoreApplication::setApplicationVersion(running);
        // The alert runs modally inside the check's completion: it is read and answered from a
        // timer that fires in its event loop. Its buttons are read left to right, the default
        // one marked with a star.
        QStringList seen;
        QTimer poll;
        poll.setInterval(50);
        connect(&poll, &QTimer::timeout, this, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!seen.isEmpty() || !box || !box->windowHandle() ||
                !box->windowHandle()->isExposed() || !box->isActiveWindow())
                return;
            QList<QAbstractButton*> all = box->buttons();
            std::sort(all.begin(), all.end(), [](QAbstractButton* a, QAbstractButton* b) {
                return a->mapToGlobal(QPoint()).x() < b->mapToGlobal(QPoint()).x();
            });
            QStringList buttons;
            QAbstractButton* target = nullptr;
            for (QAbstractButton* button : all) {
                buttons << button->text();
                if (auto* push = qobject_cast<QPushButton*>(button); push && push->isDefault())
                    buttons.last() += u'*';
                if (button->text() == answer)
                    target = button;
            }
            seen << box->windowTitle() << box->text() << box->informativeText()
                 << buttons.join(u' ');
            const QPoint centre = target ? target->mapToGlobal(target->rect().center()) : QPoint();
            QProcess::startDetached("xdotool",
                                    target ? QStringList{"mousemove", QString::number(centre.x()),
                                                         QString::number(centre.y()), "click", "1"}
                                           : QStringList{"key", answer});
        });
        poll.start();
        UpdateChecker::Options options;
        options.feedURL = url(path);
        UpdateChecker::checkAndPresent(options);
        QTRY_VERIFY_WITH_TIMEOUT(!seen.isEmpty(), 15000);
        QTRY_VERIFY_WITH_TIMEOUT(!QApplication::activeModalWidget(), 15000);
        QTest::qWait(100);
        QCOMPARE(seen.join(u'|'), texts);
        QCOMPARE(m_opened, downloads ? QList<QUrl>{QUrl("https://corvane.vantorel.com/download")}
                                     : QList<QUrl>{});
    }

private:
    Result run(const QUrl& feed, int timeoutMs = 5000)
    {
        std::optional<Result> result;
        int calls = 0;
        UpdateChecker::Options options;
        options.feedURL = feed;
        options.currentVersion = "1.0";
        options.timeoutMs = timeoutMs;
        UpdateChecker::check(
            [&](const Result& r) {
                ++calls;
                result = r;
            },
            options);
        if (!QTest::qWaitFor([&] { return result.has_value(); }, timeoutMs + 5000))
            qFatal("the update check hung: no completion after %d ms", timeoutMs + 5000);
        QTest::qWait(50);
        if (calls != 1)
            qFatal("completion called %d times", calls);
        return *result;
    }
    QUrl url(const QString& path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path));
    }

    // The real HTTP server on 127.0.0.1 (feed_server.py, --tls CERT KEY for HTTPS); its port.
    int startServer(const QStringList& arguments = {})
    {
        QByteArray port;
        m_servers.startUntilReady("python3", QStringList{FEED_SERVER} + arguments, "PORT ", &port);
        return port.toInt();
    }

    test::Programs m_servers;
    int m_port = 0;
    QList<QUrl> m_opened;
};

QTEST_MAIN(TestUpdate)
#include "tst_update.moc"
