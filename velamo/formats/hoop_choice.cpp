#include "velamo/formats/hoop_choice.h"
#include "velamo/model/failure.h"

#include <array>

namespace velamo {
namespace {

enum Failure : int { unsupportedHoop = 51, exceedsHoop = 60, stitchesOutside = 62, exceedsAllHoops = 63 };
constexpr std::array<ErrorText, 2> errorTexts{{
    {stitchesOutside, "Stitches ouside the current hoop."},
    {exceedsAllHoops, "Design exceeds all hoop sizes."},
}};

}  // namespace

bool chooseHoop(VLMDesign& design, std::string_view vendor, std::span<const ErrorText> ownTexts, VLMError* error) {
    const HoopHandle hoop = design.hoopVendor() == vendor ? design.designHoop() : design.findHoopFromVendor(vendor);
    if (!hoop) return fail(errorTexts, exceedsAllHoops, error);
    if (!design.designFitsInHoop(*hoop)) return fail(ownTexts, exceedsHoop, error);
    if (design.stitchesOutsideOfHoop(*hoop)) return fail(errorTexts, stitchesOutside, error);
    if (!hoop->isWritable()) return fail(ownTexts, unsupportedHoop, error);
    design.setDesignHoop(hoop);
    return true;
}

}  // namespace velamo
