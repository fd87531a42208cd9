#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "velamo/platform/system/system_state.h"

namespace velamo {
namespace {

struct Row {
    const char* name;
    std::int64_t seconds;
    std::int64_t nanoseconds;
    std::int64_t modified;
};
class FileTime : public testing::TestWithParam<Row> {};
TEST_P(FileTime, IsTheNearestThatCanBeCounted) {
    struct stat status = {};
#ifdef __APPLE__
    timespec& modified = status.st_mtimespec;
#else
    timespec& modified = status.st_mtim;
#endif
    modified.tv_sec = GetParam().seconds;
    modified.tv_nsec = GetParam().nanoseconds;
    EXPECT_EQ(stateFromSystem(status).modified, GetParam().modified);
}

using Limits = std::numeric_limits<std::int64_t>;
INSTANTIATE_TEST_SUITE_P(Rows, FileTime,
                         testing::Values(Row{"Start", 0, 0, 0}, Row{"Usual", 1709210096, 5, 1'709'210'096'000'000'005},
                                         Row{"Before1970", -1, 999'999'999, -1},
                                         Row{"LastSecond", 9'223'372'035, 999'999'999, 9'223'372'035'999'999'999},
                                         Row{"Year2262", 9'223'372'036, 854'775'807, Limits::max()},
                                         Row{"Year2446", 15'032'385'535, 0, Limits::max()},
                                         Row{"FirstSecond", -9'223'372'036, 0, -9'223'372'036'000'000'000},
                                         Row{"Year1677", -9'223'372'037, 0, Limits::min()},
                                         Row{"Year1500", -14'831'769'600, 0, Limits::min()},
                                         Row{"FarFuture", Limits::max(), 999'999'999, Limits::max()},
                                         Row{"FarPast", Limits::min(), 0, Limits::min()}),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace velamo
