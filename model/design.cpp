#include "model/design.h"

namespace velamo {

VLMDesign::~VLMDesign() {
    stitches_.clear();
    threads_.clear();
}

VLMDesign& VLMDesign::operator=(VLMDesign&& other) noexcept {
    if (this == &other) return *this;
    this->~VLMDesign();
    return *new (this) VLMDesign(std::move(other));
}

VLMDesign VLMDesign::copy() const {
    VLMDesign design;
    design.stitches_ = stitches_.copy();
    design.threads_ = threads_.copy();
    design.designName_ = designName_;
    design.designType_ = designType_;
    design.designLocation_ = designLocation_;
    design.designHoop_ = designHoop_;
    design.xMin_ = xMin_;
    design.xMax_ = xMax_;
    design.yMin_ = yMin_;
    design.yMax_ = yMax_;
    design.designVersion_ = designVersion_;
    design.useThreadFile_ = useThreadFile_;
    design.selectionActive_ = selectionActive_;
    design.displayRange_ = displayRange_;
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
