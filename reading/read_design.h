#pragma once

#include <filesystem>

#include "velamo/model/design.h"

namespace velamo {

/// Imports a design for a program, as importDesignFromURLerror does, and says what is wrong with a file that cannot be
/// read at all: `error` is the system's reason where the file is missing or unreadable, where reading it breaks off, or
/// where it is a folder, pipe or device, or too large. The path may run through an archive ("pack.zip/rose.pes"): see
/// readDesignInArchive.
[[nodiscard]] bool readDesign(VLMDesign& design, const std::filesystem::path& file, VLMError* error) noexcept;

/// Does what takeThreadsOfSideFile does, also for a path that runs through an archive.
[[nodiscard]] bool takeThreadsBeside(VLMDesign& design, const std::filesystem::path& file);

}  // namespace velamo
