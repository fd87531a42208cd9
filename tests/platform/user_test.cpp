#include "velamo/platform/system/user.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "tests/support/environment.h"

namespace velamo {
namespace {

using Variables = std::map<std::string, std::string>;

Environment environmentOf(const Variables& variables) {
    return [variables](const char* name) {
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional(found->second);
    };
}

struct LanguagesRow {
    const char* name;
    Variables variables;
    std::vector<std::string> languages;
};
class LanguagesOfUser : public testing::TestWithParam<LanguagesRow> {};
TEST_P(LanguagesOfUser, AreTheRow) {
    EXPECT_EQ(languagesOfUser(environmentOf(GetParam().variables)), GetParam().languages);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, LanguagesOfUser,
    testing::Values(
        LanguagesRow{"NoVariable", {}, {"en"}}, LanguagesRow{"Lang", {{"LANG", "de_DE.UTF-8"}}, {"de", "en"}},
        LanguagesRow{"EnglishOnce", {{"LANG", "en_GB.UTF-8"}}, {"en"}},
        LanguagesRow{"MessagesBeforeLang", {{"LANG", "fr_FR"}, {"LC_MESSAGES", "de_AT@euro"}}, {"de", "en"}},
        LanguagesRow{"AllBeforeMessages", {{"LC_ALL", "fr"}, {"LC_MESSAGES", "de"}}, {"fr", "en"}},
        LanguagesRow{"EmptyIsAsMissing", {{"LC_ALL", ""}, {"LC_MESSAGES", ""}, {"LANG", "de"}}, {"de", "en"}},
        LanguagesRow{"NumbersDoNotCount", {{"LC_NUMERIC", "de_DE"}, {"LANG", "fr_FR"}}, {"fr", "en"}},
        LanguagesRow{"List", {{"LANG", "de_DE"}, {"LANGUAGE", "pt_BR:fr::de:fr"}}, {"pt", "fr", "de", "en"}},
        LanguagesRow{"ListEndsInItsLocale", {{"LANG", "de_DE"}, {"LANGUAGE", "fr"}}, {"fr", "de", "en"}},
        LanguagesRow{"NoListInC", {{"LANG", "C"}, {"LANGUAGE", "de"}}, {"en"}},
        LanguagesRow{"NoListInPosix", {{"LC_ALL", "POSIX"}, {"LANGUAGE", "de"}}, {"en"}},
        LanguagesRow{"NoListInCWithCharset", {{"LC_ALL", "C.UTF-8"}, {"LANGUAGE", "de"}}, {"en"}},
        LanguagesRow{"NoListWithoutALocale", {{"LANGUAGE", "de"}}, {"en"}},
        LanguagesRow{"UpperCase", {{"LANG", "DE_de"}}, {"de", "en"}},
        LanguagesRow{"NoPath", {{"LANG", "../../etc"}, {"LANGUAGE", "/:..:d/:x"}}, {"en"}}),
    [](const auto& row) { return std::string(row.param.name); });

struct NumberLocaleRow {
    const char* name;
    Variables variables;
    std::string locale;
};
class NumberLocaleOfUser : public testing::TestWithParam<NumberLocaleRow> {};
TEST_P(NumberLocaleOfUser, IsTheRow) {
    EXPECT_EQ(numberLocaleOfUser(environmentOf(GetParam().variables)), GetParam().locale);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NumberLocaleOfUser,
    testing::Values(NumberLocaleRow{"NoVariable", {}, "en_US_POSIX"},
                    NumberLocaleRow{"Lang", {{"LANG", "de_DE.UTF-8"}}, "de_DE"},
                    NumberLocaleRow{"NumericBeforeLang", {{"LANG", "en_US"}, {"LC_NUMERIC", "de_CH.UTF-8"}}, "de_CH"},
                    NumberLocaleRow{"AllBeforeNumeric", {{"LC_ALL", "fr_FR"}, {"LC_NUMERIC", "de_DE"}}, "fr_FR"},
                    NumberLocaleRow{"MessagesDoNotCount", {{"LC_MESSAGES", "de_DE"}, {"LANG", "fr_FR"}}, "fr_FR"},
                    NumberLocaleRow{"C", {{"LC_ALL", "C"}, {"LANG", "de_DE"}}, "en_US_POSIX"},
                    NumberLocaleRow{"CWithCharset", {{"LC_ALL", "C.UTF-8"}}, "en_US_POSIX"},
                    NumberLocaleRow{"Posix", {{"LANG", "POSIX"}}, "en_US_POSIX"},
                    NumberLocaleRow{"Variant", {{"LANG", "de_DE@euro"}}, "de_DE"},
                    NumberLocaleRow{"NoName", {{"LANG", "../x"}}, "en_US_POSIX"},
                    NumberLocaleRow{"EndlessName", {{"LANG", std::string(100000, 'x')}}, "en_US_POSIX"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(HomeFolder, IsTheVariableElseThatOfTheUserDatabase) {
    {
        const test::Variable named("HOME", "/somewhere");
        EXPECT_EQ(homeFolder(), "/somewhere");
    }
    const test::Variable none("HOME", std::nullopt);
    EXPECT_TRUE(homeFolder().empty() || homeFolder().is_absolute());
}

}  // namespace
}  // namespace velamo
