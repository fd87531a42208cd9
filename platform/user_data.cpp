#include "platform/user_data.h"

namespace velamo {

std::filesystem::path userDataFolder(const Environment& environment) {
    std::filesystem::path named = environment("XDG_DATA_HOME").value_or("");
    if (named.is_absolute()) return named;
    const auto home = homeFolder();
    return home.empty() ? home : home / ".local" / "share";
}

}  // namespace velamo
