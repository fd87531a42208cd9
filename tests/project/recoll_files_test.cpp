// The files that make Recoll know designs name every format and every type, and nothing else.
#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "tests/project/desktop_files.h"

namespace velamo {
namespace {

using namespace velamo::test;

using Entries = std::map<std::string, std::string>;

/// The file's "name = value" lines by section; a backslash joins a line with the next one.
std::map<std::string, Entries> sectionsOf(const std::string& file) {
    std::string text = integrationFile("recoll/" + file);
    for (auto found = text.find("\\\n"); found != text.npos; found = text.find("\\\n")) text.erase(found, 2);
    std::map<std::string, Entries> sections;
    std::string section;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        if (line[0] == '[') {
            section = line.substr(1, line.size() - 2);
            continue;
        }
        const auto middle = line.find(" =");
        const auto value = std::min(line.find_first_not_of(' ', middle + 2), line.size());
        EXPECT_TRUE(sections[section].emplace(line.substr(0, middle), line.substr(value)).second) << line;
    }
    return sections;
}

Entries oneForEachType(const std::string& value) {
    Entries entries;
    for (const std::string& type : allMimeTypes()) entries.emplace(type, value);
    return entries;
}

TEST(RecollFiles, NameEveryExtension) {
    Entries expected;
    for (const Format& format : allFormats()) expected.emplace("." + std::string(format.extension), mimeTypeOf(format));
    EXPECT_EQ(sectionsOf("mimemap"), (std::map<std::string, Entries>{{"", expected}}));
}

TEST(RecollFiles, SendEveryTypeToTheHandler) {
    const auto sections = sectionsOf("mimeconf");
    EXPECT_EQ(sections.at("index"), oneForEachType("execm velamo-recoll ; maxseconds = 30"));
    EXPECT_EQ(sections.at("guifilters").at("embroidery"), "rclcat:embroidery");
    std::istringstream words(sections.at("categories").at("embroidery"));
    const std::multiset<std::string> types{std::istream_iterator<std::string>(words), {}};
    const auto expected = allMimeTypes();
    EXPECT_EQ(types, std::multiset<std::string>(expected.begin(), expected.end()));
}

TEST(RecollFiles, OpenEveryType) {
    EXPECT_EQ(sectionsOf("mimeview"), (std::map<std::string, Entries>{{"view", oneForEachType("xdg-open %f")}}));
}

/// A field needs a place in each of the sections to be found by itself, in ranges, and to be shown.
TEST(RecollFiles, DeclareWhatTheHandlerTells) {
    const std::set<std::string> told{"designheight", "designwidth", "stitches", "threadcolors"};
    const auto namesOf = [](const Entries& entries) {
        std::set<std::string> names;
        for (const auto& [name, value] : entries) names.insert(name);
        return names;
    };
    const auto sections = sectionsOf("fields");
    for (const char* section : {"prefixes", "values", "stored"})
        EXPECT_EQ(namesOf(sections.at(section)), told) << section;
    EXPECT_EQ(sections.at("queryaliases"),
              (Entries{{"threadcolors", "colours colors"}, {"designwidth", "width"}, {"designheight", "height"}}));
}

}  // namespace
}  // namespace velamo
