#include "velamo/model/design.h"

namespace velamo {

VLMDesign::~VLMDesign() {
    stitches_.clear();
    threads_.clear();
}

VLMDesign& VLMDesign::operator=(VLMDesign&& other) noexcept {
    VLMDesign exchanged(std::move(other));  // and at the end, with what this one had: emptied as any design that goes
    auto fields = exchanged.fields();
    this->fields().swap(fields);
    return *this;
}

VLMDesign VLMDesign::copy() const {
    VLMDesign design;
    design.fields() = fields();
    design.stitches_ = stitches_.copy();
    design.threads_ = threads_.copy();
    return design;
}

void VLMDesign::resetBounds() noexcept {
    constexpr float largest = std::numeric_limits<float>::max();
    xMin_ = yMin_ = largest;
    xMax_ = yMax_ = -largest;
}

bool VLMDesign::changeThreadtoColorinPalette(std::int32_t index, const VLMColor& color, const std::string& palette) {
    return threads_.at(static_cast<std::size_t>(index)).changeToColorinPalette(color, palette);
}

}  // namespace velamo
