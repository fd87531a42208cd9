#include <gtest/gtest.h>

#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::call;

struct Row {
    std::vector<std::string> arguments;
    const char* printed;
};
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
                                         Row{{"parse-length", "--unit", "0", "1/0"}, "inf"},
                                         Row{{"parse-length", "--unit", "0", ""}, "0"},
                                         Row{{"parse-length", "--unit", "0", "12.5"}, "12.5"}));

}  // namespace
}  // namespace velamo
