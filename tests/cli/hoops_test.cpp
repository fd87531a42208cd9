#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/support.h"
#include "tests/support/environment.h"

namespace velamo {
namespace {

using test::call;
using testing::HasSubstr;

TEST(Hoops, AreListedInTheOrderOfTheCatalogue) {
    const auto outcome = call({"hoops"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, testing::StartsWith("Janome     1  C/FA/M3  50.0 mm x 50.0 mm\n"
                                                 "Janome     0  A  110.0 mm x 110.0 mm\n"));
    EXPECT_THAT(outcome.out, HasSubstr("Janome     8  T1  \u2300 34.0 mm  round, not chosen automatically\n"));
    EXPECT_THAT(outcome.out,
                HasSubstr("Janome     5  MA  200.0 mm x 280.0 mm  several positions, not chosen automatically\n"));
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 34);
}

TEST(Hoops, OfAVendorAreItsOwn) {
    EXPECT_EQ(call({"hoops", "--vendor", "Pfaff"}).out,
              "Pfaff      2  S  80.0 mm x 80.0 mm\nPfaff      3  L  120.0 mm x 115.0 mm\n");
    const auto json = call({"hoops", "--vendor", "Pfaff", "--json"}).json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(
        json[1].dump(),
        R"({"name":"L","vendor":"Pfaff","code":3,"width":120,"height":115,"isMultiHoop":false,"isRounded":false,"isWritable":true})");
}

TEST(Hoops, HaveTheDigitsOfOneLocaleInALine) {
    const test::Variable locale("LC_ALL", "ar_EG.UTF-8");
    EXPECT_EQ(call({"hoops", "--vendor", "Pfaff"}).out,
              "Pfaff      \u0662  S  \u0668\u0660\u066B\u0660 mm x \u0668\u0660\u066B\u0660 mm\n"
              "Pfaff      \u0663  L  \u0661\u0662\u0660\u066B\u0660 mm x \u0661\u0661\u0665\u066B\u0660 mm\n");
}

TEST(Hoops, OfAnUnknownVendorAreWrongUsage) {
    const auto outcome = call({"hoops", "--vendor", "Brother"});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.problems, HasSubstr("there are no hoops of 'Brother'; vendors are Janome and Pfaff"));
}

}  // namespace
}  // namespace velamo
