#pragma once

#include <string>
#include <vector>

#include "velamo/model/design.h"

namespace velamo {

/// Sews a design as one would draw it: lines in millimetres from where the needle stands, y upward. The needle rests on
/// tenths of a millimetre, as machines have it.
class Pen {
public:
    /// Begins with a thread of the Brother palette.
    explicit Pen(const std::string& threadKey);

    /// Goes there without sewing.
    void jumpTo(DesignPoint target);
    /// Sews there in stitches of the length or a little less.
    void sewTo(DesignPoint target, double stitchLength = 2.5);
    /// Sews through all the points, jumping to the first of them.
    void sewPath(const std::vector<DesignPoint>& points, double stitchLength = 2.5);
    /// A column of the width along the line: zigzag stitches that lie close enough to cover the cloth.
    void satin(DesignPoint from, DesignPoint to, double width);
    void changeThread(const std::string& threadKey);

    /// The finished design; the pen is used up.
    [[nodiscard]] VLMDesign takeDesign() noexcept { return std::move(design_); }

private:
    void moveTo(DesignPoint target, bool isJump);

    VLMDesign design_;
    DesignPoint position_;  // in tenths of a millimetre
};

}  // namespace velamo
