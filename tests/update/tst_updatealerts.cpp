// checkAndPresent(): the three alerts, shown for real under the test session (Xvfb,
// openbox) against a real HTTP server on 127.0.0.1 (feed_server.py), answered through the real
// keyboard and pointer (xdotool). "Download" is seen where a browser would be: the desktop's
// handler for https addresses, replaced here by a recorder.

#include "FeedServer.h"
#include "SessionTools.h"
#include "update/UpdateChecker.h"

#include <QApplication>
#include <QDesktopServices>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace corvane;
using namespace corvane::test;

class TestUpdateAlerts : public QObject {
    Q_OBJECT

public Q_SLOTS:
    void openUrl(const QUrl& url) { m_opened << url; }

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init() { m_opened.clear(); }

    void alerts_data();
    void alerts();
    void returnDownloads();
    void laterAndEscapeDoNothing_data();
    void laterAndEscapeDoNothing();
    void bundleWithoutVersionShows10();

private:
    struct Seen {
        bool captured = false;
        QString title;
        QString text;
        QString informative;
        QStringList buttons; // left to right
        QString defaultButton;
    };
    // Runs checkAndPresent() for the feed at `path` and answers the alert with `answer`: a key
    // ("Return", "Escape") or the label of a button to click.
    Seen present(const QString& path, const std::optional<QString>& current, const QString& answer);

    FeedServer m_server;
    int m_port = 0;
    QList<QUrl> m_opened;
};

void TestUpdateAlerts::initTestCase()
{
    QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "openUrl");
    QString why;
    QVERIFY2(m_server.start(QStringLiteral(FEED_SERVER), &why), qPrintable(why));
    m_port = m_server.port();
}

void TestUpdateAlerts::cleanupTestCase()
{
    QDesktopServices::unsetUrlHandler(QStringLiteral("https"));
}

TestUpdateAlerts::Seen TestUpdateAlerts::present(const QString& path,
                                                 const std::optional<QString>& current,
                                                 const QString& answer)
{
    Seen seen;
    // The alert runs modally inside the check's completion: it is read and answered from a
    // timer that fires in its event loop.
    QTimer poll;
    poll.setInterval(50);
    connect(&poll, &QTimer::timeout, this, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (seen.captured || !box || !box->windowHandle() || !box->windowHandle()->isExposed() ||
            !box->isActiveWindow())
            return;
        seen.captured = true;
        seen.title = box->windowTitle();
        seen.text = box->text();
        seen.informative = box->informativeText();
        QList<QAbstractButton*> buttons = box->buttons();
        std::sort(buttons.begin(), buttons.end(), [](QAbstractButton* a, QAbstractButton* b) {
            return a->mapToGlobal(QPoint()).x() < b->mapToGlobal(QPoint()).x();
        });
        QAbstractButton* target = nullptr;
        for (QAbstractButton* button : buttons) {
            seen.buttons << button->text();
            if (auto* push = qobject_cast<QPushButton*>(button); push && push->isDefault())
                seen.defaultButton = push->text();
            if (button->text() == answer)
                target = button;
        }
        if (target) {
            const QPoint centre = target->mapToGlobal(target->rect().center());
            QProcess::startDetached(QStringLiteral("xdotool"),
                                    {QStringLiteral("mousemove"), QString::number(centre.x()),
                                     QString::number(centre.y()), QStringLiteral("click"),
                                     QStringLiteral("1")});
        } else {
            QProcess::startDetached(QStringLiteral("xdotool"), {QStringLiteral("key"), answer});
        }
    });
    poll.start();
    UpdateChecker::Options options;
    options.feedURL = QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_port).arg(path));
    if (current)
        options.currentVersion = *current;
    UpdateChecker::checkAndPresent(options);
    [&] { QTRY_VERIFY_WITH_TIMEOUT(seen.captured, 15000); }();
    [&] { QTRY_VERIFY_WITH_TIMEOUT(!QApplication::activeModalWidget(), 15000); }();
    QTest::qWait(100);
    return seen;
}

static const QString host = QStringLiteral("corvane.vantorel.com");

void TestUpdateAlerts::alerts_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("informative");
    QTest::addColumn<QStringList>("buttons");

    const QString upToDate = QStringLiteral("You're up to date.");
    const QString failed = QStringLiteral("Couldn't check for updates.");
    const QString failedDetail =
        QStringLiteral("Try again in a minute, or grab the newest version at %1.").arg(host);
    const QStringList ok{QStringLiteral("OK")};
    const QStringList update{QStringLiteral("Download"), QStringLiteral("Later")};

    QTest::newRow("1.4 vs 1.4.0") << "/v-1.4"
                                  << "1.4.0" << upToDate
                                  << QStringLiteral("Corvane 1.4.0 is the latest version.") << ok;
    QTest::newRow("2.0 vs 1.9.9")
        << "/update-2.0"
        << "1.9.9" << QStringLiteral("Version 2.0 is available.")
        << QStringLiteral("You have 1.9.9. The update is a quick download from %1.").arg(host)
        << update;
    QTest::newRow("2.0.0 unnormalised")
        << "/v-2.0.0"
        << "1.9.9" << QStringLiteral("Version 2.0.0 is available.")
        << QStringLiteral("You have 1.9.9. The update is a quick download from %1.").arg(host)
        << update;
    QTest::newRow("version is a number") << "/v-number"
                                         << "1.0" << failed << failedDetail << ok;
    QTest::newRow("download missing") << "/no-download"
                                      << "1.0" << failed << failedDetail << ok;
    QTest::newRow("2.0-beta") << "/beta"
                              << "1.0" << upToDate
                              << QStringLiteral("Corvane 1.0 is the latest version.") << ok;
    QTest::newRow("HTML page, status 200") << "/html-200"
                                           << "1.0" << failed << failedDetail << ok;
    QTest::newRow("HTML page, status 404") << "/html-404"
                                           << "1.0" << failed << failedDetail << ok;
}

void TestUpdateAlerts::alerts()
{
    QFETCH(QString, path);
    QFETCH(QString, current);
    QFETCH(QString, text);
    QFETCH(QString, informative);
    QFETCH(QStringList, buttons);
    const Seen seen = present(path, current, QStringLiteral("Escape"));
    QVERIFY(seen.captured);
    QCOMPARE(seen.text, text);
    QCOMPARE(seen.informative, informative);
    QCOMPARE(seen.buttons, buttons);
    QCOMPARE(seen.defaultButton, buttons.first()); // the first button is the default
    QVERIFY(m_opened.isEmpty());
}

void TestUpdateAlerts::returnDownloads()
{
    const Seen seen =
        present(QStringLiteral("/update-2.0"), QStringLiteral("1.9.9"), QStringLiteral("Return"));
    QCOMPARE(seen.text, QStringLiteral("Version 2.0 is available."));
    QCOMPARE(m_opened, QList<QUrl>{QUrl(QStringLiteral("https://corvane.vantorel.com/download"))});
}

void TestUpdateAlerts::laterAndEscapeDoNothing_data()
{
    QTest::addColumn<QString>("answer");
    QTest::newRow("Later") << QStringLiteral("Later");
    QTest::newRow("Escape") << QStringLiteral("Escape");
}

void TestUpdateAlerts::laterAndEscapeDoNothing()
{
    QFETCH(QString, answer);
    const Seen seen = present(QStringLiteral("/update-2.0"), QStringLiteral("1.9.9"), answer);
    QCOMPARE(seen.text, QStringLiteral("Version 2.0 is available."));
    QVERIFY(m_opened.isEmpty());
}

void TestUpdateAlerts::bundleWithoutVersionShows10()
{
    QCoreApplication::setApplicationVersion(QString());
    const Seen seen =
        present(QStringLiteral("/update-2.0"), std::nullopt, QStringLiteral("Escape"));
    QCOMPARE(seen.informative,
             QStringLiteral("You have 1.0. The update is a quick download from %1.").arg(host));
}

QTEST_MAIN(TestUpdateAlerts)
#include "tst_updatealerts.moc"
