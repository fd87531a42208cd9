#pragma once

#include <plist/plist.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace velamo {

/// A tree of libplist's, owned.
struct PlistDeleter {
    void operator()(plist_t node) const noexcept { plist_free(node); }
};
using PlistOwner = std::unique_ptr<void, PlistDeleter>;

/// The two forms of a property list. XML has no control characters but tab and the two ends of a line.
enum class PlistForm : std::uint8_t { xml, binary };

/// Reads an XML or binary property list. Returns null when the bytes are not a property list, or when libplist must not
/// be given them (see plist_guard.h).
[[nodiscard]] PlistOwner parsePlist(std::span<const std::uint8_t> bytes);

/// The tree in a form; the tree is gone before the bytes are copied, as both may be large. The time of the binary form
/// grows with the square of a tree's size. Throws std::length_error when it would be more than 4 GB.
[[nodiscard]] std::vector<std::uint8_t> plistBytes(PlistOwner root, PlistForm form);

/// A text or a key as the form can hold it: what is no UTF-8, and what is no character of the form, becomes U+FFFD.
[[nodiscard]] std::string plistText(std::string_view text, PlistForm form);

/// The text of a node, with what is no UTF-8 in it replaced by U+FFFD; "" when the node is no text.
[[nodiscard]] std::string textOfNode(plist_t node);

/// The number of an integer node, or nullopt when the node is no integer or the number needs more than 64 signed bits.
[[nodiscard]] std::optional<std::int64_t> integerOfNode(plist_t node);

/// The place in a keyed archive's table that a node refers to, or nullopt when the node is no reference. In XML a
/// reference is a dictionary of the one key "CF$UID", which libplist writes so, but reads as the dictionary.
[[nodiscard]] std::optional<std::uint32_t> referenceOfNode(plist_t node);

/// The children of an array in order; none when the node is no array. One pass, as looking up by index may be slow.
[[nodiscard]] std::vector<plist_t> childrenOf(plist_t array);

}  // namespace velamo
