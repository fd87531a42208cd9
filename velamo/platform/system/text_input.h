#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include "velamo/private_api.h"

namespace velamo {

/// The most bytes that a text of commands may have: somebody writes it, or a program that ends.
inline constexpr std::size_t mostBytesOfText = std::size_t{16} << 20;

/// All that a file gives to its end; a pipe or a device is waited for. Returns "" with the system's reason in `error`
/// when it cannot be opened, reading breaks off or it is a folder, and with EFBIG when it has more than
/// mostBytesOfText. Otherwise `error` is cleared. May throw std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API std::string textOfFile(const std::filesystem::path& file, std::error_code& error);

/// The same of the standard input.
[[nodiscard]] VELAMO_PRIVATE_API std::string textOfStandardInput(std::error_code& error);

}  // namespace velamo
