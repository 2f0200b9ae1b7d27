// The version tracker, the What's New policy and the catalogue.

#include "platform/UserDefaults.h"
#include "whatsnew/ReleaseNotes.h"
#include "whatsnew/VersionTracker.h"
#include "whatsnew/WhatsNewPolicy.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

using namespace corvane;
using Outcome = VersionTracker::Outcome;

namespace {
AppVersion v(const char* text)
{
    return *AppVersion::parse(QString::fromLatin1(text));
}
WhatsNewRelease release(const char* version, int features = 1, const QString& tag = {})
{
    WhatsNewRelease r{v(version), {}};
    for (int i = 0; i < features; ++i)
        r.features.append(WhatsNewFeature{"star", tag, {}, std::nullopt, std::nullopt});
    return r;
}
QStringList versions(const QList<WhatsNewRelease>& releases)
{
    QStringList out;
    for (const auto& r : releases)
        out << r.version.description() + (r.features.isEmpty() ? QString() : r.features[0].title);
    return out;
}
} // namespace

class TestVersionTracker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_defaults =
            std::make_unique<UserDefaults>(m_dir.filePath(QStringLiteral("%1.conf").arg(++m_n)));
    }
    void firstLaunchEver();
    void launchedBeforeWithoutRecord();
    void update();
    void sameVersionAfterNormalisation();
    void downgrade();
    void corruptRecord();
    void secondCommitWritesNothing();
    void policyEmptyOutcomes();
    void policyWithPreviousVersion();
    void policyWithoutPreviousVersion();
    void policyKeepsNewerThanRunning();
    void policyDropsEmptyReleases();
    void policyStableForEqualVersions();
    void catalogue();

private:
    QTemporaryDir m_dir;
    int m_n = 0;
    std::unique_ptr<UserDefaults> m_defaults;
};

void TestVersionTracker::firstLaunchEver()
{
    const QDateTime now(QDate(2026, 11, 23), QTime(8, 0), QTimeZone::utc());
    VersionTracker tracker(v("1.0"), false, *m_defaults, [now] { return now; });
    QCOMPARE(tracker.outcome(), Outcome::freshInstall());
    tracker.commit();
    QCOMPARE(m_defaults->string("whatsNew.installedVersion"), QStringLiteral("1.0"));
    QCOMPARE(m_defaults->date("whatsNew.installDate"), now);
    QCOMPARE(m_defaults->string("whatsNew.lastSeenVersion"), QStringLiteral("1.0"));
    QVERIFY(!m_defaults->contains("whatsNew.updateCount"));
    QVERIFY(!m_defaults->contains("whatsNew.previousVersion"));
}

void TestVersionTracker::launchedBeforeWithoutRecord()
{
    VersionTracker tracker(v("1.0"), true, *m_defaults);
    QCOMPARE(tracker.outcome(), Outcome::update(std::nullopt));
    tracker.commit();
    QCOMPARE(m_defaults->integer("whatsNew.updateCount"), 1);
    QCOMPARE(m_defaults->string("whatsNew.lastSeenVersion"), QStringLiteral("1.0"));
    QVERIFY(!m_defaults->contains("whatsNew.previousVersion"));
    QVERIFY(!m_defaults->contains("whatsNew.installedVersion"));
}

void TestVersionTracker::update()
{
    m_defaults->setString("whatsNew.lastSeenVersion", "1.2");
    m_defaults->setInteger("whatsNew.updateCount", 4);
    VersionTracker tracker(v("1.3"), true, *m_defaults);
    QCOMPARE(tracker.outcome(), Outcome::update(v("1.2")));
    QVERIFY(!(tracker.outcome() == Outcome::update(std::nullopt)));
    tracker.commit();
    QCOMPARE(m_defaults->string("whatsNew.previousVersion"), QStringLiteral("1.2"));
    QCOMPARE(m_defaults->integer("whatsNew.updateCount"), 5);
    QCOMPARE(m_defaults->string("whatsNew.lastSeenVersion"), QStringLiteral("1.3"));
}

void TestVersionTracker::sameVersionAfterNormalisation()
{
    m_defaults->setString("whatsNew.lastSeenVersion", "1.3");
    VersionTracker tracker(v("1.3.0"), true, *m_defaults);
    QCOMPARE(tracker.outcome(), Outcome::sameVersion());
}

void TestVersionTracker::downgrade()
{
    m_defaults->setString("whatsNew.lastSeenVersion", "2.0");
    VersionTracker tracker(v("1.9"), true, *m_defaults);
    QCOMPARE(tracker.outcome(), Outcome::downgrade());
    tracker.commit();
    QCOMPARE(m_defaults->string("whatsNew.lastSeenVersion"), QStringLiteral("1.9"));
    VersionTracker next(v("2.0"), true, *m_defaults);
    QCOMPARE(next.outcome(), Outcome::update(v("1.9")));
}

void TestVersionTracker::corruptRecord()
{
    m_defaults->setString("whatsNew.lastSeenVersion", "banana");
    VersionTracker tracker(v("1.0"), true, *m_defaults);
    QCOMPARE(tracker.outcome(), Outcome::update(std::nullopt));
    tracker.commit();
    QCOMPARE(m_defaults->string("whatsNew.lastSeenVersion"), QStringLiteral("1.0"));
}

void TestVersionTracker::secondCommitWritesNothing()
{
    VersionTracker tracker(v("1.0"), true, *m_defaults);
    tracker.commit();
    m_defaults->setString("whatsNew.lastSeenVersion", "0.1");
    tracker.commit();
    QCOMPARE(m_defaults->integer("whatsNew.updateCount"), 1);
    QCOMPARE(m_defaults->string("whatsNew.lastSeenVersion"), QStringLiteral("0.1"));
}

void TestVersionTracker::policyEmptyOutcomes()
{
    const QList<WhatsNewRelease> catalog{release("0.5"), release("1.0"), release("9.0")};
    for (const Outcome& o : {Outcome::freshInstall(), Outcome::sameVersion(), Outcome::downgrade()})
        QVERIFY(WhatsNewPolicy::releasesToShow(o, catalog, v("1.0")).isEmpty());
}

void TestVersionTracker::policyWithPreviousVersion()
{
    const QList<WhatsNewRelease> catalog{release("1.0")};
    QVERIFY(WhatsNewPolicy::releasesToShow(Outcome::update(v("1.0")), catalog, v("1.0")).isEmpty());
    QCOMPARE(versions(WhatsNewPolicy::releasesToShow(Outcome::update(v("0.9")), catalog, v("1.0"))),
             QStringList{"1.0"});
    QCOMPARE(
        versions(WhatsNewPolicy::releasesToShow(Outcome::update(v("0.9.5")), catalog, v("1.0"))),
        QStringList{"1.0"});
}

void TestVersionTracker::policyWithoutPreviousVersion()
{
    const QList<WhatsNewRelease> catalog{release("0.9"), release("1.0"), release("1.1")};
    QCOMPARE(
        versions(WhatsNewPolicy::releasesToShow(Outcome::update(std::nullopt), catalog, v("1.0"))),
        (QStringList{"1.1", "1.0"}));
}

void TestVersionTracker::policyKeepsNewerThanRunning()
{
    const QList<WhatsNewRelease> catalog{release("1.0"), release("3.0")};
    QCOMPARE(versions(WhatsNewPolicy::releasesToShow(Outcome::update(v("1.0")), catalog, v("1.0"))),
             QStringList{"3.0"});
}

void TestVersionTracker::policyDropsEmptyReleases()
{
    const QList<WhatsNewRelease> catalog{release("2.0", 0), release("1.5")};
    QCOMPARE(versions(WhatsNewPolicy::releasesToShow(Outcome::update(v("1.0")), catalog, v("1.0"))),
             QStringList{"1.5"});
}

void TestVersionTracker::policyStableForEqualVersions()
{
    const QList<WhatsNewRelease> catalog{release("1.2", 1, "a"), release("1.3", 1, "x"),
                                         release("1.2.0", 1, "b")};
    QCOMPARE(versions(WhatsNewPolicy::releasesToShow(Outcome::update(v("1.0")), catalog, v("1.0"))),
             (QStringList{"1.3x", "1.2a", "1.2b"}));
}

void TestVersionTracker::catalogue()
{
    int opened = 0;
    const auto all =
        ReleaseNotes::all(WhatsNewActions{[&opened] { ++opened; }}, QStringLiteral("Alt"));
    QCOMPARE(all.size(), 1);
    QCOMPARE(all[0].version, v("1.0"));
    QCOMPARE(ReleaseNotes::floor(), v("1.0"));
    QCOMPARE(all[0].features.size(), 4);
    const QStringList symbols{"keyboard", "pin", "star", "square.on.square"};
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(all[0].features[i].symbol, symbols[i]);
        // The pin feature carries the looping clip, compiled into the program.
        QCOMPARE(all[0].features[i].media.has_value(), i == 1);
        QCOMPARE(all[0].features[i].action.has_value(), i == 3);
    }
    QCOMPARE(all[0].features[0].title, QStringLiteral("Hold Alt and see everything"));
    QVERIFY(all[0].features[1].detail.startsWith(QStringLiteral("Release Alt over the panel")));
    QCOMPARE(all[0].features[3].action->title, QStringLiteral("Open Settings"));
    QCOMPARE(all[0].features[1].media->kind, WhatsNewFeature::Media::Kind::video);
    QVERIFY(QFile::exists(QLatin1Char(':') + all[0].features[1].media->url.path()));
    all[0].features[3].action->perform();
    QCOMPARE(opened, 1);
    // The trigger off: the default is named.
    QCOMPARE(ReleaseNotes::all({}, QString())[0].features[0].title,
             QStringLiteral("Hold Ctrl and see everything"));
    // Policy over the real catalogue.
    QCOMPARE(
        WhatsNewPolicy::releasesToShow(Outcome::update(std::nullopt), all, ReleaseNotes::floor())
            .size(),
        1);
    QVERIFY(WhatsNewPolicy::releasesToShow(Outcome::update(v("1.0")), all, ReleaseNotes::floor())
                .isEmpty());
}

QTEST_GUILESS_MAIN(TestVersionTracker)
#include "tst_versiontracker.moc"
