#pragma once

#include <filesystem>

#include "velamo/model/design.h"
#include "velamo/platform/archives/archive_error.h"
#include "velamo/platform/archives/archive_path.h"

namespace velamo {

/// Does what readDesign does for a design that lies in an archive; `url` is the whole path. The member is found by the
/// bytes of its name, or else by its name as text, and so is its side file, which lies in the archive as well. Where
/// the member is not there, `error` is what the system says of such a path in a folder; or else what is wrong with the
/// archive or the member, by the nearest code of the system. The archive is gone through once. For confined processes.
[[nodiscard]] bool readDesignInArchive(VLMDesign& design, const ArchivePath& place, const std::filesystem::path& url,
                                       VLMError* error) noexcept;

/// Does what takeThreadsOfSideFile does for a design that lies in an archive. A side file that cannot be read counts as
/// missing. May throw std::bad_alloc.
[[nodiscard]] bool takeThreadsOfSideFileInArchive(VLMDesign& design, const ArchivePath& place);

/// Fills the slot with what is wrong with an archive. Always returns false.
bool failAsArchive(const ArchiveError& reason, VLMError* error);

}  // namespace velamo
