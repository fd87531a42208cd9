#include "platform/user_data.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

Environment environmentWith(const std::optional<std::string>& dataHome) {
    return [dataHome](const char* name) {
        return std::string(name) == "XDG_DATA_HOME" ? dataHome : std::optional<std::string>();
    };
}

TEST(UserDataFolder, IsTheNamedOneWhereThatIsAbsolute) {
    EXPECT_EQ(userDataFolder(environmentWith("/data/of/user")), "/data/of/user");
    const auto usual = homeFolder() / ".local" / "share";
    EXPECT_EQ(userDataFolder(environmentWith({})), usual);
    EXPECT_EQ(userDataFolder(environmentWith("")), usual);
    EXPECT_EQ(userDataFolder(environmentWith("relative/path")), usual);
}

}  // namespace
}  // namespace velamo
