#include "velamo/model/thread_codes.h"

#include <gtest/gtest.h>

#include <limits>

#include "velamo/model/design.h"

namespace velamo {
namespace {

using CodeMap = std::map<std::int32_t, std::string>;

/// The Janome chart: a few entries of their own at either end, and a run that counts up between them.
CodeMap janomeChart() {
    CodeMap chart{{0, "x9"},   {1, "002"},  {2, "001"},  {3, "204"},  {4, "203"},  {5, "219"},
                  {6, "226"},  {7, "217"},  {8, "208"},  {9, "201"},  {10, "225"}, {11, "214"},
                  {12, "207"}, {13, "003"}, {14, "205"}, {15, "209"}, {16, "210"}, {17, "211"},
                  {18, "212"}, {19, "213"}, {20, "215"}, {21, "216"}, {22, "218"}, {23, "220"},
                  {24, "221"}, {74, "202"}, {75, "206"}, {76, "222"}, {77, "223"}, {78, "224"}};
    for (int index = 25; index <= 73; ++index) chart[index] = std::to_string(index + 202);
    return chart;
}

const CodeMap brotherChart{
    {1, "007"},  {17, "330"}, {33, "126"}, {49, "333"}, {2, "405"},  {18, "010"}, {34, "812"}, {50, "519"},
    {3, "534"},  {19, "704"}, {35, "348"}, {51, "107"}, {4, "070"},  {20, "900"}, {36, "339"}, {52, "017"},
    {5, "800"},  {21, "406"}, {37, "509"}, {53, "209"}, {6, "337"},  {22, "869"}, {38, "415"}, {54, "507"},
    {7, "620"},  {23, "707"}, {39, "817"}, {55, "614"}, {8, "810"},  {24, "058"}, {40, "399"}, {56, "515"},
    {9, "612"},  {25, "086"}, {41, "517"}, {57, "124"}, {10, "502"}, {26, "323"}, {42, "307"}, {58, "206"},
    {11, "214"}, {27, "079"}, {43, "085"}, {59, "420"}, {12, "208"}, {28, "030"}, {44, "808"}, {60, "202"},
    {13, "205"}, {29, "001"}, {45, "804"}, {61, "027"}, {14, "513"}, {30, "613"}, {46, "607"}, {62, "x9"},
    {15, "328"}, {31, "542"}, {47, "843"}, {63, "x8"},  {16, "005"}, {32, "019"}, {48, "807"}, {64, "x7"}};

const CodeMap brotherAliases{{66, "007"}, {67, "405"}, {69, "515"}, {71, "513"}, {75, "058"}, {79, "019"}, {92, "086"}};

using IndexToCode = std::optional<std::string_view> (*)(std::int64_t) noexcept;
/// The entries of a look-up, over all indices that a byte or a small number may hold.
CodeMap entriesOf(IndexToCode codeOfIndex) {
    CodeMap entries;
    for (int index = -300; index <= 300; ++index)
        if (const auto code = codeOfIndex(index)) entries.emplace(index, *code);
    return entries;
}

constexpr std::int64_t largestIndex = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallestIndex = std::numeric_limits<std::int64_t>::min();

TEST(JanomeCodes, AreThoseOfTheChart) {
    const CodeMap chart = janomeChart();
    EXPECT_EQ(chart.size(), 79U);
    EXPECT_EQ(VLMDesign::janomeColorCodes(), chart);
    EXPECT_EQ(entriesOf(janomeCodeOfIndex), chart);
}

TEST(JanomeCodes, OfOtherIndicesAreNone) {
    for (const std::int64_t index :
         {std::int64_t{79}, std::int64_t{-1}, std::int64_t{0x100000001}, largestIndex, smallestIndex})
        EXPECT_EQ(janomeCodeOfIndex(index), std::nullopt) << index;
}

TEST(JanomeCodes, AreUniqueAndLeadBack) {
    for (const auto& [index, code] : janomeChart()) EXPECT_EQ(janomeIndexOfCode(code), index) << code;
    EXPECT_EQ(janomeIndexOfCode("220"), 23);
    EXPECT_EQ(janomeIndexOfCode("227"), 25);
    EXPECT_EQ(janomeIndexOfCode("x9"), 0);
    for (const char* code : {"", "0", "000", "276", "999", "22", "2200", "X9", "x8"})
        EXPECT_EQ(janomeIndexOfCode(code), std::nullopt) << code;
}

TEST(BrotherCodes, AreThoseOfTheChart) {
    EXPECT_EQ(brotherChart.size(), 64U);
    EXPECT_EQ(VLMDesign::brotherColorCodes(), brotherChart);
}

TEST(BrotherCodes, AreReadUnderSevenFurtherIndices) {
    CodeMap readChart = brotherChart;
    readChart.insert(brotherAliases.begin(), brotherAliases.end());
    EXPECT_EQ(readChart.size(), 71U);
    EXPECT_EQ(VLMDesign::brotherReadColorCodes(), readChart);
    EXPECT_EQ(entriesOf(brotherCodeOfIndex), readChart);
    EXPECT_EQ(brotherCodeOfIndex(16), "005");
    EXPECT_EQ(brotherCodeOfIndex(66), "007");
    EXPECT_EQ(brotherCodeOfIndex(0), std::nullopt);
    EXPECT_EQ(brotherCodeOfIndex(65), std::nullopt);
    for (const std::int64_t index : {std::int64_t{256 + 16}, std::int64_t{0x100000010}, largestIndex, smallestIndex})
        EXPECT_EQ(brotherCodeOfIndex(index), std::nullopt) << index;
}

TEST(BrotherCodes, AreUniqueAndNeverWrittenAsAnAlias) {
    for (const auto& [index, code] : brotherChart) EXPECT_EQ(brotherIndexOfCode(code), index) << code;
    EXPECT_EQ(brotherIndexOfCode("007"), 1);
    EXPECT_EQ(brotherIndexOfCode("x7"), 64);
    EXPECT_EQ(brotherIndexOfCode("x8"), 63);
    EXPECT_EQ(brotherIndexOfCode("x9"), 62);
    for (const char* code : {"", "0", "000", "999", "00", "0050", "X9"})
        EXPECT_EQ(brotherIndexOfCode(code), std::nullopt) << code;
}

}  // namespace
}  // namespace velamo
