// The commands and the C++ examples that the documents show give the output and the pictures that they show.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
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

/// A folder in which commands and examples find what a checkout has, and may write.
class Checkout {
public:
    Checkout() { fs::copy(sourceFolder / "samples", folder_.path() / "samples"); }

    /// Runs the program there, as a person would who set nothing.
    [[nodiscard]] std::string outputOf(const std::string& program) const {
        const std::string data = data_.path().native();
        return test::outputOf("cd '" + folder_.path().native() + "' && XDG_DATA_HOME='" + data + "' HOME='" + data +
                              "' " + program + " 2>&1");
    }

    /// Compares the pictures that were made with those of the same names that are shown.
    void expectPicturesOf(const fs::path& shown) const {
        std::size_t compared = 0;
        for (const auto& entry : fs::directory_iterator(folder_.path())) {
            if (entry.path().extension() != ".png") continue;
            const auto name = entry.path().filename();
            EXPECT_LT(differenceOf(test::readPng(entry.path()), test::readPng(shown / name)), 0.02) << name;
            ++compared;
        }
        EXPECT_GE(compared, 1U);
    }

    [[nodiscard]] std::string path() const { return folder_.path().native(); }

private:
    test::TemporaryFolder folder_;
    test::TemporaryFolder data_;
};

struct Document {
    const char* name;
    const char* file;
    const char* pictures;
};
class Documents : public testing::TestWithParam<Document> {};

TEST_P(Documents, ShowWhatTheProgramPrintsAndDraws) {
    const Checkout checkout;
    std::size_t tried = 0;
    for (const auto& [command, output] : shownCommands(sourceFolder / GetParam().file)) {
        if (command.rfind("zip ", 0) == 0) static_cast<void>(checkout.outputOf(command));
        if (command.rfind("velamo ", 0) != 0) continue;  // ./run and ./test are tried whole, not from within themselves
        const std::string printed = checkout.outputOf(VELAMO_PROGRAM + command.substr(6));
        EXPECT_EQ(withoutTimes(asInCheckout(printed, checkout.path())), withoutTimes(output)) << command;
        ++tried;
    }
    EXPECT_GE(tried, 3U);
    checkout.expectPicturesOf(sourceFolder / GetParam().pictures);
}

struct Block {
    std::string kind;  // what stands behind its backquotes
    std::string text;
};

std::vector<Block> blocksOf(const fs::path& document) {
    std::ifstream in(document);
    std::vector<Block> blocks;
    bool isInside = false;
    for (std::string line; std::getline(in, line);) {
        const bool isFence = line.rfind("```", 0) == 0;
        if (isFence && !isInside) blocks.push_back({line.substr(3), ""});
        if (!isFence && isInside) blocks.back().text += line + "\n";
        if (isFence) isInside = !isInside;
    }
    return blocks;
}

/// The examples, numbered from 1, with the output that is shown behind them, as document_program.py has them print it.
std::string shownOutput(const std::vector<Block>& blocks) {
    std::string output;
    int examples = 0;
    for (const auto& [kind, text] : blocks) {
        if (kind == "cpp") output += "\f" + std::to_string(++examples) + "\n";
        if (kind == "text") output += text;
    }
    return output;
}

const fs::path library = sourceFolder / "docs/library.md";

TEST(LibraryTour, PrintsAndDrawsWhatIsShown) {
    const Checkout checkout;
    EXPECT_EQ(checkout.outputOf(VELAMO_LIBRARY_TOUR), shownOutput(blocksOf(library)));
    checkout.expectPicturesOf(sourceFolder / "docs");
}

TEST(LibraryTour, IncludesWhatIsInstalled) {
    const std::string installed = test::TemporaryFolder::read(sourceFolder / "velamo/CMakeLists.txt");
    static const std::regex include(R"(#include <velamo/([^>]*)>)");
    std::size_t found = 0;
    for (const auto& [kind, text] : blocksOf(library))
        for (std::sregex_iterator one(text.begin(), text.end(), include), none; one != none; ++one) {
            EXPECT_NE(installed.find("\n    " + (*one)[1].str() + "\n"), installed.npos) << (*one)[1];
            ++found;
        }
    EXPECT_GT(found, 10U);
}

/// The tests build that one against the installed library; only it has folders of its own.
TEST(LibraryTour, IsBuiltAsTheLibrarysUserIs) {
    std::string user = test::TemporaryFolder::read(sourceFolder / "tests/library_user/CMakeLists.txt");
    user.erase(0, user.find('\n') + 1);
    user = std::regex_replace(user, std::regex("target_include_directories.*\n"), "");
    user = std::regex_replace(user, std::regex("library_user"), "tour");
    for (const auto& [kind, text] : blocksOf(library))
        if (kind == "cmake") {
            EXPECT_EQ(text, user);
        }
}

/// All documents in the checkout.
std::vector<fs::path> allDocuments() {
    std::vector<fs::path> documents{sourceFolder / "README.md", sourceFolder / "CONTRIBUTING.md"};
    for (const char* folder : {"docs", "integrations", "fuzz", "tests"})
        for (const auto& entry : fs::recursive_directory_iterator(sourceFolder / folder))
            if (entry.path().extension() == ".md") documents.push_back(entry.path());
    return documents;
}

TEST(Examples, StandWhereTheyAreTried) {
    // The library's make a program, and the recipes are applied to the sources: see document_program.py and
    // document_recipes.py.
    const std::map<fs::path, std::set<std::string>> known{
        {library, {"cpp", "text", "cmake"}}, {sourceFolder / "docs/architecture.md", {"cpp", "diff", "text"}}};
    for (const auto& document : allDocuments())
        for (const auto& [kind, text] : blocksOf(document))
            if (const auto kinds = known.find(document); kinds != known.end()) {
                EXPECT_TRUE(kinds->second.contains(kind)) << document << ": " << kind << ": " << text;
            } else {
                EXPECT_NE(kind, "cpp") << document << ": " << text;
            }
}

/// The places in the checkout that a document's links lead to.
std::vector<fs::path> linksIn(const fs::path& document) {
    static const std::regex link(R"re(\]\(([^)#:]+)(#[^)]*)?\))re");
    std::ifstream in(document);
    std::vector<fs::path> links;
    bool isCode = false;
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("```", 0) == 0) isCode = !isCode;
        if (isCode) continue;
        for (std::sregex_iterator one(line.begin(), line.end(), link), none; one != none; ++one)
            links.push_back(document.parent_path() / (*one)[1].str());
    }
    return links;
}

TEST(Links, LeadSomewhere) {
    std::size_t found = 0;
    for (const auto& document : allDocuments()) {
        for (const auto& link : linksIn(document)) {
            EXPECT_TRUE(fs::exists(link)) << document << " leads to " << link;
            ++found;
        }
    }
    EXPECT_GT(found, 10U);
}

INSTANTIATE_TEST_SUITE_P(Each, Documents,
                         testing::Values(Document{"Readme", "README.md", "docs"},
                                         Document{"Collection", "docs/collection.md", "docs/collection"},
                                         Document{"Editing", "docs/editing.md", "docs/editing"}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
