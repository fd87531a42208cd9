#include "velamo/platform/system/local_time.h"

#include <gtest/gtest.h>

#include <clocale>
#include <ctime>

#include "tests/support/environment.h"

namespace velamo {
namespace {

/// Sets the time zone for one test.
class Zone {
public:
    explicit Zone(const char* zone) : variable_("TZ", zone) { ::tzset(); }

private:
    struct Refresh {
        ~Refresh() { ::tzset(); }
    };
    Refresh refresh_;  // first, so that it acts when the variable is what it was
    test::Variable variable_;
};

std::tm fieldsOf(const std::string& text) {
    std::tm fields{};
    fields.tm_isdst = -1;
    EXPECT_EQ(std::sscanf(text.c_str(), "%4d%2d%2d%2d%2d%2d", &fields.tm_year, &fields.tm_mon, &fields.tm_mday,
                          &fields.tm_hour, &fields.tm_min, &fields.tm_sec),
              6);
    fields.tm_year -= 1900;
    fields.tm_mon -= 1;
    return fields;
}

TEST(LocalTime, IsNowInFourteenDigits) {
    const std::time_t before = std::time(nullptr);
    const std::string text = localTimeText();
    EXPECT_EQ(text.size(), 14U);
    EXPECT_EQ(text.find_first_not_of("0123456789"), std::string::npos) << text;
    std::tm fields = fieldsOf(text);
    const std::time_t said = std::mktime(&fields);
    EXPECT_GE(said, before);
    EXPECT_LE(said, std::time(nullptr));
}

TEST(LocalTime, IsThatOfTheUsersZone) {
    const Zone zone("VLM-13");
    const std::string here = localTimeText();
    const std::time_t now = std::time(nullptr);
    std::tm fields = fieldsOf(here);
    const auto offset = static_cast<double>(::timegm(&fields) - now);
    EXPECT_NEAR(offset, 13 * 3600, 2);
}

TEST(LocalTime, KeepsItsDigitsInOtherLanguages) {
    for (const char* locale : {"fa_IR.UTF-8", "ar_EG.UTF-8", "th_TH.UTF-8", "ja_JP.UTF-8"}) {
        std::setlocale(LC_ALL, locale);  // where the machine knows it
        const std::string text = localTimeText();
        std::setlocale(LC_ALL, "C");
        EXPECT_EQ(text.size(), 14U) << locale;
        EXPECT_EQ(text.substr(0, 2), "20") << locale;
    }
}

}  // namespace
}  // namespace velamo
