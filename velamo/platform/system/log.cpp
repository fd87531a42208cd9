#include "velamo/platform/system/log.h"

#include <syslog.h>

namespace velamo {

void logToSystem(const std::string& line) noexcept {
    syslog(LOG_USER | LOG_NOTICE, "velamo: %s", line.c_str());
}

}  // namespace velamo
