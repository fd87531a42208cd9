#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/property_list.h"

namespace velamo {

/// How many arrays and dictionaries may stand inside each other in a list that is read.
inline constexpr int deepestNesting = 64;

/// Reads the XML form. Stricter than a reader of XML in general: no entity but the five predefined ones and code
/// points, no document type with declarations of its own, no element but those of property lists; the "plist" element
/// around the value may be missing. Nothing when the text is damaged. May throw std::bad_alloc.
[[nodiscard]] std::optional<PropertyList> parseXmlList(std::string_view xml);

/// The XML form. May throw std::bad_alloc.
[[nodiscard]] std::string xmlList(const PropertyList& root);

}  // namespace velamo
