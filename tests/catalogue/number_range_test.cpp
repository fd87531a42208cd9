#include "catalogue/number_range.h"

#include <gtest/gtest.h>

#include <ostream>

namespace velamo {
namespace {

struct Row {
    const char* text;
    std::optional<NumberRange> range;
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << '"' << row.text << '"';
}
class Range : public testing::TestWithParam<Row> {};

TEST_P(Range, IsReadAsInTheRow) {
    EXPECT_EQ(parseRange(GetParam().text), GetParam().range) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Sound, Range,
                         testing::Values(Row{"50..100", NumberRange{50, 100}}, Row{"..100", NumberRange{{}, 100}},
                                         Row{"50..", NumberRange{50, {}}}, Row{"50", NumberRange{50, 50}},
                                         Row{"12.5", NumberRange{12.5, 12.5}}, Row{"1.25..3.5", NumberRange{1.25, 3.5}},
                                         Row{"..0.5", NumberRange{{}, 0.5}}, Row{".5...75", NumberRange{0.5, 0.75}},
                                         Row{"7..7", NumberRange{7, 7}}, Row{"0..0", NumberRange{0, 0}}));

INSTANTIATE_TEST_SUITE_P(Malformed, Range,
                         testing::Values(Row{"", {}}, Row{"..", {}}, Row{"abc", {}}, Row{"50-100", {}},
                                         Row{"50..abc", {}}, Row{"abc..100", {}}, Row{"100..50", {}}, Row{"-5", {}},
                                         Row{"-5..5", {}}, Row{"1e3", {}}, Row{"inf", {}}, Row{"nan..", {}},
                                         Row{"1,5", {}}, Row{" 50", {}}, Row{"50 ", {}}, Row{"50mm", {}},
                                         Row{"1..2..3", {}}, Row{"50....", {}}, Row{".", {}}, Row{"+5", {}}));

}  // namespace
}  // namespace velamo
