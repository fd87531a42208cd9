#pragma once

#include <filesystem>

namespace velamo {

/// A module that this process loaded. It stays loaded until the process ends, so that what it handed out stays good;
/// loading it again gives the same one.
class SharedModule {
public:
    /// Loads the module with all that it needs, and keeps its names to itself. std::runtime_error with the loader's
    /// words when that fails.
    explicit SharedModule(const std::filesystem::path& path);

    /// The function or variable that the module exports under the name, or null.
    [[nodiscard]] void* symbol(const char* name) const noexcept;

private:
    void* handle_;
};

/// The program or library that holds this code, with links followed, or an empty path.
[[nodiscard]] std::filesystem::path pathOfThisModule();

}  // namespace velamo
