#include "cli/info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <map>

#include "tests/cli/support.h"
#include "tests/support/archives.h"
#include "tests/support/environment.h"
#include "tests/support/janome_files.h"
#include "tests/support/samples.h"
#include "tests/support/vp3_file.h"
#include "velamo/formats/format.h"

namespace velamo {
namespace {

using test::call;

const char* const description =
    "(DST Version 1.0)\nsize: 1.0 mm x 8.1 mm\n3 stitches including 1 jumps\n"
    "2 color changes with 1 different colors\n1. Individual color (204, 204, 204)\n"
    "2. Individual color (204, 204, 204)\n";

class Info : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::string sound_ = folder_.write("small.dst", test::smallDst);
    std::string torn_ = folder_.write("torn.dst", std::string("LA:"));
};

TEST_F(Info, DescribesEachDesign) {
    const auto outcome = call({"info", sound_, sound_});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, std::string("small.dst ") + description + "\nsmall.dst " + description);
}

TEST_F(Info, GoesOnAfterABrokenFile) {
    const auto outcome = call({"info", torn_, sound_});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, std::string("small.dst ") + description);
    EXPECT_EQ(outcome.problems, "velamo: " + torn_ + ": Unable to import DST file (missing header). (error 123)\n");
}

TEST_F(Info, GivesFiguresAsJson) {
    const auto outcome = call({"info", "--json", sound_, torn_});
    EXPECT_EQ(outcome.status, 1);
    const auto json = outcome.json();
    ASSERT_EQ(json.size(), 2U);
    EXPECT_EQ(json[0]["file"], sound_);
    EXPECT_EQ(json[0]["width"], 1.0);
    EXPECT_EQ(json[0]["height"], 8.1);  // not 8.100000381469727
    EXPECT_EQ(json[0]["stitches"], 3);
    EXPECT_EQ(json[0]["colors"], 1);
    EXPECT_EQ(json[0]["statistics"]["designHeight"], 81);
    EXPECT_EQ(json[1]["file"], torn_);
    EXPECT_EQ(json[1]["error"]["code"], 123);
    EXPECT_EQ(call({"info", "--json", sound_}).json().size(), 1U);
}

TEST_F(Info, TellsWhatAnIndexerGets) {
    const auto outcome = call({"info", "--plugin", torn_, sound_});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, sound_ + "\n  width     1.0 mm\n  height    8.1 mm\n  stitches  3\n  colors    1\n");
    EXPECT_EQ(outcome.problems, "velamo: " + torn_ + ": Unable to import DST file (missing header). (error 123)\n");
    const auto json = call({"info", "--plugin", "--json", sound_, torn_, "/nowhere.dst"}).json();
    EXPECT_EQ(json[0], (test::Json{{"file", sound_}, {"width", 1.0}, {"height", 8.1}, {"stitches", 3}, {"colors", 1}}));
    EXPECT_EQ(json[1]["error"]["code"], 123);
    EXPECT_EQ(json[2]["error"]["code"], ENOENT);
}

TEST_F(Info, TellsThatNoIndexerLooksIntoArchives) {
    const std::string packed = folder_.write("packed.zip", test::zipOf({{"rose.dst", test::smallDst}}));
    const auto outcome = call({"info", "--plugin", packed, packed + "/rose.dst"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + packed + ": Unknown file format (UTI). (error 10)\nvelamo: " + packed +
                                    "/rose.dst: Not a directory (error 20)\n");
}

/// The catalogue reads designs without the plug-in: both must say the same.
TEST_F(Info, IsToldTheSameByThePlugin) {
    std::vector<std::string> files;
    for (const Format& format : allFormats()) {
        auto bytes = test::sampleFile(format.extension);
        files.push_back(folder_.write("sample." + std::string(format.extension), bytes));
        bytes.resize(bytes.size() * 2 / 3);
        files.push_back(folder_.write("cut." + std::string(format.extension), bytes));
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(VELAMO_SAMPLES))
        if (hasDesignName(entry.path())) files.push_back(entry.path());
    std::vector<std::string> arguments{"info", "--json"};
    arguments.insert(arguments.end(), files.begin(), files.end());
    const auto read = call(arguments).json();
    arguments.insert(arguments.begin() + 1, "--plugin");
    const auto told = call(arguments).json();
    ASSERT_EQ(read.size(), files.size());
    ASSERT_EQ(told.size(), files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        auto expected = read[i];
        expected.erase("statistics");
        EXPECT_EQ(told[i], expected) << files[i];
    }
}

struct WordsRow {
    const char* name;
    const char* locale;
    const char* entry;  // of the side file
    const char* lines;  // from the second on
};
class InfoForAPerson : public testing::TestWithParam<WordsRow> {};
TEST_P(InfoForAPerson, SaysWhatTheRowSays) {
    const test::Variable locale("LC_ALL", GetParam().locale);
    const test::TemporaryFolder folder;
    const std::string entry = std::string(
                                  "<dict><key>threadfileversion</key><integer>2</integer>"
                                  "<key>red</key><real>1</real>") +
                              GetParam().entry + "</dict>";
    folder.write("small.threads", "<plist version=\"1.0\"><array>" + entry + entry + "</array></plist>");
    EXPECT_EQ(call({"info", folder.write("small.dst", test::smallDst)}).out,
              std::string("small.dst (DST Version 1.0)\n") + GetParam().lines);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, InfoForAPerson,
    testing::Values(
        WordsRow{"NamedThreads", "C", "<key>name</key><string>Red 1</string><key>palette</key><string>Brother</string>",
                 "size: 1.0 mm x 8.1 mm\n3 stitches including 1 jumps\n2 color changes with 1 different colors\n"
                 "1. Red 1, Brother\n2. Red 1, Brother\n"},
        WordsRow{"ThreadsWithoutNames", "C", "",
                 "size: 1.0 mm x 8.1 mm\n3 stitches including 1 jumps\n2 color changes with 1 different colors\n"
                 "1. Individual color (255, 0, 0)\n2. Individual color (255, 0, 0)\n"},
        WordsRow{"GermanNumbers", "de_DE.UTF-8", "<key>name</key><string>Rot</string>",
                 "size: 1,0 mm x 8,1 mm\n3 stitches including 1 jumps\n2 color changes with 1 different colors\n"
                 "1. Rot\n2. Rot\n"},
        WordsRow{"OtherDigits", "fa_IR.UTF-8", "<key>name</key><string>Red 1</string>",
                 "size: \u06F1\u066B\u06F0 mm x \u06F8\u066B\u06F1 mm\n\u06F3 stitches including \u06F1 jumps\n"
                 "\u06F2 color changes with \u06F1 different colors\n\u06F1. Red 1\n\u06F2. Red 1\n"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(Info, CountsNoStitchesBelowZero) {
    const auto few = folder_.write("few.jpx", test::jpxFile({.indices = {1, 2, 3, 4, 5}, .tensions = {1, 1, 1, 1, 1}}));
    EXPECT_THAT(call({"info", few}).out, testing::HasSubstr("\n0 stitches including 0 jumps\n"));
    EXPECT_LT(call({"info", "--json", few}).json()[0]["stitches"], 0);
}

TEST_F(Info, DescribesADesignAsTheDesignItselfDoes) {
    for (const auto& [name, bytes] : std::map<std::string, test::Bytes>{
             {"a.vp3", test::vp3File()}, {"b.jef", test::jefFile()}, {"c.dst", test::smallDst}}) {
        const auto file = folder_.write(name, bytes);
        const auto statistics = call({"info", "--json", file}).json()[0]["statistics"];
        EXPECT_EQ(call({"info", file}).out, statistics["description"].get<std::string>() + '\n');
    }
}

TEST_F(Info, LetsNoNameCommandATerminal) {
    const auto odd = folder_.write("a\x1b[31m\nb.dst", test::smallDst);
    EXPECT_EQ(call({"info", odd}, true).out, std::string("a\\x1b[31m\\nb.dst ") + description);
    EXPECT_EQ(call({"info", odd}).out, std::string("a\x1b[31m\nb.dst ") + description);
    EXPECT_EQ(call({"info", "\x1b.dst"}, true).problems, "velamo: \\x1b.dst: No such file or directory (error 2)\n");
}

}  // namespace
}  // namespace velamo
