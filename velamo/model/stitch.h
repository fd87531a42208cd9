#pragma once

#include <string>

#include "velamo/api.h"
#include "velamo/model/list.h"

namespace velamo {

/// One relative move of the needle, in tenths of a millimetre, y upward. It takes 12 bytes, so a million stitches take
/// 12 MB.
class VELAMO_API VLMStitch {
public:
    VLMStitch() = default;
    constexpr VLMStitch(float deltaX, float deltaY, bool isJump, bool isChange, bool isSelected = false) noexcept
        : deltaX_(deltaX), deltaY_(deltaY), isJumpStitch_(isJump), isColorChange_(isChange), isSelected_(isSelected) {}
    /// Makes an unselected stitch of the four values.
    [[nodiscard]] static constexpr VLMStitch initWithDatadYisJumpisChange(float deltaX, float deltaY, bool isJump,
                                                                          bool isChange) noexcept {
        return {deltaX, deltaY, isJump, isChange};
    }

    [[nodiscard]] constexpr float deltaX() const noexcept { return deltaX_; }
    [[nodiscard]] constexpr float deltaY() const noexcept { return deltaY_; }
    /// Whether the needle moves without stitching.
    [[nodiscard]] constexpr bool isJumpStitch() const noexcept { return isJumpStitch_; }
    /// Whether the stitch opens the next thread's block.
    [[nodiscard]] constexpr bool isColorChange() const noexcept { return isColorChange_; }
    /// Whether the stitch is selected for editing; no file format stores this.
    [[nodiscard]] constexpr bool isSelected() const noexcept { return isSelected_; }
    void setDeltaX(float deltaX) noexcept { deltaX_ = deltaX; }
    void setDeltaY(float deltaY) noexcept { deltaY_ = deltaY; }
    void setIsJumpStitch(bool isJumpStitch) noexcept { isJumpStitch_ = isJumpStitch; }
    void setIsColorChange(bool isColorChange) noexcept { isColorChange_ = isColorChange; }
    void setIsSelected(bool isSelected) noexcept { isSelected_ = isSelected; }

    /// Whether both coordinates are zero. The flags do not count, so a colour change on the spot is a null stitch too.
    [[nodiscard]] constexpr bool isNullStitch() const noexcept { return deltaX_ == 0.0F && deltaY_ == 0.0F; }
    /// Returns a line for logs with all values; it is not translated.
    [[nodiscard]] std::string description() const;
    [[nodiscard]] constexpr VLMStitch copy() const noexcept { return *this; }

    friend constexpr bool operator==(const VLMStitch&, const VLMStitch&) = default;

private:
    float deltaX_ = 0;
    float deltaY_ = 0;
    bool isJumpStitch_ = false;
    bool isColorChange_ = false;
    bool isSelected_ = false;
};
static_assert(sizeof(VLMStitch) == 12);

using StitchList = SharedList<VLMStitch>;

}  // namespace velamo
