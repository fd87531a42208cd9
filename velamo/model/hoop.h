#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "velamo/api.h"
#include "velamo/platform/text/optional_text.h"

namespace velamo {

/// An embroidery hoop of a machine vendor. It is immutable, and designs share it. Sizes are in whole millimetres.
class VELAMO_API VLMHoop {
public:
    /// Makes a hoop of these values.
    [[nodiscard]] static VLMHoop initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
        Text name, Text vendor, std::int32_t code, std::int32_t width, std::int32_t height, bool isMultiHoop,
        bool isRounded, bool isWritable);

    /// The vendor's designation, such as "SQ23".
    [[nodiscard]] const Text& name() const noexcept { return name_; }
    [[nodiscard]] const Text& vendor() const noexcept { return vendor_; }
    /// The vendor's number for the hoop, as design files hold it; unique within a vendor.
    [[nodiscard]] std::int32_t code() const noexcept { return code_; }
    /// The width of the sewing field, or the diameter of a round hoop.
    [[nodiscard]] std::int32_t width() const noexcept { return width_; }
    [[nodiscard]] std::int32_t height() const noexcept { return height_; }
    /// Whether the hoop is clamped in several positions.
    [[nodiscard]] bool isMultiHoop() const noexcept { return isMultiHoop_; }
    [[nodiscard]] bool isRounded() const noexcept { return isRounded_; }
    /// Whether designs may be given this hoop automatically.
    [[nodiscard]] bool isWritable() const noexcept { return isWritable_; }

    /// Returns whether vendor, name, width and height are equal; code and flags do not count.
    [[nodiscard]] bool isEqual(const VLMHoop& other) const noexcept;
    /// Returns the size in the user's measurement unit: "⌀ 34.0 mm" for a round hoop, otherwise "110.0 mm x 110.0 mm".
    /// May throw std::system_error when the user's preferences cannot be read.
    [[nodiscard]] std::string sizeString() const;
    /// Returns vendor, name and size, or only the size when name or vendor is empty. Throws like sizeString().
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

/// A shared hoop, or null for none.
using HoopHandle = std::shared_ptr<const VLMHoop>;

}  // namespace velamo
