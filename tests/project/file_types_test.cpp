// The files that tell the desktops of our formats know all of them, and no others.
#include <gtest/gtest.h>

#include <map>
#include <regex>
#include <set>
#include <string>

#include "tests/project/desktop_files.h"

namespace velamo {
namespace {

using namespace test;

const std::string parentType = "application/x-embroidery";

/// What the pattern's group holds wherever it is found.
std::multiset<std::string> allFound(const std::string& text, const std::string& pattern) {
    const std::regex expression(pattern);
    std::multiset<std::string> found;
    for (std::sregex_iterator one(text.begin(), text.end(), expression), none; one != none; ++one)
        found.insert((*one)[1]);
    return found;
}

/// The elements of the file types by the type that they declare.
std::map<std::string, std::string> declaredTypes() {
    static const std::regex element(R"re(<mime-type type="([^"]*)">([\s\S]*?)</mime-type>)re");
    const std::string text = integrationFile("file-types/velamo.xml");
    std::map<std::string, std::string> types;
    for (std::sregex_iterator one(text.begin(), text.end(), element), none; one != none; ++one)
        EXPECT_TRUE(types.emplace((*one)[1], (*one)[2]).second) << (*one)[1] << " is declared twice";
    return types;
}

TEST(FileTypes, AreThoseOfTheFormatsAndTheirParent) {
    auto expected = allMimeTypes();
    expected.insert(parentType);
    std::set<std::string> declared;
    for (const auto& [type, element] : declaredTypes()) declared.insert(type);
    EXPECT_EQ(declared, expected);
}

TEST(FileTypes, HaveThePatternsOfTheFormatsAlone) {
    std::map<std::string, std::multiset<std::string>> expected{{parentType, {}}};
    for (const Format& format : allFormats()) expected[mimeTypeOf(format)].insert("*." + std::string(format.extension));
    std::map<std::string, std::multiset<std::string>> declared;
    for (const auto& [type, element] : declaredTypes())
        declared[type] = allFound(element, R"re(<glob pattern="([^"]*)")re");
    EXPECT_EQ(declared, expected);
}

TEST(FileTypes, AreDesignsAndPicturesAndNeverText) {
    for (const auto& [type, element] : declaredTypes()) {
        const std::multiset<std::string> parents =
            type == parentType ? std::multiset<std::string>{} : std::multiset<std::string>{parentType};
        EXPECT_EQ(allFound(element, R"re(<sub-class-of type="([^"]*)"/>)re"), parents) << type;
        EXPECT_EQ(allFound(element, R"re(<generic-icon name="([^"]*)"/>)re"),
                  std::multiset<std::string>{"image-x-generic"})
            << type;
        EXPECT_EQ(allFound(element, R"re(<comment>([^<]*embroidery design)</comment>)re").size(), 1U) << type;
    }
}

/// The table says "| `.pcs`, `.pcd` | `application/...` |".
TEST(FileTypes, StandInTheirDocument) {
    std::map<std::string, std::multiset<std::string>> expected;
    for (const Format& format : allFormats()) expected[mimeTypeOf(format)].insert("." + std::string(format.extension));
    std::map<std::string, std::multiset<std::string>> shown;
    const std::string text = integrationFile("../docs/desktop/file-types.md");
    static const std::regex row(R"(\| (`\..*) \| `(.*)` \|)");
    for (std::sregex_iterator one(text.begin(), text.end(), row), none; one != none; ++one)
        shown[(*one)[2]] = allFound((*one)[1], "`([^`]*)`");
    EXPECT_EQ(shown, expected);
}

/// A type that the list leaves out gets no thumbnails, though its parent is on it.
TEST(Thumbnails, AreDrawnOfEveryTypeAndOfNoOther) {
    const std::string entry = test::integrationFile("thumbnails/velamo.thumbnailer");
    std::smatch list;
    ASSERT_TRUE(std::regex_search(entry, list, std::regex("\nMimeType=(.*;)\n")));
    const auto types = allFound(list[1], "([^;]+);");
    EXPECT_EQ(std::set<std::string>(types.begin(), types.end()), test::allMimeTypes());
    EXPECT_EQ(types.size(), test::allMimeTypes().size());
}

TEST(Thumbnails, AreDrawnOfTheSameTypesInKde) {
    const auto types =
        allFound(test::integrationFile("kde-thumbnails/velamothumbnail.json"), "\"(application/[^\"]+)\"");
    EXPECT_EQ(std::set<std::string>(types.begin(), types.end()), test::allMimeTypes());
    EXPECT_EQ(types.size(), test::allMimeTypes().size());
}

}  // namespace
}  // namespace velamo
