#include "velamo/platform/graphics/color_difference.h"

#include <lcms2.h>

#include <array>
#include <memory>
#include <new>
#include <type_traits>

namespace velamo {
namespace {

struct Closer {
    void operator()(void* profile) const noexcept { ::cmsCloseProfile(profile); }
};
struct Deleter {
    void operator()(void* transform) const noexcept { ::cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, Closer>;
using Transform = std::unique_ptr<void, Deleter>;

Transform transformToLab() {
    const Profile screen(::cmsCreate_sRGBProfile());
    const Profile eye(::cmsCreateLab4Profile(nullptr));
    if (!screen || !eye) throw std::bad_alloc();
    // Without a memory of the last colour, any number of threads may use it.
    Transform transform(::cmsCreateTransform(screen.get(), TYPE_RGB_8, eye.get(), TYPE_Lab_DBL,
                                             INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE));
    if (!transform) throw std::bad_alloc();
    return transform;
}

}  // namespace

LabColor labColor(std::uint32_t color) {
    static const Transform transform = transformToLab();
    const std::array<std::uint8_t, 3> rgb{static_cast<std::uint8_t>(color >> 16U),
                                          static_cast<std::uint8_t>(color >> 8U), static_cast<std::uint8_t>(color)};
    cmsCIELab lab{};
    ::cmsDoTransform(transform.get(), rgb.data(), &lab, 1);
    return {lab.L, lab.a, lab.b};
}

double colorDifference(const LabColor& one, const LabColor& other) {
    const cmsCIELab first{one.lightness, one.redness, one.yellowness};
    const cmsCIELab second{other.lightness, other.redness, other.yellowness};
    return ::cmsCIE2000DeltaE(&first, &second, 1, 1, 1);
}

}  // namespace velamo
