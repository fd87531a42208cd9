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

/// A position in the design, in tenths of a millimetre, y upward.
struct VELAMO_API DesignPoint {
    double x = 0;
    double y = 0;
    friend bool operator==(const DesignPoint&, const DesignPoint&) = default;
};

/// A rectangle in the design's plane, in tenths of a millimetre; (x, y) is its lower left corner. Its size may be
/// negative: selectionRect returns such a rectangle when no stitch is selected.
struct VELAMO_API DesignRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
    friend bool operator==(const DesignRect&, const DesignRect&) = default;
    /// Returns whether the point lies inside. The upper and right edges count as outside, so a rectangle whose width or
    /// height is zero or negative contains nothing.
    [[nodiscard]] constexpr bool contains(DesignPoint point) const noexcept {
        return x <= point.x && point.x < x + width && y <= point.y && point.y < y + height;
    }
};

/// A run of stitch indices: the first one and their number.
struct VELAMO_API StitchRange {
    std::uint64_t location = 0;
    std::uint64_t length = 0;
    friend bool operator==(const StitchRange&, const StitchRange&) = default;
};

/// What a query for an index returns when there is none.
inline constexpr std::int64_t indexNotFound = std::numeric_limits<std::int64_t>::max();

/// A machine-embroidery design: relative moves in sewing order and a thread for each colour block. A colour-change
/// stitch opens the next thread's block and belongs to it, so a design of n threads normally has n - 1 colour changes.
/// Lengths are in tenths of a millimetre. A design must be used by one thread of execution at a time.
class VELAMO_API VLMDesign {
public:
    // Making, copying and moving. Source: design.cpp.

    /// Makes an empty design: without stitches and threads; all other fields are zero, false or absent.
    VLMDesign() = default;
    /// Empties both lists, so that a list that another owner still shares is left empty.
    ~VLMDesign();
    VLMDesign(VLMDesign&& other) noexcept = default;
    VLMDesign& operator=(VLMDesign&& other) noexcept;
    VLMDesign(const VLMDesign&) = delete;
    VLMDesign& operator=(const VLMDesign&) = delete;
    /// Returns a design with copies of the lists; the hoop is shared.
    [[nodiscard]] VLMDesign copy() const;

    // Fields. Defined here, except resetBounds: design.cpp.

    /// The run of stitches that is drawn. After import and after decoding it covers all stitches, from index 0.
    [[nodiscard]] StitchRange displayRange() const noexcept { return displayRange_; }
    void setDisplayRange(StitchRange displayRange) noexcept { displayRange_ = displayRange; }
    /// Whether the threads come from the thread side file and are to be kept there.
    [[nodiscard]] bool useThreadFile() const noexcept { return useThreadFile_; }
    void setUseThreadFile(bool useThreadFile) noexcept { useThreadFile_ = useThreadFile; }
    /// Whether any stitch counts as selected; kept by the functions in editing/selection.h.
    [[nodiscard]] bool selectionActive() const noexcept { return selectionActive_; }
    void setSelectionActive(bool selectionActive) noexcept { selectionActive_ = selectionActive; }
    /// Ten times the version of the file format: 10 is version 1.0.
    [[nodiscard]] std::int32_t designVersion() const noexcept { return designVersion_; }
    void setDesignVersion(std::int32_t designVersion) noexcept { designVersion_ = designVersion; }

    /// The smallest and largest coordinates of the needle after each stitch, in tenths of a millimetre; the origin
    /// itself does not count. This is a cache that readers and optimizeJumpsFor fill: changing the stitches does not
    /// update it.
    [[nodiscard]] float xMin() const noexcept { return xMin_; }
    [[nodiscard]] float yMin() const noexcept { return yMin_; }
    [[nodiscard]] float xMax() const noexcept { return xMax_; }
    [[nodiscard]] float yMax() const noexcept { return yMax_; }
    void setXMin(float xMin) noexcept { xMin_ = xMin; }
    void setYMin(float yMin) noexcept { yMin_ = yMin; }
    void setXMax(float xMax) noexcept { xMax_ = xMax; }
    void setYMax(float yMax) noexcept { yMax_ = yMax; }
    /// Sets the bounds of no stitch at all: the minima to the largest finite float, the maxima to its negative.
    void resetBounds() noexcept;

    /// The lists are shared handles: a copy of a handle is the same list, and so is a handle passed to a setter.
    [[nodiscard]] const StitchList& stitches() const noexcept { return stitches_; }
    [[nodiscard]] StitchList& stitches() noexcept { return stitches_; }
    void setStitches(StitchList stitches) noexcept { stitches_ = std::move(stitches); }
    [[nodiscard]] const ThreadList& threads() const noexcept { return threads_; }
    [[nodiscard]] ThreadList& threads() noexcept { return threads_; }
    void setThreads(ThreadList threads) noexcept { threads_ = std::move(threads); }

    /// The file's name with its extension.
    [[nodiscard]] const Text& designName() const noexcept { return designName_; }
    void setDesignName(Text designName) noexcept { designName_ = std::move(designName); }
    /// The upper-case short name of the file format, such as "DST".
    [[nodiscard]] const Text& designType() const noexcept { return designType_; }
    void setDesignType(Text designType) noexcept { designType_ = std::move(designType); }
    /// The hoop that the design is made for; null when there is none.
    [[nodiscard]] const HoopHandle& designHoop() const noexcept { return designHoop_; }
    void setDesignHoop(HoopHandle designHoop) noexcept { designHoop_ = std::move(designHoop); }
    /// The path of the file that the design was read from.
    [[nodiscard]] const std::optional<std::filesystem::path>& designLocation() const noexcept {
        return designLocation_;
    }
    void setDesignLocation(std::optional<std::filesystem::path> designLocation) noexcept {
        designLocation_ = std::move(designLocation);
    }

    // Figures, texts and the single threads. Source: statistics.cpp.

    /// The size of the bounds, truncated toward zero. Bounds of no stitch give a size without meaning.
    [[nodiscard]] std::int32_t designWidth() const noexcept;
    [[nodiscard]] std::int32_t designHeight() const noexcept;
    /// The middle of the bounds.
    [[nodiscard]] DesignPoint centerOfDesign() const noexcept;
    [[nodiscard]] std::int32_t numberOfThreads() const noexcept;
    /// The number of jumps that are not colour changes.
    [[nodiscard]] std::int32_t numberOfJumps() const noexcept;
    /// The number of distinct thread colours, compared by exact equality of their components; palettes and names do not
    /// count.
    [[nodiscard]] std::int32_t numberOfDifferentColors() const;
    /// The length of the stitch list, jumps included, less the number of threads, plus 1: one record for each colour
    /// change does not count, whatever the flags say. Returns 0 when there is no list at all.
    [[nodiscard]] std::int32_t numberOfStitches() const noexcept;
    /// The position of the needle when sewing begins, after the leading jumps.
    [[nodiscard]] DesignPoint firstStitch() const noexcept;
    /// The position of the needle at the end.
    [[nodiscard]] DesignPoint lastStitch() const noexcept;
    /// The palette that all threads share, or "" when there is none.
    [[nodiscard]] std::string designPalette() const;
    /// The display name of the palette that all threads share, or the user's word for thread colours when there is
    /// none. May throw std::system_error when the texts in the user's language cannot be read.
    [[nodiscard]] std::string designPaletteName() const;
    /// Whether the design can be exported in its own type; a PES design only with version 1.0.
    [[nodiscard]] bool isWritable() const noexcept;
    /// A property of the thread at the index. All five throw std::out_of_range when there is no such
    /// thread. References last until the thread changes or goes.
    [[nodiscard]] const VLMColor& colorOfThread(std::int32_t index) const;
    [[nodiscard]] const Text& nameOfThread(std::int32_t index) const;
    [[nodiscard]] const Text& paletteOfThread(std::int32_t index) const;
    [[nodiscard]] bool isShownOfThread(std::int32_t index) const;
    void setIsShownofThread(bool isShown, std::int32_t index);
    /// Whether no thread is hidden, which is also true without threads.
    [[nodiscard]] bool isShownOfAllThreads() const noexcept;
    /// The index of the first thread that is shown, or indexNotFound.
    [[nodiscard]] std::int64_t indexOfShownThread() const noexcept;
    /// A summary of several lines in the user's language and measurement unit. May throw std::system_error when a file
    /// of the resources or the user's preferences cannot be read.
    [[nodiscard]] std::string description() const;
    /// Passes the same text to `take` in pieces: first what comes before the threads, then a line for each thread. Made
    /// for designs with up to millions of colour changes. Throws like description(), and whatever `take` throws.
    void describe(const std::function<void(const std::string&)>& take) const;

    // Recolouring. Source: design.cpp.

    /// Calls VLMThread::changeToColorinPalette on the thread at the index and returns its result. Throws
    /// std::out_of_range when there is no such thread.
    bool changeThreadtoColorinPalette(std::int32_t index, const VLMColor& color, const std::string& palette);

    // Hoops. Source: hoop_catalogue.cpp.

    /// All hoops of all vendors, in the order in which automatic choice tries them.
    [[nodiscard]] static std::vector<HoopHandle> hoops();
    /// Description, width and height in millimetres, vendor and code of the design's hoop. Without a hoop they are "",
    /// 0, 0, "" and -1, and hoopIsRound() is false. hoopName() throws like VLMHoop::description.
    [[nodiscard]] std::string hoopName() const;
    [[nodiscard]] std::int32_t hoopWidth() const noexcept;
    [[nodiscard]] std::int32_t hoopHeight() const noexcept;
    [[nodiscard]] Text hoopVendor() const;
    [[nodiscard]] std::int32_t hoopCode() const noexcept;
    [[nodiscard]] bool hoopIsRound() const noexcept;
    /// Gives the design the vendor's hoop with the code and returns true. Returns false when there is no such hoop; the
    /// design then keeps its hoop, except that the code -1 takes it away.
    bool setHoopFromVendorwithCode(std::string_view vendor, std::int32_t code);
    /// The vendor's hoops in the order of hoops(), or nullopt when the vendor has none.
    [[nodiscard]] static std::optional<std::vector<HoopHandle>> allHoopsFromVendor(std::string_view vendor);
    /// The vendor's first writable hoop that the design fits in, which need not be the smallest, or null when there is
    /// none.
    [[nodiscard]] HoopHandle findHoopFromVendor(std::string_view vendor) const;
    /// Whether the design's width and height are at most those of the hoop, wherever the design lies. A round hoop
    /// counts as its square; the design is not turned.
    [[nodiscard]] bool designFitsInHoop(const VLMHoop& hoop) const noexcept;
    /// Whether the design's bounds reach the hoop's edge or beyond when the middle of the hoop is at the origin. An odd
    /// size in millimetres is rounded down to an even one first.
    [[nodiscard]] bool stitchesOutsideOfHoop(const VLMHoop& hoop) const noexcept;

    // Tables of colour codes. Source: thread_codes.cpp.

    /// The numbers that stand for threads in Janome files, 0 to 78, with the keys of these threads in the palette
    /// "Janome".
    [[nodiscard]] static std::map<std::int32_t, std::string> janomeColorCodes();
    /// The numbers that are written for threads in PEC sections, 1 to 64, with the keys of these threads in the palette
    /// "Brother".
    [[nodiscard]] static std::map<std::int32_t, std::string> brotherColorCodes();
    /// The same numbers, and the seven further ones that are understood when a PEC section is read.
    [[nodiscard]] static std::map<std::int32_t, std::string> brotherReadColorCodes();

private:
    static constexpr std::int32_t noHoopCode = -1;

    template <class Design>
    static auto fieldsOf(Design& design) noexcept {
        return std::tie(design.displayRange_, design.useThreadFile_, design.selectionActive_, design.designVersion_,
                        design.xMin_, design.yMin_, design.xMax_, design.yMax_, design.stitches_, design.threads_,
                        design.designName_, design.designType_, design.designHoop_, design.designLocation_);
    }
    /// All fields of the design.
    [[nodiscard]] auto fields() noexcept { return fieldsOf(*this); }
    [[nodiscard]] auto fields() const noexcept { return fieldsOf(*this); }

    StitchRange displayRange_;
    bool useThreadFile_ = false;
    bool selectionActive_ = false;
    std::int32_t designVersion_ = 0;
    float xMin_ = 0;
    float yMin_ = 0;
    float xMax_ = 0;
    float yMax_ = 0;
    StitchList stitches_;
    ThreadList threads_;
    Text designName_;
    Text designType_;
    HoopHandle designHoop_;
    std::optional<std::filesystem::path> designLocation_;
};

// Archives. Source: archive.cpp.

/// Returns the design as a keyed archive, a property list with everything but the display range. Colours are archived
/// in single precision, so that the low bits of a component may be lost. May throw std::bad_alloc.
[[nodiscard]] VELAMO_API std::vector<std::uint8_t> archiveDesign(const VLMDesign& design);

/// Replaces `design` by the one in the archive; its display range covers all stitches. A key that the archive lacks
/// leaves its field zero, false or absent; for the two lists that means no list at all. Returns false and leaves
/// `design` unchanged when the archive is damaged, truncated, holds values of wrong kinds or refers to itself in
/// circles (`error` then holds EBADMSG of the system's domain and says what is wrong), or when memory runs out
/// (ENOMEM).
[[nodiscard]] VELAMO_API bool unarchiveDesign(VLMDesign& design, std::span<const std::uint8_t> archive,
                                              VLMError* error) noexcept;

}  // namespace velamo
