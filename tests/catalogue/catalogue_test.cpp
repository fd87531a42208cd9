#include "catalogue/catalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/catalogue/support.h"
#include "tests/support/other_user.h"

namespace velamo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const DesignStamp stamp{.design = {100, 5}, .sideFile = FileStamp{7, 8}, .reader = 3};
const DesignFacts facts{
    .attributes = {.widthInMillimetres = 123.4F, .heightInMillimetres = 50, .stitches = 1000, .colors = 4},
    .format = "PES",
    .version = 10,
    .jumps = 7,
    .trims = 2,
    .blocks = 3,
    .length = 1234.5,
    .threads = {{.color = 0xED171F, .name = "Red", .palette = "Brother", .stitches = 320, .length = 600},
                {.color = {}, .name = {}, .palette = {}, .stitches = 1, .length = 0}},
    .hoop = HoopFacts{"Janome", {}, 140, 200}};
const Sha256 hash{std::byte{0xAB}, std::byte{0}, std::byte{7}};
const FileFacts sound{facts, hash};
const DesignFailure failure{"de.velamo.vlmdesign.ErrorDomain", 123, "too short"};
const FileFacts broken{failure, hash};

int rightsOf(const std::filesystem::path& path) {
    return static_cast<int>(std::filesystem::status(path).permissions());
}

class CatalogueFile : public testing::Test {
protected:
    /// Neither indexing nor searching changes or makes anything.
    void expectToBeLeftAlone(const char* refusal) {
        const auto before = test::TemporaryFolder::read(file_);
        std::filesystem::permissions(file_, std::filesystem::perms(0646));
        EXPECT_THAT(refusalToIndex(), HasSubstr(refusal));
        EXPECT_THAT(refusalToSearch(), HasSubstr(refusal));
        EXPECT_EQ(test::TemporaryFolder::read(file_), before);
        EXPECT_EQ(rightsOf(file_), 0646);
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file_.parent_path()), {}), 1);
    }
    [[nodiscard]] std::string refusalToIndex() const {
        try {
            static_cast<void>(Catalogue::openForIndexing(file_));
        } catch (const CatalogueError& error) {
            return error.what();
        }
        return "";
    }
    [[nodiscard]] std::string refusalToSearch() const {
        try {
            static_cast<void>(Catalogue::openForSearching(file_));
        } catch (const CatalogueError& error) {
            return error.what();
        }
        return "";
    }

    test::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "deep" / "catalogue.sqlite";
};

TEST_F(CatalogueFile, IsMadeWithItsFolderAndLayout) {
    { const auto catalogue = Catalogue::openForIndexing(file_); }
    EXPECT_EQ(test::runSql(file_, "PRAGMA user_version"), "2");
    EXPECT_EQ(test::runSql(file_, "PRAGMA application_id"), "1447841091");
    EXPECT_EQ(test::runSql(file_, "PRAGMA journal_mode"), "wal");
    EXPECT_THAT(test::pathsFound(Catalogue::openForSearching(file_)), IsEmpty());
}

TEST_F(CatalogueFile, KeepsWhatWasPutIn) {
    {
        auto catalogue = Catalogue::openForIndexing(file_);
        const auto folder = catalogue.putFolder("/a", "a");
        catalogue.putDesign(folder, "rose.dst", stamp, sound);
        catalogue.putDesign(folder, "torn.dst", {.design = {3, 4}, .sideFile = {}, .reader = 3}, broken);
        catalogue.addRoot("/a");
        catalogue.commit();
    }
    auto catalogue = Catalogue::openForIndexing(file_);
    EXPECT_THAT(catalogue.roots(), ElementsAre("/a"));
    const auto folder = catalogue.findFolder("/a");
    ASSERT_TRUE(folder.has_value());
    const auto designs = catalogue.designsIn(*folder);
    ASSERT_EQ(designs.size(), 2U);
    EXPECT_EQ(designs.at("rose.dst").stamp, stamp);
    EXPECT_FALSE(designs.at("rose.dst").isBroken);
    EXPECT_EQ(designs.at("torn.dst").stamp.sideFile, std::nullopt);
    EXPECT_TRUE(designs.at("torn.dst").isBroken);

    const auto found = catalogue.search({.withThreads = true});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].file, "/a/rose.dst");
    EXPECT_EQ(found[0].facts, facts);
    EXPECT_EQ(found[0].hash, hash);
    EXPECT_EQ(found[0].modified, 5);
    EXPECT_THAT(catalogue.search({})[0].facts.threads, IsEmpty());
    const auto torn = catalogue.search({.isBroken = true});
    ASSERT_EQ(torn.size(), 1U);
    EXPECT_EQ(torn[0].file, "/a/torn.dst");
    EXPECT_EQ(torn[0].failure, failure);
    EXPECT_EQ(torn[0].hash, hash);
}

TEST_F(CatalogueFile, ReplacesWhatWasKnown) {
    auto catalogue = Catalogue::openForIndexing(file_);
    const auto folder = catalogue.putFolder("/a", "a");
    catalogue.putDesign(folder, "rose.dst", stamp, broken);
    const auto id = catalogue.search({.isBroken = true}).at(0).id;
    catalogue.putDesign(folder, "rose.dst", stamp, sound);
    EXPECT_THAT(catalogue.search({.isBroken = true}), IsEmpty());
    EXPECT_EQ(catalogue.search({}).at(0).id, id);
    DesignFacts fewer = facts;
    fewer.threads.pop_back();
    fewer.hoop.reset();
    catalogue.putDesign(folder, "rose.dst", stamp, {fewer, {}});
    const auto found = catalogue.search({.withThreads = true});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].facts, fewer);
    EXPECT_EQ(found[0].hash, std::nullopt);
}

TEST_F(CatalogueFile, GivesANumberToOneDesignAlone) {
    auto catalogue = Catalogue::openForIndexing(file_);
    const auto folder = catalogue.putFolder("/a", "a");
    catalogue.putDesign(folder, "rose.dst", stamp, sound);
    const auto id = catalogue.search({}).at(0).id;
    catalogue.removeDesign(folder, "rose.dst");
    EXPECT_THAT(catalogue.search({}), IsEmpty());
    catalogue.putDesign(folder, "rose.dst", stamp, sound);
    EXPECT_NE(catalogue.search({}).at(0).id, id);
    catalogue.commit();
    EXPECT_EQ(test::runSql(file_, "SELECT count(*) FROM threads"), "2");
}

TEST_F(CatalogueFile, UndoesWhatWasNotCommitted) {
    {
        auto catalogue = Catalogue::openForIndexing(file_);
        catalogue.putDesign(catalogue.putFolder("/a", "a"), "rose.dst", stamp, sound);
    }
    EXPECT_THAT(Catalogue::openForSearching(file_).search({}), IsEmpty());
}

TEST_F(CatalogueFile, CommitsAFullBatchByItself) {
    {
        auto catalogue = Catalogue::openForIndexing(file_);
        const auto folder = catalogue.putFolder("/a", "a");
        for (int i = 0; i < 600; ++i) catalogue.putDesign(folder, std::to_string(i) + ".dst", stamp, sound);
    }
    EXPECT_EQ(Catalogue::openForSearching(file_).search({}).size(), 499U);  // the folder is the batch's first change
}

TEST_F(CatalogueFile, RemovesFoldersAtAndBelowAPath) {
    auto catalogue = Catalogue::openForIndexing(file_);
    for (const char* path : {"/a", "/a/b", "/a/b/c", "/a-b", "/ab", "/a0"})
        catalogue.putDesign(catalogue.putFolder(path, path), "x.dst", stamp, sound);
    const auto kept = *catalogue.findFolder("/a/b");
    EXPECT_EQ(catalogue.removeFolders(
                  "/a", [kept](Catalogue::FolderId id, const std::filesystem::path&) { return id == kept; }),
              2);
    EXPECT_THAT(test::pathsFound(catalogue),
                UnorderedElementsAre("/a/b/x.dst", "/a-b/x.dst", "/ab/x.dst", "/a0/x.dst"));
}

TEST_F(CatalogueFile, ForgetsEmptyFolders) {
    auto catalogue = Catalogue::openForIndexing(file_);
    catalogue.putFolder("/empty", "empty");
    catalogue.putDesign(catalogue.putFolder("/a", "a"), "x.dst", stamp, sound);
    catalogue.removeEmptyFolders();
    EXPECT_EQ(catalogue.findFolder("/empty"), std::nullopt);
    EXPECT_NE(catalogue.findFolder("/a"), std::nullopt);
}

TEST_F(CatalogueFile, OfANewerLayoutIsRefusedAndLeftAlone) {
    { const auto catalogue = Catalogue::openForIndexing(file_); }
    test::runSql(file_, "PRAGMA user_version = 3; CREATE TABLE future (x); PRAGMA wal_checkpoint(TRUNCATE)");
    const auto before = test::TemporaryFolder::read(file_);
    EXPECT_THAT(refusalToIndex(), HasSubstr("newer version of velamo (layout 3, this one knows 2)"));
    EXPECT_THAT(refusalToSearch(), HasSubstr("newer version of velamo"));
    EXPECT_EQ(test::TemporaryFolder::read(file_), before);
}

TEST_F(CatalogueFile, OfTheFirstLayoutKeepsItsDesignsToBeReadAgain) {
    std::filesystem::create_directories(file_.parent_path());
    test::runSql(file_, R"(
        PRAGMA application_id = 1447841091; PRAGMA user_version = 1;
        CREATE TABLE roots (path BLOB PRIMARY KEY) WITHOUT ROWID;
        CREATE TABLE folders (id INTEGER PRIMARY KEY, path BLOB NOT NULL UNIQUE, words TEXT NOT NULL);
        CREATE TABLE designs (folder INTEGER NOT NULL REFERENCES folders (id) ON DELETE CASCADE, name BLOB NOT NULL,
            words TEXT NOT NULL, size INTEGER NOT NULL, modified INTEGER NOT NULL, side_size INTEGER,
            side_modified INTEGER, reader INTEGER NOT NULL, width REAL, height REAL, stitches REAL, colors REAL,
            failure_domain TEXT, failure_code INTEGER, failure_message TEXT, PRIMARY KEY (folder, name)) WITHOUT ROWID;
        INSERT INTO roots VALUES (x'2F61');
        INSERT INTO folders VALUES (4, x'2F61', 'a');
        INSERT INTO designs VALUES (4, x'72', 'r', 100, 5, 7, 8, 3, 123.4, 50, 1000, 4, NULL, NULL, NULL);
        INSERT INTO designs VALUES (4, x'74', 't', 1, 2, NULL, NULL, 3, NULL, NULL, NULL, NULL, 'd', 123, 'short');)");
    const auto before = test::TemporaryFolder::read(file_);
    EXPECT_THAT(refusalToSearch(), HasSubstr("run 'velamo index'"));
    EXPECT_EQ(test::TemporaryFolder::read(file_), before);
    auto catalogue = Catalogue::openForIndexing(file_);
    EXPECT_THAT(catalogue.roots(), ElementsAre("/a"));
    const auto designs = catalogue.designsIn(*catalogue.findFolder("/a"));
    EXPECT_EQ(designs.at("r").stamp, (DesignStamp{.design = {100, 5}, .sideFile = FileStamp{7, 8}, .reader = 0}));
    EXPECT_TRUE(designs.at("t").isBroken);
    const auto found = catalogue.search({});
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].facts.attributes, (DesignAttributes{123.4F, 50, 1000, 4}));
    EXPECT_EQ(found[0].facts.format, "");
    EXPECT_EQ(test::runSql(file_, "SELECT count(*) FROM sqlite_master WHERE name = 'designs_1'"), "0");
}

TEST_F(CatalogueFile, OfAnOlderLayoutKeepsItsRootsAlone) {
    std::filesystem::create_directories(file_.parent_path());
    test::runSql(file_,
                 "PRAGMA application_id = 1447841091; PRAGMA user_version = 0;"
                 "CREATE TABLE roots (path BLOB PRIMARY KEY) WITHOUT ROWID; INSERT INTO roots VALUES (x'2F61');"
                 "CREATE TABLE designs (whatever); INSERT INTO designs VALUES (1);");
    EXPECT_THAT(refusalToSearch(), HasSubstr("run 'velamo index'"));
    const auto catalogue = Catalogue::openForIndexing(file_);
    EXPECT_THAT(catalogue.roots(), ElementsAre("/a"));
    EXPECT_THAT(catalogue.search({}), IsEmpty());
}

TEST_F(CatalogueFile, OfAnotherProgramIsRefusedAndLeftAlone) {
    std::filesystem::create_directories(file_.parent_path());
    test::runSql(file_, "CREATE TABLE letters (text); INSERT INTO letters VALUES ('dear')");
    expectToBeLeftAlone("not a catalogue");
}

TEST_F(CatalogueFile, ThatIsNoDatabaseIsRefusedAndLeftAlone) {
    folder_.write("deep/catalogue.sqlite", std::string(5000, 'x'));
    expectToBeLeftAlone("not a database");
}

TEST_F(CatalogueFile, GivenByALinkToADesignIsRefusedAndLeftAlone) {
    std::filesystem::create_directories(file_.parent_path());
    std::filesystem::create_symlink(folder_.write("rose.dst", std::string(600, ' ')), file_);
    expectToBeLeftAlone("not a database");
}

TEST_F(CatalogueFile, ThatIsDamagedIsRefused) {
    {
        auto catalogue = Catalogue::openForIndexing(file_);
        const auto folder = catalogue.putFolder("/a", "a");
        for (int i = 0; i < 400; ++i) catalogue.putDesign(folder, std::to_string(i) + ".dst", stamp, sound);
        catalogue.commit();
    }
    auto bytes = test::TemporaryFolder::read(file_);
    ASSERT_GT(bytes.size(), 20'000U);
    std::fill(bytes.begin() + 100, bytes.end(), '\xA5');  // the head stays, so that it is still taken for ours
    folder_.write("deep/catalogue.sqlite", bytes);
    EXPECT_THROW(static_cast<void>(Catalogue::openForSearching(file_).search({})), CatalogueError);
    EXPECT_THAT(refusalToIndex(), HasSubstr("malformed"));
    EXPECT_EQ(test::TemporaryFolder::read(file_), bytes);
}

TEST_F(CatalogueFile, ThatIsEmptyBecomesACatalogue) {
    folder_.write("deep/catalogue.sqlite", std::string());
    EXPECT_EQ(refusalToIndex(), "");
    EXPECT_EQ(refusalToSearch(), "");
}

TEST_F(CatalogueFile, ThatIsNotThereCannotBeSearched) {
    EXPECT_THAT(refusalToSearch(), HasSubstr("velamo index FOLDER"));
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(CatalogueFile, MayBeNoFolderOrPipe) {
    std::filesystem::create_directories(file_);
    EXPECT_THAT(refusalToIndex(), HasSubstr("not a regular file"));
    EXPECT_THAT(refusalToSearch(), HasSubstr("not a regular file"));
    std::filesystem::remove(file_);
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_THAT(refusalToIndex(), HasSubstr("not a regular file"));
    EXPECT_THAT(refusalToSearch(), HasSubstr("not a regular file"));
}

TEST_F(CatalogueFile, InAFolderThatCannotBeMadeIsASystemError) {
    folder_.write("deep", std::string("a file stands where the folder should be"));
    EXPECT_THROW(static_cast<void>(Catalogue::openForIndexing(file_)), std::system_error);
}

TEST_F(CatalogueFile, SaysWhatToDoWhenItIsDamaged) {
    folder_.write("deep/catalogue.sqlite", std::string(5000, 'x'));
    EXPECT_EQ(
        refusalToSearch(),
        "this is no catalogue, or a damaged one (file is not a database); move the file away, with those beside it "
        "that end in -wal and -shm, and run 'velamo index FOLDER' anew");
}

/// Without a mask that takes rights away by itself.
class Unmasked {
public:
    Unmasked() : mask_(::umask(0)) {}
    ~Unmasked() { ::umask(mask_); }
    Unmasked(const Unmasked&) = delete;
    Unmasked& operator=(const Unmasked&) = delete;

private:
    mode_t mask_;
};

TEST_F(CatalogueFile, IsForTheUserAlone) {
    const Unmasked unmasked;
    auto catalogue = Catalogue::openForIndexing(file_);
    catalogue.addRoot("/a");
    catalogue.commit();
    EXPECT_EQ(rightsOf(file_.parent_path()), 0700);
    for (const char* ending : {"", "-wal", "-shm", "-lock"})
        EXPECT_EQ(rightsOf(file_.native() + ending), 0600) << ending;
}

TEST_F(CatalogueFile, ThatIsThereLosesTheRightsOfOthersAlone) {
    const Unmasked unmasked;
    { const auto catalogue = Catalogue::openForIndexing(file_); }
    std::filesystem::permissions(file_.parent_path(), std::filesystem::perms(0755));
    for (const char* ending : {"", "-lock"})
        std::filesystem::permissions(file_.native() + ending, std::filesystem::perms(0666));
    const auto catalogue = Catalogue::openForIndexing(file_);
    for (const char* ending : {"", "-wal", "-shm", "-lock"})
        EXPECT_EQ(rightsOf(file_.native() + ending), 0660) << ending;
    EXPECT_EQ(rightsOf(file_.parent_path()), 0755);
}

TEST_F(CatalogueFile, MayHaveAnyName) {
    const auto former = std::filesystem::current_path();
    std::filesystem::current_path(folder_.path());
    for (const char* name : {":memory:", "file:x?mode=memory", "file::memory:", "-x", "a b%41#?.sqlite"}) {
        {
            auto catalogue = Catalogue::openForIndexing(name);
            catalogue.addRoot("/a");
            catalogue.commit();
        }
        EXPECT_TRUE(std::filesystem::is_regular_file(folder_.path() / name)) << name;
        EXPECT_THAT(Catalogue::openForIndexing(name).roots(), ElementsAre("/a")) << name;
    }
    std::filesystem::current_path(former);
}

/// A catalogue in a folder in which nobody but the superuser may write. What is said of it is tried in a process
/// without such rights.
class ReadOnlyCatalogue : public CatalogueFile {
protected:
    ReadOnlyCatalogue() {
        put("rose.dst");
        std::filesystem::create_directory(folder_.path() / "tmp");
        std::filesystem::permissions(folder_.path() / "tmp", std::filesystem::perms(0777));
    }
    ~ReadOnlyCatalogue() override { std::filesystem::permissions(file_.parent_path(), std::filesystem::perms(0755)); }

    void put(const char* name) const {
        auto catalogue = Catalogue::openForIndexing(file_);
        putInto(catalogue, name);
    }
    static void putInto(Catalogue& catalogue, const char* name) {
        catalogue.putDesign(catalogue.putFolder("/a", "a"), name, stamp, sound);
        catalogue.commit();
    }
    /// Leaves the file as a run leaves it that is killed after it has put another design in.
    void kill(const char* name) const {
        auto catalogue = Catalogue::openForIndexing(file_);
        putInto(catalogue, name);
        const auto killed = folder_.path() / "killed";
        std::filesystem::create_directory(killed);
        for (const char* ending : {"", "-wal"})
            std::filesystem::copy_file(file_.native() + ending, killed / (std::string("catalogue.sqlite") + ending));
    }
    template <class Body>
    [[nodiscard]] bool holdsReadOnly(Body body, int rights = 0444) const {
        for (const auto& file : std::filesystem::directory_iterator(file_.parent_path()))
            std::filesystem::permissions(file.path(), std::filesystem::perms(rights));
        std::filesystem::permissions(file_.parent_path(), std::filesystem::perms(0555));
        return test::inBoundProcess(folder_.path(), [&] {
            ::setenv("TMPDIR", (folder_.path() / "tmp").c_str(), 1);
            return body();
        });
    }
    [[nodiscard]] bool finds(const std::vector<std::string>& paths) const {
        const auto found = test::pathsFound(Catalogue::openForSearching(file_));
        return found == paths && std::filesystem::is_empty(folder_.path() / "tmp");
    }
};

TEST_F(ReadOnlyCatalogue, CanBeSearched) {
    EXPECT_TRUE(holdsReadOnly([this] { return finds({"/a/rose.dst"}); }));
    EXPECT_TRUE(holdsReadOnly([this] { return finds({"/a/rose.dst"}); }, 0666));  // its folder alone is in the way
    EXPECT_FALSE(std::filesystem::exists(file_.native() + "-shm"));
}

TEST_F(ReadOnlyCatalogue, IsFoundWithWhatAKilledRunLeftBesideIt) {
    kill("lily.dst");
    file_ = folder_.path() / "killed" / "catalogue.sqlite";
    ASSERT_GT(std::filesystem::file_size(file_.native() + "-wal"), 0U);
    EXPECT_TRUE(holdsReadOnly([this] { return finds({"/a/lily.dst", "/a/rose.dst"}); }));
}

TEST_F(ReadOnlyCatalogue, ThatIsWrittenMeanwhileIsNotBelieved) {
    const auto isRefused = [this](auto write) {
        const auto catalogue = Catalogue::openForSearching(file_);
        write();
        try {
            static_cast<void>(catalogue.search({}));
        } catch (const CatalogueError& error) {
            return error.code() == SQLITE_BUSY;
        }
        return false;
    };
    EXPECT_TRUE(holdsReadOnly(
        [&] {
            const bool isRead = isRefused([this] { std::ofstream(file_, std::ios::app) << "more"; });
            const bool isDamaged = isRefused([this] { std::filesystem::resize_file(file_, 5000); });
            return isRead && isDamaged;
        },
        0666));
}

TEST_F(ReadOnlyCatalogue, BeginsNoBatch) {
    EXPECT_TRUE(holdsReadOnly([this] {
        auto catalogue = Catalogue::openForSearching(file_);
        for (int attempt = 0; attempt < 2; ++attempt) {
            try {
                catalogue.addRoot("/b");
                return false;
            } catch (const CatalogueError& error) {
                if (error.code() != SQLITE_READONLY) return false;
            }
        }
        catalogue.commit();  // of nothing
        return true;
    }));
}

TEST_F(ReadOnlyCatalogue, ThatMayNotBeReadSaysSo) {
    EXPECT_TRUE(holdsReadOnly(
        [this] {
            try {
                static_cast<void>(Catalogue::openForSearching(file_));
            } catch (const std::system_error& error) {
                return error.code() == std::errc::permission_denied;
            }
            return false;
        },
        0));
}

TEST_F(CatalogueFile, IsSearchedWhileItIsIndexed) {
    auto indexing = Catalogue::openForIndexing(file_);
    const auto folder = indexing.putFolder("/a", "a");
    indexing.putDesign(folder, "rose.dst", stamp, sound);
    indexing.commit();
    indexing.putDesign(folder, "lily.dst", stamp, sound);
    EXPECT_THAT(test::pathsFound(Catalogue::openForSearching(file_)), ElementsAre("/a/rose.dst"));
}

}  // namespace
}  // namespace velamo
