#pragma once

// Counts the X server's bells (XkbBellNotify), which is how a test hears QApplication::beep()
// of another process.

#include <QtGlobal>

typedef struct _XDisplay Display;

namespace corvane::test {

class XBellCounter {
public:
    XBellCounter();
    ~XBellCounter();
    XBellCounter(const XBellCounter&) = delete;
    XBellCounter& operator=(const XBellCounter&) = delete;

    bool isAvailable() const { return m_display != nullptr; }
    // Bells rung since this counter was made.
    int count();

private:
    Display* m_display = nullptr;
    int m_eventBase = 0;
    int m_count = 0;
};

} // namespace corvane::test
