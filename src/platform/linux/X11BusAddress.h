#pragma once

// The accessibility bus's address on the root window (AT_SPI_BUS), where Qt applications look
// first. The bus launcher publishes it when it starts with a display; started without one (by the
// user's service manager, before the display was known) it does not, and a Qt 5 application then
// learns of the bus only from two session-bus replies whose order varies. When the status comes
// first it registers on a connection that is not open yet, is never listed by the registry and
// publishes nothing until it restarts (measured: featherpad in 5 of 6 starts). With the address
// on the root window it connects before anything else, every time.
//
// Corvane fills the gap while accessibility is on: it publishes the address when the root window
// carries none, and withdraws what it published when the bus goes away, accessibility is switched
// off or Corvane quits. An address somebody else published is never touched. Main thread; uses the
// X connection of the Qt application.

#include <QObject>
#include <QString>
#include <optional>

namespace corvane {

class X11BusAddress : public QObject {
    Q_OBJECT

public:
    explicit X11BusAddress(QObject* parent = nullptr);
    ~X11BusAddress() override;

    // The root window's AT_SPI_BUS; absent when it has none or there is no X display.
    static std::optional<QString> published();
    // What Corvane published and still stands; empty when it published nothing.
    QString ownAddress() const { return m_own; }

public Q_SLOTS:
    // The bus's address while accessibility is on, empty while it is off or the bus is gone.
    void follow(const QString& address);

private:
    void withdraw();

    QString m_own;
};

} // namespace corvane
