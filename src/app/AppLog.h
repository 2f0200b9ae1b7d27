#pragma once

// The application shell's log category, "com.vantorel.corvane.app" (startup, launch
// announcements, tray, translations).

#include <QLoggingCategory>

namespace corvane {
Q_DECLARE_LOGGING_CATEGORY(lcApp)
} // namespace corvane
