#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/support.h"

namespace velamo {
namespace {

using test::call;
using testing::HasSubstr;

class Forget : public testing::Test {
protected:
    Forget() {
        for (const char* name : {"a/rose.dst", "a/deep/lily.dst", "b/iris.dst"}) folder_.write(name, test::smallDst);
        static_cast<void>(call({"index", "--catalogue", catalogue_, a_, b_}));
    }
    [[nodiscard]] test::Outcome forget(const std::vector<std::string>& places) const {
        std::vector<std::string> arguments{"forget", "--catalogue", catalogue_};
        arguments.insert(arguments.end(), places.begin(), places.end());
        return call(arguments);
    }
    [[nodiscard]] std::vector<std::string> known() const {
        std::vector<std::string> names;
        for (const auto& design : call({"search", "--json", "--catalogue", catalogue_}).json())
            names.push_back(std::filesystem::path(design["file"].get<std::string>()).stem());
        return names;
    }
    [[nodiscard]] std::string indexedAgain() const { return call({"index", "--catalogue", catalogue_}).out; }

    test::TemporaryFolder folder_;
    std::filesystem::path top_ = std::filesystem::canonical(folder_.path());
    std::string a_ = top_ / "a";
    std::string b_ = top_ / "b";
    std::string catalogue_ = top_ / "own" / "catalogue.sqlite";
};

TEST_F(Forget, RemovesAFolderForGood) {
    const auto outcome = forget({a_ + "/"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, a_ + ": 2 designs forgotten\n");
    EXPECT_EQ(outcome.problems, "");
    EXPECT_EQ(known(), (std::vector<std::string>{"iris"}));
    EXPECT_THAT(indexedAgain(), HasSubstr("1 design: 0 new, 0 changed, 1 unchanged"));
    EXPECT_TRUE(std::filesystem::exists(top_ / "a" / "rose.dst"));
}

TEST_F(Forget, RemovesWhatIsAway) {
    std::filesystem::rename(a_, top_ / "elsewhere");
    EXPECT_EQ(forget({a_}).out, a_ + ": 2 designs forgotten\n");
    EXPECT_EQ(call({"index", "--catalogue", catalogue_}).problems, "");
}

TEST_F(Forget, SaysWhatComesBack) {
    const auto outcome = forget({a_ + "/deep", a_ + "/rose.dst"});
    EXPECT_EQ(outcome.out, a_ + "/deep: 1 design forgotten\n" + a_ + "/rose.dst: 1 design forgotten\n");
    EXPECT_EQ(outcome.problems, "velamo: " + a_ + "/deep: the next 'velamo index' finds it again, in " + a_ +
                                    "\nvelamo: " + a_ + "/rose.dst: the next 'velamo index' finds it again, in " + a_ +
                                    "\n");
    EXPECT_EQ(known(), (std::vector<std::string>{"iris"}));
    EXPECT_THAT(indexedAgain(), HasSubstr("3 designs: 2 new"));
}

TEST_F(Forget, FailsForWhatIsNotKnown) {
    const auto outcome = forget({"/nowhere", b_});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: /nowhere: the catalogue knows nothing of it (error 2)\n");
    EXPECT_EQ(outcome.out, b_ + ": 1 design forgotten\n");
}

TEST_F(Forget, MakesNoCatalogue) {
    const std::string other = top_ / "other.sqlite";
    const auto outcome = call({"forget", "--catalogue", other, a_});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.problems, HasSubstr("no such catalogue"));
    EXPECT_FALSE(std::filesystem::exists(other));
}

}  // namespace
}  // namespace velamo
