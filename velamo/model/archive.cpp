#include <cerrno>

#include "velamo/model/design.h"
#include "velamo/model/failure.h"
#include "velamo/platform/plist/keyed_archive.h"

namespace velamo {
namespace {

constexpr std::string_view stitchClass = "VLMStitch";
constexpr std::string_view colorClass = "VLMColor";
constexpr std::string_view threadClass = "VLMThread";
constexpr std::string_view hoopClass = "VLMHoop";
constexpr std::string_view designClass = "VLMDesign";

template <class Object>
[[nodiscard]] Object initWithCoder(KeyedUnarchiver& coder);

void encodeWithCoder(const VLMStitch& stitch, KeyedArchiver& coder) {
    coder.encodeFloat("VLMEmbroideryStitchDeltaX", stitch.deltaX());
    coder.encodeFloat("VLMEmbroideryStitchDeltaY", stitch.deltaY());
    coder.encodeBool("VLMEmbroideryStitchIsJumpStitch", stitch.isJumpStitch());
    coder.encodeBool("VLMEmbroideryStitchIsColorChange", stitch.isColorChange());
    coder.encodeBool("VLMEmbroideryStitchIsSelected", stitch.isSelected());
}

template <>
VLMStitch initWithCoder(KeyedUnarchiver& coder) {
    VLMStitch stitch;
    stitch.setDeltaX(coder.decodeFloat("VLMEmbroideryStitchDeltaX"));
    stitch.setDeltaY(coder.decodeFloat("VLMEmbroideryStitchDeltaY"));
    stitch.setIsJumpStitch(coder.decodeBool("VLMEmbroideryStitchIsJumpStitch"));
    stitch.setIsColorChange(coder.decodeBool("VLMEmbroideryStitchIsColorChange"));
    stitch.setIsSelected(coder.decodeBool("VLMEmbroideryStitchIsSelected"));
    return stitch;
}

// Components are archived in single precision, so a colour may come back with other low bits.
void encodeWithCoder(const VLMColor& color, KeyedArchiver& coder) {
    coder.encodeFloat("VLMColorRed", static_cast<float>(color.red()));
    coder.encodeFloat("VLMColorGreen", static_cast<float>(color.green()));
    coder.encodeFloat("VLMColorBlue", static_cast<float>(color.blue()));
}

template <>
VLMColor initWithCoder(KeyedUnarchiver& coder) {
    const float red = coder.decodeFloat("VLMColorRed");
    const float green = coder.decodeFloat("VLMColorGreen");
    const float blue = coder.decodeFloat("VLMColorBlue");
    return VLMColor::initWithRedgreenblue(red, green, blue);
}

void encodeWithCoder(const VLMThread& thread, KeyedArchiver& coder) {
    coder.encodeObject("VLMThreadColor", colorClass,
                       [&](KeyedArchiver& color) { encodeWithCoder(thread.color(), color); });
    coder.encodeText("VLMThreadName", thread.name());
    coder.encodeText("VLMThreadKey", thread.key());
    coder.encodeText("VLMThreadPalette", thread.palette());
    coder.encodeText("VLMThreadPaletteName", thread.paletteName());
    coder.encodeFloat("VLMThreadLength", thread.length());
    coder.encodeInteger("VLMThreadTension", thread.tension());
    coder.encodeBool("VLMThreadIsShown", thread.isShown());
}

template <>
VLMThread initWithCoder(KeyedUnarchiver& coder) {
    VLMColor color = VLMThread().color();
    coder.decodeObject("VLMThreadColor", colorClass,
                       [&](KeyedUnarchiver& coded) { color = initWithCoder<VLMColor>(coded); });
    Text name = coder.decodeText("VLMThreadName");
    Text key = coder.decodeText("VLMThreadKey");
    Text palette = coder.decodeText("VLMThreadPalette");
    Text paletteName = coder.decodeText("VLMThreadPaletteName");
    VLMThread thread = VLMThread::initWithColorandNameforKeyofPalettewithName(
        color, std::move(name), std::move(key), std::move(palette), std::move(paletteName));
    thread.setLength(coder.decodeFloat("VLMThreadLength"));
    thread.setTension(coder.decodeInteger("VLMThreadTension"));
    thread.setIsShown(coder.decodeBool("VLMThreadIsShown"));
    return thread;
}

void encodeWithCoder(const VLMHoop& hoop, KeyedArchiver& coder) {
    coder.encodeText("VLMEmbroideryHoopName", hoop.name());
    coder.encodeText("VLMEmbroideryHoopVendor", hoop.vendor());
    coder.encodeInteger("VLMEmbroideryHoopCode", hoop.code());
    coder.encodeInteger("VLMEmbroideryHoopWidth", hoop.width());
    coder.encodeInteger("VLMEmbroideryHoopHeight", hoop.height());
    coder.encodeBool("VLMEmbroideryHoopIsMultiHoop", hoop.isMultiHoop());
    coder.encodeBool("VLMEmbroideryHoopIsRounded", hoop.isRounded());
    coder.encodeBool("VLMEmbroideryHoopIsWritable", hoop.isWritable());
}

template <>
VLMHoop initWithCoder(KeyedUnarchiver& coder) {
    Text name = coder.decodeText("VLMEmbroideryHoopName");
    Text vendor = coder.decodeText("VLMEmbroideryHoopVendor");
    const std::int32_t code = coder.decodeInteger("VLMEmbroideryHoopCode");
    const std::int32_t width = coder.decodeInteger("VLMEmbroideryHoopWidth");
    const std::int32_t height = coder.decodeInteger("VLMEmbroideryHoopHeight");
    const bool isMultiHoop = coder.decodeBool("VLMEmbroideryHoopIsMultiHoop");
    const bool isRounded = coder.decodeBool("VLMEmbroideryHoopIsRounded");
    const bool isWritable = coder.decodeBool("VLMEmbroideryHoopIsWritable");
    return VLMHoop::initWithHoopvendorcodewidthheightmultiHooproundHoopisWritable(
        std::move(name), std::move(vendor), code, width, height, isMultiHoop, isRounded, isWritable);
}

template <class Element>
void encodeList(KeyedArchiver& coder, std::string_view key, std::string_view className,
                const SharedList<Element>& list) {
    if (!list.isThere()) return coder.encodeNothing(key);
    coder.encodeList(key, className, list.size(),
                     [&](KeyedArchiver& element, std::size_t index) { encodeWithCoder(list[index], element); });
}

template <class Element>
SharedList<Element> decodeList(KeyedUnarchiver& coder, std::string_view key, std::string_view className) {
    std::vector<Element> elements;
    const bool isThere = coder.decodeList(
        key, className, [&](std::size_t count) { elements.reserve(count); },
        [&](KeyedUnarchiver& element) { elements.push_back(initWithCoder<Element>(element)); });
    return isThere ? SharedList<Element>(std::move(elements)) : SharedList<Element>::none();
}

void encodeWithCoder(const VLMDesign& design, KeyedArchiver& coder) {
    encodeList(coder, "VLMEmbroiderDesignStitches", stitchClass, design.stitches());
    encodeList(coder, "VLMEmbroiderDesignThreads", threadClass, design.threads());
    coder.encodeText("VLMEmbroiderDesignName", design.designName());
    coder.encodeText("VLMEmbroiderDesignType", design.designType());
    coder.encodeLocation("VLMEmbroiderDesignLocation", design.designLocation());
    if (design.designHoop()) {
        coder.encodeObject("VLMEmbroiderDesignHoop", hoopClass,
                           [&](KeyedArchiver& hoop) { encodeWithCoder(*design.designHoop(), hoop); });
    } else {
        coder.encodeNothing("VLMEmbroiderDesignHoop");
    }
    coder.encodeFloat("VLMEmbroiderDesignXMin", design.xMin());
    coder.encodeFloat("VLMEmbroiderDesignXMax", design.xMax());
    coder.encodeFloat("VLMEmbroiderDesignYMin", design.yMin());
    coder.encodeFloat("VLMEmbroiderDesignYMax", design.yMax());
    coder.encodeInteger("VLMEmbroiderDesignVersion", design.designVersion());
    coder.encodeBool("VLMEmbroiderDesignUseThreadFile", design.useThreadFile());
    coder.encodeBool("VLMEmbroiderDesignSelectionActive", design.selectionActive());
}

template <>
VLMDesign initWithCoder(KeyedUnarchiver& coder) {
    VLMDesign design;
    design.setStitches(decodeList<VLMStitch>(coder, "VLMEmbroiderDesignStitches", stitchClass));
    design.setThreads(decodeList<VLMThread>(coder, "VLMEmbroiderDesignThreads", threadClass));
    design.setDesignName(coder.decodeText("VLMEmbroiderDesignName"));
    design.setDesignType(coder.decodeText("VLMEmbroiderDesignType"));
    design.setDesignLocation(coder.decodeLocation("VLMEmbroiderDesignLocation"));
    coder.decodeObject("VLMEmbroiderDesignHoop", hoopClass, [&](KeyedUnarchiver& hoop) {
        design.setDesignHoop(std::make_shared<const VLMHoop>(initWithCoder<VLMHoop>(hoop)));
    });
    design.setXMin(coder.decodeFloat("VLMEmbroiderDesignXMin"));
    design.setXMax(coder.decodeFloat("VLMEmbroiderDesignXMax"));
    design.setYMin(coder.decodeFloat("VLMEmbroiderDesignYMin"));
    design.setYMax(coder.decodeFloat("VLMEmbroiderDesignYMax"));
    design.setDesignVersion(coder.decodeInteger("VLMEmbroiderDesignVersion"));
    design.setUseThreadFile(coder.decodeBool("VLMEmbroiderDesignUseThreadFile"));
    design.setSelectionActive(coder.decodeBool("VLMEmbroiderDesignSelectionActive"));
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

}  // namespace

std::vector<std::uint8_t> archiveDesign(const VLMDesign& design) {
    return KeyedArchiver::archiveRoot(designClass, [&](KeyedArchiver& coder) { encodeWithCoder(design, coder); });
}

bool unarchiveDesign(VLMDesign& design, std::span<const std::uint8_t> archive, VLMError* error) noexcept {
    return operation(error, [&] {
        try {
            KeyedUnarchiver::unarchiveRoot(archive, designClass,
                                           [&](KeyedUnarchiver& coder) { design = initWithCoder<VLMDesign>(coder); });
            return true;
        } catch (const KeyedArchiveError& refusal) {
            failWithSystemError(EBADMSG, error);
            if (error != nullptr) error->failureReason = refusal.what();
            return false;
        }
    });
}

}  // namespace velamo
