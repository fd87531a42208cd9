#include "velamo/platform/plist/old_archive.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <string_view>

namespace velamo {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t streamVersion = 4;
constexpr std::int32_t systemVersion = 1000;
constexpr std::string_view littleEndianMark = "streamtyped";
constexpr std::string_view bigEndianMark = "typedstream";

enum Mark : std::uint8_t {
    twoBytes = 0x81,
    fourBytes = 0x82,
    realNumber = 0x83,
    newEntry = 0x84,
    noObject = 0x85,
    endOfObject = 0x86,
    firstReference = 0x92,
};

struct Space {
    std::uint8_t kind;
    std::string_view types;  // of the components, opacity last
};
constexpr std::array<Space, 4> spaces{{{1, "ffff"}, {2, "ffff"}, {3, "ff"}, {4, "ff"}}};

// Shared texts of a stream that is read to its first object; a colour has six at most.
constexpr std::size_t mostTexts = 16;

// A read that does not fit gives zero or no text and makes ok() false from then on.
class TypedStream {
public:
    explicit TypedStream(Bytes bytes) noexcept : rest_(bytes) {}

    [[nodiscard]] bool ok() const noexcept { return ok_; }
    void expect(bool condition) noexcept { ok_ = ok_ && condition; }

    bool readHeader() noexcept {
        expect(byte() == streamVersion);
        const std::string_view mark = characters();
        isLittleEndian_ = mark == littleEndianMark;
        expect(isLittleEndian_ || mark == bigEndianMark);
        expect(integer() == systemVersion);
        return ok_;
    }

    std::uint8_t byte() noexcept {
        const Bytes taken = take(1);
        return taken.empty() ? std::uint8_t{0} : taken[0];
    }

    std::int32_t integer() noexcept {
        const std::uint8_t first = byte();
        if (first == twoBytes) return static_cast<std::int16_t>(number(2));
        if (first == fourBytes) return static_cast<std::int32_t>(number(4));
        expect(first < twoBytes || first >= firstReference);
        return static_cast<std::int8_t>(first);
    }

    double real() noexcept {
        if (rest_.empty() || rest_[0] != realNumber) return integer();
        (void)byte();
        return static_cast<double>(std::bit_cast<float>(number(4)));
    }

    // A text that is new or was met before.
    std::string_view sharedText() noexcept {
        const std::uint8_t mark = byte();
        if (mark == newEntry) return remember(characters());
        const std::size_t place = static_cast<std::size_t>(mark) - firstReference;
        expect(mark >= firstReference && place < textCount_);
        return ok_ ? texts_[place] : std::string_view();
    }

    // The head of a new object up to its first value: the name of its class.
    std::string_view beginObject() noexcept {
        expect(byte() == newEntry);
        expect(byte() == newEntry);
        const std::string_view name = classHead();
        std::uint8_t mark = byte();
        while (ok_ && mark == newEntry) {  // each round takes bytes
            (void)classHead();
            mark = byte();
        }
        expect(mark == noObject);
        return name;
    }

private:
    std::string_view classHead() noexcept {
        const std::string_view name = sharedText();
        (void)integer();  // its version
        return name;
    }

    std::string_view characters() noexcept {
        const std::int32_t length = integer();
        const Bytes taken = take(length < 0 ? rest_.size() + 1 : static_cast<std::size_t>(length));
        return {reinterpret_cast<const char*>(taken.data()), taken.size()};  // a view of the same bytes
    }

    std::string_view remember(std::string_view text) noexcept {
        expect(textCount_ < mostTexts);
        if (ok_) texts_[textCount_++] = text;
        return text;
    }

    std::uint32_t number(std::size_t width) noexcept {
        const Bytes bytes = take(width);
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            value = value << 8 | bytes[isLittleEndian_ ? bytes.size() - 1 - i : i];
        }
        return value;
    }

    Bytes take(std::size_t count) noexcept {
        expect(count <= rest_.size());
        const Bytes taken = rest_.first(ok_ ? count : 0);
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    Bytes rest_;
    bool ok_ = true;
    bool isLittleEndian_ = true;
    std::array<std::string_view, mostTexts> texts_{};
    std::size_t textCount_ = 0;
};

std::optional<std::array<double, 3>> readComponents(TypedStream& in, const Space& space) {
    std::array<double, 4> values{};
    for (std::size_t i = 0; i < space.types.size(); ++i) {
        values[i] = in.real();
        in.expect(std::isfinite(values[i]));
    }
    in.expect(in.byte() == endOfObject);
    if (!in.ok()) return std::nullopt;
    if (space.types.size() == 2) return std::array{values[0], values[0], values[0]};
    return std::array{values[0], values[1], values[2]};
}

}  // namespace

std::optional<std::array<double, 3>> colorFromOldArchive(Bytes data) noexcept {
    TypedStream in(data);
    if (!in.readHeader()) return std::nullopt;
    in.expect(in.sharedText() == "@");
    in.expect(in.beginObject() == "NSColor");
    in.expect(in.sharedText() == "c");
    const std::uint8_t kind = in.byte();
    const auto* space = std::find_if(spaces.begin(), spaces.end(), [&](const Space& s) { return s.kind == kind; });
    if (!in.ok() || space == spaces.end() || in.sharedText() != space->types) return std::nullopt;
    return readComponents(in, *space);
}

}  // namespace velamo
