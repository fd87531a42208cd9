#include "velamo/model/hoop.h"

#include "velamo/measure/value_transformer.h"
#include "velamo/platform/text/text.h"

namespace velamo {

VLMHoop VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(Text name, Text vendor,
                                                                               std::int32_t code, std::int32_t width,
                                                                               std::int32_t height, bool isMultiHoop,
                                                                               bool isRounded, bool isWritable) {
    VLMHoop hoop;
    hoop.name_ = std::move(name);
    hoop.vendor_ = std::move(vendor);
    hoop.code_ = code;
    hoop.width_ = width;
    hoop.height_ = height;
    hoop.isMultiHoop_ = isMultiHoop;
    hoop.isRounded_ = isRounded;
    hoop.isWritable_ = isWritable;
    return hoop;
}

bool VLMHoop::isEqual(const VLMHoop& other) const noexcept {
    return vendor_ == other.vendor_ && name_ == other.name_ && width_ == other.width_ && height_ == other.height_;
}

std::string VLMHoop::sizeString() const {
    const VLMValueTransformer lengths;
    if (isRounded_) return fillPattern("\u2300 %@", {lengths.transformedValue(width_)});
    return fillPattern("%@ x %@", {lengths.transformedValue(width_), lengths.transformedValue(height_)});
}

std::string VLMHoop::description() const {
    if (name_ == "" || vendor_ == "") return sizeString();
    return fillPattern("%@ %@ (%@)", {vendor_, name_, sizeString()});
}

}  // namespace velamo
