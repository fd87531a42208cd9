#include "velamo/model/stitch.h"

#include "velamo/platform/text/text.h"

namespace velamo {

std::string VLMStitch::description() const {
    return fillPattern("Embroidery Stitch (deltaX=%1.2f, deltaY=%1.2f, Jump-Stitch=%i, Color-Change=%i), selected=%i",
                       {static_cast<double>(deltaX_), static_cast<double>(deltaY_), std::int64_t{isJumpStitch_},
                        std::int64_t{isColorChange_}, std::int64_t{isSelected_}});
}

}  // namespace velamo
