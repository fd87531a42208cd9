#include "velamo/platform/system/local_time.h"

#include <array>
#include <ctime>

namespace velamo {

std::string localTimeText() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    constexpr std::size_t digitsAndEnd = 15;
    std::array<char, digitsAndEnd> text{};
    // These fields have ASCII digits in every locale; those of other calendars are asked for by other letters.
    return {text.data(), std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", &local)};
}

}  // namespace velamo
