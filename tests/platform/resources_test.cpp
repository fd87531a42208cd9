#include "velamo/platform/text/resources.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <set>
#include <system_error>
#include <thread>

#include "tests/support/environment.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/unreadable_file.h"
#include "velamo/platform/system/files.h"
#include "velamo/platform/text/string_table.h"
#include "velamo/platform/text/text.h"

namespace velamo {
namespace {

using namespace std::string_view_literals;
using test::TemporaryFolder;

StringTable shippedTable(const std::string& language, const std::string& table) {
    const Resources resources(resourceFolders(), {});
    const auto bytes = readWholeFile(resources.find(std::filesystem::path(language + ".lproj") / (table + ".strings")));
    return parseStringTable({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

std::set<std::string> keysOf(const StringTable& table) {
    std::set<std::string> keys;
    for (const auto& entry : table) keys.insert(entry.first);
    return keys;
}

struct ParsedRow {
    const char* name;
    std::string text;
    StringTable table;
};
class StringTableParsing : public testing::TestWithParam<ParsedRow> {};
TEST_P(StringTableParsing, GivesTheRow) {
    EXPECT_EQ(parseStringTable(GetParam().text), GetParam().table);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StringTableParsing,
    testing::Values(ParsedRow{"Nothing", "", {}}, ParsedRow{"Entry", "\"a\" = \"b\";", {{"a", "b"}}},
                    ParsedRow{"NoBlanks", "\"a\"=\"b\";\"c\"=\"d\";", {{"a", "b"}, {"c", "d"}}},
                    ParsedRow{
                        "Comments", "/* \"x\" = \"y\"; */ // \"u\" = \"v\";\n\"a\" /**/ = // =\n\"b\";", {{"a", "b"}}},
                    ParsedRow{"CommentMarksInsideATextAreText", "\"//\" = \"/* b */\";", {{"//", "/* b */"}}},
                    ParsedRow{"Escapes", R"("a\"" = "\\ \n \t \r \' \q";)", {{"a\"", "\\ \n \t \r ' q"}}},
                    ParsedRow{"Unicode", R"("a" = "\U0041\U00e9\U20AC";)", {{"a", "A\u00E9\u20AC"}}},
                    ParsedRow{"SurrogatePair", R"("a" = "\UD83E\UDDF5";)", {{"a", "\U0001F9F5"}}},
                    ParsedRow{"LoneHighSurrogate", R"("a" = "\UD83Ex";)", {{"a", "\uFFFDx"}}},
                    ParsedRow{"HighSurrogateBeforeAnother", R"("a" = "\UD83E\U0041";)", {{"a", "\uFFFD\u0041"}}},
                    ParsedRow{"LoneLowSurrogate", R"("a" = "\UDDF5";)", {{"a", "\uFFFD"}}},
                    ParsedRow{"ByteOrderMark", "\xEF\xBB\xBF\"a\" = \"b\";", {{"a", "b"}}},
                    ParsedRow{"WrongBytes", "\"a\" = \"\xFF\";", {{"a", "\uFFFD"}}},
                    ParsedRow{"RawLineBreak", "\"a\" = \"b\nc\";", {{"a", "b\nc"}}},
                    ParsedRow{"LaterEntryCounts", "\"a\" = \"b\"; \"a\" = \"c\";", {{"a", "c"}}},
                    ParsedRow{"MissingSemicolonEndsIt", "\"a\" = \"b\"; \"c\" = \"d\" \"e\" = \"f\";", {{"a", "b"}}},
                    ParsedRow{"MissingEqualsEndsIt", "\"a\" = \"b\"; \"c\" \"d\";", {{"a", "b"}}},
                    ParsedRow{"OpenTextEndsIt", "\"a\" = \"b\"; \"c\" = \"d;", {{"a", "b"}}},
                    ParsedRow{"OpenCommentEndsIt", "\"a\" = \"b\"; /* \"c\" = \"d\";", {{"a", "b"}}},
                    ParsedRow{"ShortUnicodeEndsIt", R"("a" = "b"; "c" = "\U41";)", {{"a", "b"}}},
                    ParsedRow{"SignedUnicodeEndsIt", R"("a" = "b"; "c" = "\U-041";)", {{"a", "b"}}},
                    ParsedRow{"BackslashAtTheEnd", "\"a\" = \"b\"; \"c\" = \"\\", {{"a", "b"}}},
                    ParsedRow{"NoTableAtAll", "bplist00\x01\x02", {}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(StringTableParsing, KeepsTheEntriesBeforeTheEndOfEveryPrefix) {
    const std::string text = R"("a" = "\"\UD83E\UDDF5"; /* c */ "b" = "d";)";
    const auto endOfFirst = text.find(';');
    for (std::size_t length = 0; length < text.size(); ++length) {
        EXPECT_EQ(parseStringTable(text.substr(0, length)).size(), length > endOfFirst ? 1U : 0U) << length;
    }
}

TEST(StringTableParsing, SurvivesMutations) {
    const std::string text = R"(/* c */ "a" = "\"\UD83E\UDDF5\\"; // e
        "b" = "d";)";
    std::mt19937 random(1);  // NOLINT(bugprone-random-generator-seed): the same texts on every run
    for (int round = 0; round < 5000; ++round) {
        std::string mutated = text;
        for (int change = 0; change < 3; ++change) mutated[random() % mutated.size()] = static_cast<char>(random());
        EXPECT_LE(parseStringTable(mutated).size(), 4U);
    }
}

TEST(Resources, TakeTheFirstLanguageThatHasTheKey) {
    const TemporaryFolder folder;
    folder.write("de.lproj/Texts.strings", "\"one\" = \"eins\";");
    folder.write("en.lproj/Texts.strings", "\"one\" = \"one\"; \"two\" = \"two\";");
    const Resources german({folder.path()}, {"fr", "de", "en"});
    EXPECT_EQ(german.text("one", "Texts", "-"), "eins");
    EXPECT_EQ(german.text("two", "Texts", "-"), "two");
    EXPECT_EQ(german.text("three", "Texts", "-"), "-");
    EXPECT_EQ(Resources({folder.path()}, {"en"}).text("one", "Texts", "-"), "one");
}

TEST(Resources, FallBackWhereATableIsMissingOrDamaged) {
    const TemporaryFolder folder;
    folder.write("en.lproj/Damaged.strings", "\"one\" = \"one\"; \"two\" = ");
    const Resources resources({folder.path()}, {"en"});
    EXPECT_EQ(resources.text("one", "Damaged", "-"), "one");
    EXPECT_EQ(resources.text("two", "Damaged", "-"), "-");
    EXPECT_EQ(resources.text("one", "Missing", "-"), "-");
}

/// Else names and colours would be lost, and stay so for the life of the process.
TEST(Resources, AreNotEmptyWhereTheyCannotBeReadThisTime) {
    if (!test::hasUnreadableFile()) GTEST_SKIP() << "no file here fails so";
    const TemporaryFolder folder;
    const auto table = folder.path() / "en.lproj/Texts.strings";
    std::filesystem::create_directory(table.parent_path());
    std::filesystem::create_symlink(test::unreadableFile, table);
    const Resources resources({folder.path()}, {"en"});
    EXPECT_THROW(static_cast<void>(resources.text("one", "Texts", "-")), std::system_error);
    std::filesystem::remove(table);
    folder.write("en.lproj/Texts.strings", "\"one\" = \"one\";");
    EXPECT_EQ(resources.text("one", "Texts", "-"), "one");
}

TEST(Resources, ReadNoTableOutsideTheirFolders) {
    const TemporaryFolder folder;
    folder.write("secret.strings", "\"one\" = \"one\";");
    folder.write("en.lproj/sub/Texts.strings", "\"one\" = \"one\";");
    const Resources resources({folder.path()}, {"en"});
    for (const std::string_view table : {"../secret"sv, "sub/Texts"sv, "/sub/Texts"sv, ""sv, "/"sv, "x\0y"sv}) {
        EXPECT_EQ(resources.text("one", table, "-"), "-") << table;
    }
}

TEST(Resources, KeepWhatTheyHaveRead) {
    const TemporaryFolder folder;
    folder.write("en.lproj/Texts.strings", "\"one\" = \"one\";");
    const Resources resources({folder.path()}, {"en"});
    EXPECT_EQ(resources.text("one", "Texts", "-"), "one");
    folder.write("en.lproj/Texts.strings", "\"one\" = \"changed\";");
    EXPECT_EQ(resources.text("one", "Texts", "-"), "one");
}

TEST(Resources, GiveOneAnswerToManyThreads) {
    const TemporaryFolder folder;
    folder.write("en.lproj/Texts.strings", "\"one\" = \"one\";");
    const Resources resources({folder.path()}, {"en"});
    std::vector<std::thread> threads;
    threads.reserve(8);
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&resources] {
            for (int round = 0; round < 500; ++round) EXPECT_EQ(resources.text("one", "Texts", "-"), "one");
        });
    }
    for (auto& thread : threads) thread.join();
}

TEST(Resources, FindRegularFilesInTheFirstFolderThatHasThem) {
    const TemporaryFolder first;
    const TemporaryFolder second;
    std::filesystem::create_directories(first.path() / "P.clr/P.clr");  // a folder is no resource
    second.write("P.clr/P.clr", "header");
    second.write("Q.clr/Q.clr", "header");
    first.write("Q.clr/Q.clr", "header");
    const Resources resources({first.path(), second.path()}, {});
    EXPECT_EQ(resources.find("P.clr/P.clr"), second.path() / "P.clr/P.clr");
    EXPECT_EQ(resources.find("Q.clr/Q.clr"), first.path() / "Q.clr/Q.clr");
    EXPECT_TRUE(resources.find("R.clr/R.clr").empty());
    EXPECT_TRUE(resources.find(second.path() / "P.clr/P.clr").empty());
    EXPECT_TRUE(resources.find("P.clr/../Q.clr/Q.clr").empty());
    EXPECT_TRUE(resources.find(std::string("Q.clr/Q.clr\0", 12)).empty());
}

TEST(Resources, LieBesideTheProgramAsInstallationsAndBundlesHaveThem) {
    EXPECT_THAT(resourceFoldersBeside("/usr/bin"), testing::Contains("/usr/share/velamo/resources"));
    EXPECT_THAT(resourceFoldersBeside("/usr/lib/machine"), testing::Contains("/usr/share/velamo/resources"));
    EXPECT_THAT(resourceFoldersBeside("/usr/lib/machine/velamo"), testing::Contains("/usr/share/velamo/resources"));
    EXPECT_THAT(resourceFoldersBeside("/x/V.mdimporter/Contents/MacOS"),
                testing::Contains("/x/V.mdimporter/Contents/Resources"));
    EXPECT_EQ(resourceFoldersBeside("/portable").front(), "/portable/resources");
}

TEST(Resources, OfTheEnvironmentComeFirst) {
    {
        const test::Variable named("VELAMO_RESOURCES", "/named");
        EXPECT_EQ(resourceFolders().front(), "/named");
    }
    const test::Variable none("VELAMO_RESOURCES", std::nullopt);
    EXPECT_NE(resourceFolders().front(), "/named");
}

struct Message {
    int code;
    const char* text;
};
const std::vector<Message> messages{
    {10, "Unknown file format (UTI)."},
    {11, "File holds no stitches."},
    {12, "File holds no threads."},
    {13, "Unable to export embroidery file (no threads found)."},
    {14, "Unable to export embroidery file (no stitches found)."},
    {20, "Unable to import JEF file (no meta data)."},
    {21, "Unable to import JEF file (no color codes)."},
    {23, "Unable to import JEF file (invalid offset)."},
    {24, "Unable to import JEF file (color changes)."},
    {32, "Unable to import PES file (PEC part missing)."},
    {33, "Unable to import PES file (PEC multiparts not supported by PES file version)."},
    {50, "Unsupported file format (UTI) for export."},
    {52, "Unable to export embroidery file (moves too large)."},
    {62, "Stitches ouside the current hoop."},
    {63, "Design exceeds all hoop sizes."},
    {70, "Unable to flip the design (invalid orientation)."},
    {71, "Unable to edit the design (moves too large)."},
    {72, "Unable to edit the design (too few threads)."},
    {73, "Unable to add basting (invalid length)."},
    {90, "Unable to read SEW: file size too small to hold any stitches."},
    {91, "Unable to read SEW: Number of colors invalid."},
    {100, "Unable to read EXP: file contains uneven number of bytes."},
    {110, "Unable to import DST file (missing LA: tag in header)."},
    {111, "Unable to import DST file (invalid function codes)."},
    {112, "Unable to import DST file (missing ST: tag in header)."},
    {113, "Unable to import DST file (missing CO: tag in header)."},
    {114, "Unable to import DST file (missing +X: tag in header)."},
    {115, "Unable to import DST file (missing -X: tag in header)."},
    {116, "Unable to import DST file (missing +Y: tag in header)."},
    {117, "Unable to import DST file (missing -Y: tag in header)."},
    {118, "Unable to import DST file (missing AX: tag in header)."},
    {119, "Unable to import DST file (missing AY: tag in header)."},
    {123, "Unable to import DST file (missing header)."},
    {130, "Unable to export DST file (invalid bounderies)."},
    {132, "Unable to export DST file (AX/AY values too large)."},
    {133, "Unable to export DST file (too many stitches)."},
    {134, "Unable to export DST file (too many color changes)."},
    {140, "color palette not found"},
    {150, "Unable to import VP3 file (missing header)."},
    {151, "Unable to import VP3 file (no stitch section)."},
    {152, "Unable to import VP3 file (no hoop data)."},
    {153, "Unable to import VP3 file (no colors)."},
    {154, "Unable to import VP3 file (file too small for offset)."},
    {160, "Unable to read PCx (file too small)"},
    {161, "Unable to read PCx (missing magic)"},
    {162, "Unable to read PCx (invalid type)"},
    {163, "Unable to read PCx (color palette > 16)"},
    {164, "Unable to read PCS (invalid color index)"},
    {165, "Unable to read PCx (invalid stitch position)"},
    {170, "Unable to read KSM (file too small)"},
    {171, "Unable to read KSM (invalid stich data)"},
    {180, "Unable to export PCS file (too many colors)."},
    {181, "Unable to export PCS file (too many stitches)."},
    {190, "Unable to import PEC segment (segment too small for attributes)."},
    {191, "Unable to import PEC segment (segment too small for bitmap pointer)."},
    {192, "Unable to import PEC segment (stitches not terminated)."},
    {200, "The design is larger than supported by PES v1.0."},
    {201, "The design needs to be centered."},
    {202, "Too many colors"},
    {203, "Too many stitches"},
    {210, "Unable to import JPX file (no meta data)."},
    {211, "Unable to import JPX file (no color codes)."},
    {212, "Unable to import JPX file (invalid offset)."},
};

TEST(ShippedTexts, HoldEveryMessageInEnglishToTheLetter) {
    StringTable errors = shippedTable("en", "VLMDesign");
    for (const Message& message : messages) {
        EXPECT_EQ(errors["ERROR_" + std::to_string(message.code)], message.text) << message.code;
    }
}

TEST(ShippedTexts, HoldNoOtherMessage) {
    std::set<std::string> expected{"COLOR_INDIVIDUAL", "PATTERN_PALETTE", "DESCRIPTION_WITH_HOOP",
                                   "DESCRIPTION_WITHOUT_HOOP"};
    for (const Message& message : messages) expected.insert("ERROR_" + std::to_string(message.code));
    EXPECT_EQ(keysOf(shippedTable("en", "VLMDesign")), expected);
}

TEST(ShippedTexts, DescribeDesignsInEnglishToTheLetter) {
    StringTable texts = shippedTable("en", "VLMDesign");
    EXPECT_EQ(texts["COLOR_INDIVIDUAL"], "Individual color (%i, %i, %i)");
    EXPECT_EQ(texts["PATTERN_PALETTE"], "Threadcolors");
    EXPECT_EQ(texts["DESCRIPTION_WITH_HOOP"],
              "%@ (%@ Version %1.1f)\nsize: %@ x %@, hoop %@\n%i stitches including %i jumps\n"
              "%i color changes with %i different colors");
    EXPECT_EQ(texts["DESCRIPTION_WITHOUT_HOOP"],
              "%@ (%@ Version %1.1f)\nsize: %@ x %@\n%i stitches including %i jumps\n"
              "%i color changes with %i different colors");
}

class ShippedTable : public testing::TestWithParam<const char*> {};
TEST_P(ShippedTable, HasTheSameKeysInBothLanguages) {
    const auto english = keysOf(shippedTable("en", GetParam()));
    EXPECT_FALSE(english.empty());
    EXPECT_EQ(keysOf(shippedTable("de", GetParam())), english);
}

TEST_P(ShippedTable, HasNoEmptyTextAndNoKeyTwice) {
    const Resources resources(resourceFolders(), {});
    for (const std::string language : {"en", "de"}) {
        const auto name = std::filesystem::path(language + ".lproj") / (std::string(GetParam()) + ".strings");
        std::ifstream file(resources.find(name));
        std::size_t entries = 0;
        for (std::string line; std::getline(file, line);) entries += line.rfind('"', 0) == 0 ? 1 : 0;
        const StringTable table = shippedTable(language, GetParam());
        EXPECT_EQ(table.size(), entries) << name;
        for (const auto& [key, text] : table) EXPECT_FALSE(text.empty()) << key;
    }
}

INSTANTIATE_TEST_SUITE_P(Tables, ShippedTable, testing::Values("VLMDesign", "Brother", "Janome"));

/// The kinds of a pattern's places, in order: "@@f" of "%@ %@ %1.1f".
std::string placesOf(const std::string& pattern) {
    std::string places;
    for (auto percent = pattern.find('%'); percent != std::string::npos; percent = pattern.find('%', percent + 1)) {
        places += pattern[pattern.find_first_of("@if", percent)];
    }
    return places;
}

TEST(ShippedTexts, HaveTheSamePlacesInGerman) {
    StringTable german = shippedTable("de", "VLMDesign");
    for (const auto& [key, text] : shippedTable("en", "VLMDesign"))
        EXPECT_EQ(placesOf(german[key]), placesOf(text)) << key;
}

TEST(ShippedTexts, FillWithRealComponentsAsWithWholeNumbers) {
    const std::string pattern = shippedTable("en", "VLMDesign")["COLOR_INDIVIDUAL"];
    EXPECT_EQ(fillPattern(pattern, {0.8 * 255, 0.2 * 255, 1.0 * 255}), "Individual color (204, 51, 255)");
    EXPECT_EQ(fillPattern(pattern, {std::int64_t{204}, std::int64_t{51}, std::int64_t{255}}),
              "Individual color (204, 51, 255)");
}

}  // namespace
}  // namespace velamo
