#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <limits>
#include <regex>
#include <thread>

#include "cli/index.h"
#include "cli/progress_bar.h"
#include "cli/search.h"
#include "tests/cli/support.h"
#include "tests/support/environment.h"
#include "tests/support/janome_files.h"
#include "tests/support/run_sql.h"

namespace velamo {
namespace {

using test::call;
using testing::HasSubstr;
using testing::StartsWith;

class IndexAndSearch : public testing::Test {
protected:
    test::Outcome index(std::vector<std::string> arguments, bool isTerminal = false) const {
        return callWith("index", std::move(arguments), isTerminal);
    }
    test::Outcome search(std::vector<std::string> arguments, bool isTerminal = false) const {
        return callWith("search", std::move(arguments), isTerminal);
    }
    std::string write(const std::string& name, const test::Bytes& bytes = test::smallDst) const {
        return folder_.write("designs/" + name, bytes);
    }

    test::TemporaryFolder folder_;
    std::filesystem::path designs_ = std::filesystem::canonical(folder_.path()) / "designs";
    std::filesystem::path catalogue_ = folder_.path() / "own" / "catalogue.sqlite";

private:
    test::Outcome callWith(const char* command, std::vector<std::string> arguments, bool isTerminal) const {
        arguments.insert(arguments.begin(), {command, "--catalogue", catalogue_.native()});
        return call(arguments, isTerminal);
    }
};

TEST_F(IndexAndSearch, FindWhatWasIndexed) {
    write("flowers/rose.dst");
    write("lily.dst");
    const auto indexed = index({designs_});
    EXPECT_EQ(indexed.status, 0);
    EXPECT_THAT(indexed.out, StartsWith("2 designs: 2 new, 0 changed, 0 unchanged; 0 removed, 0 broken, 0 skipped; "));
    EXPECT_EQ(indexed.problems, "");  // no bar in a pipe

    const auto found = search({});
    EXPECT_EQ(found.status, 0);
    EXPECT_EQ(found.out,
              "           Size  Stitches  Colors  Design\n"
              "1.0 mm x 8.1 mm         3       1  " +
                  (designs_ / "lily.dst").native() +
                  "\n"
                  "1.0 mm x 8.1 mm         3       1  " +
                  (designs_ / "flowers" / "rose.dst").native() + "\n2 designs\n");
    EXPECT_THAT(search({"FLOWERS", "ros", "--height", "8..9"}).out, HasSubstr("rose.dst\n1 design\n"));
    EXPECT_EQ(search({"--width", "2.."}).out, "no design found\n");
    EXPECT_EQ(search({"--width", "2.."}).status, 0);
    EXPECT_THAT(search({"--folder", (designs_ / "flowers/").native()}).out, HasSubstr("\n1 design\n"));
    EXPECT_THAT(search({"--limit", "1", "--reverse"}).out, HasSubstr("rose.dst\n1 of 2 designs\n"));
    EXPECT_THAT(search({"--offset", "1"}).out, HasSubstr("rose.dst\n1 of 2 designs\n"));
    EXPECT_THAT(search({"--offset", "2"}).out, HasSubstr("Design\n0 of 2 designs\n"));
    EXPECT_THAT(search({"--format", "pes,dst", "--hoop", "5x10", "--blocks", "2"}).out, HasSubstr("\n2 designs\n"));
    EXPECT_EQ(search({"--format", "pes"}).out, "no design found\n");
    EXPECT_EQ(search({"--hoop", "5x5"}).out, "no design found\n");
    EXPECT_EQ(search({"--blocks", "3.."}).out, "no design found\n");
}

TEST_F(IndexAndSearch, GiveJson) {
    const auto rose = write("rose.dst");
    std::filesystem::last_write_time(rose, std::filesystem::file_time_type::clock::from_sys(
                                               std::chrono::sys_seconds(std::chrono::seconds(1709210096))));
    write("torn.dst", test::bytes('L', 'A', ':'));
    static_cast<void>(index({designs_}));
    const std::string thread =
        R"({"color":null,"name":null,"palette":null,"stitches":1,"length":0.0})";  // the file does not tell
    EXPECT_EQ(
        search({"--json"}).out,
        "[\n  {\"file\":\"" + (designs_ / "rose.dst").native() +
            R"(","modified":"2024-02-29T12:34:56Z","width":1.0,"height":8.1,"stitches":3,"colors":1,"format":"DST",)"
            R"("version":10,"blocks":2,"jumps":1,"trims":0,"length":0.0,"threads":[)" +
            thread + "," + thread +
            R"(],"hoop":null,"hash":"3685b9cdb31366fe8fe4840e2ac7782e55514a473df95075a6f82650c46444a5",)"
            R"("away":false})"
            "\n]\n");
    EXPECT_EQ(search({"--json", "nothing"}).out, "[]\n");
    const auto broken = search({"--json", "--broken"}).json();
    ASSERT_EQ(broken.size(), 1U);
    EXPECT_EQ(broken[0]["file"], (designs_ / "torn.dst").native());
    EXPECT_EQ(broken[0]["error"]["code"], 123);
    EXPECT_EQ(broken[0]["error"]["message"], "Unable to import DST file (missing header).");
}

TEST_F(IndexAndSearch, ReportBrokenFilesAndSucceed) {
    const auto torn = (designs_ / "torn.dst").native();
    write("torn.dst", test::bytes('L', 'A', ':'));
    const auto indexed = index({designs_});
    EXPECT_EQ(indexed.status, 0);
    EXPECT_EQ(indexed.problems, "velamo: " + torn + ": Unable to import DST file (missing header). (error 123)\n");
    EXPECT_THAT(indexed.out, StartsWith("1 design: 1 new, 0 changed, 0 unchanged; 0 removed, 1 broken, 0 skipped; "));
    EXPECT_EQ(search({"--broken"}).out,
              torn + ": Unable to import DST file (missing header). (error 123)\n1 broken file\n");
    EXPECT_EQ(search({}).out, "no design found\n");
}

TEST_F(IndexAndSearch, KeepOddNames) {
    write("a\nb\xff.dst");
    static_cast<void>(index({designs_}));
    const auto path = (designs_ / "a\nb\xff.dst").native();
    EXPECT_EQ(search({"--print0"}).out, path + '\0');
    EXPECT_EQ(search({"--json"}).json()[0]["file"], (designs_ / "a\nb\uFFFD.dst").native());
    EXPECT_THAT(search({}, true).out, HasSubstr((designs_ / "a\\nb\\xff.dst\n").native()));
    EXPECT_THAT(search({}).out, HasSubstr(path));
}

TEST_F(IndexAndSearch, WithoutAFolderNeedOneFirst) {
    auto outcome = index({});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.problems, HasSubstr("velamo index ~/Designs"));
    EXPECT_FALSE(std::filesystem::exists(catalogue_));
    write("rose.dst");
    static_cast<void>(index({designs_}));
    outcome = index({});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out, HasSubstr("1 unchanged"));
}

TEST_F(IndexAndSearch, TakeMoreThanAThousandWords) {
    write("rose.dst");
    static_cast<void>(index({designs_}));
    EXPECT_THAT(search(std::vector<std::string>(1200, "rose")).out, HasSubstr("rose.dst\n1 design\n"));
}

TEST_F(IndexAndSearch, KeepAFolderThatIsAway) {
    write("rose.dst");
    static_cast<void>(index({designs_}));
    std::filesystem::rename(designs_, folder_.path() / "elsewhere");
    const auto problem = "velamo: " + designs_.native() +
                         ": No such file or directory; the catalogue keeps what it knows of it (error 2)\n";
    const auto again = index({});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.problems, problem);
    EXPECT_THAT(again.out, StartsWith("0 designs: 0 new, 0 changed, 0 unchanged; 0 removed, "));
    const auto named = index({designs_});
    EXPECT_EQ(named.status, 1);
    EXPECT_EQ(named.problems, problem);
    EXPECT_THAT(search({}).out, HasSubstr("rose.dst  (away)\n1 design\n"));
    EXPECT_EQ(search({"--json"}).json()[0]["away"], true);
}

TEST_F(IndexAndSearch, KeepADiskWhoseMountPointIsEmpty) {
    write("stick/rose.dst");
    write("lily.dst");
    static_cast<void>(index({designs_}));
    const auto stick = designs_ / "stick";
    std::filesystem::remove(stick / "rose.dst");
    test::runSql(catalogue_, "UPDATE folders SET device = device + 1");  // as if there had been a disk
    const auto again = index({});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.problems, "velamo: " + stick.native() +
                                  ": it is empty, and its disk is not there; the catalogue keeps what it knows of it "
                                  "(error 19)\n");
    EXPECT_THAT(again.out, HasSubstr("1 unchanged; 0 removed"));
    EXPECT_THAT(search({"rose"}).out, HasSubstr("rose.dst  (away)\n"));
    EXPECT_THAT(search({"lily"}).out, HasSubstr("lily.dst\n"));
    EXPECT_EQ(index({stick}).status, 1);
    write("stick/other.dst");
    EXPECT_THAT(index({}).out, HasSubstr("1 new, 0 changed, 1 unchanged; 1 removed"));
}

TEST_F(IndexAndSearch, RemoveWhatWasEmptied) {
    const auto rose = write("stick/rose.dst");
    static_cast<void>(index({designs_}));
    std::filesystem::remove(rose);
    EXPECT_THAT(index({}).out, HasSubstr("1 removed"));
}

TEST_F(IndexAndSearch, ShowNumbersForAPerson) {
    write("rose.jpx", test::jpxFile({.indices = {1, 2, 3, 4, 5}, .tensions = {1, 1, 1, 1, 1}}));
    static_cast<void>(index({designs_}));
    const auto stitches = search({"--json"}).json()[0]["stitches"].get<int>();
    EXPECT_LT(stitches, 0);  // as the design itself counts them
    EXPECT_THAT(search({}).out, HasSubstr("         0       5  "));
    const test::Variable locale("LC_ALL", "ar_EG.UTF-8");
    EXPECT_THAT(search({}).out, testing::ContainsRegex("^ *Size  Stitches  Colors  Design\n"
                                                       "[^0-9]* mm x [^0-9]* mm  +\u0660 +\u0665  [^\n]*\n"
                                                       "\u0661 design\n$"));
    EXPECT_EQ(search({"--json"}).json()[0]["colors"], 5);
}

TEST_F(IndexAndSearch, MakeThePersonsOwnCatalogueForThePersonAlone) {
    const test::Variable home("XDG_DATA_HOME", folder_.path() / "data");
    write("rose.dst");
    const auto folder = folder_.path() / "data" / "velamo";
    std::filesystem::create_directories(folder);
    std::filesystem::permissions(folder, std::filesystem::perms(0775));
    EXPECT_EQ(call({"index", designs_.native()}).status, 0);
    EXPECT_EQ(std::filesystem::status(folder).permissions(), std::filesystem::perms(0770));
    EXPECT_TRUE(std::filesystem::exists(folder / "catalogue.sqlite"));
}

TEST_F(IndexAndSearch, FailForANamedFolderThatIsNotThere) {
    const auto outcome = index({(designs_ / "nowhere").native()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.problems,
              "velamo: " + (designs_ / "nowhere").native() + ": No such file or directory (error 2)\n");
}

TEST_F(IndexAndSearch, NameACatalogueThatCannotBeUsed) {
    const auto missing = search({});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.problems, StartsWith("velamo: " + catalogue_.native() + ": no such catalogue"));
    const std::string text(1000, 'x');
    folder_.write("own/catalogue.sqlite", text);
    write("rose.dst");
    for (const auto& outcome : {search({}), index({designs_})}) {
        EXPECT_EQ(outcome.status, 1);
        EXPECT_THAT(outcome.problems,
                    StartsWith("velamo: " + catalogue_.native() +
                               ": this is no catalogue, or a damaged one (file is not a database); move "));
        EXPECT_THAT(outcome.problems, testing::EndsWith(" (error 26)\n"));
    }
    EXPECT_EQ(test::TemporaryFolder::read(catalogue_), text);
    catalogue_ = folder_.path() / "designs" / "rose.dst" / "catalogue.sqlite";
    EXPECT_EQ(index({designs_}).status, 1);
    EXPECT_EQ(index({designs_}).problems, "velamo: " + catalogue_.native() + ": Not a directory (error 20)\n");
}

TEST_F(IndexAndSearch, TakeAsManyJobsAsAsked) {
    for (int i = 0; i < 20; ++i) write(std::to_string(i) + ".dst");
    EXPECT_THAT(index({"--jobs", "1", designs_}).out, StartsWith("20 designs: 20 new"));
    EXPECT_THAT(index({"--jobs", "8", designs_}).out, StartsWith("20 designs: 0 new, 0 changed, 20 unchanged"));
}

TEST(SummaryText, CountsAndTellsTheTime) {
    EXPECT_EQ(summaryText({.added = 1, .changed = 2, .unchanged = 3, .removed = 4, .broken = 5, .skipped = 6}, 12.34),
              "6 designs: 1 new, 2 changed, 3 unchanged; 4 removed, 5 broken, 6 skipped; 12.3 s");
    EXPECT_EQ(summaryText({.added = 1}, 0.96),
              "1 design: 1 new, 0 changed, 0 unchanged; 0 removed, 0 broken, 0 skipped; 1.0 s");
}

TEST(TimeText, IsThatOfTheCalendar) {
    EXPECT_EQ(timeText(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(timeText(1'709'210'096'999'999'999), "2024-02-29T12:34:56Z");
    EXPECT_EQ(timeText(-1), "1969-12-31T23:59:59Z");
    EXPECT_EQ(timeText(std::numeric_limits<std::int64_t>::max()), "2262-04-11T23:47:16Z");
    EXPECT_EQ(timeText(std::numeric_limits<std::int64_t>::min()), "1677-09-21T00:12:43Z");
}

struct ProgressRow {
    const char* name;
    double share;
    std::int64_t files;
    double seconds;
    int columns;
    const char* line;
};
class ProgressLine : public testing::TestWithParam<ProgressRow> {};
TEST_P(ProgressLine, IsThatOfTheRow) {
    const ProgressRow& row = GetParam();
    EXPECT_EQ(progressLine(row.share, row.files, row.seconds, row.columns), row.line);
}
INSTANTIATE_TEST_SUITE_P(
    Rows, ProgressLine,
    testing::Values(ProgressRow{"Start", 0, 0, 0, 80, "[------------------------]   0 %  0 files  0 files/s"},
                    ProgressRow{"Half", 0.5, 1234, 0.5, 80,
                                "[############------------]  50 %  1234 files  2468 files/s"},
                    ProgressRow{"End", 1, 10, 2, 80, "[########################] 100 %  10 files  5 files/s"},
                    ProgressRow{"JustRoom", 1, 10, 2, 54, "[########################] 100 %  10 files  5 files/s"},
                    ProgressRow{"ShorterBar", 1, 10, 2, 53, "[#######################] 100 %  10 files  5 files/s"},
                    ProgressRow{"ShortestBar", 0.5, 1234, 0.5, 43, "[####----]  50 %  1234 files  2468 files/s"},
                    ProgressRow{"WithoutSpeed", 0.5, 1234, 0.5, 42, "[##########-----------]  50 %  1234 files"},
                    ProgressRow{"WithoutFiles", 0.5, 1234, 0.5, 28, "[#########----------]  50 %"},
                    ProgressRow{"ShareAlone", 0.5, 1234, 0.5, 16, " 50 %"},
                    ProgressRow{"ShareFits", 1, 9, 1, 6, "100 %"}, ProgressRow{"Nothing", 1, 9, 1, 5, ""},
                    ProgressRow{"NoRoom", 1, 9, 1, 0, ""}),
    [](const auto& row) { return std::string(row.param.name); });

/// What two drawings of a bar write, far enough from each other.
std::string drawnOn(bool isTerminal, int columns) {
    std::ostringstream stream;
    const Console console{
        .out = stream, .problems = stream, .problemsIsTerminal = isTerminal, .roomForProblems = [columns] {
            return TerminalSize{columns, 24};
        }};
    {
        ProgressBar bar(console);
        for (int i = 0; i < 2; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(110));
            bar.show(0.5, 0);
        }
    }
    return stream.str();
}

TEST(ProgressBar, IsSilentWhereNobodyLooksOn) {
    EXPECT_EQ(drawnOn(false, 80), "");
}

TEST(ProgressBar, KeepsToTheWidthOfItsTerminal) {
    EXPECT_EQ(drawnOn(true, 16), " 50 %\r\x1b[K 50 %\r\x1b[K");
}

}  // namespace
}  // namespace velamo
