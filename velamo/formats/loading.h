#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace velamo {

/// How a design file is read.
struct ImportOptions {
    /// Whether a file that cannot be opened fails with the system's reason, and so does one whose side file is there
    /// and cannot be read this time: its threads would seem to be others. Else the one is taken for a file without
    /// bytes, and fails as its format's reader says of a file that is too short; the other for a design without a side
    /// file.
    bool givesSystemReason = false;
    /// The file's bytes, where the caller has them: then the file itself is left alone. They have to live as long as
    /// the operation.
    std::optional<std::span<const std::uint8_t>> bytes = std::nullopt;
};

/// What a design file holds: read, or at hand already.
class FileBytes {
public:
    explicit FileBytes(std::vector<std::uint8_t> own) noexcept : own_(std::move(own)), all_(own_) {}
    explicit FileBytes(std::span<const std::uint8_t> others) noexcept : all_(others) {}
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    /// It stands for the bytes wherever a reader takes some.
    operator std::span<const std::uint8_t>() const noexcept { return all_; }

private:
    std::vector<std::uint8_t> own_;
    std::span<const std::uint8_t> all_;
};

/// The bytes of a design file, those of the options if they have some. Throws the reason as a std::system_error where
/// reading breaks off or the file has more than 256 MB (mostBytesOfFile, see platform/system/files.h), and where the
/// options say so. May throw std::bad_alloc.
[[nodiscard]] FileBytes loadFile(const std::filesystem::path& url, const ImportOptions& options);

}  // namespace velamo
