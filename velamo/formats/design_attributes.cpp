#include "velamo/formats/design_attributes.h"

#include "velamo/formats/import.h"

namespace velamo {

DesignAttributes attributesOfDesign(const VLMDesign& design) {
    constexpr float tenthsInMillimetre = 10.0F;
    return {.widthInMillimetres = static_cast<float>(design.designWidth()) / tenthsInMillimetre,
            .heightInMillimetres = static_cast<float>(design.designHeight()) / tenthsInMillimetre,
            .stitches = static_cast<float>(design.numberOfStitches()),
            .colors = static_cast<float>(design.numberOfDifferentColors())};
}

std::optional<DesignAttributes> attributesOfFile(const std::filesystem::path& file) noexcept {
    std::optional<DesignAttributes> attributes;
    const bool isRead = operation(nullptr, [&] {
        VLMDesign design;
        if (!importDesignFromURLerror(design, file, nullptr, {.givesSystemReason = true})) return false;
        attributes = attributesOfDesign(design);
        return true;
    });
    return isRead ? attributes : std::nullopt;
}

}  // namespace velamo
