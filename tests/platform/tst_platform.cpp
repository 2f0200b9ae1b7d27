// The platform layer without a display: the settings store (typed reads in which missing or
// mistyped values read as absent, registered defaults never written, writes that lose nothing on
// failure), the log's way to the journal, application identities from desktop entries, which bus
// of an application's own is used, and how both toolkits' key repeats fold into one held key.

#include "ReadOnlyFolder.h"
#include "platform/UserDefaults.h"
#include "platform/linux/AppIdentity.h"
#include "platform/linux/AtspiClient.h"
#include "platform/linux/JournalLog.h"
#include "platform/linux/KeyFolding.h"
#include "trigger/ModifierFlags.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace corvane;

Q_LOGGING_CATEGORY(lcTest, "com.vantorel.corvane.test")

class TestPlatform : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void roundTripsAndDefaults()
    {
        const QString file =
            m_dir.filePath("not/yet/there/corvane.conf"); // made on the first write
        const QDateTime when(QDate(2026, 11, 23), QTime(9, 30, 15, 250), QTimeZone::utc());
        {
            UserDefaults d(file);
            d.registerDefaults({{"holdDelay", 0.85}, {"glassy", true}});
            QCOMPARE(d.doubleValue("holdDelay"), 0.85);
            QVERIFY(d.setString("s", "Éd, \"quoted\" ▸ 日本 @x"));
            QVERIFY(d.setDouble("holdDelay", 1.25));
            QVERIFY(d.setInteger("i", -9223372036854775807LL));
            QVERIFY(d.setDate("t", when));
            QVERIFY(d.setStringList("one", {QStringLiteral("Edit\x1f"
                                                           "Copy")}));
            QVERIFY(d.setStringList("l", {"File\x1fOpen#1", "a, b"}));
        }
        UserDefaults d(file); // a fresh reader of the same file
        QCOMPARE(d.string("s"), "Éd, \"quoted\" ▸ 日本 @x");
        QCOMPARE(d.doubleValue("holdDelay"), 1.25);
        QCOMPARE(d.integer("i"), -9223372036854775807LL);
        QCOMPARE(d.date("t"), when);
        QCOMPARE(d.stringList("one"), QStringList{QStringLiteral("Edit\x1f"
                                                                 "Copy")});
        QCOMPARE(d.stringList("l"), (QStringList{"File\x1fOpen#1", "a, b"}));
        QVERIFY(!d.stringList("s")); // a string is not a list
        d.registerDefaults({{"holdDelay", 0.85}});
        QVERIFY(d.remove("holdDelay"));
        QCOMPARE(d.doubleValue("holdDelay"), 0.85); // the registered default again…
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QVERIFY(!f.readAll().contains("holdDelay")); // …never written
    }

    void mistypedValuesReadAsAbsent_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("type");
        QTest::newRow("double from bool") << QByteArray("k=true") << "double";
        QTest::newRow("double nan") << QByteArray("k=nan") << "double";
        QTest::newRow("bool from number") << QByteArray("k=1") << "bool";
        QTest::newRow("integer from double") << QByteArray("k=1.5") << "integer";
        QTest::newRow("integer overflow") << QByteArray("k=9223372036854775808") << "integer";
        QTest::newRow("date from text") << QByteArray("k=yesterday") << "date";
        QTest::newRow("list from string") << QByteArray("k=Edit") << "list";
        QTest::newRow("list of numbers") << QByteArray("k=\"[1,2]\"") << "list";
        QTest::newRow("string from list") << QByteArray("k=a, b") << "string";
        QTest::newRow("string from variant")
            << QByteArray("k=@Variant(\\0\\0\\0\\x7f)") << "string";
        QTest::newRow("bool from text") << QByteArray("k=maybe") << "bool";
    }

    void mistypedValuesReadAsAbsent()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, type);
        UserDefaults d(write(QStringLiteral("typed-%1.conf").arg(QTest::currentDataTag()),
                             "[General]\n" + line + "\n"));
        const QHash<QString, std::function<bool()>> present{
            {"double", [&] { return d.doubleValue("k").has_value(); }},
            {"bool", [&] { return d.boolValue("k").has_value(); }},
            {"integer", [&] { return d.integer("k").has_value(); }},
            {"date", [&] { return d.date("k").has_value(); }},
            {"list", [&] { return d.stringList("k").has_value(); }},
            {"string", [&] { return d.string("k").has_value(); }}};
        QVERIFY(!present[type]());
    }

    void unwritableFileLosesNothing()
    {
        QDir(m_dir.path()).mkpath("ro");
        const QString file = m_dir.filePath("ro/corvane.conf");
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
        {
            test::ReadOnlyFolder readOnly(m_dir.filePath("ro"));
            QVERIFY2(readOnly.isReadOnly(), qPrintable(readOnly.reason()));
            QVERIFY(!d.setStringList("favorites.app", {"a", "b", "c"}));
            QVERIFY(!d.remove("triggerModifier"));
            QVERIFY(!d.setBool("glassyBackground", false));
            // Reads show what is stored, not the refused change.
            QCOMPARE(d.stringList("favorites.app"), (QStringList{"a", "b"}));
            QCOMPARE(d.string("triggerModifier"), "option");
            QVERIFY(!d.boolValue("glassyBackground"));
            QVERIFY(original.open(QIODevice::ReadOnly));
            QCOMPARE(original.readAll(), before);
        }
        // Writable again: the next change is stored, with everything stored before.
        QVERIFY(d.setBool("glassyBackground", false));
        UserDefaults reread(file);
        QCOMPARE(reread.boolValue("glassyBackground"), false);
        QCOMPARE(reread.stringList("favorites.app"), (QStringList{"a", "b"}));
    }

    void fileWithAFormatErrorIsSetAside()
    {
        // A line without "=" is a format error, after which QSettings would never write the file
        // again: every settings change and favourite would fail.
        const QByteArray bytes("[General]\ntriggerKey=option\nlaunchedBefore!true\n");
        const QString file = write("broken.conf", bytes);
        QTest::ignoreMessage(
            QtCriticalMsg, QRegularExpression("settings: .*broken.conf has a format error; kept as "
                                              ".*broken.conf.corrupt, \\d+ readable values"));
        {
            UserDefaults d(file);
            QCOMPARE(d.string("triggerKey"), "option");
            QVERIFY(d.setBool("glassyBackground", false));
        }
        QFile kept(file + ".corrupt"); // the user's file, byte for byte
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), bytes);
        QCOMPARE(UserDefaults(file).boolValue("glassyBackground"), false);
        write("broken.conf", bytes); // a second broken file does not replace the first one kept
        QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("kept as .*broken.conf.corrupt.1,"));
        UserDefaults again(file);
        QVERIFY(QFileInfo::exists(file + ".corrupt.1"));
    }

    void journal()
    {
        QVERIFY(!JournalLog::install(m_dir.filePath("no-journal"))); // stderr stays
        // A real datagram socket stands in for journald's; what arrives is decoded as journald
        // does.
        const QByteArray path = m_dir.filePath("socket").toLocal8Bit();
        const int journal = ::socket(AF_UNIX, SOCK_DGRAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::copy(path.cbegin(), path.cend(), address.sun_path);
        QCOMPARE(::bind(journal, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        QVERIFY(JournalLog::install(QString::fromLocal8Bit(path)));
        qCInfo(lcTest, "crawl: %s finished", "geany");
        qCCritical(lcTest, "two\nlines");
        // Qt's warning for a key its accessibility bridge held back, in Corvane's words.
        JournalLog::rewordToolkitNotices();
        qWarning() << "QSpiApplication::keyEventError "
                   << QStringLiteral("org.freedesktop.DBus.Error.NoReply")
                   << QStringLiteral("Late");
        qInstallMessageHandler(nullptr);
        const auto receive = [journal] {
            char buffer[4096];
            const ssize_t size = ::recv(journal, buffer, sizeof buffer, MSG_DONTWAIT);
            return QByteArray(buffer, int(std::max<ssize_t>(size, 0)));
        };
        QByteArray datagram = receive();
        for (const char* field :
             {"MESSAGE=crawl: geany finished\n", "PRIORITY=6\n", "SYSLOG_IDENTIFIER=corvane\n",
              "QT_CATEGORY=com.vantorel.corvane.test\n"})
            QVERIFY2(datagram.contains(field), datagram.constData());
        // A text with a line break is sent as a binary field: name, length (8 bytes, little
        // endian), the bytes.
        datagram = receive();
        QVERIFY(
            datagram.contains(QByteArray("MESSAGE\n\x09\0\0\0\0\0\0\0two\nlines\n", 8 + 8 + 10)));
        QVERIFY(datagram.contains("PRIORITY=3\n"));
        datagram = receive();
        QVERIFY2(datagram.contains("(org.freedesktop.DBus.Error.NoReply); it went on all the same\n"
                                   "PRIORITY=6\n") &&
                     datagram.contains("QT_CATEGORY=com.vantorel.corvane.keys\n"),
                 datagram.constData());
        ::close(journal);
    }

    void identity()
    {
        // An editor and its client program both claim the window class "Emacs"; a program that
        // other entries do not know; a desktop file a launcher set for its own process.
        QDir(m_dir.path()).mkpath("apps");
        QDir(m_dir.path()).mkpath("bin");
        const auto entry = [this](const char* id, const QByteArray& lines) {
            write(QStringLiteral("apps/%1.desktop").arg(id),
                  "[Desktop Entry]\nType=Application\nName=" + QByteArray(id) + "\n" + lines);
        };
        entry("aa-client", "StartupWMClass=Emacs\nExec=sh -c \"editor-client %F\"\n");
        entry("editor", "StartupWMClass=Emacs\nExec=editor %F\n");
        entry("geany", "Exec=geany %F\n");
        write("bin/editor", "#!/bin/sh\nexec sleep 30\n");
        QFile::setPermissions(m_dir.filePath("bin/editor"), QFile::ReadOwner | QFile::ExeOwner);
        qputenv("PATH", m_dir.filePath("bin").toUtf8() + ':' + qgetenv("PATH"));
        const DesktopEntries entries({m_dir.filePath("apps")});
        const QString editor = QFileInfo(m_dir.filePath("bin/editor")).canonicalFilePath();
        const AppIdentity::WindowHints emacs{{}, {}, "Emacs"};
        QCOMPARE(AppIdentity::resolve(1, emacs, entries, {}, editor).appId, "editor");
        QCOMPARE(AppIdentity::resolve(1, emacs, entries, {}, "/usr/bin/other").appId, "aa-client");
        // No window could be read: the program names it, through its entry or by its file name.
        QCOMPARE(AppIdentity::resolve(1, std::nullopt, entries, {}, editor).appId, "editor");
        QCOMPARE(AppIdentity::resolve(1, std::nullopt, entries, {}, "/usr/bin/unknown").appId,
                 "unknown");
        // A desktop file in the environment counts for the process its launcher started, not for
        // a child that inherited it.
        for (const char* pid : {"$$", "1"}) {
            QProcess launched;
            launched.start("sh",
                           {"-c", QStringLiteral("GIO_LAUNCHED_DESKTOP_FILE=%1 "
                                                 "GIO_LAUNCHED_DESKTOP_FILE_PID=%2 exec sleep 30")
                                      .arg(m_dir.filePath("apps/geany.desktop"), pid)});
            QVERIFY(launched.waitForStarted());
            QTest::qWait(200);
            const qint64 sleeper = launched.processId();
            QCOMPARE(AppIdentity::resolve(sleeper, std::nullopt, entries, {},
                                          AppIdentity::executableOf(sleeper))
                         .appId,
                     QString(pid) == u"1" ? "sleep" : "geany");
            launched.kill();
            launched.waitForFinished();
        }
    }

    // An application may name a bus of its own; Corvane talks to it directly only when it is one
    // local socket, never over the network, nor through a list that could fall back to it.
    void ownBusOfAnApplication()
    {
        for (const char* address :
             {"unix:path=/run/user/1000/at-spi2-x/socket", "unix:abstract=/tmp/dbus-QWERTY"})
            QVERIFY2(atspi::isLocalPeerAddress(address), address);
        for (const char* address :
             {"tcp:host=127.0.0.1,port=9", "unix:path=/run/s;tcp:host=127.0.0.1,port=9",
              "unix:path=relative/socket", "unix:tmpdir=/tmp", ""})
            QVERIFY2(!atspi::isLocalPeerAddress(address), address);
    }

    void keyRepeatsFold_data()
    {
        // Events as "+C@0" (press of Ctrl at 0 ms), "-C@40" (release), C = Ctrl, A = Alt, s = the
        // letter; then "advance@300". What the hold logic hears: "m:command" for a modifier change
        // (the flags after it), "k" for another key pressed.
        QTest::addColumn<QString>("events");
        QTest::addColumn<QString>("heard");
        QTest::newRow("a held Ctrl, GTK: repeated presses")
            << "+C@0 +C@600 +C@640 +C@680 -C@1500 advance@1600"
            << "m:command m:";
        QTest::newRow("a held Ctrl, Qt: release and press 20 ms apart")
            << "+C@0 -C@600 +C@620 -C@660 +C@680 -C@1500 advance@1600"
            << "m:command m:";
        QTest::newRow("a tap is a tap: the release counts once its window has passed")
            << "+C@0 -C@100 advance@159 advance@161"
            << "m:command m:";
        QTest::newRow("Ctrl+S: one key press, its repeats say nothing new")
            << "+C@0 +s@100 +s@700 -s@750 -C@800 advance@900"
            << "m:command k m:";
        QTest::newRow("Ctrl then Alt") << "+C@0 +A@50 -A@100 -C@120 advance@300"
                                       << "m:command m:command+option m:command m:";
        QTest::newRow("a release never pressed, and Num Lock, change nothing")
            << "-C@0 +N@10 -N@20 advance@200"
            << "";
    }

    void keyRepeatsFold()
    {
        QFETCH(QString, events);
        QFETCH(QString, heard);
        const QHash<QChar, unsigned long> keys{
            {u'C', 0xffe3}, {u'A', 0xffe9}, {u's', 's'}, {u'N', 0xff7f}};
        const auto start = KeyFolding::Clock::now();
        KeyFolding folding;
        QStringList said;
        for (const QString& event : events.split(u' ')) {
            const auto at = start + std::chrono::milliseconds(event.section(u'@', 1).toInt());
            const QList<KeyFolding::Change> changes =
                event.startsWith("advance") ? folding.advance(at)
                : event.startsWith(u'+')    ? folding.press(keys.value(event.at(1)), at)
                                            : folding.release(keys.value(event.at(1)), at);
            for (const KeyFolding::Change& change : changes) {
                if (change.kind == KeyFolding::Change::Kind::keyPress) {
                    said << "k";
                    continue;
                }
                QStringList names;
                if (change.flags & ModifierFlags::command)
                    names << "command";
                if (change.flags & ModifierFlags::option)
                    names << "option";
                said << "m:" + names.join(u'+');
            }
        }
        QCOMPARE(said.join(u' '), heard);
    }

private:
    QString write(const QString& name, const QByteArray& bytes)
    {
        QFile f(m_dir.filePath(name));
        if (!f.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(f.fileName()));
        f.write(bytes);
        return f.fileName();
    }

    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(TestPlatform)
#include "tst_platform.moc"
