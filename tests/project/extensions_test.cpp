// The files that list the extensions of designs list those of the table of formats.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <regex>
#include <set>
#include <string>

#include "tests/support/temporary_folder.h"
#include "velamo/formats/format.h"

namespace velamo {
namespace {

struct Row {
    const char* name;
    const char* file;
    const char* list;  // its group holds the extensions
    bool isWritable;   // only the formats that are written
};
class Extensions : public testing::TestWithParam<Row> {};

std::string inLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

TEST_P(Extensions, AreThoseOfTheTable) {
    std::set<std::string> expected;
    for (const Format& format : allFormats())
        if (!GetParam().isWritable || format.writer != nullptr) expected.emplace(format.extension);

    const auto file = std::filesystem::path(VELAMO_SOURCE_FOLDER) / GetParam().file;
    static const std::regex otherThanNames(R"(\\(f[A-Z]|&)|\b(and|or)\b)");  // a manual's marks, and what joins names
    const auto text = std::regex_replace(test::TemporaryFolder::read(file), otherThanNames, "");
    std::smatch list;
    ASSERT_TRUE(std::regex_search(text, list, std::regex(GetParam().list)));
    const std::string listed = inLowerCase(list[1]);
    static const std::regex extension(R"([a-z0-9]+\+?)");
    std::set<std::string> found;
    for (std::sregex_iterator one(listed.begin(), listed.end(), extension), none; one != none; ++one)
        EXPECT_TRUE(found.insert(one->str()).second) << one->str() << " is listed twice";
    EXPECT_EQ(found, expected);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, Extensions,
    testing::Values(Row{"BashReads", "integrations/completions/velamo.bash", "readable='([^']*)'", false},
                    Row{"BashWrites", "integrations/completions/velamo.bash", "writable='([^']*)'", true},
                    Row{"FishReads", "integrations/completions/velamo.fish", "readable (.*)", false},
                    Row{"FishWrites", "integrations/completions/velamo.fish", "-l to -x -a \"([^\"]*)\"", true},
                    Row{"ZshReads", "integrations/completions/_velamo", R"re(readable='[^.]*\.\(([^)]*)\))re", false},
                    Row{"ZshWrites", "integrations/completions/_velamo", R"re(writable='\(([^)]*)\))re", true},
                    Row{"ReadmeReads", "README.md", R"re(It reads ([^.]*),\s+writes)re", false},
                    Row{"ReadmeWrites", "README.md", R"re(It reads [^.]*,\s+writes ([^.]*)\.)re", true},
                    Row{"ManualReads", "docs/velamo.1", R"re(files named ([^)]*)\))re", false},
                    Row{"ManualWrites", "docs/velamo.1", R"re(OUT decides the format, ([\s\S]*?)\.\s+Moves)re", true},
                    Row{"Package", "integrations/packages/CMakeLists.txt",
                        R"re(embroidery machines \(([^)]*)\), tells)re", false}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace velamo
