#pragma once

#include <string>

namespace velamo {

/// One diagnostic line in the system's log.
void logToSystem(const std::string& line) noexcept;

}  // namespace velamo
