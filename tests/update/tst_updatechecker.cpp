// The update check against a real HTTP server on 127.0.0.1 (feed_server.py, started and stopped
// by this test), and the feed parser on arbitrary bytes.

#include "FeedServer.h"
#include "update/UpdateChecker.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
using corvane::test::FeedServer;
using Result = UpdateChecker::Result;

class TestUpdateChecker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void feedAddress();
    void currentVersionFallsBackTo10();
    void feeds_data();
    void feeds();
    void serverThatNeverAnswersFails();
    void oversizedAnswerFails();
    void refusedConnectionFails();
    void untrustedCertificateIsRefused();
    void feedParserTakesArbitraryBytes();

private:
    // One check of the feed at `path` on the HTTP server, or at `feedURL`; fatal when its
    // completion does not come exactly once.
    Result run(const QString& path, const QString& current, int timeoutMs = 5000);
    Result run(const QUrl& feedURL, const QString& current, int timeoutMs = 5000);
    FeedServer m_server;
    int m_port = 0;
};

void TestUpdateChecker::initTestCase()
{
    QString why;
    QVERIFY2(m_server.start(QStringLiteral(FEED_SERVER), &why), qPrintable(why));
    m_port = m_server.port();
}

void TestUpdateChecker::cleanupTestCase()
{
    // The server is stopped, by its process id, when the test object goes.
}

Result TestUpdateChecker::run(const QString& path, const QString& current, int timeoutMs)
{
    return run(QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path)), current,
               timeoutMs);
}

Result TestUpdateChecker::run(const QUrl& feedURL, const QString& current, int timeoutMs)
{
    std::optional<Result> result;
    int calls = 0;
    UpdateChecker::Options options;
    options.feedURL = feedURL;
    options.currentVersion = current;
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

void TestUpdateChecker::feedAddress()
{
    QCOMPARE(UpdateChecker::feedURL(), QUrl("https://corvane.vantorel.com/appcast.json"));
    QCOMPARE(UpdateChecker::host(), QStringLiteral("corvane.vantorel.com"));
}

void TestUpdateChecker::currentVersionFallsBackTo10()
{
    QCoreApplication::setApplicationVersion(QString());
    QCOMPARE(UpdateChecker::currentVersion(), QStringLiteral("1.0"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.2.3"));
    QCOMPARE(UpdateChecker::currentVersion(), QStringLiteral("1.2.3"));
}

void TestUpdateChecker::feeds_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("expected"); // "failure", "none" or the offered version text
    QTest::newRow("1.4 vs 1.4.0 is current") << "/v-1.4"
                                             << "1.4.0"
                                             << "none";
    QTest::newRow("2.0 vs 1.9.9 offered") << "/update-2.0"
                                          << "1.9.9"
                                          << "2.0";
    QTest::newRow("2.0.0 shown unnormalised") << "/v-2.0.0"
                                              << "1.9.9"
                                              << "2.0.0";
    QTest::newRow("older feed never offered") << "/v-1.4"
                                              << "1.9.9"
                                              << "none";
    QTest::newRow("version is a number") << "/v-number"
                                         << "1.0"
                                         << "failure";
    QTest::newRow("download missing") << "/no-download"
                                      << "1.0"
                                      << "failure";
    QTest::newRow("2.0-beta is up to date") << "/beta"
                                            << "1.0"
                                            << "none";
    QTest::newRow("bundle without version compares as 1.0") << "/update-2.0"
                                                            << ""
                                                            << "2.0";
    QTest::newRow("unparsable running version: no update") << "/update-2.0"
                                                           << "dev"
                                                           << "none";
    QTest::newRow("html with 200") << "/html-200"
                                   << "1.0"
                                   << "failure";
    QTest::newRow("html with 404") << "/html-404"
                                   << "1.0"
                                   << "failure";
    QTest::newRow("feed with 404 still read") << "/feed-404"
                                              << "1.0"
                                              << "2.0";
    QTest::newRow("download not a url") << "/bad-url"
                                        << "1.0"
                                        << "failure";
    QTest::newRow("download not a web address") << "/file-url"
                                                << "1.0"
                                                << "failure";
    QTest::newRow("top level array") << "/array"
                                     << "1.0"
                                     << "failure";
    QTest::newRow("extra members ignored") << "/extra-members"
                                           << "1.0"
                                           << "2.0";
    QTest::newRow("empty body") << "/empty"
                                << "1.0"
                                << "failure";
}

void TestUpdateChecker::feeds()
{
    QFETCH(QString, path);
    QFETCH(QString, current);
    QFETCH(QString, expected);
    // An empty running version is what a build without one reports: the fallback "1.0".
    QCoreApplication::setApplicationVersion(current);
    const Result result = run(path, UpdateChecker::currentVersion());
    if (expected == "failure") {
        QVERIFY(!result.succeeded);
        return;
    }
    QVERIFY2(result.succeeded, qPrintable(result.error));
    if (expected == "none") {
        QVERIFY(!result.update.has_value());
        return;
    }
    QVERIFY(result.update.has_value());
    QCOMPARE(result.update->version, expected);
    QCOMPARE(result.update->downloadURL.host(), QStringLiteral("corvane.vantorel.com"));
}

void TestUpdateChecker::serverThatNeverAnswersFails()
{
    QElapsedTimer timer;
    timer.start();
    const Result result = run("/hang", "1.0", 1500);
    QVERIFY(!result.succeeded);
    // The stated time-out is 1.5 s here; it ends in failure well before twice that.
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
}

void TestUpdateChecker::oversizedAnswerFails()
{
    const Result result = run("/big", "1.0");
    QVERIFY(!result.succeeded);
}

void TestUpdateChecker::refusedConnectionFails()
{
    UpdateChecker::Options options;
    options.feedURL = QUrl(QStringLiteral("http://127.0.0.1:1/appcast.json"));
    std::optional<Result> result;
    UpdateChecker::check([&](const Result& r) { result = r; }, options);
    QTRY_VERIFY_WITH_TIMEOUT(result.has_value(), 10000);
    QVERIFY(!result->succeeded);
}

void TestUpdateChecker::untrustedCertificateIsRefused()
{
    // An HTTPS server on 127.0.0.1 with a certificate nobody signed: the check must fail on the
    // certificate, and succeed once the test trusts that very certificate (so the failure was
    // the check, not a broken TLS set-up).
    QTemporaryDir dir;
    const QString cert = dir.filePath("cert.pem"), key = dir.filePath("key.pem");
    QProcess openssl;
    openssl.start("openssl", {"req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
                              "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1",
                              "-keyout", key, "-out", cert});
    QVERIFY(openssl.waitForFinished(30000) && openssl.exitCode() == 0);
    // Two servers with the same certificate: no connection is reused from one check to the next.
    FeedServer first, second;
    QString why;
    QVERIFY2(first.start(QStringLiteral(FEED_SERVER), &why, {"--tls", cert, key}), qPrintable(why));
    QVERIFY2(second.start(QStringLiteral(FEED_SERVER), &why, {"--tls", cert, key}),
             qPrintable(why));

    const auto check = [&](const FeedServer& server) {
        return run(QUrl(QStringLiteral("https://127.0.0.1:%1/update-2.0").arg(server.port())),
                   QStringLiteral("1.0"));
    };
    const Result untrusted = check(first);
    QVERIFY(!untrusted.succeeded);
    QVERIFY(!untrusted.update);
    QVERIFY2(untrusted.error.contains(QStringLiteral("certificate"), Qt::CaseInsensitive) ||
                 untrusted.error.contains(QStringLiteral("SSL"), Qt::CaseInsensitive),
             qPrintable(untrusted.error));

    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    const QSslConfiguration before = configuration;
    configuration.addCaCertificates(QSslCertificate::fromPath(cert));
    QSslConfiguration::setDefaultConfiguration(configuration);
    const Result trusted = check(second);
    QSslConfiguration::setDefaultConfiguration(before);
    QVERIFY2(trusted.succeeded, qPrintable(trusted.error));
    QVERIFY(trusted.update);
}

void TestUpdateChecker::feedParserTakesArbitraryBytes()
{
    const QByteArray valid = R"({"version":"2.0","download":"https://corvane.vantorel.com/d"})";
    QRandomGenerator random(71);
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes = valid;
        for (int i = 0, n = 1 + random.bounded(4); i < n; ++i) {
            const int at = random.bounded(bytes.size() + 1);
            if (random.bounded(2))
                bytes.insert(at, char(random.bounded(256)));
            else if (at < bytes.size())
                bytes.remove(at, 1 + random.bounded(4));
        }
        const Result r = UpdateChecker::decide(bytes, "1.0");
        QVERIFY(r.succeeded || !r.update.has_value());
        if (r.update)
            QVERIFY(r.update->downloadURL.isValid());
    }
}

QTEST_GUILESS_MAIN(TestUpdateChecker)
#include "tst_updatechecker.moc"
