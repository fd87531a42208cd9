// Archives are folders of designs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/catalogue/support.h"
#include "tests/support/archives.h"

namespace velamo {
namespace {

using test::PackedFile;
using test::soundDst;
using test::tarOf;
using test::zipOf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const std::vector<PackedFile> tree{{"rose.dst", soundDst(11)},
                                   {"small/lily.dst", soundDst(5)},
                                   {"small/torn.dst", test::brokenDst},
                                   {"small/notes.txt", test::bytes("sew me")},
                                   {"__MACOSX/rose.dst", soundDst(3)}};

class IndexedArchives : public testing::Test {
protected:
    IndexSummary run(const std::vector<std::filesystem::path>& places, std::int64_t reader = 1) {
        told_ = {};
        return test::runIndexer(catalogue_, places, told_, reader, [this](const std::filesystem::path& file) {
            ++reads_;
            return readFacts(file);
        });
    }
    std::filesystem::path write(const std::string& name, const test::Bytes& bytes) {
        return folder_.write("designs/" + name, bytes);
    }
    /// Paths below the folder of designs, with the colon of what is broken.
    [[nodiscard]] std::vector<std::string> known() const {
        std::vector<std::string> paths;
        for (const bool isBroken : {false, true})
            for (const auto& path : test::pathsFound(catalogue_, {.isBroken = isBroken}))
                paths.push_back((isBroken ? ":" : "") + path.substr(designs_.native().size() + 1));
        return paths;
    }
    [[nodiscard]] std::vector<std::string> found(const SearchRequest& request) const {
        std::vector<std::string> names;
        for (const auto& path : test::pathsFound(catalogue_, request))
            names.push_back(path.substr(designs_.native().size() + 1));
        return names;
    }

    test::TemporaryFolder folder_;
    std::filesystem::path designs_ = std::filesystem::canonical(folder_.path()) / "designs";
    Catalogue catalogue_ = Catalogue::openForIndexing(folder_.path() / "catalogue.sqlite");
    test::Told told_;
    int reads_ = 0;
};

TEST_F(IndexedArchives, HaveTheRowsOfTheirTree) {
    for (const PackedFile& file : tree) write("loose/" + file.name, file.bytes);
    std::filesystem::remove_all(designs_ / "loose" / "__MACOSX");
    write("packed.zip", zipOf(tree));
    write("packed.tar", tarOf(tree));
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 9, .broken = 3}));
    EXPECT_THAT(known(),
                UnorderedElementsAre("loose/rose.dst", "loose/small/lily.dst", ":loose/small/torn.dst",
                                     "packed.zip/rose.dst", "packed.zip/small/lily.dst", ":packed.zip/small/torn.dst",
                                     "packed.tar/rose.dst", "packed.tar/small/lily.dst", ":packed.tar/small/torn.dst"));
    const auto factsOf = [this](const char* place) {
        const auto designs = catalogue_.search({.folder = designs_ / place, .withThreads = true});
        EXPECT_EQ(designs.size(), 2U);
        return std::pair(designs.at(0).facts, designs.at(0).hash);
    };
    EXPECT_EQ(factsOf("packed.zip"), factsOf("loose"));
    EXPECT_EQ(factsOf("packed.tar"), factsOf("loose"));
}

TEST_F(IndexedArchives, AreSearchedAsFolders) {
    write("Flowers.zip", zipOf(tree));
    run({designs_});
    EXPECT_THAT(found({.words = {"flowers", "lily"}}), ElementsAre("Flowers.zip/small/lily.dst"));
    EXPECT_THAT(found({.words = {"small"}}), ElementsAre("Flowers.zip/small/lily.dst"));
    EXPECT_THAT(found({.folder = designs_ / "Flowers.zip" / "small"}), ElementsAre("Flowers.zip/small/lily.dst"));
    EXPECT_THAT(found({.folder = designs_ / "Flowers.zip"}),
                ElementsAre("Flowers.zip/small/lily.dst", "Flowers.zip/rose.dst"));
}

TEST_F(IndexedArchives, HaveSideFiles) {
    write("packed.zip", zipOf({{"rose.dst", soundDst(11)}, {"rose.threads", test::bytes("no list of threads")}}));
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 1}));
}

TEST_F(IndexedArchives, AreNotOpenedAgainUntilTheyChange) {
    const auto zip = write("packed.zip", zipOf(tree));
    run({designs_});
    EXPECT_EQ(reads_, 1);
    EXPECT_EQ(run({designs_}), (IndexSummary{.unchanged = 3, .broken = 1}));
    EXPECT_EQ(reads_, 1);
    EXPECT_EQ(told_.files, 3);
    std::filesystem::last_write_time(zip, std::filesystem::last_write_time(zip) + std::chrono::seconds(1));
    EXPECT_EQ(run({designs_}), (IndexSummary{.changed = 3, .broken = 1}));
    EXPECT_EQ(run({designs_}, 2), (IndexSummary{.changed = 3, .broken = 1}));
    EXPECT_EQ(reads_, 3);
}

TEST_F(IndexedArchives, LoseWhatLeftThem) {
    write("packed.zip", zipOf(tree));
    run({designs_});
    write("packed.zip", zipOf({{"small/lily.dst", soundDst(7)}, {"new/iris.dst", soundDst(4)}}));
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 1, .changed = 1, .removed = 2}));
    EXPECT_THAT(known(), UnorderedElementsAre("packed.zip/small/lily.dst", "packed.zip/new/iris.dst"));
}

TEST_F(IndexedArchives, VanishWithAllThatIsInThem) {
    const auto zip = write("a/packed.zip", zipOf(tree));
    write("rose.dst", soundDst());
    run({designs_});
    std::filesystem::remove(zip);
    EXPECT_EQ(run({designs_}), (IndexSummary{.unchanged = 1, .removed = 3}));
    EXPECT_THAT(known(), ElementsAre("rose.dst"));
    write("a/packed.zip", zipOf(tree));
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 3, .unchanged = 1, .broken = 1}));
}

TEST_F(IndexedArchives, StayWhileTheirFolderIsAway) {
    write("packed.zip", zipOf(tree));
    run({designs_});
    std::filesystem::rename(designs_, folder_.path() / "elsewhere");
    EXPECT_EQ(run({}), (IndexSummary{}));
    EXPECT_EQ(known().size(), 3U);
    EXPECT_TRUE(catalogue_.search({}).at(0).isAway);
    std::filesystem::rename(folder_.path() / "elsewhere", designs_);
    EXPECT_EQ(run({}), (IndexSummary{.unchanged = 3, .broken = 1}));
    EXPECT_EQ(reads_, 1);
    EXPECT_FALSE(catalogue_.search({}).at(0).isAway);
}

TEST_F(IndexedArchives, MayBeNamedAlone) {
    const auto zip = write("packed.zip", zipOf(tree));
    write("rose.dst", soundDst());
    EXPECT_EQ(run({zip}), (IndexSummary{.added = 3, .broken = 1}));
    EXPECT_EQ(run({}), (IndexSummary{.unchanged = 3, .broken = 1}));
    std::filesystem::remove(zip);
    EXPECT_EQ(run({}), (IndexSummary{.removed = 3, .isComplete = true}));
    EXPECT_THAT(known(), IsEmpty());
}

TEST_F(IndexedArchives, ThatAreDamagedKeepWhatCanBeRead) {
    auto bytes = zipOf(tree);
    bytes.resize(bytes.size() - 40);  // its directory
    write("cut.zip", bytes);
    write("nothing.zip", test::bytes("PK nothing"));
    const auto summary = run({designs_});
    EXPECT_EQ(told_.problems.count((designs_ / "nothing.zip").native()), 1U);
    EXPECT_THAT(known(), testing::IsSupersetOf({"cut.zip/rose.dst", "cut.zip/small/lily.dst", ":nothing.zip"}));
    EXPECT_EQ(run({designs_}), (IndexSummary{.unchanged = summary.added, .broken = summary.broken}));
    write("nothing.zip", zipOf({{"rose.dst", soundDst()}}));
    EXPECT_EQ(run({designs_}).removed, 1);  // the row that said so
    EXPECT_THAT(known(), testing::Contains("nothing.zip/rose.dst"));
}

TEST_F(IndexedArchives, HaveRowsForNamesThatLeadOut) {
    write("evil.zip", zipOf({{"../up.dst", soundDst()},
                             {"/etc/root.dst", soundDst()},
                             {"a/../../out.dst", soundDst()},
                             {"rose.dst", soundDst()}}));
    EXPECT_EQ(indexFolders(catalogue_, {{designs_}}, factsReaders(1).readers, 1, told_.observer()),
              (IndexSummary{.added = 4, .broken = 3}));
    EXPECT_THAT(known(), UnorderedElementsAre("evil.zip/rose.dst", ":evil.zip/(..)/up.dst",
                                              ":evil.zip/(root)/etc/root.dst", ":evil.zip/a/(..)/(..)/out.dst"));
    EXPECT_EQ(catalogue_.search({.words = {"root"}, .isBroken = true}).at(0).failure->message,
              "its name leads out of the archive");
}

TEST_F(IndexedArchives, ProtectedByAPasswordAreOneRow) {
    constexpr int isEncrypted = 1;
    const PackedFile locked{"rose.dst", soundDst(), isEncrypted};
    write("locked.zip", zipOf({locked, {"lily.dst", soundDst(), isEncrypted}}));
    write("half.zip", zipOf({locked, {"lily.dst", soundDst()}}));
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 3, .broken = 2}));
    EXPECT_THAT(known(), UnorderedElementsAre(":locked.zip", ":half.zip/rose.dst", "half.zip/lily.dst"));
    EXPECT_EQ(catalogue_.search({.words = {"locked"}, .isBroken = true}).at(0).failure->message,
              "it is protected by a password");
    EXPECT_EQ(run({designs_}), (IndexSummary{.unchanged = 3, .broken = 2}));
}

TEST_F(IndexedArchives, WithinArchivesAreNotOpened) {
    write("outer.zip", zipOf({{"inner.zip", zipOf(tree)}, {"rose.dst", soundDst()}}));
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 1}));
}

TEST_F(IndexedArchives, AreFoldersWhereTheyAreFolders) {
    write("x.zip/rose.dst", soundDst());
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 1}));
    EXPECT_THAT(known(), ElementsAre("x.zip/rose.dst"));
}

TEST_F(IndexedArchives, KeepTheBytesOfNamesAndAreFoundByText) {
    const std::string cp437 = "Bl\x81te.dst";
    write("old.zip", zipOf({{cp437, soundDst()}}));
    run({designs_});
    EXPECT_THAT(found({.words = {"blüte"}}), ElementsAre("old.zip/" + cp437));
}

TEST_F(IndexedArchives, AreForgotten) {
    const auto zip = write("packed.zip", zipOf(tree));
    run({zip});
    EXPECT_EQ(catalogue_.forget(zip), 3);
    EXPECT_THAT(known(), IsEmpty());
    EXPECT_EQ(run({zip}), (IndexSummary{.added = 3, .broken = 1}));
    EXPECT_EQ(catalogue_.forget(zip / "small"), 2);
    EXPECT_EQ(run({}), (IndexSummary{.added = 2, .changed = 1, .broken = 1}));
    EXPECT_EQ(catalogue_.forget(designs_), 3);
}

/// What the system cannot read this time leaves what is known.
TEST_F(IndexedArchives, ThatCannotBeReadThisTimeStay) {
    const auto zip = write("packed.zip", zipOf(tree));
    run({designs_});
    std::filesystem::last_write_time(zip, std::filesystem::last_write_time(zip) + std::chrono::seconds(1));
    const auto summary = test::runIndexer(catalogue_, {designs_}, told_, 1, [](const std::filesystem::path&) {
        return FactsOutcome(std::error_code(EIO, std::generic_category()));
    });
    EXPECT_EQ(summary, (IndexSummary{.skipped = 1, .isComplete = false}));
    EXPECT_EQ(known().size(), 3U);
}

TEST_F(IndexedArchives, AreReadInConfinedProcesses) {
    write("packed.zip", zipOf(tree));
    write("packed.tar", tarOf(tree));
    write("rose.dst", soundDst());
    EXPECT_EQ(indexFolders(catalogue_, {{designs_}}, factsReaders(2).readers, 1, told_.observer()),
              (IndexSummary{.added = 7, .broken = 2}));
    EXPECT_THAT(known(), UnorderedElementsAre("rose.dst", "packed.zip/rose.dst", "packed.zip/small/lily.dst",
                                              ":packed.zip/small/torn.dst", "packed.tar/rose.dst",
                                              "packed.tar/small/lily.dst", ":packed.tar/small/torn.dst"));
}

}  // namespace
}  // namespace velamo
