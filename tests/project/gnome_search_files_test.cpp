// The rule of GNOME's index names every type, and has another hash whenever it is another rule.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <vector>

#include "tests/project/desktop_files.h"
#include "tests/support/program_output.h"

namespace velamo {
namespace {

using namespace velamo::test;

const char* const ruleFile = "gnome-search/10-velamo.rule";

std::vector<std::string> ruleLines() {
    std::vector<std::string> lines;
    std::istringstream rule(integrationFile(ruleFile));
    for (std::string line; std::getline(rule, line);) lines.push_back(line);
    return lines;
}

TEST(GnomeSearchRule, MakesEveryTypeAPicture) {
    const std::string types = "MimeTypes=";
    const auto lines = ruleLines();
    ASSERT_EQ(lines.size(), 5U);
    ASSERT_EQ(lines[1].rfind(types, 0), 0U);
    std::multiset<std::string> named;
    std::istringstream list(lines[1].substr(types.size()));
    for (std::string type; std::getline(list, type, ';');) named.insert(type);
    const auto expected = allMimeTypes();
    EXPECT_EQ(named, std::multiset<std::string>(expected.begin(), expected.end()));
    EXPECT_EQ(lines[1].back(), ';');
    EXPECT_THAT(lines,
                testing::ElementsAre("[ExtractorRule]", testing::_, "FallbackRdfTypes=nfo:Image;nfo:VectorImage;",
                                     "Graph=tracker:Pictures", testing::StartsWith("Hash=")));
}

/// The index looks at its files again only when the hash has changed.
TEST(GnomeSearchRule, HasTheHashOfItsOtherLines) {
    const std::string rule = std::string(VELAMO_SOURCE_FOLDER) + "/integrations/" + ruleFile;
    const auto hash = outputOf("grep -v ^Hash= '" + rule + "' | sha256sum").substr(0, 64);
    EXPECT_EQ(ruleLines().back(), "Hash=" + hash);
}

}  // namespace
}  // namespace velamo
