// What the compiler does not see: that includes point downward, and that system interfaces stay in the platform's
// folder.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace velamo {
namespace {

const std::filesystem::path sourceFolder = VELAMO_SOURCE_FOLDER;

/// What each room may include besides itself.
const std::map<std::string, std::set<std::string>> roomsBelow{
    {"velamo/platform/system", {}},
    {"velamo/platform/text", {"velamo/platform/system"}},
    {"velamo/platform/plist", {"velamo/platform/system", "velamo/platform/text"}},
    {"velamo/platform/graphics", {"velamo/platform/system"}},
    {"velamo/platform/processes", {"velamo/platform/system"}},
    {"velamo/platform/corefoundation", {}},
    {"velamo/measure", {"velamo/platform/system", "velamo/platform/text", "velamo/platform/plist"}},
    {"velamo/model", {"velamo/platform/system", "velamo/platform/text", "velamo/platform/plist", "velamo/measure"}},
    {"velamo/render", {"velamo/platform/system", "velamo/platform/graphics", "velamo/model"}},
    {"velamo/editing", {"velamo/model"}},
    {"velamo/formats",
     {"velamo/platform/system", "velamo/platform/text", "velamo/platform/plist", "velamo/platform/graphics",
      "velamo/render", "velamo/model", "velamo/editing"}},
    {"reading",
     {"velamo/platform/system", "velamo/platform/text", "velamo/platform/processes", "velamo/model", "velamo/formats"}},
    {"plugin", {"velamo/platform/system", "velamo/model", "velamo/formats"}},
    {"catalogue",
     {"velamo/platform/system", "velamo/platform/text", "velamo/platform/processes", "velamo/model", "velamo/formats",
      "plugin", "reading"}},
    {"cli",
     {"velamo/platform/system", "velamo/platform/text", "velamo/platform/graphics", "velamo/platform/processes",
      "velamo/measure", "velamo/render", "velamo/model", "velamo/editing", "velamo/formats", "plugin", "catalogue",
      "reading", "integrations"}},
    {"samples", {"velamo/model", "velamo/formats"}},
    {"integrations",
     {"velamo/platform/system", "velamo/platform/text", "velamo/platform/plist", "velamo/platform/graphics",
      "velamo/platform/processes", "velamo/render", "velamo/model", "velamo/formats", "reading"}},
};

/// The room that a file of the project lies in; none for what lies in no room.
std::string roomOf(const std::string& file) {
    for (const auto& [room, below] : roomsBelow)
        if (file.starts_with(room + "/")) return room;
    return {};
}

struct Include {
    std::filesystem::path file;
    std::string name;
    bool isSystem = false;
};

std::vector<Include> includesOf(const std::string& layer) {
    static const std::regex pattern(R"(^\s*#\s*include\s*([<"])([^>"]+)[>"].*)");
    std::vector<Include> includes;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceFolder / layer)) {
        const auto extension = entry.path().extension();
        if (extension != ".cpp" && extension != ".h") continue;
        std::ifstream in(entry.path());
        std::smatch match;
        for (std::string line; std::getline(in, line);)
            if (std::regex_match(line, match, pattern)) includes.push_back({entry.path(), match[2], match[1] == "<"});
    }
    return includes;
}

class Layers : public testing::TestWithParam<std::string> {};

TEST_P(Layers, IncludeDownwardOnly) {
    const auto& below = roomsBelow.at(GetParam());
    const auto includes = includesOf(GetParam());
    EXPECT_FALSE(includes.empty());
    for (const auto& include : includes) {
        if (include.isSystem || include.name.ends_with(".moc")) continue;  // made by Qt's compiler from the file itself
        const std::string room = roomOf(include.name);
        EXPECT_TRUE(room == GetParam() || below.count(room) > 0) << include.file << " includes " << include.name;
    }
}

TEST_P(Layers, LeaveTheSystemToThePlatform) {
    if (GetParam().starts_with("velamo/platform/")) return;
    static const std::regex systemHeader(
        "(sys|unicode|plist|cairo|linux)/.*|(unistd|fcntl|dlfcn|dirent|syslog|cairo[-a-z]*)\\.h");
    for (const auto& include : includesOf(GetParam()))
        EXPECT_FALSE(std::regex_match(include.name, systemHeader)) << include.file << " includes " << include.name;
}

std::vector<std::string> rooms() {
    std::vector<std::string> names;
    for (const auto& [room, below] : roomsBelow) names.push_back(room);
    return names;
}

INSTANTIATE_TEST_SUITE_P(All, Layers, testing::ValuesIn(rooms()), [](const auto& room) {
    std::string name = room.param;
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
});

}  // namespace
}  // namespace velamo
