// Designs are read in processes of their own, and get into the catalogue.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include "tests/catalogue/support.h"
#include "tests/support/child_processes.h"

namespace velamo {
namespace {

TEST(ConfinedReaders, FillACatalogue) {
    const test::TemporaryFolder folder;
    folder.write("designs/rose.dst", test::soundDst(11));
    folder.write("designs/torn.dst", test::brokenDst);
    auto catalogue = Catalogue::openForIndexing(folder.path() / "catalogue.sqlite");
    test::Told told;
    EXPECT_EQ(indexFolders(catalogue, {{folder.path() / "designs"}}, factsReaders(2).readers, 1, told.observer()),
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
    std::vector<FactsReader> readers_ = factsReaders(2).readers;
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
    readers_ = factsReaders(2).readers;
    EXPECT_EQ(run().designs(), designCount);
}

}  // namespace
}  // namespace velamo
