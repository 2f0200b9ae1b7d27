// The version parser, its normal form, ordering and text form.

#include "whatsnew/AppVersion.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTest>

using namespace corvane;

using Components = QList<qint64>;
Q_DECLARE_METATYPE(Components)

class TestAppVersion : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void parses_data();
    void parses();
    void rejects_data();
    void rejects();
    void description();
    void ordering();
    void equalityDoesNotPad();
    void hashingAgreesWithEquality();
    void currentFromBundleVersion();
    void arbitraryBytesNeverCrash();
};

void TestAppVersion::parses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<Components>("components");
    QTest::newRow("1") << "1" << Components{1, 0};
    QTest::newRow("0") << "0" << Components{0, 0};
    QTest::newRow("3.0.0") << "3.0.0" << Components{3, 0};
    QTest::newRow("1.2.0.0") << "1.2.0.0" << Components{1, 2};
    QTest::newRow("1.0.1") << "1.0.1" << Components{1, 0, 1};
    QTest::newRow("10.4.11.2") << "10.4.11.2" << Components{10, 4, 11, 2};
    QTest::newRow("white space around") << " 1.2\n" << Components{1, 2};
    QTest::newRow("0.0") << "0.0" << Components{0, 0};
    QTest::newRow("max") << "9223372036854775807" << Components{9223372036854775807LL, 0};
}

void TestAppVersion::parses()
{
    QFETCH(QString, text);
    QFETCH(Components, components);
    const auto version = AppVersion::parse(text);
    QVERIFY(version.has_value());
    QCOMPARE(version->components, components);
}

void TestAppVersion::rejects_data()
{
    QTest::addColumn<QString>("text");
    for (const char* t :
         {"", "   ", "1..2", ".1", "1.", "1.2b", "v1.2", "1.2-beta", "1. 2", "01.2", "1.02", "00",
          "+1", "-1", "1.-0", "9223372036854775808", "1 .2", "１.２", "1.2.\n3"})
        QTest::newRow(t[0] ? t : "(empty)") << QString::fromUtf8(t);
}

void TestAppVersion::rejects()
{
    QFETCH(QString, text);
    QVERIFY(!AppVersion::parse(text).has_value());
}

void TestAppVersion::description()
{
    QCOMPARE(AppVersion::parse("1")->description(), QStringLiteral("1.0"));
    QCOMPARE(AppVersion(Components{2, 10, 3}).description(), QStringLiteral("2.10.3"));
}

void TestAppVersion::ordering()
{
    QVERIFY(*AppVersion::parse("1.2") == *AppVersion::parse("1.2.0"));
    QVERIFY(AppVersion(Components{1, 2}) < AppVersion(Components{1, 2, 1}));
    QVERIFY(AppVersion(Components{1, 10}) > AppVersion(Components{1, 9}));
    QVERIFY(AppVersion(Components{2, 0}) > AppVersion(Components{1, 99, 99}));
    QVERIFY(AppVersion(Components{1, 2}) <= AppVersion(Components{1, 2}));
    QVERIFY(AppVersion(Components{1, 2}) >= AppVersion(Components{1, 2}));
    QVERIFY(!(AppVersion(Components{1, 2}) < AppVersion(Components{1, 2})));
}

void TestAppVersion::equalityDoesNotPad()
{
    const AppVersion a(Components{1, 2, 0});
    const AppVersion b(Components{1, 2});
    QVERIFY(!(a < b));
    QVERIFY(!(b < a));
    QVERIFY(!(a == b));
}

void TestAppVersion::hashingAgreesWithEquality()
{
    QSet<AppVersion> set{*AppVersion::parse("1.2"), *AppVersion::parse("1.2.0"),
                         AppVersion(Components{1, 2, 0})};
    QCOMPARE(set.size(), 2);
}

void TestAppVersion::currentFromBundleVersion()
{
    QCOMPARE(AppVersion::current(QStringLiteral("2.3.1"))->description(), QStringLiteral("2.3.1"));
    QVERIFY(!AppVersion::current(QString()).has_value());
    QVERIFY(!AppVersion::current(QStringLiteral("dev")).has_value());
}

void TestAppVersion::arbitraryBytesNeverCrash()
{
    QRandomGenerator random(61);
    for (int round = 0; round < 20000; ++round) {
        QByteArray bytes;
        for (int i = 0, n = random.bounded(24); i < n; ++i)
            bytes += random.bounded(3) ? "0123456789.. -+\n\t"[random.bounded(17)]
                                       : char(random.bounded(256));
        const auto version = AppVersion::parse(QString::fromUtf8(bytes));
        if (version) {
            QVERIFY(version->components.size() >= 2);
            for (qint64 c : version->components)
                QVERIFY(c >= 0);
            QCOMPARE(AppVersion::parse(version->description()), version); // the text form reparses
        }
    }
}

QTEST_GUILESS_MAIN(TestAppVersion)
#include "tst_appversion.moc"
