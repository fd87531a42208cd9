// What neither compiler nor linker sees (see layers_test.py for what they do): that system interfaces and libraries
// stay in the platform's rooms.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace velamo {
namespace {

const std::filesystem::path sourceFolder = VELAMO_SOURCE_FOLDER;

struct Include {
    std::filesystem::path file;
    std::string name;
};

std::vector<Include> includesOf(const std::string& folder) {
    static const std::regex pattern(R"(^\s*#\s*include\s*[<"]([^>"]+)[>"].*)");
    std::vector<Include> includes;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(sourceFolder / folder)) {
        const auto extension = entry.path().extension();
        if (extension != ".cpp" && extension != ".h") continue;
        std::ifstream in(entry.path());
        std::smatch match;
        for (std::string line; std::getline(in, line);)
            if (std::regex_match(line, match, pattern)) includes.push_back({entry.path(), match[1]});
    }
    return includes;
}

class Folders : public testing::TestWithParam<const char*> {};
TEST_P(Folders, LeaveTheSystemToThePlatform) {
    static const std::regex systemHeader(
        "(sys|unicode|plist|cairo|linux)/"
        ".*|(unistd|fcntl|dlfcn|dirent|syslog|seccomp|zlib|archive(_entry)?|cairo[-a-z]*)\\.h");
    const auto includes = includesOf(GetParam());
    EXPECT_FALSE(includes.empty());
    for (const auto& include : includes)
        EXPECT_FALSE(std::regex_match(include.name, systemHeader)) << include.file << " includes " << include.name;
}
INSTANTIATE_TEST_SUITE_P(All, Folders,
                         testing::Values("velamo/measure", "velamo/model", "velamo/analysis", "velamo/render",
                                         "velamo/editing", "velamo/formats", "reading", "plugin", "catalogue", "cli",
                                         "samples", "integrations"),
                         [](const auto& folder) {
                             std::string name = folder.param;
                             return name.substr(name.find('/') + 1);
                         });

}  // namespace
}  // namespace velamo
