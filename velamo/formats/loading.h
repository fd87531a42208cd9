#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace velamo {

/// How a design file is read.
struct ImportOptions {
    /// Whether a file that cannot be opened fails with the system's reason, and so does one whose side file is there
    /// and cannot be read this time: its threads would seem to be others. Else the one is taken for a file without
    /// bytes, and fails as its format's reader says of a file that is too short; the other for a design without a side
    /// file.
    bool givesSystemReason = false;
};

/// The bytes of a design file. Throws the reason as a std::system_error where reading breaks off or the file has more
/// than 256 MB (mostBytesOfFile, see platform/system/files.h), and where the options say so. May throw std::bad_alloc.
[[nodiscard]] std::vector<std::uint8_t> loadFile(const std::filesystem::path& url, const ImportOptions& options);

}  // namespace velamo
