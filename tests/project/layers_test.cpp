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

/// What each layer may include besides itself.
const std::map<std::string, std::set<std::string>> layersBelow{
    {"platform", {}},
    {"measure", {"platform"}},
    {"model", {"platform", "measure"}},
    {"render", {"platform", "model"}},
    {"editing", {"platform", "model"}},
    {"formats", {"platform", "render", "model", "editing"}},
    {"reading", {"platform", "model", "formats"}},
    {"plugin", {"platform", "model", "formats"}},
    {"catalogue", {"platform", "model", "formats", "plugin", "reading"}},
    {"cli", {"platform", "measure", "render", "model", "editing", "formats", "plugin", "catalogue", "reading"}},
    {"samples", {"platform", "model", "formats"}},
    {"integrations", {"platform", "render", "model", "formats", "reading"}},
};

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
    const auto& below = layersBelow.at(GetParam());
    const auto includes = includesOf(GetParam());
    EXPECT_FALSE(includes.empty());
    for (const auto& include : includes) {
        if (include.isSystem || include.name.ends_with(".moc")) continue;  // made by Qt's compiler from the file itself
        const std::string folder = include.name.substr(0, include.name.find('/'));
        EXPECT_TRUE(folder == GetParam() || below.count(folder) > 0) << include.file << " includes " << include.name;
    }
}

TEST_P(Layers, LeaveTheSystemToThePlatform) {
    if (GetParam() == "platform") return;
    static const std::regex systemHeader(
        "(sys|unicode|plist|cairo|linux)/.*|(unistd|fcntl|dlfcn|dirent|syslog|cairo[-a-z]*)\\.h");
    for (const auto& include : includesOf(GetParam()))
        EXPECT_FALSE(std::regex_match(include.name, systemHeader)) << include.file << " includes " << include.name;
}

INSTANTIATE_TEST_SUITE_P(All, Layers,
                         testing::Values("platform", "measure", "model", "render", "editing", "formats", "reading",
                                         "plugin", "catalogue", "cli", "samples", "integrations"),
                         [](const auto& layer) { return layer.param; });

}  // namespace
}  // namespace velamo
