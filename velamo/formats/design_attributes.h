#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// What every indexer is told of a design, in single precision as the plug-in stores it.
struct VELAMO_API DesignAttributes {
    float widthInMillimetres = 0;
    float heightInMillimetres = 0;
    float stitches = 0;
    float colors = 0;  // different ones
    friend bool operator==(const DesignAttributes&, const DesignAttributes&) = default;
};

/// The attributes of a design at hand. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API DesignAttributes attributesOfDesign(const VLMDesign& design);

/// The attributes of the design that a file's bytes hold, and those of its side file if there is one: as
/// attributesOfFile gives them, without the disk (see importDesignFromBytes).
[[nodiscard]] VELAMO_API std::optional<DesignAttributes> attributesOfBytes(
    std::span<const std::uint8_t> file, std::string_view extension,
    std::span<const std::uint8_t> sideFile = {}) noexcept;

/// The attributes of a design file, with the threads of its side file; nothing when the file holds no design that can
/// be read, or memory runs out. The one entry behind the plug-in and behind the programs for each desktop: it writes
/// nothing, prints nothing and keeps nothing, so any number of threads may call it.
[[nodiscard]] VELAMO_API std::optional<DesignAttributes> attributesOfFile(const std::filesystem::path& file) noexcept;

}  // namespace velamo
