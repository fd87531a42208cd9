#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "velamo/api.h"

namespace velamo {

/// How a design file is read.
struct VELAMO_API ImportOptions {
    /// Whether a file that cannot be opened fails with the system's reason, and so does one whose side file is there
    /// and cannot be read this time: its threads would seem to be others. Else the one is taken for a file without
    /// bytes, and fails as its format's reader says of a file that is too short; the other for a design without a side
    /// file.
    bool givesSystemReason = false;
    /// The file's bytes, where the caller has them: then the file itself is left alone. They have to live as long as
    /// the operation.
    std::optional<std::span<const std::uint8_t>> bytes = std::nullopt;
};

}  // namespace velamo
