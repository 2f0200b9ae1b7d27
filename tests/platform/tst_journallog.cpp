// The log reaches the journal through journald's native protocol: a real datagram socket stands
// in for /run/systemd/journal/socket, and what arrives is decoded as journald decodes it.

#include "platform/linux/JournalLog.h"

#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace corvane;

Q_LOGGING_CATEGORY(lcTest, "com.vantorel.corvane.test")

namespace {

// Decodes one native-protocol datagram into its fields.
QMap<QByteArray, QByteArray> decode(const QByteArray& datagram)
{
    QMap<QByteArray, QByteArray> fields;
    qsizetype at = 0;
    while (at < datagram.size()) {
        const qsizetype end = datagram.indexOf('\n', at);
        const QByteArray line = datagram.mid(at, end - at);
        const qsizetype equals = line.indexOf('=');
        if (equals >= 0) {
            fields.insert(line.left(equals), line.mid(equals + 1));
            at = end + 1;
        } else { // binary: KEY \n length(8, LE) value \n
            const quint64 length = qFromLittleEndian<quint64>(datagram.constData() + end + 1);
            fields.insert(line, datagram.mid(end + 9, qsizetype(length)));
            at = end + 9 + qsizetype(length) + 1;
        }
    }
    return fields;
}

} // namespace

class TestJournalLog : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void noJournalKeepsStderr();
    void entriesArriveWithTheirFields();
};

void TestJournalLog::noJournalKeepsStderr()
{
    QTemporaryDir dir;
    QVERIFY(!JournalLog::install(dir.filePath(QStringLiteral("no-journal"))));
}

void TestJournalLog::entriesArriveWithTheirFields()
{
    QTemporaryDir dir;
    const QByteArray path = dir.filePath(QStringLiteral("socket")).toLocal8Bit();
    const int journal = ::socket(AF_UNIX, SOCK_DGRAM, 0);
    QVERIFY(journal >= 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path.cbegin(), path.cend(), address.sun_path);
    QCOMPARE(::bind(journal, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

    QVERIFY(JournalLog::install(QString::fromLocal8Bit(path)));
    qCInfo(lcTest, "crawl: %s finished", "geany");
    qCCritical(lcTest, "two\nlines");
    qInstallMessageHandler(nullptr);

    char buffer[4096];
    const ssize_t first = ::recv(journal, buffer, sizeof buffer, MSG_DONTWAIT);
    QVERIFY(first > 0);
    auto fields = decode(QByteArray(buffer, int(first)));
    QCOMPARE(fields.value("MESSAGE"), QByteArray("crawl: geany finished"));
    QCOMPARE(fields.value("PRIORITY"), QByteArray("6"));
    QCOMPARE(fields.value("SYSLOG_IDENTIFIER"), QByteArray("corvane"));
    QCOMPARE(fields.value("QT_CATEGORY"), QByteArray("com.vantorel.corvane.test"));

    const ssize_t second = ::recv(journal, buffer, sizeof buffer, MSG_DONTWAIT);
    QVERIFY(second > 0);
    fields = decode(QByteArray(buffer, int(second)));
    QCOMPARE(fields.value("MESSAGE"), QByteArray("two\nlines"));
    QCOMPARE(fields.value("PRIORITY"), QByteArray("3"));
    ::close(journal);
}

QTEST_GUILESS_MAIN(TestJournalLog)
#include "tst_journallog.moc"
