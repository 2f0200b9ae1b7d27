#include "QuitOnSignals.h"

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QSocketNotifier>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace corvane {

namespace {

Q_LOGGING_CATEGORY(lcSignals, "com.vantorel.corvane.app")

constexpr int handledSignals[] = {SIGTERM, SIGINT, SIGHUP};

// The pipe's ends: the handler writes, the event loop reads.
int pipeEnds[2] = {-1, -1};

extern "C" void onSignal(int number)
{
    const int saved = errno;
    const char byte = static_cast<char>(number);
    // A full pipe already holds a request to quit; nothing is lost by dropping this one.
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], &byte, 1);
    errno = saved;
}

void setHandler(int number, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    // Once: should the quit hang, the same signal again ends the process the default way.
    action.sa_flags = SA_RESTART | SA_RESETHAND;
    sigaction(number, &action, nullptr);
}

} // namespace

QuitOnSignals::QuitOnSignals(QObject* parent) : QObject(parent)
{
    if (pipeEnds[0] != -1) {
        qCWarning(lcSignals, "quit signals: handlers already installed");
        return;
    }
    if (::pipe2(pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        qCWarning(lcSignals, "quit signals: no pipe (%s); SIGTERM ends Corvane at once",
                  std::strerror(errno));
        pipeEnds[0] = pipeEnds[1] = -1;
        return;
    }
    m_notifier = new QSocketNotifier(pipeEnds[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &QuitOnSignals::readSignal);
    for (const int number : handledSignals)
        setHandler(number, onSignal);
}

QuitOnSignals::~QuitOnSignals()
{
    if (!m_notifier)
        return;
    // A signal from here on ends the process the default way.
    for (const int number : handledSignals)
        setHandler(number, SIG_DFL);
    ::close(pipeEnds[0]);
    ::close(pipeEnds[1]);
    pipeEnds[0] = pipeEnds[1] = -1;
}

void QuitOnSignals::readSignal()
{
    char byte = 0;
    while (::read(pipeEnds[0], &byte, 1) == 1)
        qCInfo(lcSignals, "quitting: SIG%s received",
               sigabbrev_np(static_cast<unsigned char>(byte)));
    QCoreApplication::quit();
}

} // namespace corvane
