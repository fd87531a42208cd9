#pragma once

#include <filesystem>

#include "velamo/model/error.h"

namespace velamo {

/// Whether the path runs through an archive, so that no file can be written there: then the error says so. An archive
/// looks like a folder to whoever reads, and is never changed.
[[nodiscard]] bool isInArchive(const std::filesystem::path& target, VLMError* error);

}  // namespace velamo
