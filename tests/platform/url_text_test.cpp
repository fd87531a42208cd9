#include "velamo/platform/text/url_text.h"

#include <gtest/gtest.h>

#include <ostream>

namespace velamo {
namespace {

TEST(LocationText, IsThatOfAUrl) {
    EXPECT_EQ(locationText("/tmp/a-b_c.~x/1.dst"), "file:///tmp/a-b_c.~x/1.dst");
    EXPECT_EQ(locationText("/a b%\xC3\xA9.jef+"), "file:///a%20b%25%C3%A9.jef%2B");
    EXPECT_EQ(locationText("rose.dst"), "rose.dst");
}

struct Row {
    const char* url;
    const char* path;  // null: none
};
void PrintTo(const Row& row, std::ostream* out) {
    *out << row.url;
}
class PathOfLocation : public testing::TestWithParam<Row> {};
TEST_P(PathOfLocation, IsThatOfTheRow) {
    const auto path = pathOfLocation(GetParam().url);
    ASSERT_EQ(path.has_value(), GetParam().path != nullptr);
    if (path) {
        EXPECT_EQ(path->native(), GetParam().path);
    }
}
INSTANTIATE_TEST_SUITE_P(Rows, PathOfLocation,
                         testing::Values(Row{"file:///a%20b%25%C3%A9.jef%2B", "/a b%\xC3\xA9.jef+"},
                                         Row{"file://localhost/a", "/a"}, Row{"file:/a", "/a"},
                                         Row{"rose.dst", "rose.dst"}, Row{"a/b:c", "a/b:c"}, Row{"%ff", "\xFF"},
                                         Row{"", ""}, Row{"file://elsewhere/a", nullptr}, Row{"file:a", nullptr},
                                         Row{"https://x/a", nullptr}, Row{"x:a", nullptr}, Row{"file:///a%", nullptr},
                                         Row{"file:///a%2", nullptr}, Row{"file:///a%2x", nullptr},
                                         Row{"file:///a%00b", nullptr}));

TEST(PathOfLocation, IsTheWayBack) {
    std::string name = "/";
    for (int byte = 1; byte < 256; ++byte) name += static_cast<char>(byte);
    EXPECT_EQ(pathOfLocation(locationText(name)), name);
    EXPECT_EQ(pathOfLocation(locationText("a b/c")), "a b/c");
}

}  // namespace
}  // namespace velamo
