#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velamo {

/// The binary form of a property list, read in place: a table of objects that refer to each other by index.
///   "bplist0?", the objects, the offset of each object, and at the end a trailer of 32 bytes:
///   offset  bytes   meaning (big-endian)
///   6       1       width of an offset, 1 to 8
///   7       1       width of a reference, 1 to 8
///   8       8       number of objects
///   16      8       index of the root object
///   24      8       position of the table of offsets
/// Nothing is believed before it is used: every look-up is checked against the bytes that are there. References may be
/// shared, circular or point outside the table; whoever follows them says how far. Views the bytes; the caller keeps
/// them alive.
class BinaryList {
public:
    enum class Kind : std::uint8_t {
        nothing,
        boolean,
        integer,
        real,
        date,
        data,
        ascii,
        utf16,
        uid,
        array,
        dictionary
    };
    struct Object {
        Kind kind = Kind::nothing;
        std::size_t count = 0;               ///< bytes, UTF-16 units, or entries; of a boolean 1 for true
        std::span<const std::uint8_t> body;  ///< what stands behind the mark and the count
        [[nodiscard]] bool isText() const noexcept { return kind == Kind::ascii || kind == Kind::utf16; }
    };

    /// Nothing when the bytes do not start and end as a binary list.
    [[nodiscard]] static std::optional<BinaryList> open(std::span<const std::uint8_t> bytes) noexcept;

    [[nodiscard]] std::uint64_t root() const noexcept { return root_; }
    [[nodiscard]] std::size_t byteCount() const noexcept { return byteCount_; }

    /// The object with that index, or nothing when there is none or it is damaged.
    [[nodiscard]] std::optional<Object> object(std::uint64_t index) const noexcept;
    /// The reference at a place of a container's body: an array's entries; a dictionary's keys, and behind them its
    /// values.
    [[nodiscard]] std::uint64_t reference(const Object& container, std::size_t place) const noexcept;

private:
    BinaryList() = default;
    std::span<const std::uint8_t> objects_;  // the file up to the table of offsets
    std::span<const std::uint8_t> offsets_;
    std::size_t byteCount_ = 0;
    std::size_t offsetWidth_ = 1;
    std::size_t referenceWidth_ = 1;
    std::uint64_t root_ = 0;
};

/// The value of an integer object; nothing when it needs more than 64 bits.
[[nodiscard]] std::optional<std::int64_t> integerOf(const BinaryList::Object& object) noexcept;
[[nodiscard]] double realOf(const BinaryList::Object& object) noexcept;
[[nodiscard]] std::uint64_t uidOf(const BinaryList::Object& object) noexcept;
/// The text of a text object as UTF-8, what is no text in it replaced by U+FFFD. May throw std::bad_alloc.
[[nodiscard]] std::string textOf(const BinaryList::Object& object);
/// Whether the object is this text. May throw std::bad_alloc.
[[nodiscard]] bool isTextEqual(const BinaryList::Object& object, std::string_view text);

/// Collects the objects of a binary property list, each known by the index it is given, and writes them. Equal texts
/// and numbers are stored once, so that writing takes time in proportion to what is written. Every operation may throw
/// std::bad_alloc.
class BinaryListWriter {
public:
    using Index = std::uint32_t;

    Index nothing();
    Index boolean(bool value);
    Index integer(std::int64_t value);
    /// In 32 bits when that loses nothing.
    Index real(double value);
    /// Bytes that are no UTF-8 become U+FFFD.
    Index text(std::string_view value);
    Index data(std::span<const std::uint8_t> value);
    Index uid(std::uint64_t value);
    Index array(std::span<const Index> entries);
    /// As many keys as values.
    Index dictionary(std::span<const Index> keys, std::span<const Index> values);

    [[nodiscard]] std::vector<std::uint8_t> finish(Index root) const;

private:
    enum class Kind : std::uint8_t { leaf, array, dictionary };
    /// A run of leafBytes_ or of references_.
    struct Object {
        Kind kind = Kind::leaf;
        std::size_t count = 0;
        std::size_t first = 0;
    };
    /// A leaf of eight bytes at most: its mark and its value.
    struct Number {
        std::uint8_t mark = 0;
        std::uint64_t bits = 0;
        friend bool operator<(const Number& left, const Number& right) noexcept {
            return left.mark != right.mark ? left.mark < right.mark : left.bits < right.bits;
        }
    };
    Index add(const Object& object);
    Index addLeaf(std::span<const std::uint8_t> bytes);
    Index addNumber(unsigned kind, unsigned size, std::uint64_t bits, std::size_t width);

    std::vector<Object> objects_;
    std::vector<std::uint8_t> leafBytes_;
    std::vector<Index> references_;
    // Ordered: no choice of values makes them slow, as a choice of hashes could.
    std::array<std::map<Number, Index>, 16> numbers_;  // by the high half of the mark
    std::map<std::string, Index, std::less<>> texts_;
};

}  // namespace velamo
