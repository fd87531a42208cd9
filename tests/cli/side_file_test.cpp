// The side file beside a design that convert, convert --all and edit -o write.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "cli/save_design.h"
#include "tests/cli/support.h"
#include "tests/support/other_user.h"
#include "velamo/formats/import.h"
#include "velamo/formats/thread_file.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

using test::call;
using test::TemporaryFolder;
using testing::HasSubstr;
namespace fs = std::filesystem;

/// A side file with so many threads of a colour.
std::string sideFileOf(std::size_t count, double red) {
    const auto thread = VLMThread::initWithColorandNameforKeyofPalettewithName(
        VLMColor::initWithRedgreenblue(red, 0, 0), "Red", "", "", "Mine");
    const auto bytes = threadFileWith(std::vector(count, thread));
    return {bytes.begin(), bytes.end()};
}
const std::string own = sideFileOf(2, 0.5);
const std::string others = sideFileOf(2, 0.25);

/// A design of two colour blocks.
class SideFile : public testing::Test {
protected:
    std::string at(const std::string& name) { return (folder_.path() / name).native(); }
    std::string in(const std::string& name) { return TemporaryFolder::read(at(name)); }
    std::vector<std::string> names(const std::string& folder) {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(at(folder))) names.push_back(entry.path().filename());
        std::sort(names.begin(), names.end());
        return names;
    }
    double redOf(const std::string& design) {
        VLMDesign read;
        EXPECT_TRUE(importDesignFromURLerror(read, at(design), nullptr)) << design;
        return read.colorOfThread(0).red();
    }
    TemporaryFolder folder_;
    const std::string source_ = folder_.write("in/rose.dst", test::twoColorDst).native();
};

struct Row {
    const char* name;
    const char* mine;    // the side file of the source, or null
    const char* theirs;  // what lies beside the target, or null
    bool isSetAside;
    const char* after;  // what lies beside the target then, or null
    const char* said;   // part of what is said, or null for nothing
};
class SideFileThatIsThere : public SideFile, public testing::WithParamInterface<Row> {
protected:
    void SetUp() override {
        if (GetParam().mine != nullptr) folder_.write("in/rose.threads", GetParam().mine);
        fs::create_directory(at("out"));
        if (GetParam().theirs != nullptr) folder_.write("out/rose.threads", GetParam().theirs);
    }
    void check(const test::Outcome& outcome) {
        const auto& [name, mine, theirs, isSetAside, after, said] = GetParam();
        EXPECT_EQ(outcome.status, 0) << outcome.problems;
        EXPECT_EQ(fs::exists(at("out/rose.threads")), after != nullptr);
        if (after != nullptr) {
            EXPECT_EQ(in("out/rose.threads"), after);
        }
        EXPECT_EQ(fs::exists(at("out/rose.threads.old")), isSetAside);
        if (isSetAside) {
            EXPECT_EQ(in("out/rose.threads.old"), theirs);
            EXPECT_THAT(outcome.problems, HasSubstr(at("out/rose.threads") + ": has other threads, and is '" +
                                                    at("out/rose.threads.old") + "' now\n"));
        }
        if (said == nullptr) {
            EXPECT_EQ(outcome.problems, "");
        } else {
            EXPECT_THAT(outcome.problems, HasSubstr(said));
        }
        EXPECT_EQ(fs::exists(at("in/rose.threads")), mine != nullptr);
        if (mine != nullptr) {
            EXPECT_EQ(in("in/rose.threads"), mine);
        }
    }
};

TEST_P(SideFileThatIsThere, StaysOrIsSetAsideWhereADesignIsConverted) {
    check(call({"convert", source_, at("out/rose.exp")}));
}

TEST_P(SideFileThatIsThere, StaysOrIsSetAsideWhereAllAreConverted) {
    check(call({"convert", "--all", at("in"), "--to", "exp", "--out", at("out")}));
}

TEST_P(SideFileThatIsThere, StaysOrIsSetAsideWhereADesignIsEdited) {
    check(call({"edit", source_, "-e", "center", "-o", at("out/rose.exp")}));
}

const std::string fewer = sideFileOf(1, 0.25);
const std::string damaged = own.substr(0, own.size() / 2);
INSTANTIATE_TEST_SUITE_P(Rows, SideFileThatIsThere,
                         testing::Values(Row{"NoneAnywhere", nullptr, nullptr, false, nullptr, nullptr},
                                         Row{"Travels", own.c_str(), nullptr, false, own.c_str(), nullptr},
                                         Row{"SaysTheSame", own.c_str(), own.c_str(), false, own.c_str(), nullptr},
                                         Row{"SaysOther", own.c_str(), others.c_str(), true, own.c_str(), "now"},
                                         Row{"WouldRecolour", nullptr, others.c_str(), true, nullptr, "now"},
                                         Row{"OfAnotherNumber", nullptr, fewer.c_str(), false, fewer.c_str(), nullptr},
                                         Row{"Damaged", nullptr, damaged.c_str(), false, damaged.c_str(), nullptr},
                                         Row{"Empty", nullptr, "", false, "", nullptr},
                                         Row{"InTheWay", own.c_str(), fewer.c_str(), false, fewer.c_str(),
                                             "written without its 2 colors; '"},
                                         Row{"DamagedInTheWay", own.c_str(), damaged.c_str(), false, damaged.c_str(),
                                             "is in the way of its threads"},
                                         Row{"SourceDamaged", damaged.c_str(), nullptr, false, nullptr, nullptr}),
                         [](const auto& row) { return row.param.name; });

TEST_F(SideFile, OfTheDesignItselfStaysToTheByteWhereItIsSharedOrKept) {
    const std::string spaced = own + "\n\n";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"convert", source_, at("in/rose.pes")},
          {"convert", source_, source_},
          {"edit", source_, "-e", "center", "-o", source_},
          {"edit", source_, "-e", "thread-file on", "-o", source_},
          {"convert", "--all", at("in"), "--to", "jef", "--out", at("in")}}) {
        folder_.write("in/rose.dst", test::twoColorDst);
        folder_.write("in/rose.threads", spaced);
        const auto outcome = call(arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.problems;
        EXPECT_EQ(outcome.problems, "");
        EXPECT_EQ(in("in/rose.threads"), spaced);
        EXPECT_THAT(names("in"), testing::Not(testing::Contains("rose.threads.old")));
        for (const char* name : {"in/rose.pes", "in/rose.jef"}) fs::remove(at(name));
    }
}

TEST_F(SideFile, WithATypingErrorSurvivesAnEditInPlace) {
    folder_.write("in/rose.threads", damaged);
    EXPECT_EQ(call({"edit", source_, "-e", "center", "-o", source_}).status, 0);
    EXPECT_EQ(in("in/rose.threads"), damaged);
}

TEST_F(SideFile, ThatIsSwitchedOffIsSetAside) {
    folder_.write("in/rose.threads", own);
    const auto outcome = call({"edit", source_, "-e", "thread-file off", "-o", source_});
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    EXPECT_EQ(names("in"), (std::vector<std::string>{"rose.dst", "rose.threads.old"}));
    EXPECT_EQ(in("in/rose.threads.old"), own);
    EXPECT_THAT(outcome.problems, HasSubstr("rose.dst: written without its 2 colors\n"));
}

TEST_F(SideFile, ThatTheDesignWasReadWithMakesRoomForAnotherNumberOfThreads) {
    folder_.write("in/rose.threads", own);
    const auto outcome = call({"edit", source_, "-e", "delete-thread 1", "-o", source_});
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    EXPECT_EQ(in("in/rose.threads.old"), own);
    EXPECT_EQ(in("in/rose.threads"), sideFileOf(1, 0.5));
    EXPECT_EQ(redOf("in/rose.dst"), 0.5);
}

TEST_F(SideFile, IsSetAsideUnderANameThatIsFree) {
    folder_.write("out/rose.threads", others);
    folder_.write("out/rose.threads.old", "older");
    EXPECT_EQ(call({"convert", source_, at("out/rose.exp")}).status, 0);
    EXPECT_EQ(in("out/rose.threads.old"), "older");
    EXPECT_EQ(in("out/rose.threads.old2"), others);
}

TEST_F(SideFile, MayBeAFolder) {
    folder_.write("in/rose.threads", own);
    fs::create_directories(at("out/rose.threads"));
    const auto outcome = call({"convert", source_, at("out/rose.dst")});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.problems, HasSubstr("'" + at("out/rose.threads") + "' is in the way of its threads\n"));
    EXPECT_TRUE(fs::is_directory(at("out/rose.threads")));
    EXPECT_EQ(call({"edit", at("out/rose.dst"), "-e", "center", "-o", at("out/rose.dst")}).problems, "");
    EXPECT_TRUE(fs::is_directory(at("out/rose.threads")));
}

TEST_F(SideFile, MayBeALinkToAnotherFolderWhoseFilesStay) {
    folder_.write("in/rose.threads", own);
    const auto elsewhere = folder_.write("elsewhere/mine.threads", others);
    fs::create_directory(at("out"));
    fs::create_symlink(elsewhere, at("out/rose.threads"));
    EXPECT_EQ(call({"convert", source_, at("out/rose.dst")}).status, 0);
    EXPECT_EQ(in("elsewhere/mine.threads"), others);
    EXPECT_EQ(fs::read_symlink(at("out/rose.threads.old")), elsewhere);
    EXPECT_FALSE(fs::is_symlink(at("out/rose.threads")));
    EXPECT_EQ(in("out/rose.threads"), own);
}

TEST_F(SideFile, MayBeALinkToNothingWhichStays) {
    folder_.write("in/rose.threads", own);
    fs::create_directories(at("out"));
    fs::create_symlink(at("in/none.threads"), at("out/rose.threads"));
    const auto outcome = call({"convert", source_, at("out/rose.dst")});
    EXPECT_THAT(outcome.problems, HasSubstr("is in the way of its threads\n"));
    EXPECT_TRUE(fs::is_symlink(at("out/rose.threads")));
    EXPECT_FALSE(fs::exists(at("in/none.threads")));
}

TEST_F(SideFile, ThatCannotBeReadThisTimeKeepsTheTargetAsItWas) {
    folder_.write("out/rose.dst", test::diagonalDst);
    const std::string old = in("out/rose.dst");
    fs::create_symlink("/proc/self/mem", at("out/rose.threads"));  // its first bytes cannot be read
    const auto outcome = call({"convert", source_, at("out/rose.dst")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + at("out/rose.threads") + ": Input/output error (error 5)\n");
    EXPECT_EQ(in("out/rose.dst"), old);
    EXPECT_EQ(names("out"), (std::vector<std::string>{"rose.dst", "rose.threads"}));
}

TEST_F(SideFile, GoesWithEachOfManyDesignsAtATime) {
    for (int i = 0; i < 20; ++i) {
        const std::string stem = "in/leaf" + std::to_string(i);
        folder_.write(stem + ".dst", test::twoColorDst);
        folder_.write(stem + ".threads", sideFileOf(2, i / 32.0));
        folder_.write("out/leaf" + std::to_string(i) + ".threads", i % 2 == 0 ? own : sideFileOf(2, i / 32.0));
    }
    const auto outcome = call({"convert", "--all", at("in"), "--to", "exp", "--out", at("out"), "--jobs", "8"});
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    for (int i = 0; i < 20; ++i) {
        const std::string stem = "out/leaf" + std::to_string(i);
        EXPECT_EQ(redOf(stem + ".exp"), i / 32.0);
        EXPECT_EQ(fs::exists(at(stem + ".threads.old")), i % 2 == 0 && i != 16);
    }
}

struct LongNameRow {
    const char* name;
    std::size_t size;     // of the design's name without its extension
    const char* refused;  // the ending of the name that is too long
};
class SideFileOfALongName : public SideFile, public testing::WithParamInterface<LongNameRow> {};
TEST_P(SideFileOfALongName, KeepsTheTargetAsItWas) {
    folder_.write("in/rose.threads", own);
    const std::string stem = "out/" + std::string(GetParam().size, 'x');
    folder_.write(stem + ".dst", test::diagonalDst);
    const std::string old = in(stem + ".dst");
    if (GetParam().refused != std::string(".threads")) folder_.write(stem + ".threads", others);
    const std::size_t count = names("out").size();
    const auto outcome = call({"convert", source_, at(stem + ".dst")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + at(stem + ".threads") + ": File name too long (error 36)\n");
    EXPECT_EQ(in(stem + ".dst"), old);
    EXPECT_EQ(names("out").size(), count);
}
INSTANTIATE_TEST_SUITE_P(Rows, SideFileOfALongName,
                         testing::Values(LongNameRow{"New", 251, ".threads"}, LongNameRow{"Old", 247, ".threads.old"}),
                         [](const auto& row) { return row.param.name; });

TEST_F(SideFile, OfALongNameDoesNotMatterToADesignWithoutOne) {
    const std::string stem = "in/" + std::string(251, 'x');
    EXPECT_EQ(call({"convert", source_, at(stem + ".dst")}).problems, "");
    EXPECT_TRUE(fs::exists(at(stem + ".dst")));
}

std::vector<VLMThread> threadsAt(const fs::path& target, std::size_t count) {
    VLMDesign design;
    design.setThreads(std::vector<VLMThread>(count));
    return takeThreadsOfSideFile(design, target) ? design.threads().all() : std::vector<VLMThread>();
}

VLMDesign designWithSideFile(const fs::path& file) {
    VLMDesign design;
    EXPECT_TRUE(importDesignFromURLerror(design, file, nullptr));
    EXPECT_TRUE(design.useThreadFile());
    return design;
}

TEST_F(SideFile, ThatSomebodyElseMakesMeanwhileIsNotOverwritten) {
    folder_.write("in/rose.threads", own);
    fs::create_directory(at("out"));
    const VLMDesign design = designWithSideFile(source_);
    const SideFilePlan plan =
        planSideFile(at("out/rose.dst"), {source_, true}, design, design.threads().all(), design, threadsAt);
    folder_.write("out/rose.threads", others);
    const SideFileOutcome outcome = carryOut(plan);
    EXPECT_EQ(outcome.error, std::errc::file_exists);
    EXPECT_EQ(in("out/rose.threads"), others);
    EXPECT_EQ(names("out"), std::vector<std::string>{"rose.threads"});
}

TEST_F(SideFile, OfOneStemWrittenAtATimeIsOneOfThemAndTheOtherIsSetAside) {
    folder_.write("in/rose.threads", own);
    const std::string leaf = folder_.write("in/leaf.dst", test::twoColorDst);
    folder_.write("in/leaf.threads", others);
    for (int round = 0; round < 30; ++round) {
        const std::string out = "out" + std::to_string(round);
        fs::create_directory(at(out));
        std::atomic<int> ready{0};
        const auto save = [&](const std::string& source, const std::string& target) {
            VLMDesign design = designWithSideFile(source);
            ++ready;
            while (ready < 2) continue;
            const SaveOutcome saved = saveDesign(design, at(out + target), {source, true}, {}, threadsAt);
            EXPECT_TRUE(saved.isSaved) << saved.error.message();
            return saved.notes.size();
        };
        std::size_t notesOfOther = 0;
        std::thread other([&] { notesOfOther = save(leaf, "/rose.dst"); });
        const std::size_t notes = save(source_, "/rose.exp");
        other.join();
        EXPECT_EQ(names(out), (std::vector<std::string>{"rose.dst", "rose.exp", "rose.threads", "rose.threads.old"}));
        EXPECT_NE(in(out + "/rose.threads"), in(out + "/rose.threads.old"));
        EXPECT_EQ(notes + notesOfOther, 1U);
    }
}

TEST_F(SideFile, OfADesignWithMoreBlocksThanThreadsIsOneThatTheNewFileTakes) {
    folder_.write("in/rose.threads", own);
    const auto outcome = call({"edit", source_, "-e", "delete-thread 0", "-o", source_});
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    EXPECT_EQ(redOf("in/rose.dst"), 0.5);
    EXPECT_EQ(in("in/rose.threads.old"), own);
    EXPECT_THAT(outcome.problems, HasSubstr("rose.dst: written with a thread more\n"));
}

TEST_F(SideFile, ThatIsUnreadableStays) {
    folder_.write("in/rose.threads", own);
    folder_.write("out/rose.threads", others);
    fs::permissions(at("out/rose.threads"), fs::perms::none);
    fs::permissions(folder_.path(), fs::perms::all);
    fs::permissions(at("out"), fs::perms::all);
    EXPECT_TRUE(test::inBoundProcess(folder_.path(), [&] {
        return call({"convert", source_, at("out/rose.exp")}).status == 0 && fs::exists(at("out/rose.exp"));
    }));
    EXPECT_EQ(names("out"), (std::vector<std::string>{"rose.exp", "rose.threads"}));
    fs::permissions(at("out/rose.threads"), fs::perms::owner_all);
    EXPECT_EQ(in("out/rose.threads"), others);
}

}  // namespace
}  // namespace velamo
