// Designs are read through the importer plug-in.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>

#include "tests/catalogue/support.h"
#include "tests/support/child_processes.h"
#include "tests/support/other_user.h"
#include "velamo/platform/processes/confinement.h"

namespace velamo {
namespace {

ReadOutcome readOne(const DesignReader& reader, const std::filesystem::path& file) {
    return reader({&file, 1}).at(0);
}

class PluginReader : public testing::Test {
protected:
    test::TemporaryFolder folder_;
    std::vector<DesignReader> readers_ = pluginReaders(PluginHost::findModule(), 2).readers;
};

TEST_F(PluginReader, GivesTheAttributes) {
    const auto file = folder_.write("rose.dst", test::soundDst(11));
    for (const DesignReader& reader : readers_)
        EXPECT_EQ(std::get<DesignAttributes>(readOne(reader, file)), (DesignAttributes{10.0F, 0.0F, 11.0F, 1.0F}));
}

TEST_F(PluginReader, GivesTheReasonOfARefusal) {
    const auto file = folder_.write("torn.dst", test::brokenDst);
    EXPECT_EQ(std::get<DesignFailure>(readOne(readers_[0], file)),
              (DesignFailure{"de.velamo.vlmdesign.ErrorDomain", 123, "Unable to import DST file (missing header)."}));
}

TEST_F(PluginReader, TellsWhatIsNotThereFromWhatIsBroken) {
    EXPECT_EQ(std::get<std::error_code>(readOne(readers_[0], folder_.path() / "nowhere.dst")).value(), ENOENT);
}

TEST_F(PluginReader, TellsWhatTheSystemCannotReadFromWhatIsBroken) {
    const auto huge = folder_.write("huge.dst", "");
    std::filesystem::resize_file(huge, std::uintmax_t{6} << 30);
    EXPECT_EQ(std::get<std::error_code>(readOne(readers_[0], huge)).value(), EFBIG);
    const auto failing = folder_.path() / "failing.dst";
    std::filesystem::create_symlink("/proc/self/mem", failing);
    EXPECT_EQ(std::get<std::error_code>(readOne(readers_[0], failing)).value(), EIO);
    // A design whose own colours cannot be read at the moment would seem to have others.
    const auto rose = folder_.write("rose.dst", test::soundDst(11));
    std::filesystem::create_symlink("/proc/self/mem", folder_.path() / "rose.threads");
    EXPECT_EQ(std::get<std::error_code>(readOne(readers_[0], rose)).value(), EIO);
}

TEST_F(PluginReader, FillsACatalogue) {
    folder_.write("designs/rose.dst", test::soundDst(11));
    folder_.write("designs/torn.dst", test::brokenDst);
    auto catalogue = Catalogue::openForIndexing(folder_.path() / "catalogue.sqlite");
    test::Told told;
    EXPECT_EQ(indexFolders(catalogue, {{folder_.path() / "designs"}}, readers_, 1, told.observer()),
              (IndexSummary{.added = 2, .broken = 1}));
}

/// The nursery of this process's readers, and its guardians.
pid_t nursery() {
    return test::childrenOf(::getpid()).at(0);
}

class LostReaders : public testing::Test {
protected:
    LostReaders() {
        for (int i = 0; i < designCount; ++i) folder_.write("designs/" + std::to_string(i) + ".dst", test::soundDst());
    }
    IndexSummary run() {
        return indexFolders(catalogue_, {{folder_.path() / "designs"}}, readers_, 1, told_.observer());
    }
    static constexpr int designCount = 600;
    test::TemporaryFolder folder_;
    std::vector<DesignReader> readers_ = pluginReaders(PluginHost::findModule(), 2).readers;
    Catalogue catalogue_ = Catalogue::openForIndexing(folder_.path() / "catalogue.sqlite");
    test::Told told_;
};

TEST_F(LostReaders, AreReplacedAndNoFileIsToBlame) {
    for (const pid_t guardian : test::childrenOf(nursery())) ::kill(guardian, SIGKILL);
    EXPECT_EQ(run(), (IndexSummary{.added = designCount}));
    EXPECT_TRUE(told_.problems.empty());
}

TEST_F(LostReaders, ThatCannotBeReplacedEndTheRun) {
    const auto guardians = test::childrenOf(nursery());
    ::kill(nursery(), SIGKILL);
    for (const pid_t guardian : guardians) ::kill(guardian, SIGKILL);
    EXPECT_THROW(static_cast<void>(run()), WorkerLoss);
    EXPECT_TRUE(told_.problems.empty());
    readers_ = pluginReaders(PluginHost::findModule(), 2).readers;
    EXPECT_EQ(run().designs(), designCount);
}

/// What a reader needs memory for that it cannot have is written down as that file's failure.
TEST(LimitedReader, RefusesWhatTakesTooMuchMemory) {
    if (!canLimitMemory()) GTEST_SKIP() << "sanitizers need the address space";
    const test::TemporaryFolder folder;
    const auto file = folder.write("huge.exp", std::string());
    std::filesystem::resize_file(file, std::uintmax_t{200} << 20);  // stitches on the spot
    const auto readers = pluginReaders(PluginHost::findModule(), 1, {.memory = std::uint64_t{700} << 20}).readers;
    const auto outcome = readOne(readers[0], file);
    ASSERT_TRUE(std::holds_alternative<DesignFailure>(outcome));
    EXPECT_EQ(std::get<DesignFailure>(outcome).code, ENOMEM);
    const auto rose = folder.write("rose.dst", test::soundDst(11));
    EXPECT_TRUE(std::holds_alternative<DesignAttributes>(readOne(readers[0], rose)));
}

TEST(LimitedReader, RefusesWhatTakesTooLong) {
    const test::TemporaryFolder folder;
    const auto file = folder.write("large.exp", std::string());
    std::filesystem::resize_file(file, std::uintmax_t{60} << 20);
    const auto readers = pluginReaders(PluginHost::findModule(), 1, {.time = std::chrono::milliseconds(2)}).readers;
    EXPECT_EQ(std::get<DesignFailure>(readOne(readers[0], file)),
              (DesignFailure{"NSPOSIXErrorDomain", ETIMEDOUT, "reading it takes too long"}));
}

TEST(ReaderNumber, ChangesWithTheModule) {
    const test::TemporaryFolder folder;
    const auto module = folder.write("importer", std::string("one"));
    const auto before = readerNumber(module);
    EXPECT_EQ(readerNumber(module), before);
    folder.write("importer", std::string("another"));
    EXPECT_NE(readerNumber(module), before);
    std::filesystem::remove(module);
    EXPECT_THROW(static_cast<void>(readerNumber(module)), std::system_error);
}

TEST(PluginReaders, OfNoModuleAreARuntimeError) {
    EXPECT_THROW(static_cast<void>(pluginReaders("/nowhere", 1)), std::runtime_error);
}

}  // namespace
}  // namespace velamo
