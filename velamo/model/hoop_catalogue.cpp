#include <algorithm>
#include <array>

#include "velamo/model/design.h"

namespace velamo {
namespace {

struct CatalogueEntry {
    const char* vendor;
    const char* name;
    std::int32_t code;
    std::int32_t width;
    std::int32_t height;
    bool isMultiHoop;
    bool isRounded;
    bool isWritable;
};

/// The order decides: automatic choice takes the first hoop that fits. Round hoops and those of several positions are
/// not writable, so they are never chosen, while a file that names one still gets it. Codes are unique within a vendor
/// only.
constexpr std::array<CatalogueEntry, 34> catalogue{{
    {"Janome", "C/FA/M3", 1, 50, 50, false, false, true},
    {"Janome", "A", 0, 110, 110, false, false, true},
    {"Janome", "A(F)/ST/M2", 3, 126, 110, false, false, true},
    {"Janome", "B/RE", 2, 140, 200, false, false, true},
    {"Janome", "RE20a", 32, 170, 200, false, false, true},
    {"Janome", "SQ", 4, 200, 200, false, false, true},
    {"Janome", "SQ23", 28, 230, 230, false, false, true},
    {"Janome", "MA", 5, 200, 280, true, false, false},
    {"Janome", "M1", 6, 240, 200, false, false, true},
    {"Janome", "GR", 29, 230, 300, false, false, true},
    {"Janome", "T1", 8, 34, 34, false, true, false},
    {"Janome", "T2", 9, 54, 54, false, true, false},
    {"Janome", "T3", 10, 84, 84, false, true, false},
    {"Janome", "T4", 11, 112, 112, false, true, false},
    {"Janome", "T5", 12, 142, 142, false, true, false},
    {"Janome", "T6", 13, 78, 168, false, false, true},
    {"Janome", "FA10/~a", 30, 100, 40, false, false, true},
    {"Janome", "H1", 14, 100, 90, false, false, true},
    {"Janome", "200/SQ14/~a", 15, 140, 140, false, false, true},
    {"Janome", "S1", 16, 37, 59, false, false, true},
    {"Janome", "S2", 17, 28, 50, false, false, true},
    {"Janome", "J1", 18, 30, 30, false, true, false},
    {"Janome", "J2", 19, 24, 54, false, false, true},
    {"Janome", "J3", 20, 64, 28, false, false, true},
    {"Janome", "J4", 21, 42, 67, false, false, true},
    {"Janome", "J5", 22, 46, 46, false, false, true},
    {"Janome", "J6", 23, 66, 66, false, false, true},
    {"Janome", "J7", 24, 110, 95, false, false, true},
    {"Janome", "J8", 25, 120, 121, false, false, true},
    {"Janome", "AQ", 26, 120, 180, false, false, true},
    {"Janome", "ASQ", 27, 180, 180, false, false, true},
    {"Janome", "ASQ22", 31, 220, 220, false, false, true},
    {"Pfaff", "S", 2, 80, 80, false, false, true},
    {"Pfaff", "L", 3, 120, 115, false, false, true},
}};

HoopHandle hoopOf(const CatalogueEntry& entry) {
    return std::make_shared<const VLMHoop>(VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
        entry.name, entry.vendor, entry.code, entry.width, entry.height, entry.isMultiHoop, entry.isRounded,
        entry.isWritable));
}

/// The needle must not sew into the frame: a position on the edge is outside. An odd size loses its half millimetre.
float innerHalf(std::int32_t sizeInMillimetres) noexcept {
    return static_cast<float>(std::int64_t{sizeInMillimetres / 2} * 10);
}

}  // namespace

std::vector<HoopHandle> VLMDesign::hoops() {
    std::vector<HoopHandle> hoops;
    hoops.reserve(catalogue.size());
    for (const CatalogueEntry& entry : catalogue) hoops.push_back(hoopOf(entry));
    return hoops;
}

std::string VLMDesign::hoopName() const {
    return designHoop_ ? designHoop_->description() : "";
}

std::int32_t VLMDesign::hoopWidth() const noexcept {
    return designHoop_ ? designHoop_->width() : 0;
}

std::int32_t VLMDesign::hoopHeight() const noexcept {
    return designHoop_ ? designHoop_->height() : 0;
}

std::int32_t VLMDesign::hoopCode() const noexcept {
    return designHoop_ ? designHoop_->code() : noHoopCode;
}

Text VLMDesign::hoopVendor() const {
    return designHoop_ ? designHoop_->vendor() : Text("");
}

bool VLMDesign::hoopIsRound() const noexcept {
    return designHoop_ && designHoop_->isRounded();
}

bool VLMDesign::setHoopFromVendorwithCode(std::string_view vendor, std::int32_t code) {
    if (code == noHoopCode) designHoop_ = nullptr;
    const auto found = std::find_if(catalogue.begin(), catalogue.end(), [&](const CatalogueEntry& entry) {
        return entry.vendor == vendor && entry.code == code;
    });
    if (found == catalogue.end()) return false;
    designHoop_ = hoopOf(*found);
    return true;
}

std::optional<std::vector<HoopHandle>> VLMDesign::allHoopsFromVendor(std::string_view vendor) {
    std::vector<HoopHandle> hoops;
    for (const CatalogueEntry& entry : catalogue)
        if (entry.vendor == vendor) hoops.push_back(hoopOf(entry));
    return hoops.empty() ? std::nullopt : std::optional(std::move(hoops));
}

HoopHandle VLMDesign::findHoopFromVendor(std::string_view vendor) const {
    for (const HoopHandle& hoop : allHoopsFromVendor(vendor).value_or(std::vector<HoopHandle>()))
        if (designFitsInHoop(*hoop) && hoop->isWritable()) return hoop;
    return nullptr;
}

bool VLMDesign::designFitsInHoop(const VLMHoop& hoop) const noexcept {
    return designWidth() <= std::int64_t{hoop.width()} * 10 && designHeight() <= std::int64_t{hoop.height()} * 10;
}

bool VLMDesign::stitchesOutsideOfHoop(const VLMHoop& hoop) const noexcept {
    const float halfWidth = innerHalf(hoop.width());
    const float halfHeight = innerHalf(hoop.height());
    return !(halfWidth > -xMin_ && halfWidth > xMax_ && halfHeight > -yMin_ && halfHeight > yMax_);
}

}  // namespace velamo
