#include "cli/convert.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/cli/support.h"
#include "velamo/formats/format.h"
#include "velamo/platform/system/files.h"

namespace velamo {
namespace {

using test::Bytes;
using test::bytes;
using test::call;
using test::TemporaryFolder;
using testing::HasSubstr;

namespace fs = std::filesystem;

std::string fileText(const fs::path& file) {
    const auto content = readWholeFile(file);
    return {content.begin(), content.end()};
}

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) names.push_back(entry.path().lexically_relative(folder).native());
    std::sort(names.begin(), names.end());
    return names;
}

class Convert : public testing::Test {
protected:
    TemporaryFolder folder_;
    fs::path source_ = folder_.write("rose.dst", test::diagonalDst);
    std::string at(const std::string& name) { return (folder_.path() / name).native(); }
};

TEST_F(Convert, WritesEveryFormatThatThereIsAWriterFor) {
    for (const Format& format : allFormats()) {
        const std::string target = at("out." + std::string(format.extension));
        const auto outcome = call({"convert", source_.native(), target});
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.status, format.writer == nullptr ? 1 : 0) << outcome.problems;
        EXPECT_EQ(fs::exists(target), format.writer != nullptr) << target;
        if (format.writer == nullptr) {
            EXPECT_THAT(outcome.problems, HasSubstr(target + ": Unsupported file format (UTI) for export. (error 50)"));
        }
    }
}

TEST_F(Convert, DumpsTheDesignAsItIsAfterwards) {
    const auto outcome = call({"convert", source_.native(), at("leaf.exp"), "--dump"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.json()["ok"], true);
    EXPECT_EQ(outcome.json()["designName"], "leaf.exp");
    EXPECT_EQ(outcome.json()["designType"], "EXP");
}

TEST_F(Convert, DumpsWhatFailedToo) {
    const auto outcome = call({"convert", source_.native(), at("leaf.txt"), "--dump"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.json()["ok"], false);
    EXPECT_EQ(outcome.json()["error"]["code"], 50);
    EXPECT_EQ(outcome.json()["designName"], "leaf.txt");
    EXPECT_EQ(outcome.json()["designType"], "DST");
}

TEST_F(Convert, NamesTheFileThatIsToBlame) {
    EXPECT_THAT(call({"convert", "/nowhere/rose.dst", at("leaf.exp")}).problems,
                HasSubstr("velamo: /nowhere/rose.dst: No such file or directory (error 2)"));
    EXPECT_THAT(call({"convert", source_.native(), "/nowhere/leaf.exp"}).problems,
                HasSubstr("velamo: /nowhere/leaf.exp: "));
    EXPECT_FALSE(fs::exists(at("leaf.exp")));
}

TEST_F(Convert, FixesTheDateOfAJefFile) {
    EXPECT_EQ(call({"convert", source_.native(), at("leaf.jef"), "--date", "20261121084228"}).status, 0);
    EXPECT_EQ(fileText(at("leaf.jef")).substr(8, 14), "20261121084228");
}

struct Usage {
    const char* name;
    std::vector<std::string> arguments;
    const char* problem;
};
class WrongConversions : public testing::TestWithParam<Usage> {};
TEST_P(WrongConversions, AreWrongUsage) {
    std::vector<std::string> arguments{"convert"};
    arguments.insert(arguments.end(), GetParam().arguments.begin(), GetParam().arguments.end());
    const auto outcome = call(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.problems, HasSubstr(GetParam().problem));
}
INSTANTIATE_TEST_SUITE_P(
    Rows, WrongConversions,
    testing::Values(
        Usage{"Nothing", {}, "convert: needs IN and OUT, or --all"}, Usage{"NoTarget", {"rose.dst"}, "OUT is required"},
        Usage{"AllWithoutFormat", {"--all", "here", "--out", "there"}, "--all: needs --to and --out"},
        Usage{"AllWithoutPlace", {"--all", "here", "--to", "pes"}, "--all: needs --to and --out"},
        Usage{"AllAndOne", {"--all", "here", "a.dst", "a.pes"}, "--all: takes the place of IN and OUT"},
        Usage{"FormatWithoutAll", {"a.dst", "a.pes", "--to", "pes"}, "--to, --out: go with --all"},
        Usage{"AllDumped",
              {"--all", "here", "--to", "pes", "--out", "there", "--dump"},
              "--dump: is for a single design"},
        Usage{"FormatThatIsOnlyRead",
              {"--all", "here", "--to", "vp3", "--out", "there"},
              "'vp3' is none of jef, pes, pec, exp, dst, pcs"},
        Usage{"ShortDate", {"a.dst", "a.jef", "--date", "2026"}, "'2026' is no date of 14 digits"},
        Usage{"DateOfOtherDigits", {"a.dst", "a.jef", "--date", "2026112108422x"}, "is no date of 14 digits"}),
    [](const auto& row) { return row.param.name; });

class ConvertAll : public Convert {
protected:
    test::Outcome toExp(const std::vector<std::string>& more = {}, bool isTerminal = false) {
        std::vector<std::string> arguments{"convert", "--all", folder_.path().native(), "--to", "exp", "--out", out_};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return call(arguments, isTerminal);
    }
    TemporaryFolder outFolder_;
    std::string out_ = (outFolder_.path() / "new").native();
};

TEST_F(ConvertAll, KeepsThePlacesBelowTheFolder) {
    fs::create_directories(folder_.path() / "garden" / "bed");
    folder_.write("garden/bed/leaf.DST", test::diagonalDst);
    folder_.write("garden/note.txt", bytes(1, 2, 3));
    const auto outcome = toExp();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.problems, "");
    EXPECT_EQ(outcome.out, "2 designs converted, 0 failed\n");
    EXPECT_EQ(namesIn(out_), (std::vector<std::string>{"garden/bed/leaf.exp", "rose.exp"}));
}

TEST_F(ConvertAll, KeepsNamesakesApart) {
    folder_.write("rose.exp", bytes(5, 5, 1, 1));
    folder_.write("leaf.exp", bytes(5, 5, 1, 1));
    folder_.write("rose.dst.exp", bytes(5, 5, 1, 1));
    EXPECT_EQ(toExp().out, "4 designs converted, 0 failed\n");
    EXPECT_EQ(namesIn(out_),
              (std::vector<std::string>{"leaf.exp", "rose.dst.exp", "rose.dst.exp.exp", "rose.exp.exp"}));
}

TEST_F(ConvertAll, GoesOnPastFailuresAndListsThemAtTheEnd) {
    folder_.write("broken.dst", bytes(1, 2, 3));
    folder_.write("a.exp", bytes(1, 2, 3));
    const auto outcome = toExp({"--jobs", "3"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "1 design converted, 2 failed\n");
    EXPECT_EQ(outcome.problems,
              "velamo: " + at("a.exp") + ": Unable to read EXP: file contains uneven number of bytes. (error 100)\n" +
                  "velamo: " + at("broken.dst") + ": Unable to import DST file (missing header). (error 123)\n");
    EXPECT_EQ(namesIn(out_), (std::vector<std::string>{"rose.exp"}));
}

TEST_F(ConvertAll, PutsNoDesignInThePlaceOfItsSource) {
    const auto outcome =
        call({"convert", "--all", folder_.path().native(), "--to", "dst", "--out", folder_.path().native()});
    EXPECT_EQ(outcome.status, 0) << outcome.problems;
    EXPECT_EQ(outcome.out, "0 designs converted, 0 failed\n");
    EXPECT_EQ(namesIn(folder_.path()), (std::vector<std::string>{"rose.dst"}));
    EXPECT_EQ(fileText(source_), std::string(test::diagonalDst.begin(), test::diagonalDst.end()));
}

TEST_F(ConvertAll, PutsNoDesignInThePlaceOfAnother) {
    const Bytes other = bytes(5, 5, 1, 1);
    folder_.write("rose.EXP", other);
    folder_.write("rose.exp", other);
    folder_.write("leaf.exp", other);
    for (int run = 0; run < 3; ++run) {
        const auto outcome = call(
            {"convert", "--all", folder_.path().native(), "--to", "exp", "--out", (folder_.path() / ".").native()});
        EXPECT_EQ(outcome.out, "1 design converted, 0 failed\n");
        for (const char* name : {"rose.EXP", "rose.exp", "leaf.exp"})
            EXPECT_EQ(fileText(folder_.path() / name), std::string(other.begin(), other.end())) << name;
        EXPECT_EQ(namesIn(folder_.path()),
                  (std::vector<std::string>{"leaf.exp", "rose.EXP", "rose.dst", "rose.dst.exp", "rose.exp"}));
    }
}

TEST_F(ConvertAll, DoesNotConvertWhatItWroteBetweenItsSources) {
    fs::create_directory(folder_.path() / "garden");
    folder_.write("garden/leaf.dst", test::diagonalDst);
    const std::string folder = folder_.path().native();
    for (int run = 0; run < 4; ++run) {
        EXPECT_EQ(call({"convert", "--all", folder, "--to", "exp", "--out", folder}).out,
                  "2 designs converted, 0 failed\n");
        EXPECT_EQ(namesIn(folder).size(), run == 0 ? 4U : 6U);
    }
}

TEST_F(ConvertAll, WritesToNoSourceUnderAnotherName) {
    const Bytes other = bytes(5, 5, 1, 1);
    const auto source = folder_.write("leaf.exp", other);
    std::filesystem::create_directory(out_);
    std::filesystem::create_hard_link(source, std::filesystem::path(out_) / "leaf.exp");
    EXPECT_EQ(toExp().out, "2 designs converted, 0 failed\n");
    EXPECT_EQ(namesIn(out_), (std::vector<std::string>{"leaf.exp", "leaf.exp.exp", "rose.exp"}));
    for (const fs::path& file : {source, fs::path(out_) / "leaf.exp"})
        EXPECT_EQ(fileText(file), std::string(other.begin(), other.end())) << file;
}

TEST_F(ConvertAll, FollowsNoLinkOntoASource) {
    const Bytes other = bytes(5, 5, 1, 1);
    const fs::path leaf = folder_.write("leaf.exp", other);
    fs::create_directory(out_);
    fs::create_symlink(leaf, fs::path(out_) / "rose.exp");
    fs::create_symlink("rose.exp", fs::path(out_) / "leaf.exp");
    const auto outcome = toExp();
    EXPECT_EQ(outcome.out, "2 designs converted, 0 failed\n") << outcome.problems;
    EXPECT_EQ(fileText(leaf), std::string(other.begin(), other.end()));
    EXPECT_EQ(namesIn(out_), (std::vector<std::string>{"leaf.exp", "leaf.exp.exp", "rose.dst.exp", "rose.exp"}));
    EXPECT_FALSE(fs::is_symlink(fs::path(out_) / "rose.dst.exp"));
}

TEST_F(ConvertAll, LeavesOutItsOwnOutput) {
    fs::create_directory(folder_.path() / "garden");
    folder_.write("garden/leaf.dst", test::diagonalDst);
    out_ = at("new");
    fs::create_directory_symlink(out_, at("same"));
    for (int run = 0; run < 3; ++run) {
        EXPECT_EQ(toExp().out, "2 designs converted, 0 failed\n");
        EXPECT_EQ(namesIn(out_), (std::vector<std::string>{"garden/leaf.exp", "rose.exp"}));
    }
}

TEST_F(ConvertAll, NamesTheTargetThatCannotBeWritten) {
    fs::create_directories(fs::path(out_) / "rose.exp");
    const auto outcome = toExp();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems, "velamo: " + (fs::path(out_) / "rose.exp").native() + ": Is a directory (error 21)\n");
}

TEST_F(ConvertAll, SaysWhatItCannotLookAt) {
    const auto outcome = call({"convert", "--all", "/nowhere", "--to", "exp", "--out", out_});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "0 designs converted, 0 failed\n");
    EXPECT_THAT(outcome.problems, HasSubstr("velamo: /nowhere: "));
}

TEST_F(ConvertAll, ManyAtATimeGivesTheSameFiles) {
    for (int i = 0; i < 40; ++i) folder_.write("leaf" + std::to_string(i) + ".dst", test::diagonalDst);
    EXPECT_EQ(toExp({"--jobs", "8"}).out, "41 designs converted, 0 failed\n");
    const auto expected = fileText(fs::path(out_) / "rose.exp");
    for (const auto& name : namesIn(out_)) EXPECT_EQ(fileText(fs::path(out_) / name), expected) << name;
}

TEST(EditOutput, IsExportedBeforeItIsDumped) {
    const TemporaryFolder folder;
    const auto source = folder.write("rose.dst", test::diagonalDst);
    const std::string target = (folder.path() / "leaf.exp").native();
    const auto outcome = call({"edit", source.native(), "-e", "select-all", "-e", "resize 2", "-o", target, "--dump"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.json()["design"]["designType"], "EXP");
    EXPECT_TRUE(fs::exists(target));
}

TEST(EditOutput, IsNotWrittenWhereACommandFails) {
    const TemporaryFolder folder;
    const auto source = folder.write("rose.dst", test::diagonalDst);
    const std::string target = (folder.path() / "leaf.exp").native();
    EXPECT_EQ(call({"edit", source.native(), "-e", "flip v", "-o", target}).status, 1);
    EXPECT_EQ(call({"edit", source.native(), "-e", "twirl", "-o", target}).status, 2);
    EXPECT_EQ(call({"edit", source.native(), "-e", "show-thread 9 on", "-o", target}).status, 2);
    EXPECT_FALSE(fs::exists(target));
}

TEST(EditOutput, SaysWhyItFailed) {
    const TemporaryFolder folder;
    const auto source = folder.write("rose.dst", test::diagonalDst);
    const auto outcome = call({"edit", source.native(), "-e", "center", "-o", "leaf.txt"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.json()["results"].dump(), "[true]");
    EXPECT_EQ(outcome.problems, "velamo: leaf.txt: Unsupported file format (UTI) for export. (error 50)\n");
}

}  // namespace
}  // namespace velamo
