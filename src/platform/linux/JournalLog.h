#pragma once

// The log's destination: the systemd journal when running in a user session that has one, stderr
// otherwise. Messages go to journald's native socket as one datagram each, with SYSLOG_IDENTIFIER
// "corvane" (`journalctl --user -t corvane`), the priority of their level and the category in
// QT_CATEGORY. Started from a terminal, lines go to the terminal as well.

#include <QByteArray>
#include <QString>
#include <QtGlobal>

namespace corvane::JournalLog {

inline const QString defaultSocket = QStringLiteral("/run/systemd/journal/socket");

// Installs the message handler when `socketPath` accepts datagrams; false (and Qt's default
// handler, stderr, kept) otherwise.
bool install(const QString& socketPath = defaultSocket);

// Qt's accessibility bridge holds each key typed into Corvane's own windows until the
// accessibility registry has passed it to every keystroke listener, Corvane's own among them, and
// warns in its own words when that takes over 100 ms, then delivers the key all the same. This
// rewords that warning as an info line of Corvane's keys category, on top of whichever handler
// is installed.
void rewordToolkitNotices();

// One journal entry in the native protocol (fields with a line break in the binary form).
QByteArray entry(QtMsgType type, const QMessageLogContext& context, const QString& message);

} // namespace corvane::JournalLog
