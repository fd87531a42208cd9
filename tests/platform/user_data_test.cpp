#include "velamo/platform/system/user_data.h"

#include <gtest/gtest.h>

namespace velamo {
namespace {

Environment environmentWith(const std::optional<std::string>& value, const std::string& variable = "XDG_DATA_HOME") {
    return [=](const char* name) { return name == variable ? value : std::optional<std::string>(); };
}

TEST(UserDataFolder, IsTheNamedOneWhereThatIsAbsolute) {
    EXPECT_EQ(userDataFolder(environmentWith("/data/of/user")), "/data/of/user");
    const auto usual = homeFolder() / ".local" / "share";
    EXPECT_EQ(userDataFolder(environmentWith({})), usual);
    EXPECT_EQ(userDataFolder(environmentWith("")), usual);
    EXPECT_EQ(userDataFolder(environmentWith("relative/path")), usual);
}

TEST(UserCacheFolder, IsTheNamedOneWhereThatIsAbsolute) {
    EXPECT_EQ(userCacheFolder(environmentWith("/caches", "XDG_CACHE_HOME")), "/caches");
    EXPECT_EQ(userCacheFolder(environmentWith("relative", "XDG_CACHE_HOME")), homeFolder() / ".cache");
    EXPECT_EQ(userCacheFolder(environmentWith("/data")), homeFolder() / ".cache");
}

}  // namespace
}  // namespace velamo
