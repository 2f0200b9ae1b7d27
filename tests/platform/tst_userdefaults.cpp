// The settings store: typed reads in which missing or mistyped values read as
// absent, registered defaults that are never written, and writes that lose nothing on failure.

#include "ReadOnlyFolder.h"
#include "platform/UserDefaults.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

using namespace corvane;

class TestUserDefaults : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { QVERIFY(m_dir.isValid()); }
    void roundTripsEveryType();
    void oneElementListStaysAList();
    void registeredDefaultsAreFallbacksAndNeverWritten();
    void garbageFileReadsAsAbsent();
    void wronglyTypedValuesReadAsAbsent_data();
    void wronglyTypedValuesReadAsAbsent();
    void missingFolderIsCreatedOnWrite();
    void unwritableFileLosesNothing();
    void fileWithAFormatErrorIsSetAsideAndWritesWork();
    void arbitraryBytesNeverCrash();

private:
    QString path(const QString& name) const { return m_dir.filePath(name); }
    void writeFile(const QString& file, const QByteArray& bytes)
    {
        QFile f(file);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    QTemporaryDir m_dir;
};

void TestUserDefaults::roundTripsEveryType()
{
    const QString file = path("rt/corvane.conf");
    const QDateTime when = QDateTime(QDate(2026, 11, 23), QTime(9, 30, 15, 250), QTimeZone::utc());
    {
        UserDefaults d(file);
        QVERIFY(d.setString("s", QStringLiteral("Éd, \"quoted\" ▸ 日本 @x")));
        QVERIFY(d.setDouble("d", 0.85));
        QVERIFY(d.setBool("b", false));
        QVERIFY(d.setInteger("i", -9223372036854775807LL));
        QVERIFY(d.setDate("t", when));
        QVERIFY(d.setStringList("l", {QStringLiteral("File\x1fOpen#1"), QStringLiteral("a, b")}));
    }
    UserDefaults d(file); // a fresh reader of the same file
    QCOMPARE(d.string("s"), QStringLiteral("Éd, \"quoted\" ▸ 日本 @x"));
    QCOMPARE(d.doubleValue("d"), 0.85);
    QCOMPARE(d.boolValue("b"), false);
    QCOMPARE(d.integer("i"), -9223372036854775807LL);
    QCOMPARE(d.date("t"), when);
    QCOMPARE(d.stringList("l"),
             (QStringList{QStringLiteral("File\x1fOpen#1"), QStringLiteral("a, b")}));
    QVERIFY(d.remove("s"));
    QVERIFY(!d.string("s").has_value());
}

void TestUserDefaults::oneElementListStaysAList()
{
    const QString file = path("one.conf");
    UserDefaults(file).setStringList("favorites.x", {QStringLiteral("Edit\x1fCopy")});
    UserDefaults d(file);
    QCOMPARE(d.stringList("favorites.x"), QStringList{QStringLiteral("Edit\x1fCopy")});
    // and a string is not a list
    d.setString("plain", QStringLiteral("Edit"));
    QVERIFY(!d.stringList("plain").has_value());
}

void TestUserDefaults::registeredDefaultsAreFallbacksAndNeverWritten()
{
    const QString file = path("reg.conf");
    UserDefaults d(file);
    d.registerDefaults(
        {{"holdDelay", 0.85}, {"triggerModifier", QStringLiteral("command")}, {"glassy", true}});
    QCOMPARE(d.doubleValue("holdDelay"), 0.85);
    QCOMPARE(d.string("triggerModifier"), QStringLiteral("command"));
    QCOMPARE(d.boolValue("glassy"), true);
    QVERIFY(!d.contains("holdDelay"));
    d.setDouble("holdDelay", 1.25);
    QCOMPARE(d.doubleValue("holdDelay"), 1.25);
    d.remove("holdDelay");
    QCOMPARE(d.doubleValue("holdDelay"), 0.85);
    QFile f(file);
    QVERIFY(f.open(QIODevice::ReadOnly));
    const QByteArray content = f.readAll();
    QVERIFY2(!content.contains("triggerModifier") && !content.contains("glassy"),
             content.constData());
}

void TestUserDefaults::garbageFileReadsAsAbsent()
{
    const QString file = path("garbage.conf");
    const char raw[] =
        "[General]\nholdDelay=abc\n\x00\xff\xfe garbage [[[\n=x\nshowDisabledItems=maybe\n";
    QByteArray bytes(raw, sizeof raw - 1); // with the NUL inside, without the terminating one
    bytes += "triggerModifier=a, b\nfavorites.x=[1, 2]\nwhatsNew.updateCount=12abc\n[[\n@@@\n";
    writeFile(file, bytes);
    UserDefaults d(file);
    d.registerDefaults({{"holdDelay", 0.85},
                        {"showDisabledItems", true},
                        {"triggerModifier", QStringLiteral("command")}});
    QCOMPARE(d.doubleValue("holdDelay"), 0.85);
    QCOMPARE(d.boolValue("showDisabledItems"), true);
    QCOMPARE(d.string("triggerModifier"), QStringLiteral("command"));
    QVERIFY(!d.stringList("favorites.x").has_value());
    QVERIFY(!d.integer("whatsNew.updateCount").has_value());
}

void TestUserDefaults::wronglyTypedValuesReadAsAbsent_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("type");
    QTest::newRow("double from bool") << QByteArray("k=true") << "double";
    QTest::newRow("double nan") << QByteArray("k=nan") << "double";
    QTest::newRow("double inf") << QByteArray("k=inf") << "double";
    QTest::newRow("double empty") << QByteArray("k=") << "double";
    QTest::newRow("bool from number") << QByteArray("k=1") << "bool";
    QTest::newRow("bool from text") << QByteArray("k=yes") << "bool";
    QTest::newRow("integer from double") << QByteArray("k=1.5") << "integer";
    QTest::newRow("integer overflow") << QByteArray("k=9223372036854775808") << "integer";
    QTest::newRow("date from text") << QByteArray("k=yesterday") << "date";
    QTest::newRow("list from string") << QByteArray("k=Edit") << "list";
    QTest::newRow("list of numbers") << QByteArray("k=\"[1,2]\"") << "list";
    QTest::newRow("list from object") << QByteArray("k=\"{\\\"a\\\":1}\"") << "list";
    QTest::newRow("string from list") << QByteArray("k=a, b") << "string";
    QTest::newRow("string from variant") << QByteArray("k=@Variant(\\0\\0\\0\\x7f)") << "string";
}

void TestUserDefaults::wronglyTypedValuesReadAsAbsent()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, type);
    const QString file =
        path(QStringLiteral("typed-%1.conf").arg(QTest::currentDataTag()).replace(' ', '-'));
    writeFile(file, "[General]\n" + line + "\n");
    UserDefaults d(file);
    if (type == "double")
        QVERIFY(!d.doubleValue("k"));
    else if (type == "bool")
        QVERIFY(!d.boolValue("k"));
    else if (type == "integer")
        QVERIFY(!d.integer("k"));
    else if (type == "date")
        QVERIFY(!d.date("k"));
    else if (type == "list")
        QVERIFY(!d.stringList("k"));
    else
        QVERIFY(!d.string("k"));
}

void TestUserDefaults::missingFolderIsCreatedOnWrite()
{
    const QString file = path("not/yet/there/corvane.conf");
    UserDefaults d(file);
    QVERIFY(!d.string("k").has_value());
    QVERIFY(d.setString("k", "v"));
    QVERIFY(QFile::exists(file));
    QCOMPARE(UserDefaults(file).string("k"), QStringLiteral("v"));
}

void TestUserDefaults::unwritableFileLosesNothing()
{
    QDir(m_dir.path()).mkpath("ro");
    const QString file = path("ro/corvane.conf");
    {
        UserDefaults d(file);
        QVERIFY(d.setStringList("favorites.app", {"a", "b"}));
        QVERIFY(d.setString("triggerModifier", "option"));
    }
    QFile original(file);
    QVERIFY(original.open(QIODevice::ReadOnly));
    const QByteArray before = original.readAll();
    original.close();

    UserDefaults d(file);
    test::ReadOnlyFolder readOnly(path("ro"));
    if (!readOnly.isReadOnly())
        QSKIP(qPrintable(readOnly.reason()));
    QVERIFY(!d.setStringList("favorites.app", {"a", "b", "c"}));
    QVERIFY(!d.remove("triggerModifier"));
    QVERIFY(!d.setBool("glassyBackground", false));
    // Reads show the stored state, not the failed change.
    QCOMPARE(d.stringList("favorites.app"), (QStringList{"a", "b"}));
    QCOMPARE(d.string("triggerModifier"), QStringLiteral("option"));
    QVERIFY(!d.boolValue("glassyBackground").has_value());
    QVERIFY(original.open(QIODevice::ReadOnly));
    QCOMPARE(original.readAll(), before);
}

void TestUserDefaults::fileWithAFormatErrorIsSetAsideAndWritesWork()
{
    // Found by fuzz_settings: a line without "=" is a format error, and QSettings then refuses
    // to write the file again, so every settings change and favourite failed.
    const QString file = path("broken.conf");
    const QByteArray bytes("[General]\ntriggerKey=option\nlaunchedBefore!true\nholdDelay=1.25\n");
    writeFile(file, bytes);
    QTest::ignoreMessage(QtCriticalMsg,
                         QRegularExpression("settings: .*broken.conf has a format error; kept as "
                                            ".*broken.conf.corrupt, \\d+ readable values"));
    {
        UserDefaults d(file);
        QCOMPARE(d.string("triggerKey"), QStringLiteral("option"));
        QVERIFY(d.setBool("glassyBackground", false));
        QCOMPARE(d.boolValue("glassyBackground"), false);
    }
    // The user's file is kept byte for byte; the new one holds what was readable and the write.
    QFile kept(file + ".corrupt");
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), bytes);
    UserDefaults reopened(file);
    QCOMPARE(reopened.string("triggerKey"), QStringLiteral("option"));
    QCOMPARE(reopened.boolValue("glassyBackground"), false);

    // A second broken file does not replace the first one kept.
    writeFile(file, bytes);
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("kept as .*broken.conf.corrupt.1,"));
    UserDefaults again(file);
    QVERIFY(QFileInfo::exists(file + ".corrupt.1"));
}

void TestUserDefaults::arbitraryBytesNeverCrash()
{
    QRandomGenerator random(20261123);
    for (int round = 0; round < 300; ++round) {
        QByteArray bytes;
        const int n = random.bounded(400);
        for (int i = 0; i < n; ++i) {
            static const char alphabet[] = "[]=\n\r\\\"@,;#k0.1-e+truefalse\x00\xff\x1f ";
            bytes += random.bounded(3) ? alphabet[random.bounded(int(sizeof alphabet - 1))]
                                       : char(random.bounded(256));
        }
        const QString file = path(QStringLiteral("fuzz-%1.conf").arg(round));
        writeFile(file, bytes);
        UserDefaults d(file);
        d.registerDefaults({{"k", 0.5}});
        QVERIFY(d.doubleValue("k").has_value()); // a stored value or the registered default
        (void)d.string("k");
        (void)d.boolValue("k");
        (void)d.integer("k");
        (void)d.date("k");
        (void)d.stringList("k");
    }
}

QTEST_GUILESS_MAIN(TestUserDefaults)
#include "tst_userdefaults.moc"
