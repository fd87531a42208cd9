#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "velamo/api.h"

namespace velamo {

/// How a design file is read.
struct VELAMO_API ImportOptions {
    /// When true, importing fails with the system's error if the file cannot be opened, or if its side file exists but
    /// the system fails to read it (the design would seem to have other threads). When false, a file that cannot be
    /// opened counts as one without bytes, which the format's reader refuses as too short, and an unreadable side file
    /// counts as missing.
    bool givesSystemReason = false;
    /// The file's bytes, if the caller has them already; the file itself is then not opened. They must live as long as
    /// the operation.
    std::optional<std::span<const std::uint8_t>> bytes = std::nullopt;
};

}  // namespace velamo
