#include "app/AppLog.h"

namespace corvane {
Q_LOGGING_CATEGORY(lcApp, "com.vantorel.corvane.app")
} // namespace corvane
