// The trigger settings: the registered defaults, the delay clamp, the trigger mapping
// and the trigger's Linux name.

#include "app/TriggerSettings.h"
#include "platform/UserDefaults.h"

#include <QTemporaryDir>
#include <QTest>

using namespace corvane;
namespace TS = TriggerSettings;

class TestTriggerSettings : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void registeredDefaults();
    void holdDelayClamp_data();
    void holdDelayClamp();
    void storedDelayIsClamped();
    void triggerMapping_data();
    void triggerMapping();
    void absentTriggerIsCommand();
};

void TestTriggerSettings::registeredDefaults()
{
    QTemporaryDir dir;
    UserDefaults d(dir.filePath("corvane.conf"));
    TS::registerDefaults(d);
    QCOMPARE(d.doubleValue("holdDelay"), 0.85);
    QCOMPARE(d.string("triggerModifier"), QStringLiteral("command"));
    QCOMPARE(d.boolValue("showDisabledItems"), true);
    QCOMPARE(d.boolValue("showItemsWithoutShortcut"), true);
    QCOMPARE(d.boolValue("glassyBackground"), true);
    QVERIFY(!d.contains("holdDelay"));
}

void TestTriggerSettings::holdDelayClamp_data()
{
    QTest::addColumn<double>("stored");
    QTest::addColumn<double>("applied");
    QTest::newRow("0.1 → 0.3") << 0.1 << 0.3;
    QTest::newRow("5 → 2.0") << 5.0 << 2.0;
    QTest::newRow("0.3 stays") << 0.3 << 0.3;
    QTest::newRow("1.25 stays") << 1.25 << 1.25;
    QTest::newRow("2.0 stays") << 2.0 << 2.0;
    QTest::newRow("negative") << -4.0 << 0.3;
}

void TestTriggerSettings::holdDelayClamp()
{
    QFETCH(double, stored);
    QFETCH(double, applied);
    QCOMPARE(TS::clampHoldDelay(stored), applied);
}

void TestTriggerSettings::storedDelayIsClamped()
{
    QTemporaryDir dir;
    UserDefaults d(dir.filePath("corvane.conf"));
    TS::registerDefaults(d);
    QCOMPARE(TS::holdDelay(d), 0.85);
    d.setDouble("holdDelay", 0.1);
    QCOMPARE(TS::holdDelay(d), 0.3);
    d.setString("holdDelay", "not a number");
    QCOMPARE(TS::holdDelay(d), 0.85);
}

void TestTriggerSettings::triggerMapping_data()
{
    QTest::addColumn<QString>("setting");
    QTest::addColumn<qulonglong>("flags"); // 0: no trigger
    QTest::addColumn<QString>("symbol");
    QTest::newRow("command") << "command" << qulonglong(0x100000) << "Ctrl";
    QTest::newRow("option") << "option" << qulonglong(0x80000) << "Alt";
    QTest::newRow("control") << "control" << qulonglong(0x40000) << "Super";
    QTest::newRow("off") << "off" << qulonglong(0) << "";
    QTest::newRow("Option (capitalised)") << "Option" << qulonglong(0x100000) << "Ctrl";
    QTest::newRow("fn") << "fn" << qulonglong(0x100000) << "Ctrl";
    QTest::newRow("empty") << "" << qulonglong(0x100000) << "Ctrl";
    QTest::newRow("OFF") << "OFF" << qulonglong(0x100000) << "Ctrl";
}

void TestTriggerSettings::triggerMapping()
{
    QFETCH(QString, setting);
    QFETCH(qulonglong, flags);
    QFETCH(QString, symbol);
    const auto modifier = TS::triggerModifier(setting);
    QCOMPARE(modifier.value_or(0), flags);
    QCOMPARE(modifier.has_value(), flags != 0);
    QCOMPARE(TS::triggerSymbol(setting), symbol);
}

void TestTriggerSettings::absentTriggerIsCommand()
{
    QTemporaryDir dir;
    UserDefaults d(dir.filePath("corvane.conf")); // nothing registered, nothing stored
    QCOMPARE(TS::triggerSetting(d), QStringLiteral("command"));
}

QTEST_GUILESS_MAIN(TestTriggerSettings)
#include "tst_triggersettings.moc"
