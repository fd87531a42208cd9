#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <utility>
#include <vector>

#include "velamo/formats/loading.h"

namespace velamo {

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
