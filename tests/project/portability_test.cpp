// The library and the importer are built on Apple's systems too, whose compilers we do not have here: what was found
// not to build there stays out, or in the one file that knows better.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <ostream>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace velamo {
namespace {

namespace fs = std::filesystem;

struct Row {
    const char* name;
    const char* pattern;          // of a line
    std::set<std::string> files;  // that may have it
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

const fs::path sourceFolder = VELAMO_SOURCE_FOLDER;

/// What Apple's branch compiles.
std::vector<fs::path> portableFiles() {
    std::vector<fs::path> files;
    for (const char* folder : {"velamo", "plugin", "integrations/macos"})
        for (const auto& entry : fs::recursive_directory_iterator(sourceFolder / folder)) {
            const auto name = entry.path().lexically_relative(sourceFolder).native();
            const bool isSource = entry.path().extension() == ".cpp" || entry.path().extension() == ".h";
            const bool isOthers =
                name.starts_with("velamo/platform/processes/") || name.starts_with("velamo/platform/corefoundation/");
            if (isSource && !isOthers) files.push_back(entry.path());
        }
    return files;
}

class Portability : public testing::TestWithParam<Row> {};
TEST_P(Portability, IsBrokenNowhereElse) {
    const std::regex pattern(GetParam().pattern);
    std::set<std::string> found;
    for (const fs::path& file : portableFiles()) {
        std::ifstream in(file);
        for (std::string line; std::getline(in, line);)
            if (std::regex_search(line, pattern)) found.insert(file.lexically_relative(sourceFolder));
    }
    EXPECT_EQ(found, GetParam().files);
}

const std::string text = "velamo/platform/text/";
const std::string systemRoom = "velamo/platform/system/";
INSTANTIATE_TEST_SUITE_P(
    Rows, Portability,
    testing::Values(
        // It is there for whole numbers alone.
        Row{"FromChars", "from_chars\\(", {text + "plain_number.h", text + "string_table.cpp"}},
        // newlocale and its like stand there on Apple's systems.
        Row{"Locales", "newlocale|xlocale", {text + "plain_locale.h"}},
        Row{"NumbersOfLocales", "strto[a-z]+_l", {text + "plain_number.cpp"}},
        Row{"Proc", "\"/proc", {systemRoom + "files.cpp", systemRoom + "shared_module.cpp"}},
        Row{"LinuxHeaders",
            "#include <(linux/|asm/|seccomp|sys/(prctl|syscall|xattr|sendfile|inotify|random))",
            {systemRoom + "file_features.cpp"}},
        Row{"GnuHeaders", "#include <(malloc|error|execinfo|features)\\.h>", {systemRoom + "program_start.cpp"}},
        Row{"Rename", "renameat2", {systemRoom + "set_aside.cpp"}},
        Row{"NamelessFiles", "O_TMPFILE", {systemRoom + "files.cpp"}}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace velamo
