#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "velamo/private_api.h"

namespace velamo {

/// One value of a property list: an array, a dictionary or a leaf. A value owns what it holds.
class VELAMO_PRIVATE_API PropertyList {
public:
    using Data = std::vector<std::uint8_t>;
    using Array = std::vector<PropertyList>;
    /// A reference into the object table of a keyed archive.
    struct Uid {
        std::uint32_t index = 0;
        friend bool operator==(const Uid&, const Uid&) = default;
    };
    /// A kind that a file may hold and that nothing here reads (a date, an integer of more than 64 signed bits).
    struct Other {
        friend bool operator==(const Other&, const Other&) = default;
    };

    /// Entries in the order in which they were given, which is also the order in the file. Looking up goes through
    /// them.
    class Dictionary {
    public:
        using Entry = std::pair<std::string, PropertyList>;

        Dictionary() = default;
        /// A key that comes again gives its entry the later value. May throw std::bad_alloc.
        explicit Dictionary(std::vector<Entry> entries);
        Dictionary(std::initializer_list<Entry> entries);

        /// Puts an entry behind the others, unless the key is there already. May throw std::bad_alloc.
        void emplace(std::string key, PropertyList value);

        [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return entries_; }
        [[nodiscard]] auto begin() const noexcept { return entries_.begin(); }
        [[nodiscard]] auto end() const noexcept { return entries_.end(); }
        [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }
        [[nodiscard]] bool empty() const noexcept { return entries_.empty(); }
        /// The value of the key, or null.
        [[nodiscard]] const PropertyList* find(std::string_view key) const noexcept;

        friend bool operator==(const Dictionary& left, const Dictionary& right);

    private:
        std::vector<Entry> entries_;
    };

    using Value = std::variant<Other, bool, std::int64_t, double, std::string, Data, Uid, Array, Dictionary>;

    PropertyList() = default;
    PropertyList(Value value) : value_(std::move(value)) {}  // NOLINT(google-explicit-constructor): a leaf is its value

    [[nodiscard]] const Value& value() const noexcept { return value_; }

    /// The value as the kind asked for, or null when it is of another kind.
    template <class Kind>
    [[nodiscard]] const Kind* as() const noexcept {
        return std::get_if<Kind>(&value_);
    }
    /// The entry of a dictionary, or null when this is no dictionary or has no such key.
    [[nodiscard]] const PropertyList* find(std::string_view key) const noexcept;
    /// An integer, real or boolean as a number (a text of digits too, as property lists are often edited by hand).
    [[nodiscard]] std::optional<double> number() const;
    /// The same narrowed to a whole number toward zero, or nullopt when it does not fit.
    [[nodiscard]] std::optional<std::int64_t> integer() const;

    friend bool operator==(const PropertyList&, const PropertyList&) = default;

private:
    Value value_;
};

/// Reads an XML or binary property list. Returns nullopt when the bytes are no property list, are damaged or truncated,
/// nest deeper than 64 levels, would unfold to more than their size allows (a binary list may refer to one array many
/// times, so that a few hundred bytes stand for gigabytes), hold a NUL in a text, have an absent value, or would take
/// too long (an XML dictionary of more than some 10,000 keys). What is wrong inside a value is read as well as can be:
/// an integer "5 mm" is 5, "abc" is 0, "010" is octal. Numbers read the same in every locale of the host. May throw
/// std::bad_alloc.
[[nodiscard]] VELAMO_PRIVATE_API std::optional<PropertyList> parsePropertyList(std::span<const std::uint8_t> bytes);

/// The property list as XML text and in the binary form, the latter in time that grows with the square of the list's
/// size. Numbers keep every bit, except that XML has one zero and one NaN; what is no text in a text (wrong UTF-8, a
/// NUL, in XML other control characters too) becomes U+FFFD. `Other` is written as an empty text. May throw
/// std::bad_alloc, and std::length_error when the file would be larger than 4 GB.
[[nodiscard]] VELAMO_PRIVATE_API std::vector<std::uint8_t> xmlPropertyList(const PropertyList& root);
[[nodiscard]] std::vector<std::uint8_t> binaryPropertyList(const PropertyList& root);

}  // namespace velamo
