#include "catalogue/search.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/catalogue/support.h"

namespace velamo {
namespace {

struct Known {
    const char* folder;
    const char* name;
    float width;
    float height;
    float stitches;
    float colors;
    std::int64_t modified;
    const char* format = "DST";
    std::int64_t blocks = 1;
};
const std::vector<Known> known{
    {"/home/rose/Designs", "Lily.dst", 50, 60, 1000, 2, 30, "PES", 3},
    {"/home/rose/Designs/Flowers", "rose.dst", 123.4F, 40, 2000, 4, 10, "JEF+", 5},
    {"/home/rose/Designs/Flowers", "Ähre.dst", 100, 10.1F, 500, 1, 20},
    {"/home/rose/Designs/Flowers 2", "50%_off.dst", 99.9F, 10, 16'777'216, 12, 40},
    {"/home/rose/Designs/a_b", "x.dst", 0.5F, 0, 0, 1, 50},
};

FileFacts factsOf(const Known& design) {
    DesignFacts facts;
    facts.attributes = {design.width, design.height, design.stitches, design.colors};
    facts.format = design.format;
    facts.blocks = design.blocks;
    return {.content = std::move(facts)};
}

class Search : public testing::Test {
protected:
    Search() {
        for (const Known& design : known) {
            const std::filesystem::path folder = design.folder;
            const auto words = std::filesystem::relative(folder, "/home/rose").native();
            catalogue_.putDesign(catalogue_.putFolder(folder, words), design.name,
                                 {.design = {1, design.modified}, .sideFile = {}, .reader = 0}, factsOf(design));
        }
        catalogue_.putDesign(catalogue_.putFolder("/home/rose/Designs/Torn", "Designs/Torn"), "torn.dst", {},
                             {.content = DesignFailure{"domain", 123, "too short"}});
    }
    [[nodiscard]] std::vector<std::string> names(const SearchRequest& request) const {
        std::vector<std::string> names;
        for (const FoundDesign& design : catalogue_.search(request)) names.push_back(design.file.filename());
        return names;
    }

    test::TemporaryFolder folder_;
    Catalogue catalogue_ = Catalogue::openForIndexing(folder_.path() / "catalogue.sqlite");
};

struct Row {
    const char* name;
    SearchRequest request;
    std::vector<std::string> names;
};
class SearchRows : public Search, public testing::WithParamInterface<Row> {};

TEST_P(SearchRows, FindWhatTheRowSays) {
    EXPECT_EQ(names(GetParam().request), GetParam().names);
}

const std::vector<std::string> all{"50%_off.dst", "Ähre.dst", "Lily.dst", "rose.dst", "x.dst"};

INSTANTIATE_TEST_SUITE_P(
    Words, SearchRows,
    testing::Values(Row{"NoneFindsAll", {}, all}, Row{"Name", {.words = {"lily"}}, {"Lily.dst"}},
                    Row{"AnyCase", {.words = {"LILY"}}, {"Lily.dst"}},
                    Row{"NotAboveTheIndexedFolder", {.words = {"rose"}}, {"rose.dst"}},
                    Row{"FolderName", {.words = {"flowers"}}, {"50%_off.dst", "Ähre.dst", "rose.dst"}},
                    Row{"IndexedFolderItself", {.words = {"designs"}}, all},
                    Row{"AllMustMatch", {.words = {"flowers", "rose"}}, {"rose.dst"}},
                    Row{"InNameAndFolder", {.words = {"flowers/ro"}}, {"rose.dst"}},
                    Row{"WithSpace", {.words = {"Flowers 2"}}, {"50%_off.dst"}},
                    Row{"PercentIsItself", {.words = {"%"}}, {"50%_off.dst"}},
                    Row{"UnderscoreIsItself", {.words = {"a_b"}}, {"x.dst"}},
                    Row{"QuotesAreThemselves", {.words = {"' OR 1=1 --"}}, {}},
                    Row{"LettersBeyondAscii", {.words = {"äHRE"}}, {"Ähre.dst"}},
                    Row{"WithoutItsAccent", {.words = {"ahre"}}, {"Ähre.dst"}},
                    Row{"WithAnAccentTooMany", {.words = {"líly"}}, {"Lily.dst"}},
                    Row{"DecomposedLetters", {.words = {"a\u0308hre"}}, {"Ähre.dst"}},
                    Row{"Nothing", {.words = {"zzz"}}, {}}),
    [](const auto& row) { return row.param.name; });

TEST_F(Search, TakesAnyNumberOfWords) {
    SearchRequest request;
    for (int i = 0; i < 40'000; ++i) request.words.emplace_back(i % 2 == 0 ? "flowers" : "Ro");
    EXPECT_EQ(names(request), std::vector<std::string>{"rose.dst"});
    request.words.emplace_back("");  // is in every name
    EXPECT_EQ(names(request), std::vector<std::string>{"rose.dst"});
    request.words.emplace_back("lily");
    EXPECT_EQ(names(request), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(
    Ranges, SearchRows,
    testing::Values(Row{"WidthWithin", {.width = NumberRange{50, 100}}, {"50%_off.dst", "Ähre.dst", "Lily.dst"}},
                    Row{"BothEndsBelong", {.width = NumberRange{99.9, 100}}, {"50%_off.dst", "Ähre.dst"}},
                    Row{"NumbersAreThoseOfFloats", {.width = NumberRange{123.4, 123.4}}, {"rose.dst"}},
                    Row{"UpTo", {.height = NumberRange{{}, 10}}, {"50%_off.dst", "x.dst"}},
                    Row{"From", {.height = NumberRange{40, {}}}, {"Lily.dst", "rose.dst"}},
                    Row{"Stitches", {.stitches = NumberRange{1000, 2000}}, {"Lily.dst", "rose.dst"}},
                    Row{"Colors", {.colors = NumberRange{{}, 2}}, {"Ähre.dst", "Lily.dst", "x.dst"}},
                    Row{"TwoAtOnce", {.width = NumberRange{{}, 100}, .colors = NumberRange{2, 4}}, {"Lily.dst"}},
                    Row{"Blocks", {.blocks = NumberRange{2, 5}}, {"Lily.dst", "rose.dst"}},
                    Row{"BeyondAllFloats", {.width = NumberRange{1e300, {}}}, {}},
                    Row{"Zero", {.stitches = NumberRange{0, 0}}, {"x.dst"}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(Formats, SearchRows,
                         testing::Values(Row{"One", {.formats = {"pes"}}, {"Lily.dst"}},
                                         Row{"OneOfTwo", {.formats = {"JEF+", "PES"}}, {"Lily.dst", "rose.dst"}},
                                         Row{"None", {.formats = {"JEF"}}, {}},
                                         Row{"QuotesAreThemselves", {.formats = {"') OR (1=1"}}, {}}),
                         [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(Hoops, SearchRows,
                         testing::Values(Row{"JustFits", {.field = SewingField{50, 60}}, {"Lily.dst", "x.dst"}},
                                         Row{"EitherWayRound", {.field = SewingField{60, 50}}, {"Lily.dst", "x.dst"}},
                                         Row{"TooNarrow", {.field = SewingField{60, 49.9}}, {"x.dst"}},
                                         Row{"NumbersAreThoseOfFloats",
                                             {.field = SewingField{40, 123.4}},
                                             {"50%_off.dst", "Ähre.dst", "rose.dst", "x.dst"}},
                                         Row{"Large", {.field = SewingField{1000, 1000}}, all}),
                         [](const auto& row) { return row.param.name; });

TEST_F(Search, LooksForThreads) {
    const auto folder = catalogue_.putFolder("/home/rose/Designs/Flowers", "Designs/Flowers");
    const auto put = [&](const char* name, const std::vector<std::optional<std::uint32_t>>& colors) {
        DesignFacts facts;
        facts.format = "PES";
        for (const auto& color : colors)
            facts.threads.push_back({.color = color, .name = {}, .palette = {}, .stitches = 1, .length = 1});
        catalogue_.putDesign(folder, name, {}, {.content = facts});
    };
    put("poppy.pes", {0xED171F, 0x276C3B});
    put("blood.pes", {0x8B0000});
    put("grass.pes", {0x276C3B, {}, 0x32CD32});
    const auto having = [this](const std::vector<std::string>& colors) {
        SearchRequest request;
        for (const auto& color : colors) request.has.push_back(*parseColor(color));
        return names(request);
    };
    EXPECT_EQ(having({"red"}), (std::vector<std::string>{"blood.pes", "poppy.pes"}));
    EXPECT_EQ(having({"red", "grün"}), (std::vector<std::string>{"poppy.pes"}));
    EXPECT_EQ(having({"#ED1720"}), (std::vector<std::string>{"poppy.pes"}));
    EXPECT_EQ(having({"blue"}), (std::vector<std::string>{}));
    put("poppy.pes", {0x0000FF});
    EXPECT_EQ(having({"red"}), (std::vector<std::string>{"blood.pes"}));
    EXPECT_EQ(having({"blue"}), (std::vector<std::string>{"poppy.pes"}));
}

TEST_F(Search, CountsAllThatItFinds) {
    EXPECT_EQ(catalogue_.count({}), 5);
    EXPECT_EQ(catalogue_.count({.words = {"flowers"}, .limit = 1, .offset = 2}), 3);
    EXPECT_EQ(catalogue_.count({.words = {"zzz"}}), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Orders, SearchRows,
    testing::Values(
        Row{"Width", {.sortKey = SortKey::width}, {"x.dst", "Lily.dst", "50%_off.dst", "Ähre.dst", "rose.dst"}},
        Row{"Height", {.sortKey = SortKey::height}, {"x.dst", "50%_off.dst", "Ähre.dst", "rose.dst", "Lily.dst"}},
        Row{"Stitches", {.sortKey = SortKey::stitches}, {"x.dst", "Ähre.dst", "Lily.dst", "rose.dst", "50%_off.dst"}},
        Row{"ColorsThenName",
            {.sortKey = SortKey::colors},
            {"Ähre.dst", "x.dst", "Lily.dst", "rose.dst", "50%_off.dst"}},
        Row{"Date", {.sortKey = SortKey::date}, {"rose.dst", "Ähre.dst", "Lily.dst", "50%_off.dst", "x.dst"}},
        Row{"NameReversed", {.isReversed = true}, {all.rbegin(), all.rend()}},
        Row{"Limit", {.sortKey = SortKey::date, .limit = 2}, {"rose.dst", "Ähre.dst"}},
        Row{"Offset", {.limit = 2, .offset = 1}, {"Ähre.dst", "Lily.dst"}},
        Row{"OffsetWithoutLimit", {.offset = 3}, {"rose.dst", "x.dst"}}, Row{"OffsetBehindTheEnd", {.offset = 99}, {}},
        Row{"LimitOfReversed", {.sortKey = SortKey::date, .isReversed = true, .limit = 1}, {"x.dst"}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Folders, SearchRows,
    testing::Values(Row{"Below", {.folder = "/home/rose/Designs"}, all},
                    Row{"NotItsNeighbour", {.folder = "/home/rose/Designs/Flowers"}, {"Ähre.dst", "rose.dst"}},
                    Row{"Root", {.folder = "/"}, all}, Row{"Elsewhere", {.folder = "/home"}, all},
                    Row{"None", {.folder = "/home/rose/Des"}, {}}),
    [](const auto& row) { return row.param.name; });

INSTANTIATE_TEST_SUITE_P(Broken, SearchRows,
                         testing::Values(Row{"All", {.isBroken = true}, {"torn.dst"}},
                                         Row{"ByWord", {.words = {"torn"}, .isBroken = true}, {"torn.dst"}},
                                         Row{"NoOther", {.words = {"lily"}, .isBroken = true}, {}}),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
