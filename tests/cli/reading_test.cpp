// How every command that reads designs reads them.
#include "cli/reading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <functional>

#include "tests/cli/support.h"
#include "tests/support/other_user.h"
#include "tests/support/without_filters.h"

namespace velamo {
namespace {

using test::call;
using Arguments = std::vector<std::string>;

struct Command {
    const char* name;
    std::function<Arguments(const std::filesystem::path& folder)> arguments;  // that read rose.dst there
    friend std::ostream& operator<<(std::ostream& out, const Command& command) { return out << command.name; }
};

class ReadingCommands : public testing::TestWithParam<Command> {
protected:
    ReadingCommands() { folder_.write("designs/rose.dst", test::smallDst); }
    [[nodiscard]] test::Outcome run(bool isConfinedOnly) const {
        Arguments arguments = GetParam().arguments(folder_.path());
        if (isConfinedOnly) arguments.emplace_back("--confined-only");
        return call(arguments);
    }
    test::TemporaryFolder folder_;
};

const std::string notice = "this system cannot wholly confine the process that reads designs\n";

TEST_P(ReadingCommands, ReadInAConfinedProcess) {
    const auto outcome = run(true);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.problems, "");
}

TEST_P(ReadingCommands, SayOnceThatTheSystemCannotConfine) {
    EXPECT_TRUE(test::withoutFilters([this] {
        const auto outcome = run(false);
        return outcome.status == 0 && outcome.problems == "velamo: " + notice;
    }));
}

TEST_P(ReadingCommands, ReadNothingThenWhereThatIsAskedFor) {
    EXPECT_TRUE(test::withoutFilters([this] {
        const auto outcome = run(true);
        return outcome.status == 1 && outcome.out.empty() && outcome.problems == "velamo: nothing is read: " + notice;
    }));
    EXPECT_FALSE(std::filesystem::exists(folder_.path() / "out.pes"));
    EXPECT_FALSE(std::filesystem::exists(folder_.path() / "out.png"));
}

/// Fork's failure is nobody's fault, neither the plug-in's nor the design's.
TEST_P(ReadingCommands, SayThatThereIsNoProcessToReadIn) {
    EXPECT_TRUE(test::inBoundProcess(folder_.path(), [this] {
        const rlimit none{0, 0};
        ::setrlimit(RLIMIT_NPROC, &none);
        const auto outcome = run(false);
        return outcome.status == 1 && outcome.out.empty() &&
               outcome.problems ==
                   "velamo: there is no process to read designs in: Resource temporarily unavailable (error 11)\n";
    }));
}

std::string roseIn(const std::filesystem::path& folder) {
    return folder / "designs" / "rose.dst";
}

const std::vector<Command> commands{
    {"Info",
     [](const auto& folder) {
         return Arguments{"info", roseIn(folder), roseIn(folder)};
     }},
    {"InfoAsJson",
     [](const auto& folder) {
         return Arguments{"info", "--json", roseIn(folder)};
     }},
    {"Dump",
     [](const auto& folder) {
         return Arguments{"dump", roseIn(folder)};
     }},
    {"Convert",
     [](const auto& folder) {
         return Arguments{"convert", roseIn(folder), folder / "out.pes"};
     }},
    {"ConvertAll",
     [](const auto& folder) {
         return Arguments{"convert", "--all", folder / "designs", "--to", "pes", "--out", folder / "out"};
     }},
    {"Edit",
     [](const auto& folder) {
         return Arguments{"edit", roseIn(folder), "-e", "append \"" + roseIn(folder) + "\""};
     }},
    {"Render",
     [](const auto& folder) {
         return Arguments{"render", roseIn(folder), folder / "out.png", "-e", "append \"" + roseIn(folder) + "\""};
     }},
    {"Index",
     [](const auto& folder) {
         return Arguments{"index", "--catalogue", folder / "catalogue.sqlite", folder / "designs"};
     }},
};
INSTANTIATE_TEST_SUITE_P(Each, ReadingCommands, testing::ValuesIn(commands),
                         [](const auto& row) { return row.param.name; });

}  // namespace
}  // namespace velamo
