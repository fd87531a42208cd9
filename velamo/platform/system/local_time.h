#pragma once

#include <string>

namespace velamo {

/// The date and time of now where the user is, as 14 digits in the order year, month, day, hour, minute, second:
/// "20260131235959". The calendar is the Gregorian one and the digits are ASCII whatever the user's language.
[[nodiscard]] std::string localTimeText();

}  // namespace velamo
