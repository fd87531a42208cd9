#pragma once

#include <filesystem>

#include "velamo/private_api.h"

namespace velamo {

/// A module that this process loaded. It stays loaded until the process ends, so that what it handed out stays good;
/// loading it again gives the same one.
class VELAMO_PRIVATE_API SharedModule {
public:
    /// Loads the module with all that it needs, and keeps its names to itself. Throws std::runtime_error with the
    /// loader's words when that fails.
    explicit SharedModule(const std::filesystem::path& path);

    /// The function or variable that the module exports under the name, or null.
    [[nodiscard]] void* symbol(const char* name) const noexcept;

private:
    void* handle_;
};

/// The file that holds this code, the library or what it is part of, with links followed; or an empty path.
[[nodiscard]] VELAMO_PRIVATE_API std::filesystem::path pathOfThisModule();

}  // namespace velamo
