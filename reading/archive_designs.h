#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "velamo/platform/archives/archive_error.h"

namespace velamo {

/// A design in an archive.
struct ArchivedDesign {
    std::string location;       // in the archive, as the bytes of its name
    std::string name;           // the same as text
    std::int64_t modified = 0;  // nanoseconds since the start of 1970; 0 where the archive does not say
    std::uint64_t size = 0;     // of its bytes
    std::string made;           // what was made of them
    ArchiveError error;         // why there are none
};

struct ArchivedDesigns {
    std::vector<ArchivedDesign> designs;  // in the archive's order
    ArchiveError error;                   // why the archive ended before its end
};

/// Makes something of the bytes of a design (whose name tells its format), and of those of its side file, which are
/// none where there is no such file.
using DesignMaker = std::function<std::string(const ArchivedDesign& design, std::span<const std::uint8_t> file,
                                              std::span<const std::uint8_t> sideFile)>;

/// The side files of an archive are kept in memory while it is gone through, up to so many bytes; those beyond count as
/// missing.
inline constexpr std::size_t mostBytesOfSideFiles = std::size_t{64} << 20;

/// Goes through an archive and makes something of each member with a design's name; for confined processes. One pass
/// does, unless side files come behind their designs: then a second one makes those designs again. No more than one
/// design is in memory at a time. Throws what `make` throws, and std::bad_alloc.
[[nodiscard]] ArchivedDesigns designsOfArchive(const std::filesystem::path& archive, const DesignMaker& make);

}  // namespace velamo
