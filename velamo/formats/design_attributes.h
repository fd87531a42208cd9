#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

#include "velamo/api.h"
#include "velamo/model/design.h"

namespace velamo {

/// What every desktop's search index stores about a design. The numbers are in single precision, as the plug-in stores
/// them.
struct VELAMO_API DesignAttributes {
    float widthInMillimetres = 0;
    float heightInMillimetres = 0;
    float stitches = 0;
    float colors = 0;  // different ones
    friend bool operator==(const DesignAttributes&, const DesignAttributes&) = default;
};

/// Returns the attributes of a design in memory. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API DesignAttributes attributesOfDesign(const VLMDesign& design);

/// Returns what attributesOfFile returns, from the bytes of a file and of its side file (empty if there is none),
/// without reading the disk. The extension ("dst", in any case) decides the format. See importDesignFromBytes.
[[nodiscard]] VELAMO_API std::optional<DesignAttributes> attributesOfBytes(
    std::span<const std::uint8_t> file, std::string_view extension,
    std::span<const std::uint8_t> sideFile = {}) noexcept;

/// Returns the attributes of a design file, with the threads of its side file. Returns nullopt when the file holds no
/// readable design, when the system fails to read it or its side file, or when memory runs out. The plug-in and the
/// programs for all desktops use this function. It writes nothing, prints nothing and keeps nothing, so any number of
/// threads may call it at the same time.
[[nodiscard]] VELAMO_API std::optional<DesignAttributes> attributesOfFile(const std::filesystem::path& file) noexcept;

}  // namespace velamo
