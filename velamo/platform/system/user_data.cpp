#include "velamo/platform/system/user_data.h"

namespace velamo {
namespace {

std::filesystem::path namedOr(const char* variable, const char* usual, const Environment& environment) {
    std::filesystem::path named = environment(variable).value_or("");
    if (named.is_absolute()) return named;
    const auto home = homeFolder();
    return home.empty() ? home : home / usual;
}

}  // namespace

std::filesystem::path userDataFolder(const Environment& environment) {
    return namedOr("XDG_DATA_HOME", ".local/share", environment);
}

std::filesystem::path userCacheFolder(const Environment& environment) {
    return namedOr("XDG_CACHE_HOME", ".cache", environment);
}

}  // namespace velamo
