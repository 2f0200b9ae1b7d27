// Versions and what to announce: the version parser and its order, the install/update record,
// the What's New policy, and the release notes compiled into the program.

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
Q_DECLARE_METATYPE(Outcome)

namespace {

AppVersion v(const char* text)
{
    return *AppVersion::parse(QString::fromLatin1(text));
}

QString describe(const Outcome& outcome)
{
    switch (outcome.kind) {
    case Outcome::Kind::freshInstall:
        return "fresh install";
    case Outcome::Kind::sameVersion:
        return "same version";
    case Outcome::Kind::downgrade:
        return "downgrade";
    case Outcome::Kind::update:
        return "update from " + (outcome.from ? outcome.from->description() : "?");
    }
    return {};
}

} // namespace

class TestVersions : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parse_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("normal"); // empty: rejected
        const QList<std::pair<const char*, const char*>> rows{
            {"1", "1.0"},       {"3.0.0", "3.0"},
            {"1.2.0.0", "1.2"}, {"1.0.1", "1.0.1"},
            {" 1.2\n", "1.2"},  {"9223372036854775807", "9223372036854775807.0"},
            {"", ""},           {"1..2", ""},
            {"1.", ""},         {"v1.2", ""},
            {"1.2-beta", ""},   {"01.2", ""},
            {"1.02", ""},       {"+1", ""},
            {"-1", ""},         {"9223372036854775808", ""},
            {"１.２", ""},      {"1. 2", ""},
        };
        for (const auto& [text, normal] : rows)
            QTest::newRow(text[0] ? text : "(empty)") << QString::fromUtf8(text) << normal;
    }

    void parse()
    {
        QFETCH(QString, text);
        QFETCH(QString, normal);
        const auto version = AppVersion::parse(text);
        QCOMPARE(version ? version->description() : QString(), normal);
    }

    void order()
    {
        QVERIFY(v("1.2") < v("1.2.1"));
        QVERIFY(v("1.10") > v("1.9"));
        QVERIFY(v("2.0") > v("1.99.99"));
        // Equality does not pad with zeros, the order does: "1.2.0.1" and "1.2.0.1.0" are two
        // records, neither newer than the other.
        const AppVersion a = *AppVersion::parse("1.2.0.1"), b(QList<qint64>{1, 2, 0, 1, 0});
        QVERIFY(!(a < b) && !(b < a) && !(a == b));
        QCOMPARE(QSet<AppVersion>({a, b, v("1.2.0.1")}).size(), 2);
        QVERIFY(!AppVersion::current("dev"));
    }

    void tracker_data()
    {
        QTest::addColumn<QString>("recorded"); // the last seen version stored; "" none
        QTest::addColumn<bool>("launchedBefore");
        QTest::addColumn<QString>("running");
        QTest::addColumn<QString>("outcome");
        QTest::addColumn<QString>("previous"); // stored after the commit; "" none
        QTest::addColumn<int>("updateCount");  // stored after the commit (4 before); 0 none
        const QList<
            std::tuple<const char*, const char*, bool, const char*, const char*, const char*, int>>
            rows{
                {"first launch ever", "", false, "1.0", "fresh install", "", 0},
                {"launched before, without a record", "", true, "1.0", "update from ?", "", 1},
                {"a corrupt record is no record", "banana", true, "1.0", "update from ?", "", 5},
                {"update", "1.2", true, "1.3", "update from 1.2", "1.2", 5},
                {"the same version, written otherwise", "1.3", true, "1.3.0", "same version", "",
                 4},
                {"downgrade", "2.0", true, "1.9", "downgrade", "", 4},
            };
        for (const auto& [name, recorded, before, running, outcome, previous, count] : rows)
            QTest::newRow(name) << recorded << before << running << outcome << previous << count;
    }

    void tracker()
    {
        QFETCH(QString, recorded);
        QFETCH(bool, launchedBefore);
        QFETCH(QString, running);
        QFETCH(QString, outcome);
        QFETCH(QString, previous);
        QFETCH(int, updateCount);
        UserDefaults defaults(m_dir.filePath(QStringLiteral("%1.conf").arg(++m_files)));
        if (!recorded.isEmpty())
            QVERIFY(defaults.setString(VersionTracker::lastSeenKey, recorded));
        if (launchedBefore)
            QVERIFY(defaults.setInteger(VersionTracker::updateCountKey, 4 * !recorded.isEmpty()));
        const QDateTime now(QDate(2026, 11, 23), QTime(8, 0), QTimeZone::utc());
        VersionTracker tracker(*AppVersion::parse(running), launchedBefore, defaults,
                               [now] { return now; });
        QCOMPARE(describe(tracker.outcome()), outcome);
        tracker.commit();
        tracker.commit(); // a second commit writes nothing more
        QCOMPARE(defaults.string(VersionTracker::lastSeenKey),
                 AppVersion::parse(running)->description());
        QCOMPARE(defaults.string(VersionTracker::previousKey).value_or(QString()), previous);
        QCOMPARE(defaults.integer(VersionTracker::updateCountKey).value_or(0), qint64(updateCount));
        const bool fresh = !launchedBefore;
        QCOMPARE(defaults.string(VersionTracker::installedKey).has_value(), fresh);
        QCOMPARE(defaults.date(VersionTracker::installDateKey).has_value(), fresh);
    }

    void policy_data()
    {
        QTest::addColumn<QString>("outcome"); // "update FROM", "update ?", or another outcome
        QTest::addColumn<QString>("catalog"); // versions with a tag; "2.0-" has no features
        QTest::addColumn<QString>("shown");
        const QList<std::tuple<const char*, const char*, const char*, const char*>> rows{
            {"nothing for a fresh install", "fresh", "0.5a 1.0a 9.0a", ""},
            {"nothing for the same version", "same", "0.5a 1.0a 9.0a", ""},
            {"nothing for a downgrade", "downgrade", "0.5a 1.0a 9.0a", ""},
            {"not the release updated from", "update 1.0", "1.0a", ""},
            {"newer than the one updated from", "update 0.9.5", "1.0a", "1.0a"},
            {"newer than the running one too", "update 1.0", "1.0a 3.0a", "3.0a"},
            {"without a record: from the floor on, newest first", "update ?", "0.9a 1.0a 1.1a",
             "1.1a 1.0a"},
            {"releases without features are left out", "update 1.0", "2.0- 1.5a", "1.5a"},
            {"equal versions keep their order", "update 1.0", "1.2a 1.3x 1.2.0b", "1.3x 1.2a 1.2b"},
        };
        for (const auto& [name, outcome, catalog, shown] : rows)
            QTest::newRow(name) << outcome << catalog << shown;
    }

    void policy()
    {
        QFETCH(QString, outcome);
        QFETCH(QString, catalog);
        QFETCH(QString, shown);
        QList<WhatsNewRelease> releases;
        for (QString entry : catalog.split(u' ')) {
            const QString tag = entry.right(1);
            entry.chop(1);
            WhatsNewRelease release{*AppVersion::parse(entry), {}};
            if (tag != u"-")
                release.features.append(
                    WhatsNewFeature{"star", tag, {}, std::nullopt, std::nullopt});
            releases << release;
        }
        const Outcome o = outcome == u"fresh"  ? Outcome::freshInstall()
                          : outcome == u"same" ? Outcome::sameVersion()
                          : outcome == u"downgrade"
                              ? Outcome::downgrade()
                              : Outcome::update(AppVersion::parse(outcome.mid(7)));
        QStringList got;
        for (const WhatsNewRelease& r : WhatsNewPolicy::releasesToShow(o, releases, v("1.0")))
            got << r.version.description() + r.features.first().title;
        QCOMPARE(got.join(u' '), shown);
    }

    void releaseNotes()
    {
        int opened = 0;
        const auto all = ReleaseNotes::all(WhatsNewActions{[&opened] { ++opened; }}, "Alt");
        QCOMPARE(all.size(), 1);
        QCOMPARE(all[0].version, ReleaseNotes::floor());
        // The texts name the trigger, and the default when it is off.
        QCOMPARE(all[0].features[0].title, "Hold Alt and see everything");
        QCOMPARE(ReleaseNotes::all({}, {})[0].features[0].title, "Hold Ctrl and see everything");
        // The clip is compiled into the program; the settings button opens the settings.
        bool clip = false;
        for (const WhatsNewFeature& feature : all[0].features) {
            if (feature.media)
                clip = QFile::exists(u':' + feature.media->url.path());
            if (feature.action)
                feature.action->perform();
        }
        QVERIFY(clip);
        QCOMPARE(opened, 1);
    }

private:
    QTemporaryDir m_dir;
    int m_files = 0;
};

QTEST_GUILESS_MAIN(TestVersions)
#include "tst_versions.moc"
