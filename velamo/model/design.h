#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "velamo/api.h"
#include "velamo/model/error.h"
#include "velamo/model/hoop.h"
#include "velamo/model/stitch.h"
#include "velamo/model/thread.h"

namespace velamo {

/// A place in the design, in tenths of a millimetre, y upward.
struct VELAMO_API VLMPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const VLMPoint&, const VLMPoint&) = default;
};

/// A rectangle of the design's plane. Its size may be negative: a selection without stitches has such a rectangle.
struct VELAMO_API VLMRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const VLMRect&, const VLMRect&) = default;
    /// Whether the point lies inside; the far edges are outside, so a rectangle of no or negative size holds nothing.
    [[nodiscard]] constexpr bool contains(VLMPoint point) const noexcept {
        return x <= point.x && point.x < x + width && y <= point.y && point.y < y + height;
    }
};

/// A run of stitch indices.
struct VELAMO_API VLMRange {
    std::uint64_t location = 0;
    std::uint64_t length = 0;
    friend bool operator==(const VLMRange&, const VLMRange&) = default;
};

/// What a query for an index gives when there is none.
inline constexpr std::int64_t indexNotFound = std::numeric_limits<std::int64_t>::max();

/// A machine-embroidery design: relative moves in sewing order and a thread for each colour block. A colour-change
/// stitch opens the next thread's block and belongs to it, so a design of n threads normally holds n - 1 colour
/// changes. Lengths are in tenths of a millimetre. One thread of execution uses a design at a time.
class VELAMO_API VLMDesign {
public:
    /// An empty design: no stitches and threads, everything else zero, false or absent.
    VLMDesign() = default;
    /// Empties both lists before it lets go of them: a list that another owner still shares is left empty.
    ~VLMDesign();
    VLMDesign(VLMDesign&& other) noexcept = default;
    VLMDesign& operator=(VLMDesign&& other) noexcept;
    VLMDesign(const VLMDesign&) = delete;
    VLMDesign& operator=(const VLMDesign&) = delete;
    /// A design with stitches and threads of its own; the hoop is shared.
    [[nodiscard]] VLMDesign copy() const;

    /// The run of stitches that is drawn; location 0 and all stitches after import and after decoding.
    [[nodiscard]] VLMRange displayRange() const noexcept { return displayRange_; }
    void setDisplayRange(VLMRange displayRange) noexcept { displayRange_ = displayRange; }
    /// The threads came from the thread side file, and are to be kept there.
    [[nodiscard]] bool useThreadFile() const noexcept { return useThreadFile_; }
    void setUseThreadFile(bool useThreadFile) noexcept { useThreadFile_ = useThreadFile; }
    [[nodiscard]] bool selectionActive() const noexcept { return selectionActive_; }
    void setSelectionActive(bool selectionActive) noexcept { selectionActive_ = selectionActive; }
    /// Ten times the version of the file format: 10 is version 1.0.
    [[nodiscard]] std::int32_t designVersion() const noexcept { return designVersion_; }
    void setDesignVersion(std::int32_t designVersion) noexcept { designVersion_ = designVersion; }

    /// Smallest and largest needle position after each stitch; the origin itself is no sample. A cache that readers and
    /// jump optimisation fill: changing the stitches does not change it.
    [[nodiscard]] float xMin() const noexcept { return xMin_; }
    [[nodiscard]] float yMin() const noexcept { return yMin_; }
    [[nodiscard]] float xMax() const noexcept { return xMax_; }
    [[nodiscard]] float yMax() const noexcept { return yMax_; }
    void setXMin(float xMin) noexcept { xMin_ = xMin; }
    void setYMin(float yMin) noexcept { yMin_ = yMin; }
    void setXMax(float xMax) noexcept { xMax_ = xMax; }
    void setYMax(float yMax) noexcept { yMax_ = yMax; }
    /// The bounds of no stitch at all: minima at the largest finite float, maxima at its negative.
    void resetBounds() noexcept;

    /// The lists are shared handles: a copy of the handle is the same list, and so is one handed to a setter.
    [[nodiscard]] const VLMStitchList& stitches() const noexcept { return stitches_; }
    [[nodiscard]] VLMStitchList& stitches() noexcept { return stitches_; }
    void setStitches(VLMStitchList stitches) noexcept { stitches_ = std::move(stitches); }
    [[nodiscard]] const VLMThreadList& threads() const noexcept { return threads_; }
    [[nodiscard]] VLMThreadList& threads() noexcept { return threads_; }
    void setThreads(VLMThreadList threads) noexcept { threads_ = std::move(threads); }

    /// The file's name with its extension.
    [[nodiscard]] const Text& designName() const noexcept { return designName_; }
    void setDesignName(Text designName) noexcept { designName_ = std::move(designName); }
    /// The upper-case short name of the file format, such as "DST".
    [[nodiscard]] const Text& designType() const noexcept { return designType_; }
    void setDesignType(Text designType) noexcept { designType_ = std::move(designType); }
    [[nodiscard]] const VLMHoopHandle& designHoop() const noexcept { return designHoop_; }
    void setDesignHoop(VLMHoopHandle designHoop) noexcept { designHoop_ = std::move(designHoop); }
    /// Where the design was read from.
    [[nodiscard]] const std::optional<std::filesystem::path>& designLocation() const noexcept {
        return designLocation_;
    }
    void setDesignLocation(std::optional<std::filesystem::path> designLocation) noexcept {
        designLocation_ = std::move(designLocation);
    }

    /// Size from the bounds, truncated toward zero. Without stitches the bounds, and so the size, mean nothing.
    [[nodiscard]] std::int32_t designWidth() const noexcept;
    [[nodiscard]] std::int32_t designHeight() const noexcept;
    [[nodiscard]] VLMPoint centerOfDesign() const noexcept;
    [[nodiscard]] std::int32_t numberOfThreads() const noexcept;
    /// Jumps that are no colour changes.
    [[nodiscard]] std::int32_t numberOfJumps() const noexcept;
    /// Distinct thread colours by exact equality of their components, whatever their palettes and names.
    [[nodiscard]] std::int32_t numberOfDifferentColors() const;
    /// Length of the stitch list less one record between consecutive threads; jumps count. It does not look at the
    /// flags.
    [[nodiscard]] std::int32_t numberOfStitches() const noexcept;
    /// Where the needle stands when sewing begins, after the leading jumps.
    [[nodiscard]] VLMPoint firstStitch() const noexcept;
    /// Where the needle stands at the end.
    [[nodiscard]] VLMPoint lastStitch() const noexcept;
    /// The palette that all threads share, else "".
    [[nodiscard]] std::string designPalette() const;
    /// The palette display name that all threads share, else the user's word for thread colours.
    [[nodiscard]] std::string designPaletteName() const;
    /// Whether the design can be written back in its own type.
    [[nodiscard]] bool isWritable() const noexcept;
    /// The thread with the index; std::out_of_range when there is none.
    [[nodiscard]] const VLMColor& colorOfThread(std::int32_t index) const;
    [[nodiscard]] const Text& nameOfThread(std::int32_t index) const;
    [[nodiscard]] const Text& paletteOfThread(std::int32_t index) const;
    [[nodiscard]] bool isShownOfThread(std::int32_t index) const;
    void setIsShownofThread(bool isShown, std::int32_t index);
    [[nodiscard]] bool isShownOfAllThreads() const noexcept;
    /// The first shown thread, or indexNotFound.
    [[nodiscard]] std::int64_t indexOfShownThread() const noexcept;
    /// A summary of several lines in the user's language and measurement unit.
    [[nodiscard]] std::string description() const;
    /// The same in pieces: what comes before the threads, and a line for each of these. Files may change between
    /// threads a million times.
    void describe(const std::function<void(const std::string&)>& take) const;

    /// VLMThread::changeToColorinPalette on the thread with the index; std::out_of_range when there is none.
    bool changeThreadtoColorinPalette(std::int32_t index, const VLMColor& color, const std::string& palette);

    /// All hoops of all vendors, in the order in which automatic choice goes through them.
    [[nodiscard]] static std::vector<VLMHoopHandle> hoops();
    /// Description, size in millimetres, vendor and code of the design's hoop; "", 0, "" and -1 without one.
    [[nodiscard]] std::string hoopName() const;
    [[nodiscard]] std::int32_t hoopWidth() const noexcept;
    [[nodiscard]] std::int32_t hoopHeight() const noexcept;
    [[nodiscard]] Text hoopVendor() const;
    [[nodiscard]] std::int32_t hoopCode() const noexcept;
    [[nodiscard]] bool hoopIsRound() const noexcept;
    /// Gives the design the vendor's hoop of the code. False when there is none: the design keeps its hoop then, but
    /// the code -1 takes it away.
    bool setHoopFromVendorwithCode(std::string_view vendor, std::int32_t code);
    /// The vendor's hoops in the order of hoops(); nothing when the vendor has none.
    [[nodiscard]] static std::optional<std::vector<VLMHoopHandle>> allHoopsFromVendor(std::string_view vendor);
    /// The vendor's first writable hoop that the design fits in, which need not be the smallest; null when there is
    /// none.
    [[nodiscard]] VLMHoopHandle findHoopFromVendor(std::string_view vendor) const;
    /// Whether the design is at most as large as the hoop, wherever it lies. A round hoop counts as its square; the
    /// design is not turned.
    [[nodiscard]] bool designFitsInHoop(const VLMHoop& hoop) const noexcept;
    /// Whether something of the design lies outside the hoop, or on its edge, when the hoop's middle is at the origin.
    [[nodiscard]] bool stitchesOutsideOfHoop(const VLMHoop& hoop) const noexcept;

    /// The numbers that stand for threads in Janome files, 0 to 78, with the threads' keys in the palette "Janome".
    [[nodiscard]] static std::map<std::int32_t, std::string> janomeColorCodes();
    /// The numbers that are written for threads in PEC sections, 1 to 64, with the threads' keys in the palette
    /// "Brother".
    [[nodiscard]] static std::map<std::int32_t, std::string> brotherColorCodes();
    /// The same and the seven further numbers that are understood when a PEC section is read.
    [[nodiscard]] static std::map<std::int32_t, std::string> brotherReadColorCodes();

private:
    static constexpr std::int32_t noHoopCode = -1;

    template <class Design>
    static auto fieldsOf(Design& design) noexcept {
        return std::tie(design.displayRange_, design.useThreadFile_, design.selectionActive_, design.designVersion_,
                        design.xMin_, design.yMin_, design.xMax_, design.yMax_, design.stitches_, design.threads_,
                        design.designName_, design.designType_, design.designHoop_, design.designLocation_);
    }
    /// All that a design consists of.
    [[nodiscard]] auto fields() noexcept { return fieldsOf(*this); }
    [[nodiscard]] auto fields() const noexcept { return fieldsOf(*this); }

    VLMRange displayRange_;
    bool useThreadFile_ = false;
    bool selectionActive_ = false;
    std::int32_t designVersion_ = 0;
    float xMin_ = 0;
    float yMin_ = 0;
    float xMax_ = 0;
    float yMax_ = 0;
    VLMStitchList stitches_;
    VLMThreadList threads_;
    Text designName_;
    Text designType_;
    VLMHoopHandle designHoop_;
    std::optional<std::filesystem::path> designLocation_;
};

/// The design as a keyed archive, a property list that keeps all but the display range. Colours are archived in single
/// precision, so one may come back with other low bits. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API std::vector<std::uint8_t> archiveDesign(const VLMDesign& design);

/// Replaces `design` by the one in the archive, whose display range covers all stitches. A key that the archive lacks
/// leaves zero, false or nothing (no list at all for the two lists). Returns false when the archive is damaged,
/// truncated, holds wrong kinds or leads in circles: `error` then says what is wrong (code EBADMSG of the system's
/// domain) and `design` is unchanged.
[[nodiscard]] VELAMO_API bool unarchiveDesign(VLMDesign& design, std::span<const std::uint8_t> archive,
                                              VLMError* error) noexcept;

}  // namespace velamo
