// The commands that the documents show give the output and the pictures that they show.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#include "tests/support/png.h"
#include "tests/support/program_output.h"
#include "tests/support/temporary_folder.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;
const fs::path sourceFolder = VELAMO_SOURCE_FOLDER;

struct Shown {
    std::string command;
    std::string output;
};

/// The commands of a document's console blocks ("$ velamo ...") with the lines that follow them.
std::vector<Shown> shownCommands(const fs::path& document) {
    std::ifstream in(document);
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

/// The text as the reader would see it, whose checkout is in another folder.
std::string asInCheckout(std::string text, const std::string& folder) {
    for (std::size_t found = text.find(folder); found != text.npos; found = text.find(folder))
        text.replace(found, folder.size(), "/home/you/velamo");
    return text;
}

/// Times differ from run to run.
std::string withoutTimes(const std::string& text) {
    static const std::regex time(R"([0-9]+(\.[0-9]+)? s\b)");
    return std::regex_replace(text, time, "N s");
}

/// The share of the pictures' bytes that differ visibly; all of them where the sizes do. Versions of the drawing
/// library smooth edges a little differently.
double differenceOf(const test::Picture& one, const test::Picture& other) {
    constexpr int visible = 40;
    if (one.width != other.width || one.height != other.height) return 1;
    std::size_t different = 0;
    for (std::size_t i = 0; i < one.rgba.size(); ++i)
        different += std::abs(int{one.rgba[i]} - int{other.rgba[i]}) > visible ? 1 : 0;
    return static_cast<double>(different) / static_cast<double>(one.rgba.size());
}

/// A folder in which the commands find what a checkout has, and may write.
struct Document {
    const char* name;
    const char* file;
    const char* pictures;
};
class Documents : public testing::TestWithParam<Document> {
protected:
    Documents() { fs::copy(sourceFolder / "samples", folder_.path() / "samples"); }

    std::string run(const std::string& arguments) {
        return test::outputOf("cd '" + folder_.path().native() + "' && XDG_DATA_HOME='" + data_.path().native() + "' " +
                              VELAMO_PROGRAM + arguments + " 2>&1");
    }
    test::TemporaryFolder folder_;
    test::TemporaryFolder data_;
};

TEST_P(Documents, ShowWhatTheProgramPrintsAndDraws) {
    std::size_t tried = 0;
    for (const auto& [command, output] : shownCommands(sourceFolder / GetParam().file)) {
        if (command.rfind("velamo ", 0) != 0) continue;  // ./run and ./test are tried whole, not from within themselves
        const std::string printed = asInCheckout(run(command.substr(6)), folder_.path().native());
        EXPECT_EQ(withoutTimes(printed), withoutTimes(output)) << command;
        ++tried;
    }
    EXPECT_GE(tried, 3U);
    std::size_t compared = 0;
    for (const auto& entry : fs::directory_iterator(folder_.path())) {
        if (entry.path().extension() != ".png") continue;
        const auto shown = sourceFolder / GetParam().pictures / entry.path().filename();
        EXPECT_LT(differenceOf(test::readPng(entry.path()), test::readPng(shown)), 0.02) << entry.path().filename();
        ++compared;
    }
    EXPECT_GE(compared, 1U);
}

/// The places in the checkout that a document's links lead to.
std::vector<fs::path> linksIn(const fs::path& document) {
    static const std::regex link(R"re(\]\(([^)#:]+)(#[^)]*)?\))re");
    std::ifstream in(document);
    std::vector<fs::path> links;
    for (std::string line; std::getline(in, line);)
        for (std::sregex_iterator one(line.begin(), line.end(), link), none; one != none; ++one)
            links.push_back(document.parent_path() / (*one)[1].str());
    return links;
}

TEST(Links, LeadSomewhere) {
    std::vector<fs::path> documents{sourceFolder / "README.md", sourceFolder / "CONTRIBUTING.md"};
    for (const char* folder : {"docs", "integrations"})
        for (const auto& entry : fs::recursive_directory_iterator(sourceFolder / folder))
            if (entry.path().extension() == ".md") documents.push_back(entry.path());
    std::size_t found = 0;
    for (const auto& document : documents) {
        for (const auto& link : linksIn(document)) {
            EXPECT_TRUE(fs::exists(link)) << document << " leads to " << link;
            ++found;
        }
    }
    EXPECT_GT(found, 10U);
}

INSTANTIATE_TEST_SUITE_P(Each, Documents,
                         testing::Values(Document{"Readme", "README.md", "docs"},
                                         Document{"Editing", "docs/editing.md", "docs/editing"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
