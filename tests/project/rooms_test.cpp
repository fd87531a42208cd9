// Every format has its rooms, and every error its own code and text.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>

#include "velamo/formats/format.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;
const fs::path sourceFolder = VELAMO_SOURCE_FOLDER;

std::string textOf(const fs::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// The word under which a format's files stand: formats with one reader share the name of the first of them.
std::string roomOf(const Format& format) {
    const auto formats = allFormats();
    const auto first = std::find_if(formats.begin(), formats.end(),
                                    [&](const Format& other) { return other.reader == format.reader; });
    return std::string(first->extension);
}

class FormatRooms : public testing::TestWithParam<Format> {};
TEST_P(FormatRooms, AreAllThere) {
    const std::string room = roomOf(GetParam());
    for (const std::string& file : {"velamo/formats/" + room + ".h", "velamo/formats/" + room + ".cpp",
                                    "tests/formats/" + room + "_test.cpp", "fuzz/" + room + "_fuzz.cpp"})
        EXPECT_TRUE(fs::exists(sourceFolder / file)) << file;
    if (GetParam().writer != nullptr) {
        EXPECT_TRUE(fs::exists(sourceFolder / ("tests/formats/" + room + "_writer_test.cpp")));
    }
    EXPECT_NE(textOf(sourceFolder / "tests/support/samples.h").find('"' + std::string(GetParam().extension) + '"'),
              std::string::npos)
        << "no sample of " << GetParam().extension;
    EXPECT_NE(textOf(sourceFolder / "bench/design_files.h").find("{\"" + std::string(GetParam().extension) + "\", "),
              std::string::npos)
        << GetParam().extension << " is not measured";
    const std::regex fuzzed(R"(set\(fuzz_targets[^)]*\b)" + room + R"(\b)");
    EXPECT_TRUE(std::regex_search(textOf(sourceFolder / "fuzz/CMakeLists.txt"), fuzzed)) << room << " is not fuzzed";
}
INSTANTIATE_TEST_SUITE_P(Each, FormatRooms, testing::ValuesIn(allFormats().begin(), allFormats().end()),
                         [](const auto& row) {
                             return std::string(row.param.type == "JEF+" ? "JEFPlus" : row.param.type);
                         });

struct Error {
    std::string file;
    int code;
    std::string text;
};

/// The errors that stand in the tables of the sources: rows of a code, by its number or its name, and a text.
std::vector<Error> errorsInSources() {
    static const std::regex named(R"(\b(\w+)\s*=\s*(\d+)\s*[,}])");
    static const std::regex row(R"re(\{\s*(\w+),\s*"([^"]*)"\s*\})re");
    static const std::regex table(R"(ErrorText,\s*\d+>\s*\w+\{\{([\s\S]*?)\}\};)");
    std::vector<Error> errors;
    for (const char* folder : {"velamo/model", "velamo/editing", "velamo/formats"})
        for (const auto& entry : fs::directory_iterator(sourceFolder / folder)) {
            if (entry.path().extension() != ".cpp") continue;
            const std::string source = textOf(entry.path());
            std::map<std::string, int> numbers;
            for (std::sregex_iterator found(source.begin(), source.end(), named), none; found != none; ++found)
                numbers.emplace((*found)[1], std::stoi((*found)[2]));
            for (std::sregex_iterator found(source.begin(), source.end(), table), none; found != none; ++found) {
                const std::string rows = "{" + (*found)[1].str() + "}";
                for (std::sregex_iterator one(rows.begin(), rows.end(), row); one != none; ++one) {
                    const std::string code = (*one)[1];
                    const bool isNumber = std::isdigit(static_cast<unsigned char>(code[0])) != 0;
                    errors.push_back(
                        {entry.path().filename(), isNumber ? std::stoi(code) : numbers.at(code), (*one)[2]});
                }
            }
        }
    return errors;
}

/// Two formats have always had each of these numbers for a text of their own.
const std::set<int> sharedCodes{30, 31, 51, 60};

TEST(Errors, HaveOneTextEach) {
    std::map<int, std::string> texts;
    for (const Error& error : errorsInSources()) {
        EXPECT_FALSE(error.text.empty()) << error.code;
        const auto [known, isNew] = texts.emplace(error.code, error.text);
        EXPECT_TRUE(isNew || known->second == error.text || sharedCodes.contains(error.code)) << error.code;
    }
    EXPECT_GE(texts.size(), 58U);  // the sources were understood
}

TEST(Errors, BelongToOneFormatEach) {
    std::map<int, std::string> files;
    for (const Error& error : errorsInSources()) {
        const auto [known, isNew] = files.emplace(error.code, error.file);
        EXPECT_TRUE(isNew || known->second == error.file || sharedCodes.contains(error.code)) << error.code;
    }
}

/// The entries "ERROR_<code>" of a language's table.
std::map<int, std::string> errorsInTable(const std::string& language) {
    static const std::regex entry(R"re("ERROR_(\d+)"\s*=\s*"((?:[^"\\]|\\.)*)"\s*;)re");
    const std::string table = textOf(sourceFolder / "resources" / (language + ".lproj") / "VLMDesign.strings");
    std::map<int, std::string> texts;
    for (std::sregex_iterator found(table.begin(), table.end(), entry), none; found != none; ++found) {
        const int code = std::stoi((*found)[1]);
        EXPECT_TRUE(texts.emplace(code, (*found)[2]).second) << language << " has two texts for " << code;
    }
    return texts;
}

TEST(Errors, HaveATextInEveryLanguage) {
    const auto english = errorsInTable("en");
    const auto german = errorsInTable("de");
    for (const Error& error : errorsInSources()) {
        if (sharedCodes.contains(error.code)) continue;  // a number with two texts has no place in a table
        ASSERT_TRUE(english.contains(error.code)) << error.code;
        EXPECT_EQ(english.at(error.code), error.text) << error.code;
        ASSERT_TRUE(german.contains(error.code)) << error.code;
        EXPECT_FALSE(german.at(error.code).empty()) << error.code;
        EXPECT_NE(german.at(error.code), error.text) << error.code;
    }
    for (const int code : sharedCodes) EXPECT_FALSE(english.contains(code) || german.contains(code)) << code;
}

}  // namespace
}  // namespace velamo
