#include <gtest/gtest.h>

#include <cmath>
#include <ostream>

#include "tests/cli/support.h"
#include "tests/support/environment.h"

namespace velamo {
namespace {

using test::call;

struct Row {
    std::vector<std::string> arguments;
    const char* printed;
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << testing::PrintToString(row.arguments);
}
class Length : public testing::TestWithParam<Row> {};

TEST_P(Length, IsPrintedAsInTheRow) {
    const auto outcome = call(GetParam().arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, std::string(GetParam().printed) + "\n");
    EXPECT_EQ(outcome.problems, "");
}

INSTANTIATE_TEST_SUITE_P(Format, Length,
                         testing::Values(Row{{"format-length", "--unit", "0", "12.34"}, "12.3 mm"},
                                         Row{{"format-length", "--unit", "1", "25.4"}, "1.00\""},
                                         Row{{"format-length", "--unit", "2", "3.175"}, "1/8\""},
                                         Row{{"format-length", "--unit", "2", "25.4"}, "1\""},
                                         Row{{"format-length", "--unit", "2", "38.1"}, "1 15/32\""},
                                         Row{{"format-length", "12.7", "--unit", "2"}, "1/2\""},
                                         Row{{"format-length", "-12.7", "--unit", "2"}, "-1/2\""},
                                         Row{{"format-length", "--unit=2", "--", "-12.7"}, "-1/2\""},
                                         Row{{"format-length", "--unit", "2", "0"}, "0\""}));

INSTANTIATE_TEST_SUITE_P(Parse, Length,
                         testing::Values(Row{{"parse-length", "--unit", "0", "12 mm"}, "12"},
                                         Row{{"parse-length", "--unit", "0", "2 in"}, "50.8"},
                                         Row{{"parse-length", "--unit", "2", "1 1/2"}, "38.099999999999994"},
                                         Row{{"parse-length", "-1 1/2", "--unit", "0"}, "-1.5"},
                                         Row{{"parse-length", "--unit", "0", "3/"}, "3"},
                                         Row{{"parse-length", "--unit", "0", "12.5"}, "12.5"},
                                         Row{{"parse-length", "--unit", "0", "1 15/32\""}, "37.30625"},
                                         Row{{"parse-length", "--unit", "0", "1/2\" "}, "12.7"},
                                         Row{{"parse-length", "--unit", "0", " 1 \t 1/2\""}, "38.099999999999994"},
                                         Row{{"parse-length", "--unit", "0", "1/2 in"}, "12.7"},
                                         Row{{"parse-length", "--unit", "2", "1 1/2 mm"}, "1.5"},
                                         Row{{"parse-length", "--unit", "2", "3/"}, "76.19999999999999"},
                                         Row{{"parse-length", "--unit", "0", "2 in wide"}, "50.8"},
                                         Row{{"format-length", "--unit", "2", "0.39"}, "\""},
                                         Row{{"parse-length", "--unit", "2", "\""}, "0"},
                                         Row{{"parse-length", "--unit", "0", "0 mm"}, "0"}));

class NoLength : public testing::TestWithParam<const char*> {};
TEST_P(NoLength, IsAFailure) {
    const auto outcome = call({"parse-length", "--unit", "2", "--", GetParam()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.problems, "velamo: '" + std::string(GetParam()) + "': There is no number in this. (error 22)\n");
}
INSTANTIATE_TEST_SUITE_P(Rows, NoLength,
                         testing::Values("", " ", "mm", "in", "rose", "rose 5", "/", "/2", "a/2", "1 a/2", "1/a", "1/0",
                                         "1/0\"", "0/0", "\xFF"));

struct RoundTrip {
    const char* locale;
    std::vector<const char*> lengths;
};
void PrintTo(const RoundTrip& row, std::ostream* out) {
    *out << row.locale;
}
class RoundTrips : public testing::TestWithParam<RoundTrip> {};
TEST_P(RoundTrips, GiveTheTextAgain) {
    const test::Variable locale("LC_ALL", GetParam().locale);
    for (const char* unit : {"0", "1", "2"}) {
        for (const char* length : GetParam().lengths) {
            const std::string text = call({"format-length", "--unit", unit, "--", length}).out;
            const std::string written = text.substr(0, text.size() - 1);
            // What is printed names its unit: no other unit may change it.
            const auto parsed = call({"parse-length", "--unit", unit[0] == '0' ? "1" : "0", "--", written});
            EXPECT_EQ(parsed.status, 0) << written << parsed.problems;
            const std::string millimetres = parsed.out.substr(0, parsed.out.size() - 1);
            // Lengths are cut to 32nds of an inch: what was read lies on the edge of one.
            const double read = std::stod(millimetres);
            const std::string inside =
                unit[0] == '2' && read != 0 ? std::to_string(read + std::copysign(0.05, read)) : millimetres;
            EXPECT_EQ(call({"format-length", "--unit", unit, "--", inside}).out, text) << length;
        }
    }
}
INSTANTIATE_TEST_SUITE_P(
    Locales, RoundTrips,
    testing::Values(RoundTrip{"en_US.UTF-8", {"0", "12.34", "38.1", "-38.1", "1234.5", "-1234567", "0.8", "-12.7"}},
                    RoundTrip{"de_DE.UTF-8", {"0", "12.34", "38.1", "-38.1", "1234.5", "-1234567", "0.8", "-12.7"}}),
    [](const auto& row) { return std::string(row.param.locale).substr(0, 2); });

}  // namespace
}  // namespace velamo
