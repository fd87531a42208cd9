// `velamo desktop refresh`, with programs in place of the hosts' own that write down what they are called with.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/support.h"
#include "tests/support/environment.h"

namespace velamo {
namespace {

namespace fs = std::filesystem;
using test::call;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Desktop : public testing::Test {
protected:
    Desktop() { fs::create_directories(designs_); }

    /// A host's program, and the index of a person who uses it.
    void make(const std::string& program, const char* index, int status = 0) {
        const auto file = folder_.write("bin/" + program,
                                        "#!/bin/sh\necho noise; for word in \"${0##*/}\" \"$@\"; do echo "
                                        "\"$word\"; done >> '" +
                                            calls_.native() + "'\nexit " + std::to_string(status) + "\n");
        fs::permissions(file, fs::perms::owner_all);
        fs::create_directories(folder_.path() / index);
    }
    std::string add(const std::string& name) {
        const std::string file = folder_.write("designs/" + name, test::smallDst);
        EXPECT_EQ(call({"index", designs_}).status, 0);
        return (designs_ / name).native();
    }
    /// The mark of a picture that could not be made of the file with the address.
    fs::path addFailure(const std::string& name, const std::string& uri, const std::string& kind = "tEXt") const {
        const auto text = test::bytes("Thumb::URI", 0, uri);
        const auto other = test::bytes("Thumb::MTime", 0, "123");
        return folder_.write("cache/thumbnails/fail/viewer/" + name,
                             test::bytes("\x89PNG\r\n\x1a\n", chunk("IHDR", test::repeated(13, 0)),
                                         chunk("tEXt", other), chunk(kind, text), chunk("IEND", {})));
    }
    static test::Bytes chunk(const std::string& kind, const test::Bytes& content) {
        return test::bytes(test::be32(static_cast<std::int64_t>(content.size())), kind, content, "sums");
    }
    /// What the programs were called with, word by word.
    std::vector<std::string> words() const {
        std::istringstream in(test::TemporaryFolder::read(calls_));
        std::vector<std::string> words;
        for (std::string word; std::getline(in, word);) words.push_back(word);
        return words;
    }

    test::TemporaryFolder folder_;
    fs::path designs_ = fs::canonical(folder_.path()) / "designs";
    fs::path calls_ = folder_.path() / "calls";

private:
    test::Variable path_{"PATH", folder_.path() / "bin"};
    test::Variable home_{"HOME", folder_.path() / "home"};
    test::Variable data_{"XDG_DATA_HOME", folder_.path() / "data"};
    test::Variable cache_{"XDG_CACHE_HOME", folder_.path() / "cache"};
    test::Variable recoll_{"RECOLL_CONFDIR", ""};
};

TEST_F(Desktop, RefreshesEachHostInItsOwnWords) {
    make("balooctl", "data/baloo/index");
    make("recollindex", "home/.recoll");
    make("tracker3", "cache/tracker3/files");
    const auto lily = add("lily.dst");
    const auto rose = add("my rose.dst");
    const auto outcome = call({"desktop", "refresh"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.problems, "");
    EXPECT_EQ(outcome.out,
              "KDE: 2 designs refreshed\nRecoll: 2 designs refreshed\nGNOME: 2 designs refreshed\n"
              "Thumbnails: 0 failures forgotten\n");
    EXPECT_THAT(words(),
                ElementsAre("balooctl", "clear", lily, rose, "balooctl", "index", lily, rose, "recollindex", "-i", "-Z",
                            lily, rose, "tracker3", "reset", "--file=" + lily, "tracker3", "reset", "--file=" + rose));
}

TEST_F(Desktop, TakesTheNewerOfKdesPrograms) {
    make("balooctl", "data/baloo/index");
    make("balooctl6", "data/baloo/index");
    const auto rose = add("rose.dst");
    EXPECT_EQ(call({"desktop", "refresh"}).status, 0);
    EXPECT_THAT(words(), ElementsAre("balooctl6", "clear", rose, "balooctl6", "index", rose));
}

TEST_F(Desktop, LeavesAHostAloneThatNobodyUses) {
    make("balooctl", "other");                                // has no index
    fs::create_directories(folder_.path() / "home/.recoll");  // has no program
    add("rose.dst");
    const auto outcome = call({"desktop", "refresh"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "KDE: not there\nRecoll: not there\nGNOME: not there\nThumbnails: 0 failures forgotten\n");
    EXPECT_THAT(words(), IsEmpty());
}

TEST_F(Desktop, FindsRecollsOwnFolder) {
    make("recollindex", "elsewhere");
    add("rose.dst");
    const test::Variable named("RECOLL_CONFDIR", folder_.path() / "elsewhere");
    EXPECT_THAT(call({"desktop", "refresh"}).out, HasSubstr("Recoll: 1 design refreshed\n"));
}

TEST_F(Desktop, ThatFailsStopsNoOther) {
    make("balooctl", "data/baloo/index", 3);
    make("recollindex", "home/.recoll");
    const auto rose = add("rose.dst");
    const auto outcome = call({"desktop", "refresh"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: KDE: balooctl clear ended with status 3\n");
    EXPECT_EQ(outcome.out, "Recoll: 1 design refreshed\nGNOME: not there\nThumbnails: 0 failures forgotten\n");
    EXPECT_THAT(words(), ElementsAre("balooctl", "clear", rose, "recollindex", "-i", "-Z", rose));
}

TEST_F(Desktop, AnswersInJson) {
    make("balooctl", "data/baloo/index", 3);
    make("recollindex", "home/.recoll");
    add("rose.dst");
    const auto outcome = call({"desktop", "refresh", "--json"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.json().dump(),
              R"([{"host":"KDE","state":"failed","problem":"balooctl clear ended with status 3"},)"
              R"({"host":"Recoll","state":"refreshed","count":1},{"host":"GNOME","state":"absent"},)"
              R"({"host":"Thumbnails","state":"refreshed","count":0}])");
}

TEST_F(Desktop, HearsOfWhatIsThereAndWantedOnly) {
    make("recollindex", "home/.recoll");
    const auto rose = add("flowers/rose.dst");
    add("ships/brig.dst");
    fs::remove(add("flowers/lily.dst"));
    EXPECT_EQ(call({"desktop", "refresh", "--folder", designs_ / "flowers"}).status, 0);
    EXPECT_THAT(words(), ElementsAre("recollindex", "-i", "-Z", rose));
}

TEST_F(Desktop, TakesManyFilesInSeveralCalls) {
    make("recollindex", "home/.recoll");
    for (int i = 0; i < 450; ++i) folder_.write("designs/" + std::to_string(i) + ".dst", test::smallDst);
    add("rose.dst");
    EXPECT_THAT(call({"desktop", "refresh"}).out, HasSubstr("Recoll: 451 designs refreshed\n"));
    const auto all = words();
    EXPECT_EQ(std::count(all.begin(), all.end(), "recollindex"), 3);
    EXPECT_EQ(all.size(), 451U + 3 * 3);
}

TEST_F(Desktop, ForgetsThatPicturesOfDesignsFailed) {
    const auto rose = add("my r\xC3\xB6se+100%.dst");
    const auto failed = addFailure("1.png", "file://" + designs_.native() + "/my%20r%C3%B6se+100%25.dst");
    const std::vector<fs::path> kept{
        addFailure("2.png", "file://" + designs_.native() + "/other.dst"),
        addFailure("3.png", "http://" + rose),
        addFailure("4.png", "file://" + rose, "zTXt"),
        addFailure("5.txt", "file://" + rose),
        folder_.write("cache/thumbnails/fail/viewer/6.png", "\x89PNG\r\n\x1a\n\xFF"),
        folder_.write("cache/thumbnails/normal/7.png", test::TemporaryFolder::read(failed))};
    EXPECT_THAT(call({"desktop", "refresh"}).out, HasSubstr("Thumbnails: 1 failure forgotten\n"));
    EXPECT_FALSE(fs::exists(failed));
    for (const auto& file : kept) EXPECT_TRUE(fs::exists(file)) << file;
}

TEST_F(Desktop, SaysThatAMarkCannotBeRead) {
    const auto failed = addFailure("1.png", "file://" + add("rose.dst"));
    fs::create_symlink("/proc/self/mem", failed.parent_path() / "2.png");  // can be opened, and not be read
    const auto outcome = call({"desktop", "refresh"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.problems, HasSubstr("velamo: Thumbnails: Input/output error\n"));
    EXPECT_FALSE(fs::exists(failed));
}

TEST_F(Desktop, NeedsACatalogue) {
    const auto outcome = call({"desktop", "refresh"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.problems, HasSubstr("catalogue.sqlite: "));
}

}  // namespace
}  // namespace velamo
