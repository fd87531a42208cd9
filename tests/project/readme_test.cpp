// The commands that the README shows give the output that it shows.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <regex>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

struct Shown {
    std::string command;
    std::string output;
};

/// The commands of the README's console blocks ("$ velamo ...") with the lines that follow them.
std::vector<Shown> shownCommands() {
    std::ifstream in(std::filesystem::path(VELAMO_SOURCE_FOLDER) / "README.md");
    std::vector<Shown> shown;
    bool isInside = false;
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("```", 0) == 0) {
            isInside = line == "```console";
        } else if (isInside && line.rfind("$ ", 0) == 0) {
            shown.push_back({line.substr(2), ""});
        } else if (isInside && !shown.empty()) {
            shown.back().output += line + "\n";
        }
    }
    return shown;
}

std::string outputOf(const std::string& command) {
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string output;
    std::array<char, 4096> buffer{};
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), pipe.get()))
        output.append(buffer.data(), count);
    return output;
}

/// Times differ from run to run, and the README's checkout is in another folder.
std::string comparable(std::string text) {
    const std::string folder = VELAMO_SOURCE_FOLDER;
    for (std::size_t found = text.find(folder); found != text.npos; found = text.find(folder))
        text.replace(found, folder.size(), "/home/you/velamo");
    static const std::regex time(R"([0-9]+(\.[0-9]+)? s\b)");
    return std::regex_replace(text, time, "N s");
}

TEST(Readme, ShowsWhatTheProgramPrints) {
    const test::TemporaryFolder data;
    const auto shown = shownCommands();
    std::size_t tried = 0;
    for (const auto& [command, output] : shown) {
        if (command.rfind("velamo ", 0) != 0) continue;  // ./run and ./test are tried whole, not from within themselves
        const std::string run = "cd '" + std::string(VELAMO_SOURCE_FOLDER) + "' && XDG_DATA_HOME='" +
                                data.path().native() + "' " + VELAMO_PROGRAM + command.substr(6) + " 2>&1";
        EXPECT_EQ(comparable(outputOf(run)), comparable(output)) << command;
        ++tried;
    }
    EXPECT_GE(tried, 3U);
}

}  // namespace
}  // namespace velamo
