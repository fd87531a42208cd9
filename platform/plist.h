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

/// Reads an XML or binary property list; null when the bytes are none, or are such that libplist must not be given them
/// (see plist_guard.h).
[[nodiscard]] PlistOwner parsePlist(std::span<const std::uint8_t> bytes);

/// The tree as XML text and in the binary form. The time of the latter grows with the square of a tree's size.
[[nodiscard]] std::vector<std::uint8_t> xmlOf(plist_t root);
[[nodiscard]] std::vector<std::uint8_t> binaryOf(plist_t root);

/// A text as XML can hold it: what is no UTF-8 and no character of XML becomes U+FFFD.
[[nodiscard]] std::string plistText(std::string_view text);

/// The text of a node, with what is no UTF-8 in it replaced by U+FFFD; "" when the node is no text.
[[nodiscard]] std::string textOfNode(plist_t node);

/// What a reference of a keyed archive refers to; nothing when the node is no reference. XML has no references of its
/// own: there a dictionary with the key "CF$UID" alone is one.
[[nodiscard]] std::optional<std::uint64_t> referenceOf(plist_t node) noexcept;

/// The children of an array in order; none when the node is no array. One pass, as looking up by index may be slow.
[[nodiscard]] std::vector<plist_t> childrenOf(plist_t array);

}  // namespace velamo
