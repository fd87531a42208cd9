#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <system_error>

#include "velamo/private_api.h"

namespace velamo {

/// Gives what is at `path` the name with ".old" behind it, or with ".old2", ".old3" and so on, the first that is free:
/// nothing is overwritten, be it made in this very moment. A link is renamed itself. `newName` gets the new path; on
/// failure the file keeps its name, and the system's error is returned.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code setAside(const std::filesystem::path& path,
                                                          std::filesystem::path& newName);

/// Sets aside what is at `path`, as setAside does, and puts `bytes` there instead, with the features of what was there
/// (see replaceFile). The new file is whole before the old one gets another name, and one or the other is at the path
/// at any moment, whatever becomes of the process; only where the file system gives no file two names, nothing is there
/// for an instant. What another program puts there meanwhile is set aside, too. On failure the old file keeps its name,
/// and the system's error is returned: ENOENT where it is gone.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code replaceSettingAside(const std::filesystem::path& path,
                                                                     std::span<const std::uint8_t> bytes,
                                                                     std::filesystem::path& newName);

/// Puts `bytes` at `path` in one step, as replaceFile does, but only where nothing is: else EEXIST, also for a link and
/// for what another program puts there meanwhile.
[[nodiscard]] VELAMO_PRIVATE_API std::error_code createFile(const std::filesystem::path& path,
                                                            std::span<const std::uint8_t> bytes);

/// Renames a file where no other has the new name. 0, or the system's error: EEXIST where one has.
[[nodiscard]] int renameWithoutReplacing(const char* from, const char* to) noexcept;

}  // namespace velamo
