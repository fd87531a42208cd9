#include <cerrno>

#include "velamo/model/design.h"
#include "velamo/platform/plist/keyed_archive.h"

namespace velamo {
namespace {

constexpr std::string_view stitchClass = "VLMStitch";
constexpr std::string_view colorClass = "VLMColor";
constexpr std::string_view threadClass = "VLMThread";
constexpr std::string_view hoopClass = "VLMHoop";
constexpr std::string_view designClass = "VLMDesign";

template <class Element>
void encodeList(KeyedArchiver& coder, std::string_view key, std::string_view className, const VLMList<Element>& list) {
    if (!list.isThere()) return coder.encodeNothing(key);
    coder.encodeList(key, className, list.size(),
                     [&](KeyedArchiver& element, std::size_t index) { list[index].encodeWithCoder(element); });
}

template <class Element>
VLMList<Element> decodeList(KeyedUnarchiver& coder, std::string_view key, std::string_view className) {
    std::vector<Element> elements;
    const bool isThere = coder.decodeList(
        key, className, [&](std::size_t count) { elements.reserve(count); },
        [&](KeyedUnarchiver& element) { elements.push_back(Element::initWithCoder(element)); });
    return isThere ? VLMList<Element>(std::move(elements)) : VLMList<Element>::none();
}

float narrowed(double component) noexcept {
    return static_cast<float>(component);
}

}  // namespace

void VLMStitch::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeFloat("VLMEmbroideryStitchDeltaX", deltaX_);
    coder.encodeFloat("VLMEmbroideryStitchDeltaY", deltaY_);
    coder.encodeBool("VLMEmbroideryStitchIsJumpStitch", isJumpStitch_);
    coder.encodeBool("VLMEmbroideryStitchIsColorChange", isColorChange_);
    coder.encodeBool("VLMEmbroideryStitchIsSelected", isSelected_);
}

VLMStitch VLMStitch::initWithCoder(KeyedUnarchiver& coder) {
    VLMStitch stitch;
    stitch.deltaX_ = coder.decodeFloat("VLMEmbroideryStitchDeltaX");
    stitch.deltaY_ = coder.decodeFloat("VLMEmbroideryStitchDeltaY");
    stitch.isJumpStitch_ = coder.decodeBool("VLMEmbroideryStitchIsJumpStitch");
    stitch.isColorChange_ = coder.decodeBool("VLMEmbroideryStitchIsColorChange");
    stitch.isSelected_ = coder.decodeBool("VLMEmbroideryStitchIsSelected");
    return stitch;
}

void VLMColor::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeFloat("VLMColorRed", narrowed(red_));
    coder.encodeFloat("VLMColorGreen", narrowed(green_));
    coder.encodeFloat("VLMColorBlue", narrowed(blue_));
}

VLMColor VLMColor::initWithCoder(KeyedUnarchiver& coder) {
    const float red = coder.decodeFloat("VLMColorRed");
    const float green = coder.decodeFloat("VLMColorGreen");
    const float blue = coder.decodeFloat("VLMColorBlue");
    return initWithRedgreenblue(red, green, blue);
}

void VLMThread::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeObject("VLMThreadColor", colorClass, [&](KeyedArchiver& coded) { color().encodeWithCoder(coded); });
    coder.encodeText("VLMThreadName", name());
    coder.encodeText("VLMThreadKey", key());
    coder.encodeText("VLMThreadPalette", palette());
    coder.encodeText("VLMThreadPaletteName", paletteName());
    coder.encodeFloat("VLMThreadLength", length_);
    coder.encodeInteger("VLMThreadTension", tension_);
    coder.encodeBool("VLMThreadIsShown", isShown_);
}

VLMThread VLMThread::initWithCoder(KeyedUnarchiver& coder) {
    VLMThread thread;
    Look look;
    coder.decodeObject("VLMThreadColor", colorClass,
                       [&](KeyedUnarchiver& color) { look.color = VLMColor::initWithCoder(color); });
    look.name = coder.decodeText("VLMThreadName");
    look.key = coder.decodeText("VLMThreadKey");
    look.palette = coder.decodeText("VLMThreadPalette");
    look.paletteName = coder.decodeText("VLMThreadPaletteName");
    thread.look_ = SharedValue<Look>(std::move(look));
    thread.length_ = coder.decodeFloat("VLMThreadLength");
    thread.tension_ = coder.decodeInteger("VLMThreadTension");
    thread.isShown_ = coder.decodeBool("VLMThreadIsShown");
    return thread;
}

void VLMHoop::encodeWithCoder(KeyedArchiver& coder) const {
    coder.encodeText("VLMEmbroideryHoopName", name_);
    coder.encodeText("VLMEmbroideryHoopVendor", vendor_);
    coder.encodeInteger("VLMEmbroideryHoopCode", code_);
    coder.encodeInteger("VLMEmbroideryHoopWidth", width_);
    coder.encodeInteger("VLMEmbroideryHoopHeight", height_);
    coder.encodeBool("VLMEmbroideryHoopIsMultiHoop", isMultiHoop_);
    coder.encodeBool("VLMEmbroideryHoopIsRounded", isRounded_);
    coder.encodeBool("VLMEmbroideryHoopIsWritable", isWritable_);
}

VLMHoop VLMHoop::initWithCoder(KeyedUnarchiver& coder) {
    VLMHoop hoop;
    hoop.name_ = coder.decodeText("VLMEmbroideryHoopName");
    hoop.vendor_ = coder.decodeText("VLMEmbroideryHoopVendor");
    hoop.code_ = coder.decodeInteger("VLMEmbroideryHoopCode");
    hoop.width_ = coder.decodeInteger("VLMEmbroideryHoopWidth");
    hoop.height_ = coder.decodeInteger("VLMEmbroideryHoopHeight");
    hoop.isMultiHoop_ = coder.decodeBool("VLMEmbroideryHoopIsMultiHoop");
    hoop.isRounded_ = coder.decodeBool("VLMEmbroideryHoopIsRounded");
    hoop.isWritable_ = coder.decodeBool("VLMEmbroideryHoopIsWritable");
    return hoop;
}

void VLMDesign::encodeWithCoder(KeyedArchiver& coder) const {
    encodeList(coder, "VLMEmbroiderDesignStitches", stitchClass, stitches_);
    encodeList(coder, "VLMEmbroiderDesignThreads", threadClass, threads_);
    coder.encodeText("VLMEmbroiderDesignName", designName_);
    coder.encodeText("VLMEmbroiderDesignType", designType_);
    coder.encodeLocation("VLMEmbroiderDesignLocation", designLocation_);
    if (designHoop_) {
        coder.encodeObject("VLMEmbroiderDesignHoop", hoopClass,
                           [&](KeyedArchiver& hoop) { designHoop_->encodeWithCoder(hoop); });
    } else {
        coder.encodeNothing("VLMEmbroiderDesignHoop");
    }
    coder.encodeFloat("VLMEmbroiderDesignXMin", xMin_);
    coder.encodeFloat("VLMEmbroiderDesignXMax", xMax_);
    coder.encodeFloat("VLMEmbroiderDesignYMin", yMin_);
    coder.encodeFloat("VLMEmbroiderDesignYMax", yMax_);
    coder.encodeInteger("VLMEmbroiderDesignVersion", designVersion_);
    coder.encodeBool("VLMEmbroiderDesignUseThreadFile", useThreadFile_);
    coder.encodeBool("VLMEmbroiderDesignSelectionActive", selectionActive_);
}

VLMDesign VLMDesign::initWithCoder(KeyedUnarchiver& coder) {
    VLMDesign design;
    design.setStitches(decodeList<VLMStitch>(coder, "VLMEmbroiderDesignStitches", stitchClass));
    design.setThreads(decodeList<VLMThread>(coder, "VLMEmbroiderDesignThreads", threadClass));
    design.setDesignName(coder.decodeText("VLMEmbroiderDesignName"));
    design.setDesignType(coder.decodeText("VLMEmbroiderDesignType"));
    design.setDesignLocation(coder.decodeLocation("VLMEmbroiderDesignLocation"));
    coder.decodeObject("VLMEmbroiderDesignHoop", hoopClass, [&](KeyedUnarchiver& hoop) {
        design.setDesignHoop(std::make_shared<const VLMHoop>(VLMHoop::initWithCoder(hoop)));
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

std::vector<std::uint8_t> archiveDesign(const VLMDesign& design) {
    return KeyedArchiver::archiveRoot(designClass, [&](KeyedArchiver& coder) { design.encodeWithCoder(coder); });
}

bool unarchiveDesign(VLMDesign& design, std::span<const std::uint8_t> archive, VLMError* error) noexcept {
    return operation(error, [&] {
        try {
            KeyedUnarchiver::unarchiveRoot(archive, designClass,
                                           [&](KeyedUnarchiver& coder) { design = VLMDesign::initWithCoder(coder); });
            return true;
        } catch (const KeyedArchiveError& refusal) {
            failWithSystemError(EBADMSG, error);
            if (error != nullptr) error->failureReason = refusal.what();
            return false;
        }
    });
}

}  // namespace velamo
