#include "velamo/formats/design_attributes.h"

#include "velamo/formats/import.h"
#include "velamo/model/failure.h"

namespace velamo {
namespace {

/// The attributes of the design that the operation reads.
template <class Import>
std::optional<DesignAttributes> attributesOfRead(const Import& import) noexcept {
    std::optional<DesignAttributes> attributes;
    const bool isRead = operation(nullptr, [&] {
        VLMDesign design;
        if (!import(design)) return false;
        attributes = attributesOfDesign(design);
        return true;
    });
    return isRead ? attributes : std::nullopt;
}

}  // namespace

DesignAttributes attributesOfDesign(const VLMDesign& design) {
    constexpr float tenthsInMillimetre = 10.0F;
    return {.widthInMillimetres = static_cast<float>(design.designWidth()) / tenthsInMillimetre,
            .heightInMillimetres = static_cast<float>(design.designHeight()) / tenthsInMillimetre,
            .stitches = static_cast<float>(design.numberOfStitches()),
            .colors = static_cast<float>(design.numberOfDifferentColors())};
}

std::optional<DesignAttributes> attributesOfFile(const std::filesystem::path& file) noexcept {
    return attributesOfRead([&](VLMDesign& design) {
        return importDesignFromURLerror(design, file, nullptr, {.givesSystemReason = true});
    });
}

std::optional<DesignAttributes> attributesOfBytes(std::span<const std::uint8_t> file, std::string_view extension,
                                                  std::span<const std::uint8_t> sideFile) noexcept {
    return attributesOfRead(
        [&](VLMDesign& design) { return importDesignFromBytes(design, file, extension, nullptr, sideFile); });
}

}  // namespace velamo
