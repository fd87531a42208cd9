#include "catalogue/indexer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <random>
#include <thread>

#include "tests/catalogue/support.h"
#include "tests/support/other_user.h"

namespace velamo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

class Indexer : public testing::Test {
protected:
    IndexSummary run() { return run({designs_}); }
    IndexSummary run(const std::vector<std::filesystem::path>& folders, std::int64_t readerNumber = 1) {
        told_ = {};
        opened_ = 0;
        return test::runIndexer(catalogue_, folders, told_, readerNumber, [this](const std::filesystem::path& file) {
            ++opened_;
            return readFacts(file);
        });
    }
    std::filesystem::path write(const std::filesystem::path& name, const test::Bytes& bytes = test::soundDst()) const {
        return folder_.write("designs" / name, bytes);
    }
    /// The names found, relative to the folder of designs.
    [[nodiscard]] std::vector<std::string> found(const SearchRequest& request = {}) const {
        std::vector<std::string> names;
        for (const auto& path : test::pathsFound(catalogue_, request))
            names.push_back(std::filesystem::path(path).lexically_relative(designs_));
        return names;
    }

    test::TemporaryFolder folder_;
    std::filesystem::path designs_ = std::filesystem::canonical(folder_.path()) / "designs";
    Catalogue catalogue_ = Catalogue::openForIndexing(folder_.path() / "catalogue.sqlite");
    test::Told told_;
    std::atomic<int> opened_ = 0;
};

TEST_F(Indexer, FindsDesignsInAllFolders) {
    write("rose.dst", test::soundDst(11));
    write("a/b/LILY.DST");
    write("a/readme.txt");
    write("a/b/c/dst");
    EXPECT_EQ(run(), (IndexSummary{.added = 2}));
    EXPECT_THAT(found(), UnorderedElementsAre("rose.dst", "a/b/LILY.DST"));
    const auto rose = catalogue_.search({.words = {"rose"}});
    ASSERT_EQ(rose.size(), 1U);
    EXPECT_EQ(rose[0].facts.attributes, (DesignAttributes{10.0F, 0.0F, 11.0F, 1.0F}));
    EXPECT_EQ(told_.files, 2);
    EXPECT_NEAR(told_.finishedShare, 1.0, 1e-9);
    EXPECT_FALSE(told_.everWentBack);
}

TEST_F(Indexer, LeavesUnchangedFilesClosed) {
    write("rose.dst");
    write("torn.dst", test::brokenDst);
    run();
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 2, .broken = 1}));
    EXPECT_EQ(opened_, 0);
    EXPECT_THAT(told_.problems, IsEmpty());
}

TEST_F(Indexer, ReadsChangedFilesAgain) {
    const auto rose = write("rose.dst", test::soundDst(2));
    const auto lily = write("lily.dst", test::soundDst(2));
    run();
    write("rose.dst", test::soundDst(3));  // another size
    std::filesystem::last_write_time(lily, std::filesystem::last_write_time(lily) + std::chrono::nanoseconds(1));
    EXPECT_EQ(run(), (IndexSummary{.changed = 2}));
    EXPECT_EQ(catalogue_.search({.words = {"rose"}})[0].facts.attributes.stitches, 3.0F);
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 2}));
}

TEST_F(Indexer, ReadsAgainWhenTheSideFileAppearsChangesOrVanishes) {
    write("rose.dst");
    run();
    const auto side = write("rose.threads", test::bytes(1));
    EXPECT_EQ(run(), (IndexSummary{.changed = 1}));
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 1}));
    write("rose.threads", test::bytes(1, 2));
    EXPECT_EQ(run(), (IndexSummary{.changed = 1}));
    std::filesystem::last_write_time(side, std::filesystem::last_write_time(side) + std::chrono::seconds(1));
    EXPECT_EQ(run(), (IndexSummary{.changed = 1}));
    std::filesystem::remove(side);
    EXPECT_EQ(run(), (IndexSummary{.changed = 1}));
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 1}));
}

TEST_F(Indexer, ReadsEverythingAgainWithAnotherReader) {
    write("rose.dst");
    run({designs_}, 1);
    EXPECT_EQ(run({designs_}, 2), (IndexSummary{.changed = 1}));
    EXPECT_EQ(run({designs_}, 2), (IndexSummary{.unchanged = 1}));
}

TEST_F(Indexer, RemovesVanishedFilesAndFolders) {
    write("rose.dst");
    write("lily.dst");
    write("a/one.dst");
    write("a/b/two.dst");
    run();
    std::filesystem::remove(designs_ / "lily.dst");
    std::filesystem::remove_all(designs_ / "a");
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 1, .removed = 3}));
    EXPECT_THAT(found(), ElementsAre("rose.dst"));
    EXPECT_EQ(catalogue_.findFolder(designs_ / "a" / "b"), std::nullopt);
}

TEST_F(Indexer, LeavesOtherFoldersAlone) {
    write("a/one.dst");
    write("ab/two.dst");
    run();
    std::filesystem::remove(designs_ / "ab" / "two.dst");
    EXPECT_EQ(run({designs_ / "a"}), (IndexSummary{.unchanged = 1}));
    EXPECT_THAT(found(), UnorderedElementsAre("a/one.dst", "ab/two.dst"));
}

TEST_F(Indexer, RefreshesEarlierFoldersWithoutAnyNamed) {
    write("a/one.dst");
    write("b/two.dst");
    run({designs_ / "a"});
    run({designs_ / "b"});
    write("a/three.dst");
    write("c/four.dst");
    EXPECT_EQ(run({}), (IndexSummary{.added = 1, .unchanged = 2}));
    EXPECT_THAT(found(), UnorderedElementsAre("a/one.dst", "a/three.dst", "b/two.dst"));
}

TEST_F(Indexer, RecordsBrokenDesigns) {
    write("empty.dst", {});
    write("torn.dst", test::brokenDst);
    write("bare.dst", test::dstFile(test::dstEnd));
    EXPECT_EQ(run(), (IndexSummary{.added = 3, .broken = 3}));
    EXPECT_THAT(told_.problems,
                UnorderedElementsAre(Pair(designs_ / "empty.dst", 123), Pair(designs_ / "torn.dst", 123),
                                     Pair(designs_ / "bare.dst", 11)));
    const auto broken = catalogue_.search({.words = {"bare"}, .isBroken = true});
    ASSERT_EQ(broken.size(), 1U);
    EXPECT_EQ(broken[0].failure, (DesignFailure{"de.velamo.vlmdesign.ErrorDomain", 11, "File holds no stitches."}));
    EXPECT_THAT(found(), IsEmpty());
    write("torn.dst");
    EXPECT_EQ(run(), (IndexSummary{.changed = 1, .unchanged = 2, .broken = 2}));
    EXPECT_THAT(found(), ElementsAre("torn.dst"));
}

TEST_F(Indexer, ReportsAndSkipsWhatIsNoRegularFile) {
    write("rose.dst");
    write("folder.dst/inside.dst");
    ASSERT_EQ(::mkfifo((designs_ / "pipe.dst").c_str(), 0600), 0);
    std::filesystem::create_symlink("nowhere", designs_ / "dangling.dst");
    std::filesystem::create_symlink("loop.dst", designs_ / "loop.dst");
    std::filesystem::create_symlink("/dev/null", designs_ / "device.dst");
    EXPECT_EQ(run(), (IndexSummary{.added = 2, .skipped = 5}));
    EXPECT_THAT(told_.problems,
                UnorderedElementsAre(Pair(designs_ / "folder.dst", EISDIR), Pair(designs_ / "pipe.dst", EINVAL),
                                     Pair(designs_ / "dangling.dst", ENOENT), Pair(designs_ / "loop.dst", ELOOP),
                                     Pair(designs_ / "device.dst", EINVAL)));
    EXPECT_THAT(found(), UnorderedElementsAre("rose.dst", "folder.dst/inside.dst"));
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 2, .skipped = 5}));  // said again: it is still so
}

TEST_F(Indexer, SkipsSockets) {
    std::filesystem::create_directories(designs_);
    const auto path = (designs_ / "socket.dst").native();
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    ASSERT_LT(path.size(), sizeof(address.sun_path));
    path.copy(address.sun_path, path.size());
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(run(), (IndexSummary{.skipped = 1}));
    ::close(descriptor);
}

TEST_F(Indexer, RemovesWhatIsNoRegularFileAnyMore) {
    const auto rose = write("rose.dst");
    run();
    std::filesystem::remove(rose);
    ASSERT_EQ(::mkfifo(rose.c_str(), 0600), 0);
    EXPECT_EQ(run(), (IndexSummary{.removed = 1, .skipped = 1}));
    EXPECT_THAT(found(), IsEmpty());
}

TEST_F(Indexer, KeepsOddNames) {
    const std::vector<std::string> names{"with space.dst", "new\nline.dst", "\xFF\xFE.dst", "'quote\".dst",
                                         "-dash.dst",      "\x1b[31m.dst",  "%.dst",        ".dst.dst"};
    for (const auto& name : names) write(name);
    write("odd\nfolder\xFF/x.dst");
    EXPECT_EQ(run(), (IndexSummary{.added = 9}));
    auto expected = names;
    expected.emplace_back("odd\nfolder\xFF/x.dst");
    EXPECT_THAT(found(), testing::UnorderedElementsAreArray(expected));
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 9}));
}

TEST_F(Indexer, FollowsLinksToFoldersOnceAndEndsCircles) {
    write("a/rose.dst");
    folder_.write("outside/lily.dst", test::soundDst());
    std::filesystem::create_directory_symlink("..", designs_ / "a" / "up");
    std::filesystem::create_directory_symlink(".", designs_ / "self");
    std::filesystem::create_directory_symlink(folder_.path() / "outside", designs_ / "a" / "link");
    std::filesystem::create_directory_symlink("a", designs_ / "0 before a");
    EXPECT_EQ(run(), (IndexSummary{.added = 2}));
    EXPECT_THAT(found(), UnorderedElementsAre("a/rose.dst", "a/link/lily.dst"));
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 2}));
    EXPECT_NEAR(told_.finishedShare, 1.0, 1e-9);
}

TEST_F(Indexer, FollowsLinksToFiles) {
    const auto outside = folder_.write("outside/lily.dst", test::soundDst());
    std::filesystem::create_directories(designs_);
    std::filesystem::create_symlink(outside, designs_ / "rose.dst");
    EXPECT_EQ(run(), (IndexSummary{.added = 1}));
    folder_.write("outside/lily.dst", test::soundDst(5));
    EXPECT_EQ(run(), (IndexSummary{.changed = 1}));
}

TEST_F(Indexer, TakesAFolderInsideAnotherOnce) {
    write("a/rose.dst");
    write("lily.dst");
    EXPECT_EQ(run({designs_, designs_ / "a", designs_ / "." / "a" / ".." / "a" / ""}), (IndexSummary{.added = 2}));
    EXPECT_EQ(run({}), (IndexSummary{.unchanged = 2}));
    EXPECT_THAT(found(), UnorderedElementsAre("a/rose.dst", "lily.dst"));
}

TEST_F(Indexer, SearchesWordsFromTheOutermostFolderOn) {
    write("flowers/red/rose.dst");
    run({designs_ / "flowers" / "red"});
    EXPECT_THAT(found({.words = {"flowers"}}), IsEmpty());
    run({designs_});
    EXPECT_THAT(found({.words = {"flowers"}}), ElementsAre("flowers/red/rose.dst"));
    EXPECT_THAT(found({.words = {"designs/flowers/red/rose"}}), ElementsAre("flowers/red/rose.dst"));
    EXPECT_THAT(found({.words = {folder_.path().filename()}}), IsEmpty());
}

TEST_F(Indexer, TakesASingleFile) {
    const auto rose = write("rose.dst");
    write("lily.dst");
    EXPECT_EQ(run({rose}), (IndexSummary{.added = 1}));
    EXPECT_THAT(found(), ElementsAre("rose.dst"));
    EXPECT_EQ(run({rose}), (IndexSummary{.unchanged = 1}));
    EXPECT_EQ(run({rose, designs_}), (IndexSummary{.added = 1, .unchanged = 1}));
    std::filesystem::remove(rose);
    EXPECT_EQ(run({rose}), (IndexSummary{.removed = 1, .isComplete = false}));
    EXPECT_THAT(found(), ElementsAre("lily.dst"));
}

TEST_F(Indexer, RefusesASingleFileOfAnotherKind) {
    const auto text = write("readme.txt");
    const auto pipe = designs_ / "pipe.dst";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(run({text, pipe}), (IndexSummary{.isComplete = false}));
    EXPECT_THAT(told_.problems, UnorderedElementsAre(Pair(text.native(), 10), Pair(pipe.native(), EINVAL)));
    EXPECT_THAT(catalogue_.roots(), IsEmpty());
}

/// A folder that is away and comes back, as a stick does.
class AwayFolder : public Indexer {
protected:
    AwayFolder() {
        write("a/rose.dst");
        write("a/deep/tulip.dst");
        write("b/lily.dst");
    }
    void takeAway(const char* name) const { std::filesystem::rename(designs_ / name, folder_.path() / name); }
    void bringBack(const char* name) const { std::filesystem::rename(folder_.path() / name, designs_ / name); }

    const std::vector<std::string> all_{"b/lily.dst", "a/rose.dst", "a/deep/tulip.dst"};
};

TEST_F(AwayFolder, StaysInTheCatalogueUntilItIsBack) {
    run({designs_ / "a", designs_ / "b"});
    takeAway("a");
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(run({}), (IndexSummary{.unchanged = 1}));  // nobody named it now
        EXPECT_THAT(told_.problems, ElementsAre(Pair(designs_ / "a", ENOENT)));
        EXPECT_EQ(found(), all_);
    }
    EXPECT_EQ(run({designs_ / "a"}), (IndexSummary{.isComplete = false}));
    EXPECT_THAT(catalogue_.roots(), ElementsAre(designs_ / "a", designs_ / "b"));
    EXPECT_EQ(found(), all_);
    std::filesystem::remove(folder_.path() / "a" / "rose.dst");
    bringBack("a");
    write("a/new.dst");
    EXPECT_EQ(run({}), (IndexSummary{.added = 1, .unchanged = 2, .removed = 1}));
    EXPECT_THAT(told_.problems, IsEmpty());
}

TEST_F(AwayFolder, IsKeptInAnIndexedFolderToo) {
    run({designs_, designs_ / "a"});
    takeAway("a");
    EXPECT_EQ(run({}), (IndexSummary{.unchanged = 1}));
    EXPECT_THAT(told_.problems, ElementsAre(Pair(designs_ / "a", ENOENT)));
    EXPECT_EQ(run({designs_}), (IndexSummary{.unchanged = 1}));
    EXPECT_THAT(told_.problems, IsEmpty());  // the other one was not asked for
    EXPECT_EQ(found(), all_);
}

TEST_F(AwayFolder, KeepsWhatLiesBelowIt) {
    run({designs_ / "a"});
    takeAway("a");
    EXPECT_EQ(run({designs_ / "a" / "deep"}), (IndexSummary{.isComplete = false}));
    EXPECT_EQ(run({designs_ / "a" / "rose.dst"}), (IndexSummary{.isComplete = false}));
    EXPECT_THAT(catalogue_.roots(), ElementsAre(designs_ / "a"));
    EXPECT_THAT(found(), ElementsAre("a/rose.dst", "a/deep/tulip.dst"));
}

TEST_F(AwayFolder, KeepsSingleDesigns) {
    const auto rose = designs_ / "a" / "rose.dst";
    run({rose});
    takeAway("a");
    EXPECT_EQ(run({}), IndexSummary{});
    EXPECT_THAT(told_.problems, ElementsAre(Pair(rose, ENOENT)));
    EXPECT_THAT(found(), ElementsAre("a/rose.dst"));
    bringBack("a");
    std::filesystem::remove(rose);
    EXPECT_EQ(run({}), (IndexSummary{.removed = 1}));
    EXPECT_THAT(catalogue_.roots(), IsEmpty());
}

TEST_F(AwayFolder, ThatLayInAnIndexedOneHasVanished) {
    run();
    takeAway("a");
    EXPECT_EQ(run({designs_ / "a"}), (IndexSummary{.removed = 2, .isComplete = false}));
    EXPECT_THAT(found(), ElementsAre("b/lily.dst"));
}

TEST_F(AwayFolder, BehindALinkIsKept) {
    takeAway("a");
    std::filesystem::create_directory_symlink(folder_.path() / "a", designs_ / "a");
    std::filesystem::create_symlink(folder_.path() / "a" / "rose.dst", designs_ / "b" / "rose.dst");
    const std::vector<std::string> all{"b/lily.dst", "b/rose.dst", "a/rose.dst", "a/deep/tulip.dst"};
    EXPECT_EQ(run({designs_}), (IndexSummary{.added = 4}));
    std::filesystem::rename(folder_.path() / "a", folder_.path() / "unplugged");
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(run({}), (IndexSummary{.unchanged = 1, .skipped = 1}));
        EXPECT_THAT(told_.problems,
                    UnorderedElementsAre(Pair(designs_ / "a", ENOENT), Pair(designs_ / "b" / "rose.dst", ENOENT)));
        EXPECT_THAT(found(), testing::UnorderedElementsAreArray(all));
    }
    std::filesystem::remove(designs_ / "a");
    std::filesystem::remove(designs_ / "b" / "rose.dst");
    EXPECT_EQ(run({}), (IndexSummary{.unchanged = 1, .removed = 3}));
}

TEST_F(AwayFolder, MayGoInTheMiddleOfARun) {
    run({designs_ / "a", designs_ / "b"});
    auto observer = told_.observer();
    observer.progress = [&](const IndexProgress&) {
        if (std::filesystem::exists(designs_ / "a")) takeAway("a");
    };
    const FactsReader noReader = [](std::span<const std::filesystem::path> files) {
        return std::vector<FactsOutcome>(files.size(), FileFacts{DesignFacts{}});
    };
    EXPECT_EQ(indexFolders(catalogue_, {{}}, {noReader}, 1, observer), (IndexSummary{.unchanged = 1}));
    EXPECT_THAT(told_.problems, ElementsAre(Pair(designs_ / "a", ENOENT)));
    EXPECT_EQ(found(), all_);
}

TEST_F(AwayFolder, MayGoWhileItsDesignsAreRead) {
    run({designs_ / "a"});
    const auto summary =
        test::runIndexer(catalogue_, {designs_ / "a"}, told_, 2, [this](const std::filesystem::path& file) {
            if (std::filesystem::exists(designs_ / "a")) takeAway("a");
            return readFacts(file);
        });
    EXPECT_EQ(summary, (IndexSummary{.isComplete = false}));
    EXPECT_THAT(found(), ElementsAre("a/rose.dst", "a/deep/tulip.dst"));
}

TEST_F(Indexer, FailsForANamedFolderThatIsNotThere) {
    write("rose.dst");
    EXPECT_EQ(run({designs_, designs_ / "nowhere"}), (IndexSummary{.added = 1, .isComplete = false}));
    EXPECT_THAT(told_.problems, ElementsAre(Pair(designs_ / "nowhere", ENOENT)));
}

TEST_F(Indexer, SurvivesAReaderThatThrows) {
    write("rose.dst");
    const auto summary = test::runIndexer(catalogue_, {designs_}, told_, 1,
                                          [](const std::filesystem::path&) -> FactsOutcome { throw std::bad_alloc(); });
    EXPECT_EQ(summary, (IndexSummary{.skipped = 1, .isComplete = false}));
    EXPECT_THAT(told_.problems, ElementsAre(Pair(designs_ / "rose.dst", ENOMEM)));
}

/// A disk that fails for a moment must not leave a wrong design behind that is never read again.
TEST_F(Indexer, RecordsNothingOfAFileThatTheSystemFailsToRead) {
    write("rose.dst", test::soundDst(11));
    run();
    write("rose.dst", test::soundDst(13));
    const auto readBadly = [](const std::filesystem::path&) -> FactsOutcome {
        return std::make_error_code(std::errc::io_error);
    };
    told_ = {};
    EXPECT_EQ(test::runIndexer(catalogue_, {designs_}, told_, 1, readBadly),
              (IndexSummary{.skipped = 1, .isComplete = false}));
    EXPECT_THAT(told_.problems, ElementsAre(Pair(designs_ / "rose.dst", EIO)));
    EXPECT_EQ(catalogue_.search({}).at(0).facts.attributes.stitches, 11.0F);
    EXPECT_EQ(run(), (IndexSummary{.changed = 1}));
    EXPECT_EQ(catalogue_.search({}).at(0).facts.attributes.stitches, 13.0F);
}

TEST_F(Indexer, TakesAFileThatVanishesMeanwhileAsVanished) {
    const auto rose = write("rose.dst");
    run();
    write("rose.dst", test::soundDst(5));
    const auto summary = test::runIndexer(catalogue_, {designs_}, told_, 1, [&](const std::filesystem::path& file) {
        std::filesystem::remove(file);
        return readFacts(file);
    });
    EXPECT_EQ(summary, (IndexSummary{.removed = 1}));
    EXPECT_THAT(told_.problems, IsEmpty());
}

TEST_F(Indexer, TakesAFolderThatVanishesMeanwhileAsVanished) {
    write("a/rose.dst");
    write("z/lily.dst");
    write("z/deep/tulip.dst");
    run();
    auto observer = told_.observer();
    bool isWalking = false;  // the folders' names are known then, what they hold is not
    observer.progress = [&](const IndexProgress&) {
        if (!std::exchange(isWalking, true)) std::filesystem::remove_all(designs_ / "z");
    };
    const FactsReader noReader = [](std::span<const std::filesystem::path> files) {
        return std::vector<FactsOutcome>(files.size(), FileFacts{DesignFacts{}});
    };
    EXPECT_EQ(indexFolders(catalogue_, {{designs_}}, {noReader}, 1, observer),
              (IndexSummary{.unchanged = 1, .removed = 2}));
    EXPECT_THAT(told_.problems, IsEmpty());
    EXPECT_THAT(found(), ElementsAre("a/rose.dst"));
}

TEST_F(Indexer, SurvivesFoldersThatComeAndGo) {
    for (int i = 0; i < 20; ++i) write("stays/" + std::to_string(i) + ".dst");
    std::atomic<bool> isDone = false;
    std::thread other([&] {
        while (!isDone) {
            for (int i = 0; i < 20; ++i) write("goes/" + std::to_string(i % 4) + "/" + std::to_string(i) + ".dst");
            std::filesystem::remove_all(designs_ / "goes");
        }
    });
    for (int turn = 0; turn < 30; ++turn) EXPECT_TRUE(run().isComplete);
    isDone = true;
    other.join();
    EXPECT_TRUE(run().isComplete);
    EXPECT_EQ(found().size(), 20U);
    EXPECT_EQ(run(), (IndexSummary{.unchanged = 20}));
}

TEST_F(Indexer, ReadsTheNextTimeWhatIsBeingWritten) {
    write("rose.dst");
    const auto busy = [](const std::filesystem::path&) {
        return FactsOutcome(std::make_error_code(std::errc::resource_unavailable_try_again));
    };
    EXPECT_EQ(test::runIndexer(catalogue_, {designs_}, told_, 1, busy), (IndexSummary{.skipped = 1}));
    EXPECT_EQ(told_.problems.size(), 1U);
    EXPECT_EQ(run(), (IndexSummary{.added = 1}));
}

TEST_F(Indexer, WaitsForAnotherProgramThatWritesIntoTheCatalogue) {
    write("rose.dst");
    sqlite3* other = nullptr;
    ASSERT_EQ(::sqlite3_open((folder_.path() / "catalogue.sqlite").c_str(), &other), SQLITE_OK);
    ASSERT_EQ(::sqlite3_exec(other, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    std::thread release([other] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        ::sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
    });
    EXPECT_EQ(run(), (IndexSummary{.added = 1}));
    release.join();
    ::sqlite3_close(other);
}

/// A catalogue of the designs in a folder, in which some bytes are then others.
class DamagedCatalogue : public testing::Test {
protected:
    DamagedCatalogue() {
        for (int i = 0; i < 60; ++i)
            folder_.write("designs/" + std::to_string(i % 5) + "/" + std::to_string(i) + ".dst", test::soundDst());
        auto catalogue = Catalogue::openForIndexing(file_);
        test::Told told;
        test::runIndexer(catalogue, {designs_}, told);
    }
    /// Whether what was tried was done; refusing is the only other way.
    template <class Body>
    static bool isDone(const Body& body) {
        try {
            body();
            return true;
        } catch (const CatalogueError& error) {
            EXPECT_STRNE(error.what(), "");
            return false;
        }
    }

    test::TemporaryFolder folder_;
    std::filesystem::path designs_ = std::filesystem::canonical(folder_.path()) / "designs";
    std::filesystem::path file_ = folder_.path() / "catalogue.sqlite";
};

TEST_F(DamagedCatalogue, IsSearchedAndIndexedOrRefused) {
    const std::string whole = test::TemporaryFolder::read(file_);
    ASSERT_GT(whole.size(), 8000U);
    std::mt19937 random(11);
    int refusals = 0;
    constexpr int rounds = 150;
    for (int round = 0; round < rounds; ++round) {
        std::string damaged = whole;
        const int count = 1 << (round % 10);
        for (int i = 0; i < count; ++i) damaged[random() % whole.size()] = static_cast<char>(random());
        folder_.write("catalogue.sqlite", damaged);
        const bool isSearched =
            isDone([&] { static_cast<void>(Catalogue::openForSearching(file_).search({.words = {"1"}})); });
        const bool isIndexed = isDone([&] {
            auto catalogue = Catalogue::openForIndexing(file_);
            test::Told told;
            const auto summary = test::runIndexer(catalogue, {designs_}, told, 1 + round % 2);
            EXPECT_EQ(summary.designs(), 60) << round;
        });
        if (!isSearched || !isIndexed) ++refusals;
    }
    EXPECT_GT(refusals, 0);
    EXPECT_LT(refusals, rounds);
}

TEST_F(Indexer, TakesMoreFilesThanFitInItsQueue) {
    for (int i = 0; i < 700; ++i) write(std::to_string(i % 7) + "/" + std::to_string(i) + ".dst");
    EXPECT_EQ(run(), (IndexSummary{.added = 700}));
    EXPECT_EQ(catalogue_.search({}).size(), 700U);
}

TEST_F(Indexer, HasManyReadersAtOnce) {
    for (int i = 0; i < 800; ++i) write(std::to_string(i % 9) + "/" + std::to_string(i) + ".dst");
    const FactsReader reader = [](std::span<const std::filesystem::path> files) {
        std::vector<FactsOutcome> outcomes;
        for (const auto& file : files) outcomes.push_back(readFacts(file));
        return outcomes;
    };
    const auto summary =
        indexFolders(catalogue_, {{designs_}}, std::vector<FactsReader>(16, reader), 1, told_.observer());
    EXPECT_EQ(summary, (IndexSummary{.added = 800}));
    EXPECT_EQ(catalogue_.search({}).size(), 800U);
}

TEST_F(Indexer, WalksDeepFolders) {
    std::filesystem::path deep;
    for (int i = 0; i < 500; ++i) deep /= "d";
    write(deep / "rose.dst");
    EXPECT_EQ(run(), (IndexSummary{.added = 1}));
}

/// The catalogue of these tests is opened by the child, whom permissions bind.
class IndexerWithoutPermission : public testing::Test {
protected:
    using Check = std::function<bool(Catalogue&, test::Told&)>;
    bool inChild(const Check& check) {
        std::filesystem::permissions(folder_.path(), std::filesystem::perms::all);
        return test::inBoundProcess(folder_.path(), [&] {
            auto catalogue = Catalogue::openForIndexing(folder_.path() / "own" / "catalogue.sqlite");
            test::Told told;
            return check(catalogue, told);
        });
    }
    /// A run with the named path locked up for its time.
    static IndexSummary runWithout(const std::filesystem::path& locked, Catalogue& catalogue,
                                   const std::filesystem::path& root, test::Told& told) {
        const auto before = std::filesystem::status(locked).permissions();
        std::filesystem::permissions(locked, std::filesystem::perms::none);
        const auto summary = test::runIndexer(catalogue, {root}, told);
        std::filesystem::permissions(locked, before);
        return summary;
    }
    static void write(const std::filesystem::path& file, const test::Bytes& bytes = test::soundDst()) {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    test::TemporaryFolder folder_;
    std::filesystem::path designs_ = std::filesystem::canonical(folder_.path()) / "designs";
};

TEST_F(IndexerWithoutPermission, ReportsAnUnreadableFileAndKeepsWhatItKnew) {
    EXPECT_TRUE(inChild([this](Catalogue& catalogue, test::Told& told) {
        const auto rose = designs_ / "rose.dst";
        write(rose);
        const auto first = runWithout(rose, catalogue, designs_, told);
        const bool isReported = told.problems == std::map<std::string, int>{{rose.native(), EACCES}};
        const auto second = test::runIndexer(catalogue, {designs_}, told);
        write(rose, test::soundDst(7));
        const auto third = runWithout(rose, catalogue, designs_, told);
        return isReported && first == IndexSummary{.skipped = 1} && second == IndexSummary{.added = 1} &&
               third == IndexSummary{.skipped = 1} && catalogue.search({}).at(0).facts.attributes.stitches == 2.0F;
    }));
}

TEST_F(IndexerWithoutPermission, KeepsWhatLiesBelowAFolderThatCannotBeRead) {
    EXPECT_TRUE(inChild([this](Catalogue& catalogue, test::Told& told) {
        write(designs_ / "a" / "b" / "rose.dst");
        write(designs_ / "lily.dst");
        test::runIndexer(catalogue, {designs_}, told);
        const auto summary = runWithout(designs_ / "a", catalogue, designs_, told);
        return summary == IndexSummary{.unchanged = 1} &&
               told.problems == std::map<std::string, int>{{(designs_ / "a").native(), EACCES}} &&
               catalogue.search({}).size() == 2;
    }));
}

TEST_F(IndexerWithoutPermission, FailsForANamedFolderThatCannotBeRead) {
    EXPECT_TRUE(inChild([this](Catalogue& catalogue, test::Told& told) {
        write(designs_ / "rose.dst");
        test::runIndexer(catalogue, {designs_}, told);
        const auto summary = runWithout(designs_, catalogue, designs_, told);
        return summary == IndexSummary{.isComplete = false} && catalogue.search({}).size() == 1;
    }));
}

TEST_F(IndexerWithoutPermission, KeepsWhatAFolderHides) {
    EXPECT_TRUE(inChild([this](Catalogue& catalogue, test::Told& told) {
        write(designs_ / "a" / "rose.dst");
        write(designs_ / "a" / "b" / "lily.dst");
        test::runIndexer(catalogue, {designs_}, told);
        // Names can be listed, but nothing is told of what they name.
        std::filesystem::permissions(designs_ / "a", std::filesystem::perms::owner_read);
        const auto summary = test::runIndexer(catalogue, {designs_}, told);
        std::filesystem::permissions(designs_ / "a", std::filesystem::perms::owner_all);
        return summary == IndexSummary{.skipped = 1} && catalogue.search({}).size() == 2;
    }));
}

}  // namespace
}  // namespace velamo
