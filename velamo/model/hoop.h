#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "velamo/api.h"
#include "velamo/platform/text/optional_text.h"

namespace velamo {

/// An embroidery hoop of a machine vendor. Immutable; designs share it. Sizes are whole millimetres.
class VELAMO_API VLMHoop {
public:
    [[nodiscard]] static VLMHoop initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
        Text name, Text vendor, std::int32_t code, std::int32_t width, std::int32_t height, bool isMultiHoop,
        bool isRounded, bool isWritable);

    /// The vendor's designation, such as "SQ23".
    [[nodiscard]] const Text& name() const noexcept { return name_; }
    [[nodiscard]] const Text& vendor() const noexcept { return vendor_; }
    /// The vendor's number for the hoop as it stands in design files; unique within a vendor.
    [[nodiscard]] std::int32_t code() const noexcept { return code_; }
    /// Width of the sewing field; the diameter of a round hoop.
    [[nodiscard]] std::int32_t width() const noexcept { return width_; }
    [[nodiscard]] std::int32_t height() const noexcept { return height_; }
    /// The hoop is clamped in several positions.
    [[nodiscard]] bool isMultiHoop() const noexcept { return isMultiHoop_; }
    [[nodiscard]] bool isRounded() const noexcept { return isRounded_; }
    /// Designs may be given this hoop automatically.
    [[nodiscard]] bool isWritable() const noexcept { return isWritable_; }

    /// Equal vendor, name, width and height; code and flags play no part.
    [[nodiscard]] bool isEqual(const VLMHoop& other) const noexcept;
    /// The size in the user's measurement unit: "⌀ 34.0 mm" for a round hoop, else "110.0 mm x 110.0 mm".
    [[nodiscard]] std::string sizeString() const;
    /// Vendor, name and size; the size alone when name or vendor is empty.
    [[nodiscard]] std::string description() const;
    [[nodiscard]] VLMHoop copy() const { return *this; }

    friend bool operator==(const VLMHoop& one, const VLMHoop& other) noexcept { return one.isEqual(other); }

private:
    Text name_;
    Text vendor_;
    std::int32_t code_ = 0;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
    bool isMultiHoop_ = false;
    bool isRounded_ = false;
    bool isWritable_ = false;
};

using VLMHoopHandle = std::shared_ptr<const VLMHoop>;

}  // namespace velamo
